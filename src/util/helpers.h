// Threads that come when they are called, and go again.
#pragma once

#include <atomic>
#include <memory>

namespace zeb
{

// What helpers work at.
class Helped
{
public:
    // On a helper's thread, once for a call; returns soon when Helpers::shallLeave().
    virtual void help() noexcept = 0;

    // Around a fork, while nobody helps: nothing may be half done in the child. unlock() answers
    // how many helpers are wanted now; in the child, forget() comes before it: no helper is left
    // there.
    virtual void lock() = 0;
    virtual int unlock() = 0;
    virtual void forget() = 0;

protected:
    ~Helped() = default;
};

// Those of one who is helped. POSIX has threads for them that the process keeps, asleep between
// calls, until it exits or unloads this code; Windows, its own thread pool.
class Helpers
{
public:
    // As many, or fewer, where the system gives no more.
    static std::unique_ptr<Helpers> get(Helped& helped, int count);
    // Those that have come are waited for; those on their way turn back.
    virtual ~Helpers() = default;
    Helpers(const Helpers&) = delete;
    Helpers& operator=(const Helpers&) = delete;

    int count() const { return fCount; }
    // One that is not here already; called under no lock. None comes any more once the process
    // exits, or in the child of a fork.
    virtual void call() = 0;

    // Whether the threads are to be free, for a fork or for good.
    static bool shallLeave() { return fShallLeave.load(std::memory_order_relaxed); }
    // Whether the system has ended all threads but this one, wherever they were.
    static bool areKilled();

protected:
    explicit Helpers(int count) : fCount(count) {}

    int fCount;
    static inline std::atomic<bool> fShallLeave{false};
};

}  // namespace zeb
