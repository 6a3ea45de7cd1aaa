// What becomes of the process's kept threads.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "util/crew.h"
#include "util/crew_test_tasks.h"
#include "util/helpers.h"

using namespace zeb;

namespace
{

#if defined(__has_feature)
constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
constexpr bool kThreadSanitizer = __has_feature(thread_sanitizer);
#else
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif
#if defined(__SANITIZE_THREAD__)
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif
#endif

// Lets every helper do something at the same time.
template <class Work>
void onAllHelpers(int threads, Work work)
{
    Crew crew(threads);
    ASSERT_EQ(crew.threads(), threads);
    crew.open(kAll);
    Latch meeting(threads);
    for (int k = 1; k < threads; ++k) {
        crew.put(k, job([&] {
                     work();
                     meeting.meet();
                 }));
    }
    meeting.meet();
    crew.clear();
}

// The states of the process's kept threads, a letter for each.
std::string keptThreads()
{
    std::string states;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(thread.path() / "stat");
        std::string id, name, state;
        if (file >> id >> name >> state && name == "(zebcore)") states += state;
    }
    return states;
}

int statusOf(pid_t child)
{
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << status;
    return WEXITSTATUS(status);
}

// Works at tasks until all are done.
bool finishesAll(Crew& crew)
{
    std::vector<std::shared_ptr<Task>> tasks;
    int done = 0;
    std::mutex mutex;
    for (int k = 0; k < 100; ++k) {
        tasks.push_back(job([&] {
            const std::lock_guard lock(mutex);
            ++done;
        }));
        crew.put(k % 7, tasks.back());
    }
    for (const auto& task : tasks) crew.finish(*task);
    crew.clear();
    return done == 100;
}

// Is there before kept threads are, so that it goes after them.
struct Last {
    std::function<void()> work;
    ~Last()
    {
        if (work) work();
    }
} gLast;

// Ends a child as exit() does, but for what would be said of the parent's memory and output.
void exitWith(int status)
{
    gLast.work = [status] { _exit(status); };
    std::exit(1);
}

class CrewForks : public testing::Test
{
protected:
    void SetUp() override
    {
        if (kThreadSanitizer) GTEST_SKIP() << "which ends a child that makes threads";
    }
};

}  // namespace

TEST(CrewThreads, HandleNoSignals)
{
    onAllHelpers(3, [] {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        for (const int signal : {SIGINT, SIGTERM, SIGALRM, SIGUSR1, SIGSEGV, SIGPROF, SIGCHLD}) {
            EXPECT_TRUE(sigismember(&blocked, signal)) << signal;
        }
    });
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_FALSE(sigismember(&blocked, SIGINT));
}

TEST(CrewThreads, AreUsedAgain)
{
    const auto threads = [](int count) {
        std::set<pid_t> ids;
        std::mutex mutex;
        onAllHelpers(count, [&] {
            const std::lock_guard lock(mutex);
            ids.insert(gettid());
        });
        return ids;
    };
    threads(5);
    const std::size_t most = keptThreads().size();
    ASSERT_GE(most, 4u);
    std::set<pid_t> all;
    for (int round = 0; round < 20; ++round) {
        for (const pid_t id : threads(5)) all.insert(id);
        EXPECT_EQ(keptThreads().size(), most);
    }
    EXPECT_LE(all.size(), most);
    EXPECT_EQ(all.count(getpid()), 0u);
}

TEST(CrewThreads, SleepUntilTheyAreCalled)
{
    onAllHelpers(5, [] {});
    const auto sleep = [] { return keptThreads().find_first_not_of('S') == std::string::npos; };
    while (!sleep()) usleep(100);
    const Crew crew(5);
    for (int k = 0; k < 100; ++k) EXPECT_TRUE(sleep());
}

TEST_F(CrewForks, LeaveTheOwnerAloneInTheChild)
{
    for (int round = 0; round < 50; ++round) {
        Crew crew(4);
        crew.open(kAll);
        std::array<std::shared_ptr<Task>, 100> tasks;
        std::array<std::atomic<int>, 100> runs{};
        for (std::size_t k = 0; k < tasks.size(); ++k) {
            tasks[k] = job([&runs, k] { ++runs[k]; });
            crew.put(static_cast<int>(k), tasks[k]);
        }
        const pid_t child = fork();
        for (const auto& task : tasks) crew.finish(*task);
        bool good = true;
        for (const auto& count : runs) good = good && count == 1;
        if (child == 0) {
            good = good && crew.threads() == 1 && keptThreads().empty();
            for (int more = 0; more < 3; ++more) good = good && finishesAll(crew);
            _exit(good ? 7 : 1);
        }
        EXPECT_EQ(statusOf(child), 7);
        EXPECT_TRUE(good);
        EXPECT_EQ(crew.threads(), 4);
    }
}

TEST_F(CrewForks, GiveTheChildThreadsOfItsOwn)
{
    onAllHelpers(4, [] {});
    Crew old(4);
    const pid_t child = fork();
    if (child == 0) {
        onAllHelpers(3, [] {});
        Crew crew(2);
        const bool good = finishesAll(crew) && finishesAll(old) && keptThreads().size() == 2;
        exitWith(good && !testing::Test::HasFailure() ? 7 : 1);  // which lets them end
    }
    EXPECT_EQ(statusOf(child), 7);
    onAllHelpers(4, [] {});
}

