// The wish that a picture be given up.
#pragma once

#include <atomic>

namespace zeb
{

// Thrown where the wish is noticed; never passes a function of the host's.
struct Cancelled {
};

// Other threads and signal handlers may set it.
extern std::atomic<bool> gCancelled;
static_assert(std::atomic<bool>::is_always_lock_free);

inline void checkCancelled()
{
    if (gCancelled.load(std::memory_order_relaxed)) throw Cancelled();
}

}  // namespace zeb
