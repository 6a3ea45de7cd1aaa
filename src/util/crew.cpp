#include "util/crew.h"

#include <algorithm>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "util/helpers.h"

namespace zeb
{

namespace
{

std::atomic<std::uint32_t> gDelay{0};
std::atomic<void (*)(bool)> gWatcher{nullptr};

void delay()
{
    std::uint32_t x = gDelay.load(std::memory_order_relaxed);
    if (x == 0) return;
    static std::atomic<std::uint32_t> calls{0};
    x = (x ^ calls.fetch_add(1, std::memory_order_relaxed)) * 0x9E3779B1u;
    x ^= x >> 15;
    x *= 0x85EBCA77u;
    x ^= x >> 13;
    if (x % 16 == 0) std::this_thread::yield();
    for (std::uint32_t times = x >> 8 & 4095; times > 0; --times) {
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
}

}  // namespace

bool Task::take()
{
    State free = kFree;
    return fState.compare_exchange_strong(free, kTaken);
}

void Task::perform(int worker)
{
    delay();
    try {
        run(worker);
    } catch (...) {
        fFailure = std::current_exception();
    }
    delay();
    fState.store(kDone, std::memory_order_release);
}

// Tasks by their keys, in a heap of siblings: a task comes before its children. Takes no memory.
class Crew::Queue
{
public:
    Queue() = default;
    ~Queue()
    {
        while (fTop) pop();
    }
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    int size() const { return fSize; }
    std::int64_t key() const { return fTop->fKey; }

    void push(std::shared_ptr<Task> task)
    {
        Task* const added = task.get();
        added->fSelf = std::move(task);
        fTop = meld(fTop, added);
        ++fSize;
    }
    std::shared_ptr<Task> pop()
    {
        Task* const popped = fTop;
        // The children two by two, and what comes of it one by one, from the last.
        Task* pairs = nullptr;
        for (Task* child = std::exchange(popped->fFirst, nullptr); child;) {
            Task* const one = child;
            Task* const other = std::exchange(one->fNext, nullptr);
            child = other ? std::exchange(other->fNext, nullptr) : nullptr;
            Task* const pair = meld(one, other);
            pair->fNext = pairs;
            pairs = pair;
        }
        fTop = nullptr;
        while (pairs) {
            Task* const pair = pairs;
            pairs = std::exchange(pair->fNext, nullptr);
            fTop = meld(fTop, pair);
        }
        --fSize;
        return std::move(popped->fSelf);
    }
    // All of another's.
    void take(Queue& other)
    {
        fTop = meld(fTop, std::exchange(other.fTop, nullptr));
        fSize += std::exchange(other.fSize, 0);
    }

private:
    static Task* meld(Task* one, Task* other)
    {
        if (!one || !other) return one ? one : other;
        if (std::pair(other->fKey, other->fPlace) < std::pair(one->fKey, one->fPlace)) {
            std::swap(one, other);
        }
        other->fNext = one->fFirst;
        one->fFirst = other;
        return one;
    }

    Task* fTop = nullptr;
    int fSize = 0;
};

// Where a crew works. The lock is held over nothing but counting: not over tasks, their
// destructors, or calls for help.
//
// As many helpers are expected as there are tasks that may be taken, or else all have been called.
class Crew::Hall final : public Helped
{
public:
    explicit Hall(int threads)
    {
        const int most = std::max(threads - 1, 0);
        for (int worker = most; worker > 0; --worker) fNumbers.push_back(worker);
        fHelpers = Helpers::get(*this, most);
        fMost = fHelpers->count();
    }
    int threads() const { return fMost + 1; }

    void put(std::int64_t key, std::shared_ptr<Task> task)
    {
        task->fKey = key;
        bool call = false;
        {
            const std::lock_guard lock(fMutex);
            task->fPlace = fPut++;
            (key < fLimit ? fReady : fLater).push(std::move(task));
            call = expect();
        }
        if (call) fHelpers->call();
    }
    void open(std::int64_t limit)
    {
        int calls = 0;
        {
            const std::lock_guard lock(fMutex);
            if (limit < fLimit) fLater.take(fReady);
            fLimit = limit;
            while (fLater.size() && fLater.key() < limit) fReady.push(fLater.pop());
            while (expect()) ++calls;
        }
        for (; calls > 0; --calls) fHelpers->call();
    }
    void finish(Task& task)
    {
        if (task.take()) return performOwn(task);
        if (task.isDone()) return;
        std::unique_lock lock(fMutex);
        while (!task.isDone()) {
            if (std::shared_ptr<Task> other = next(lock)) {
                lock.unlock();
                performOwn(*other);
                other.reset();
                lock.lock();
            } else if (!task.isDone()) {
                sleep(lock, &task);
            }
        }
    }
    // On the owner's thread.
    static void performOwn(Task& task)
    {
        const auto watcher = gWatcher.load(std::memory_order_relaxed);
        if (watcher) watcher(true);
        task.perform(0);
        if (watcher) watcher(false);
    }
    void clear()
    {
        Queue dropped;
        std::unique_lock lock(fMutex);
        fClearing = true;
        while (fUnderWay > 0) sleep(lock, nullptr);
        dropped.take(fReady);
        dropped.take(fLater);
        fClearing = false;
        lock.unlock();
    }

