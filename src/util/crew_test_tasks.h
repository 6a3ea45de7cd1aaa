// Tasks for tests of crews.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#include "util/crew.h"

namespace zeb
{

constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

class Job final : public Task
{
public:
    explicit Job(std::function<void(int)> work) : fWork(std::move(work)) {}

private:
    void run(int worker) override { fWork(worker); }

    const std::function<void(int)> fWork;
};

// What takes no argument need not know of workers.
template <class Work>
std::shared_ptr<Task> job(Work work)
{
    if constexpr (std::is_invocable_v<Work, int>) {
        return std::make_shared<Job>(std::move(work));
    } else {
        return std::make_shared<Job>([work = std::move(work)](int) { work(); });
    }
}

// As std::latch, which misses wakes where GCC 12 has no help of the system, as for Windows.
class Latch
{
public:
    explicit Latch(int count) : fCount(count) {}

    void countDown()
    {
        const std::lock_guard lock(fMutex);
        if (--fCount == 0) fZero.notify_all();
    }
    void wait()
    {
        std::unique_lock lock(fMutex);
        fZero.wait(lock, [this] { return fCount <= 0; });
    }
    void meet()
    {
        countDown();
        wait();
    }

private:
    std::mutex fMutex;
    std::condition_variable fZero;
    int fCount;
};

}  // namespace zeb
