// A lock as small as a pointer: for what there are many of, and what is rarely asked for twice at
// once.
#pragma once

#include <atomic>

namespace zeb
{

// Who waits sleeps. For std::lock_guard.
class Lock
{
public:
    Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

#ifdef _WIN32
    // The system's own: atomics that are waited for lose wake-ups there with GCC 12.
    void lock();
    void unlock();

private:
    void* fSystem = nullptr;
#else
    void lock()
    {
        while (fTaken.exchange(1, std::memory_order_acquire)) {
            fTaken.wait(1, std::memory_order_relaxed);
        }
    }
    void unlock()
    {
        fTaken.store(0, std::memory_order_release);
        fTaken.notify_one();
    }

private:
    std::atomic<int> fTaken{0};
#endif
};

}  // namespace zeb