    void help() noexcept override
    {
        std::unique_lock lock(fMutex);
        --fExpected;
        const int worker = fNumbers.back();
        fNumbers.pop_back();
        while (fMost > 0 && !Helpers::shallLeave()) {
            std::shared_ptr<Task> task = next(lock);
            if (!task) break;
            ++fUnderWay;
            lock.unlock();
            task->perform(worker);
            task.reset();
            lock.lock();
            --fUnderWay;
            if (fAsleep && (fAwaited ? fAwaited->isDone() : fUnderWay == 0)) wake();
        }
        fNumbers.push_back(worker);
        --fCalled;
    }
    void lock() override { fMutex.lock(); }
    int unlock() override
    {
        int calls = 0;
        while (expect()) ++calls;
        fMutex.unlock();
        return calls;
    }
    void forget() override
    {
        // The old one may believe that a thread waits there.
        new (&fOwner) std::condition_variable;
        fMost = fCalled = fExpected = fUnderWay = 0;
        fAsleep = false;
    }

private:
    // All under the lock.

    // The first task that may be taken; taken.
    std::shared_ptr<Task> next(std::unique_lock<std::mutex>& lock)
    {
        while (fReady.size() && !fClearing) {
            std::shared_ptr<Task> task = fReady.pop();
            if (task->take()) return task;
            // Finished without regard to the queue, which may be all that kept it.
            lock.unlock();
            task.reset();
            lock.lock();
        }
        return nullptr;
    }
    // Whether one more helper is to be called. It is the owner's turn if all are here.
    bool expect()
    {
        if (fReady.size() <= fExpected || fClearing) return false;
        if (fCalled == fMost) {
            wake();
            return false;
        }
        ++fCalled;
        ++fExpected;
        return true;
    }
    // The owner, until tasks may be taken, or the one awaited is done; without one, until none is
    // under way.
    void sleep(std::unique_lock<std::mutex>& lock, const Task* awaited)
    {
        fAwaited = awaited;
        fAsleep = true;
        fOwner.wait(lock, [this] { return !fAsleep; });
    }
    void wake()
    {
        if (std::exchange(fAsleep, false)) fOwner.notify_one();
    }

    std::mutex fMutex;
    Queue fReady, fLater;  // below the limit, and beyond
    std::int64_t fLimit = std::numeric_limits<std::int64_t>::min();
    std::uint64_t fPut = 0;
    bool fClearing = false;

    std::vector<int> fNumbers;       // of workers who are not here
    int fMost = 0;                   // helpers
    int fCalled = 0, fExpected = 0;  // and not gone yet; and not here yet
    int fUnderWay = 0;               // tasks that helpers run
    std::condition_variable fOwner;
    bool fAsleep = false;
    const Task* fAwaited = nullptr;

    std::unique_ptr<Helpers> fHelpers;  // goes first
};

Crew::Crew(int threads) : fHall(std::make_unique<Hall>(threads)) {}

Crew::~Crew()
{
    if (Helpers::areKilled()) {
        // Who knows in the middle of what.
        static_cast<void>(fHall.release());
        return;
    }
    clear();
}

int Crew::threads() const { return fHall->threads(); }

void Crew::put(std::int64_t key, std::shared_ptr<Task> task) { fHall->put(key, std::move(task)); }

void Crew::open(std::int64_t limit) { fHall->open(limit); }

void Crew::finish(Task& task) { fHall->finish(task); }

void Crew::clear() { fHall->clear(); }

void Crew::watch(void (*watcher)(bool begins)) { gWatcher = watcher; }

void Crew::delay(std::uint32_t seed) { gDelay.store(seed, std::memory_order_relaxed); }

}  // namespace zeb
