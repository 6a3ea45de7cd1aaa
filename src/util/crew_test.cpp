#include "util/crew.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "util/crew_test_tasks.h"

using namespace zeb;

namespace
{

// A crew of two whose helper is at a task until the test lets it go, so that the owner has all
// others to itself.
class AloneCrew
{
public:
    AloneCrew()
    {
        crew.open(0);
        crew.put(-1, fBusy);
        fBegun.wait();
    }
    // The owner runs what may be taken, and so many tasks are expected to be.
    void runOthers(int count)
    {
        fOthers.emplace(count);
        fKnown.countDown();
        crew.finish(*fBusy);
    }
    std::shared_ptr<Task> counted(std::function<void()> work)
    {
        return job([this, work = std::move(work)](int worker) {
            EXPECT_EQ(worker, 0);
            work();
            fOthers->countDown();
        });
    }

    Crew crew{2};

private:
    Latch fBegun{1}, fKnown{1};
    std::optional<Latch> fOthers;
    const std::shared_ptr<Task> fBusy = job([this](int worker) {
        EXPECT_EQ(worker, 1);
        fBegun.countDown();
        fKnown.wait();
        fOthers->wait();
    });
};

// Lets tasks begin and end late by chance.
class CrewTest : public testing::TestWithParam<int>
{
protected:
    CrewTest() { Crew::delay(7); }
    ~CrewTest() override { Crew::delay(0); }
};

INSTANTIATE_TEST_SUITE_P(Crew, CrewTest, testing::Values(1, 2, 3, 7, 16));

}  // namespace

TEST(Crew, TakesLowerKeysFirstAndOfEqualOnesTheFirst)
{
    AloneCrew alone;
    std::mt19937 random(1);
    // Of those that are put and have not run.
    std::set<std::pair<std::int64_t, int>> waiting;
    int put = 0;
    std::function<void(int)> add = [&](int count) {
        for (; count > 0; --count, ++put) {
            const std::pair own(static_cast<std::int64_t>(random() % 50) - 25, put);
            waiting.insert(own);
            alone.crew.put(own.first, alone.counted([&, own] {
                EXPECT_EQ(own, *waiting.begin());
                waiting.erase(own);
                if (put < 2000) add(static_cast<int>(random() % 4));
            }));
        }
    };
    add(1000);
    while (put < 2000) add(1);
    alone.crew.open(kAll);
    alone.runOthers(2000);
    EXPECT_EQ(put, 2000);
    EXPECT_TRUE(waiting.empty());
}

TEST(Crew, TakesNothingFromTheLimitOn)
{
    AloneCrew alone;
    std::vector<int> keys;
    for (const int key : {6, 3, 5, 4}) {
        alone.crew.put(key, alone.counted([&, key] { keys.push_back(key); }));
    }
    alone.crew.open(5);
    alone.runOthers(2);
    EXPECT_EQ(keys, (std::vector<int>{3, 4}));
}

TEST(Crew, TakesMoreOnceTheLimitHasGrown)
{
    AloneCrew alone;
    std::vector<int> keys;
    for (const int key : {2, 1, 0}) {
        alone.crew.put(key, alone.counted([&, key] {
            keys.push_back(key);
            alone.crew.open(key + 2);
        }));
    }
    alone.crew.open(1);
    alone.runOthers(3);
    EXPECT_EQ(keys, (std::vector<int>{0, 1, 2}));
}

TEST(Crew, TakesLessOnceTheLimitIsLower)
{
    AloneCrew alone;
    std::vector<int> keys;
    alone.crew.open(kAll);
    for (const int key : {2, 1, 0}) {
        alone.crew.put(key, alone.counted([&, key] {
            keys.push_back(key);
            alone.crew.open(1);
        }));
    }
    alone.runOthers(1);
    EXPECT_EQ(keys, std::vector<int>{0});
}

TEST(Crew, TakesNothingBeforeItIsOpen)
{
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    Crew crew(2);
    const auto least = job([] {});
    crew.put(kLeast, least);
    Latch first(1);
    const auto second = job([&] { first.countDown(); });
    crew.put(kLeast + 1, second);
    crew.clear();
    EXPECT_FALSE(least->isDone());
    EXPECT_FALSE(second->isDone());
    crew.open(kLeast);
    crew.put(kLeast, job([] { ADD_FAILURE(); }));
    crew.clear();
}

