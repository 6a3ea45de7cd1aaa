// Threads that work for the caller of the library.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>

namespace zeb
{

// Work that is done once, by whichever thread takes it first. May be destroyed on any.
class Task
{
public:
    Task() = default;
    virtual ~Task() = default;
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

    // Once it is, all that run() wrote can be read.
    bool isDone() const { return fState.load(std::memory_order_acquire) == kDone; }
    // What run() threw, once the task is done.
    std::exception_ptr failure() const { return fFailure; }

protected:
    // The worker 0 is the thread that owns the crew, others are 1 to threads() - 1. No two have the
    // same number at a time, but a thread may have another for the next task.
    virtual void run(int worker) = 0;

private:
    friend class Crew;
    enum State { kFree, kTaken, kDone };

    bool take();
    void perform(int worker);

    std::atomic<State> fState{kFree};
    std::exception_ptr fFailure;

    // In the queue that it is in.
    std::int64_t fKey = 0;
    std::uint64_t fPlace = 0;  // among those put
    Task *fFirst = nullptr, *fNext = nullptr;
    std::shared_ptr<Task> fSelf;
};

// Belongs to the thread that made it, which works as well, in finish() alone. A crew whose owner
// has left it by a jump, or by the end of the process, keeps its tasks and the helpers it has got,
// but hinders nobody.
//
// A fork waits for tasks under way on threads other than owners'. In the child the owner is alone.
class Crew
{
public:
    // As many threads with the owner's, or fewer, where the system gives no more.
    explicit Crew(int threads);
    // As clear().
    ~Crew();
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    int threads() const;

    // On any thread, also from within run(), once for a task. Lower keys are taken first, and of
    // equal ones those that were put first.
    void put(std::int64_t key, std::shared_ptr<Task> task);
    // Only tasks with keys below the limit are taken. It begins at the least number there is, below
    // which there are none, and may also be lowered. On any thread.
    void open(std::int64_t limit);

    // On the owner's thread: returns when the task is done, which is of this crew or was never put.
    // Runs it if nobody has taken it, whatever the limit; otherwise runs others that may be taken
    // meanwhile, and sleeps when there are none.
    void finish(Task& task);
    // On the owner's thread: drops all tasks that nobody has taken, also those that are put
    // meanwhile, and waits for those under way.
    void clear();

    // For tests: lets all tasks begin and end late by chance. A seed, or 0 for none.
    static void delay(std::uint32_t seed);
    // For benchmarks: hears when an owner begins a task and when it has ended it. Null for nobody.
    static void watch(void (*watcher)(bool begins));

private:
    class Queue;
    class Hall;

    std::unique_ptr<Hall> fHall;
};

}  // namespace zeb
