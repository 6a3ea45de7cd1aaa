// Threads that the process keeps.
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <new>
#include <utility>

#include "util/helpers.h"

namespace zeb
{

namespace
{

class KeptHelpers final : public Helpers
{
public:
    KeptHelpers(Helped& helped, int count);
    ~KeptHelpers() override;
    void call() override;

private:
    friend class Kept;

    Helped& fHelped;
    int fCalls = 0;  // that nobody follows yet
    int fHere = 0;
    KeptHelpers *fNext = nullptr, *fPrevious = nullptr;
};

// Whose task runs on this thread, if it is a kept one.
thread_local KeptHelpers* gHelping = nullptr;

// All kept threads of the process, and whom they may help. No memory is taken under its lock: a
// host without any may end the process there.
class Kept
{
public:
    void add(KeptHelpers& helpers)
    {
        std::unique_lock lock(fMutex);
        helpers.fNext = fFirst;
        if (fFirst) fFirst->fPrevious = &helpers;
        fFirst = &helpers;
        fWanted += helpers.fCount;
        while (fThreadCount < fWanted && !fEnded) {
            lock.unlock();
            auto thread = std::make_unique<Thread>();
            lock.lock();
            if (!start(std::move(thread))) break;
        }
        const int missing = fEnded ? helpers.fCount : fWanted - fThreadCount;
        lower(helpers, std::clamp(missing, 0, helpers.fCount));
    }
    void remove(KeptHelpers& helpers)
    {
        std::unique_lock lock(fMutex);
        helpers.fCalls = 0;
        fLeft.wait(lock, [&] { return helpers.fHere == 0; });
        lower(helpers, helpers.fCount);
        (helpers.fPrevious ? helpers.fPrevious->fNext : fFirst) = helpers.fNext;
        if (helpers.fNext) helpers.fNext->fPrevious = helpers.fPrevious;
    }
    void call(KeptHelpers& helpers)
    {
        const std::lock_guard lock(fMutex);
        if (helpers.fCount == 0) return;
        ++helpers.fCalls;
        fCalled.notify_one();
    }

    // Waits until all threads sleep, and holds all locks then.
    void beforeFork()
    {
        std::unique_lock lock(fMutex);
        // A task that forks does not wait for itself.
        if (gHelping) leave(*gHelping);
        ++fForks;
        KeptHelpers::fShallLeave = true;
        fLeft.wait(lock, [this] { return fHere == 0; });
        for (KeptHelpers* each = fFirst; each; each = each->fNext) each->fHelped.lock();
        lock.release();
    }
    void afterForkInParent()
    {
        --fForks;
        KeptHelpers::fShallLeave = fForks > 0 || fEnded;
        if (gHelping) enter(*gHelping);
        for (KeptHelpers* each = fFirst; each; each = each->fNext) {
            each->fCalls += each->fHelped.unlock();
        }
        fCalled.notify_all();
        fMutex.unlock();
    }
    void afterForkInChild()
    {
        // The old ones believe that threads wait there.
        new (&fCalled) std::condition_variable;
        new (&fLeft) std::condition_variable;
        while (fThreads) delete std::exchange(fThreads, fThreads->next);
        fThreadCount = fWanted = fForks = 0;
        KeptHelpers::fShallLeave = fEnded;
        gHelping = nullptr;
        for (KeptHelpers* each = fFirst; each; each = each->fNext) {
            each->fCount = each->fCalls = each->fHere = 0;
            each->fHelped.forget();
            each->fHelped.unlock();
        }
        fMutex.unlock();
    }

    // Tasks under way come to their ends first.
    void end()
    {
        std::unique_lock lock(fMutex);
        fEnded = true;
        KeptHelpers::fShallLeave = true;
        // A task that exits does not wait for itself.
        if (gHelping) leave(*gHelping);
        fCalled.notify_all();
        Thread* thread = std::exchange(fThreads, nullptr);
        lock.unlock();
        while (thread) {
            if (!pthread_equal(thread->id, pthread_self())) pthread_join(thread->id, nullptr);
            delete std::exchange(thread, thread->next);
        }
    }

private:
    struct Thread {
        pthread_t id;
        Thread* next;
    };

    bool start(std::unique_ptr<Thread> thread)
    {
        if (fThreadCount >= fWanted || fEnded) return true;  // others were faster
        // Signals are for threads of the host.
        sigset_t all, before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        const int error = pthread_create(&thread->id, nullptr, keep, this);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        if (error) return false;
        pthread_setname_np(thread->id, "zebcore");
        thread->next = fThreads;
        fThreads = thread.release();
        ++fThreadCount;
        ++fHere;  // until it is at rest
        return true;
    }
    static void* keep(void* kept)
    {
        static_cast<Kept*>(kept)->keep();
        return nullptr;
    }
    void keep()
    {
        std::unique_lock lock(fMutex);
        --fHere;
        fLeft.notify_all();
        for (;;) {
            KeptHelpers* helpers = nullptr;
            fCalled.wait(lock, [&] { return fEnded || (helpers = called()); });
            if (!helpers) return;
            --helpers->fCalls;
            enter(*helpers);
            gHelping = helpers;
            lock.unlock();
            helpers->fHelped.help();
            if (!gHelping) return;  // which a task has forked; nobody knows of it here
            lock.lock();
            leave(*std::exchange(gHelping, nullptr));
        }
    }
    KeptHelpers* called() const
    {
        if (fForks > 0) return nullptr;
        KeptHelpers* helpers = fFirst;
        while (helpers && helpers->fCalls == 0) helpers = helpers->fNext;
        return helpers;
    }
    void enter(KeptHelpers& helpers)
    {
        ++helpers.fHere;
        ++fHere;
    }
    void leave(KeptHelpers& helpers)
    {
        --fHere;
        if (--helpers.fHere == 0) fLeft.notify_all();
    }
    void lower(KeptHelpers& helpers, int by)
    {
        helpers.fCount -= by;
        fWanted -= by;
    }

    std::mutex fMutex;
    std::condition_variable fCalled, fLeft;
    Thread* fThreads = nullptr;
    int fThreadCount = 0, fWanted = 0, fHere = 0, fForks = 0;
    KeptHelpers* fFirst = nullptr;
    bool fEnded = false;
};

// Has no destructor: what is destroyed late may still ask.
Kept& kept()
{
    alignas(Kept) static std::byte memory[sizeof(Kept)];
    static Kept* const kept = [] {
        pthread_atfork([] { zeb::kept().beforeFork(); }, [] { zeb::kept().afterForkInParent(); },
                       [] { zeb::kept().afterForkInChild(); });
        return new (memory) Kept;
    }();
    static const struct End {
        ~End() { zeb::kept().end(); }
    } end;
    return *kept;
}

KeptHelpers::KeptHelpers(Helped& helped, int count) : Helpers(count), fHelped(helped)
{
    kept().add(*this);
}

KeptHelpers::~KeptHelpers() { kept().remove(*this); }

void KeptHelpers::call() { kept().call(*this); }

}  // namespace

std::unique_ptr<Helpers> Helpers::get(Helped& helped, int count)
{
    return std::make_unique<KeptHelpers>(helped, count);
}

bool Helpers::areKilled() { return false; }

}  // namespace zeb
