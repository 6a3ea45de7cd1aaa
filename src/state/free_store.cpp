#include "state/free_store.h"

#include <cstdlib>
#include <new>
#include <utility>

#include "state/error.h"

namespace zeb
{

namespace
{

thread_local bool gGuarded = false;
thread_local bool gThrows = false;

// Given back when memory runs out: a handler or printer of the host may need some.
constexpr std::size_t kReserve = 64 * 1024;

MallocMemory& memoryReserve()
{
    static MallocMemory reserve;
    return reserve;
}

bool inForce() { return std::get_new_handler() == errorNewHandler; }

}  // namespace

bool guardFreeStore(bool on)
{
    const bool before = std::exchange(gGuarded, on);
    if (on && !before) {
        if (!memoryReserve()) memoryReserve().reset(std::malloc(kReserve));
        const std::new_handler other = std::set_new_handler(errorNewHandler);
        if (other != errorNewHandler) Error::fStoredNewHandler = other;
    } else if (!on && before && inForce()) {
        std::set_new_handler(Error::fStoredNewHandler);
    }
    return before;
}

ThrowingFreeStoreScope::ThrowingFreeStoreScope() : fBefore(std::exchange(gThrows, true)) {}

ThrowingFreeStoreScope::~ThrowingFreeStoreScope() { gThrows = fBefore; }

void errorNewHandler()
{
    if (gThrows) throw std::bad_alloc();
    if (!gGuarded && inForce()) {
        const std::new_handler other = Error::fStoredNewHandler;
        if (!other) throw std::bad_alloc();
        other();
        return;
    }
    endWithoutMemory();
}

void endWithoutMemory()
{
    // A second failure while reporting must not come back here.
    guardFreeStore(false);
    memoryReserve().reset();
    Error::fEnding = true;
    try {
        error(kOutOfMemory, kSevere, "free store exhausted");
    } catch (...) {
        // The host's handler could not do with what there is.
    }
    std::abort();
}

}  // namespace zeb
