#include "util/lock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

using namespace zeb;

TEST(LockThreads, OneAtATime)
{
    constexpr int kThreads = 4, kTimes = 20000;
    Lock lock;
    long count = 0;
    std::vector<std::thread> threads;
    for (int k = 0; k < kThreads; ++k) {
        threads.emplace_back([&] {
            for (int time = 0; time < kTimes; ++time) {
                const std::lock_guard guard(lock);
                const long before = count;
                if (time % 64 == 0) std::this_thread::yield();
                count = before + 1;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count, kThreads * kTimes);
}