TEST(Crew, HelpersWorkWhileTheOwnerDoesNot)
{
    Crew crew(16);
    ASSERT_EQ(crew.threads(), 16);
    for (const bool openFirst : {false, true}) {
        crew.open(openFirst ? kAll : 0);
        Latch meeting(16);
        std::array<std::atomic<int>, 16> seen{};
        for (int k = 0; k < 15; ++k) {
            crew.put(k, job([&](int worker) {
                         ++seen[static_cast<std::size_t>(worker)];
                         meeting.meet();
                     }));
        }
        crew.open(kAll);
        meeting.meet();
        for (int worker = 0; worker < 16; ++worker) {
            EXPECT_EQ(seen[static_cast<std::size_t>(worker)], worker > 0 ? 1 : 0);
        }
        crew.clear();
    }
}

TEST(Crew, FinishRunsWhatWasNeverPut)
{
    Crew crew(2);
    int worker = -1;
    const auto task = job([&](int number) { worker = number; });
    EXPECT_FALSE(task->isDone());
    crew.finish(*task);
    EXPECT_TRUE(task->isDone());
    EXPECT_EQ(worker, 0);
    crew.finish(*task);
    EXPECT_EQ(task.use_count(), 1);
}

TEST(Crew, WhatHasBeenFinishedIsPassedOver)
{
    AloneCrew alone;
    int runs = 0;
    const auto waiting = job([&] { ++runs; });
    alone.crew.put(5, waiting);
    alone.crew.finish(*waiting);
    EXPECT_EQ(runs, 1) << "beyond the limit";
    alone.crew.put(6, alone.counted([] {}));
    alone.crew.open(kAll);
    alone.runOthers(1);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(waiting.use_count(), 1);
}

TEST(Crew, WakesTheOwnerForTasksThatHelpersWaitFor)
{
    Crew::delay(3);
    Crew crew(2);
    crew.open(kAll);
    for (int round = 0; round < 3000; ++round) {
        Latch begun(1), other(1);
        const auto task = job([&] {
            begun.countDown();
            crew.put(0, job([&] { other.countDown(); }));
            other.wait();
        });
        crew.put(0, task);
        begun.wait();
        crew.finish(*task);
    }
    Crew::delay(0);
}

TEST(Crew, ThrowsNothing)
{
    Crew crew(2);
    crew.open(kAll);
    Latch done(1);
    struct Signal {
        Latch& latch;
        ~Signal() { latch.countDown(); }
    };
    const auto own = job([] { throw std::runtime_error("own"); });
    const auto helpers = job([&] {
        const Signal signal{done};
        throw std::runtime_error("helper's");
    });
    const auto neither = job([] {});
    crew.put(0, helpers);
    done.wait();
    for (const auto& task : {own, helpers, neither}) {
        crew.finish(*task);
        EXPECT_TRUE(task->isDone());
    }
    EXPECT_THROW(std::rethrow_exception(own->failure()), std::runtime_error);
    EXPECT_THROW(std::rethrow_exception(helpers->failure()), std::runtime_error);
    EXPECT_EQ(neither->failure(), nullptr);
}

TEST(Crew, ClearDropsWhatNobodyHasTakenAndWaitsForTheRest)
{
    Crew crew(2);
    crew.open(10);
    std::atomic<int> taken{0};
    for (int round = 0; round < 100; ++round) {
        Latch begun(1);
        std::atomic<bool> cleared{false}, ended{false}, returned{false};
        std::weak_ptr<Task> dropped[3];
        const auto put = [&](int which, int key) {
            const auto task = job([&, key] {
                EXPECT_LT(key, 10);
                EXPECT_FALSE(returned);
                ++taken;
            });
            dropped[which] = task;
            crew.put(key, task);
        };
        const auto task = job([&] {
            begun.countDown();
            while (!cleared) std::this_thread::yield();
            for (int k = 0; k < 3; ++k) std::this_thread::yield();
            put(2, 1);
            ended = true;
        });
        crew.put(0, task);
        begun.wait();
        put(0, 1);
        put(1, 20);
        cleared = true;
        crew.clear();
        returned = true;
        EXPECT_TRUE(ended);
        EXPECT_TRUE(task->isDone());
        for (const auto& each : dropped) EXPECT_TRUE(each.expired());
    }
    // The helper may be faster than the call of clear(), but not every time.
    EXPECT_LT(taken, 200);
    const auto after = job([] {});
    crew.put(0, after);
    crew.finish(*after);
}

TEST(Crew, EndsWithTasksThatWait)
{
    std::weak_ptr<Task> dropped;
    Latch begun(1);
    std::atomic<bool> ended{false};
    {
        Crew crew(2);
        crew.open(0);
        crew.put(-1, job([&] {
            begun.countDown();
            for (int k = 0; k < 3; ++k) std::this_thread::yield();
            ended = true;
        }));
        const auto task = job([] { ADD_FAILURE(); });
        crew.put(0, task);
        dropped = task;
        begun.wait();
    }
    EXPECT_TRUE(ended);
    EXPECT_TRUE(dropped.expired());
}