TEST_F(CrewForks, WaitForTasksUnderWay)
{
    Crew crew(3);
    crew.open(kAll);
    std::array<std::atomic<int>, 3> steps{};
    std::atomic<bool> over{false};
    std::function<void(int)> work = [&](int worker) {
        auto& step = steps[static_cast<std::size_t>(worker)];
        ++step;
        for (int k = 0; k < 20; ++k) std::atomic_signal_fence(std::memory_order_seq_cst);
        ++step;
        if (!over) crew.put(0, job(work));
    };
    for (int k = 0; k < 5; ++k) crew.put(0, job(work));
    for (int round = 0; round < 50; ++round) {
        // They go on after a fork.
        const int before = steps[1] + steps[2];
        while (steps[1] + steps[2] == before) usleep(10);
        const pid_t child = fork();
        if (child == 0) {
            _exit(steps[1] % 2 == 0 && steps[2] % 2 == 0 ? 7 : 1);
        }
        EXPECT_EQ(statusOf(child), 7);
    }
    over = true;
    crew.clear();
}

TEST_F(CrewForks, FindNothingHalfPut)
{
    if (kAddressSanitizer) GTEST_SKIP() << "whose heap the child would find locked";
    Crew crew(2);
    std::atomic<bool> over{false};
    std::thread other([&] {
        for (int k = 0; !over; ++k) {
            crew.put(k % 97, job([] {}));
            if (k % 100 == 0) crew.open(k % 89);
        }
    });
    for (int round = 0; round < 50; ++round) {
        const pid_t child = fork();
        if (child == 0) _exit(finishesAll(crew) ? 7 : 1);
        EXPECT_EQ(statusOf(child), 7);
        crew.clear();
    }
    over = true;
    other.join();
}

TEST_F(CrewForks, MayHappenInTasks)
{
    for (int round = 0; round < 20; ++round) {
        Crew crew(3);
        crew.open(kAll);
        Latch both(3);
        std::vector<std::shared_ptr<Task>> tasks;
        for (int k = 0; k < 3; ++k) {
            tasks.push_back(job([&] {
                both.meet();
                const pid_t child = fork();
                if (child == 0) {
                    Crew own(2);
                    own.open(kAll);
                    _exit(finishesAll(own) ? 7 : 1);
                }
                EXPECT_EQ(statusOf(child), 7);
            }));
        }
        crew.put(1, tasks[1]);
        crew.put(2, tasks[2]);
        for (const auto& task : tasks) crew.finish(*task);
    }
}

TEST_F(CrewForks, EndAHelperWithItsTask)
{
    std::atomic<pid_t> child{-1};
    {
        Crew crew(2);
        crew.open(kAll);
        Latch done(1);
        int begun = 0;
        crew.put(0, job([&] {
                     child = fork();
                     if (child == 0) {
                         begun = 1;
                         gLast.work = [] { _exit(7); };
                         return;
                     }
                     done.countDown();
                 }));
        crew.put(1, job([&] {
                     if (begun) _exit(1);
                 }));
        done.wait();
        crew.clear();
    }
    EXPECT_EQ(statusOf(child), 7);
}

TEST_F(CrewForks, LeaveLessToAProcessThatMayHaveNoMoreThreads)
{
    if (kAddressSanitizer) GTEST_SKIP() << "which needs memory itself";
    const pid_t child = fork();
    if (child == 0) {
        const rlimit least{std::size_t{1} << 29, RLIM_INFINITY};
        setrlimit(RLIMIT_AS, &least);
        Crew crew(1000);
        crew.open(kAll);
        _exit(crew.threads() < 1000 && finishesAll(crew) ? 7 : 1);
    }
    EXPECT_EQ(statusOf(child), 7);
}

TEST_F(CrewForks, ExitWaitsForTasksUnderWayAndDropsTheRest)
{
    const pid_t child = fork();
    if (child == 0) {
        Crew crew(2);
        crew.open(kAll);
        Latch begun(1);
        bool ended = false, dropped = true;
        crew.put(0, job([&] {
                     begun.countDown();
                     while (!Helpers::shallLeave()) usleep(100);
                     usleep(1000);
                     ended = true;
                 }));
        for (int k = 1; k < 100; ++k) crew.put(k, job([&] { dropped = false; }));
        begun.wait();
        gLast.work = [&] {
            const bool gone = keptThreads().empty();
            Crew late(3);
            const bool alone = late.threads() == 1 && finishesAll(late) && finishesAll(crew);
            _exit(ended && dropped && gone && alone ? 7 : 1);
        };
        crew.finish(*job([] { std::exit(1); }));
    }
    EXPECT_EQ(statusOf(child), 7);
}

TEST_F(CrewForks, ExitMayBeCalledInATask)
{
    const pid_t child = fork();
    if (child == 0) {
        onAllHelpers(3, [] {});
        Crew crew(2);
        crew.open(kAll);
        Latch begun(1);
        const auto task = job([&] {
            begun.countDown();
            exitWith(7);
        });
        crew.put(0, task);
        begun.wait();
        crew.finish(*task);
    }
    EXPECT_EQ(statusOf(child), 7);
}

TEST_F(CrewForks, CrewsThatNobodyEndsHinderNobody)
{
    const pid_t child = fork();
    if (child == 0) {
        auto* const left = new Crew(4);
        left->open(0);
        Latch begun(1);
        left->put(1, job([] { _exit(1); }));
        left->put(-1, job([&] { begun.countDown(); }));
        begun.wait();
        onAllHelpers(4, [] {});
        const pid_t grandchild = fork();
        if (grandchild == 0) {
            onAllHelpers(4, [] {});
            exitWith(3);
        }
        exitWith(statusOf(grandchild) == 3 && !testing::Test::HasFailure() ? 7 : 1);
    }
    EXPECT_EQ(statusOf(child), 7);
}