TEST(Crew, TasksMayGoWhereTheyPutOthers)
{
    // Whose destructors come back to the crew, too.
    struct Parting {
        Crew* crew;
        Latch* gone;
        ~Parting()
        {
            crew->put(0, job([] {}));
            gone->countDown();
        }
    };
    Crew crew(2);
    Latch gone(3);
    const auto parting = [&] { return job([last = std::make_shared<Parting>(&crew, &gone)] {}); };
    crew.put(1, parting());
    crew.clear();
    {
        const auto finished = parting();
        crew.put(2, finished);
        crew.finish(*finished);
    }
    crew.put(3, parting());
    crew.open(4);
    gone.wait();
    crew.clear();
}

TEST_P(CrewTest, RunsEveryTaskOnce)
{
    struct Tree {
        std::atomic<int> runs{0};
        std::shared_ptr<Task> task;
        std::vector<std::unique_ptr<Tree>> children;
    };
    const int threads = GetParam();
    Crew crew(threads);
    ASSERT_EQ(crew.threads(), threads);
    std::vector<std::atomic<bool>> busy(static_cast<std::size_t>(threads));
    const std::function<std::unique_ptr<Tree>(int)> grow = [&](int depth) {
        auto tree = std::make_unique<Tree>();
        Tree& own = *tree;
        own.task = job([&, depth](int worker) {
            ++own.runs;
            EXPECT_FALSE(busy.at(static_cast<std::size_t>(worker)).exchange(true));
            for (int k = 0; k < 4 && depth > 0; ++k) {
                own.children.push_back(grow(depth - 1));
                crew.put(depth * k % 3, own.children.back()->task);
            }
            busy[static_cast<std::size_t>(worker)] = false;
        });
        return tree;
    };
    std::mt19937 random(5);
    int count = 0;
    const std::function<void(Tree&)> finish = [&](Tree& tree) {
        crew.finish(*tree.task);
        EXPECT_EQ(tree.runs, 1);
        ++count;
        std::shuffle(tree.children.begin(), tree.children.end(), random);
        for (const auto& child : tree.children) finish(*child);
    };
    for (int round = 0; round < 5; ++round) {
        crew.open(round % 4);
        const auto tree = grow(5);
        crew.put(0, tree->task);
        finish(*tree);
        crew.clear();
    }
    EXPECT_EQ(count, 5 * (1 + 4 + 16 + 64 + 256 + 1024));
}

TEST_P(CrewTest, ManyWorkBesideEachOther)
{
    std::vector<std::thread> hosts;
    for (int host = 0; host < 3; ++host) {
        hosts.emplace_back([threads = GetParam()] {
            for (int round = 0; round < 20; ++round) {
                Crew crew(threads);
                crew.open(kAll);
                int sum = 0;
                std::vector<std::pair<std::shared_ptr<Task>, int>> tasks(50);
                for (auto& [task, value] : tasks) {
                    task = job([&value] { value = 1; });
                    crew.put(0, task);
                }
                for (auto& [task, value] : tasks) {
                    crew.finish(*task);
                    sum += value;
                }
                EXPECT_EQ(sum, 50);
            }
        });
    }
    for (std::thread& host : hosts) host.join();
}

TEST_P(CrewTest, TasksMayHaveCrewsOfTheirOwn)
{
    Crew crew(GetParam());
    crew.open(kAll);
    std::vector<std::shared_ptr<Task>> tasks;
    std::atomic<int> sum{0};
    for (int k = 0; k < 20; ++k) {
        tasks.push_back(job([&] {
            Crew inner(GetParam());
            inner.open(kAll);
            std::vector<std::shared_ptr<Task>> parts;
            for (int part = 0; part < 20; ++part) {
                parts.push_back(job([&] { ++sum; }));
                inner.put(part, parts.back());
            }
            for (const auto& part : parts) inner.finish(*part);
        }));
        crew.put(k, tasks.back());
    }
    for (const auto& task : tasks) crew.finish(*task);
    EXPECT_EQ(sum, 400);
}

TEST(Crew, OfNobodyElseIsTheOwner)
{
    for (const int threads : {1, 0, -5}) {
        Crew crew(threads);
        EXPECT_EQ(crew.threads(), 1);
        crew.open(kAll);
        const auto task = job([](int worker) { EXPECT_EQ(worker, 0); });
        crew.put(0, task);
        crew.finish(*task);
    }
}
