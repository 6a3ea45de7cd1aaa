#include "memory.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

// The C library's own, which the functions below stand before.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace
{

struct Refusals {
    long mallocsLeft = -1, newsLeft = -1;
    bool all = false, happened = false;
    void (*hook)() = nullptr;

    bool refuse()
    {
        happened = true;
        errno = ENOMEM;
        return true;
    }
    bool mallocRefused()
    {
        if (all) return refuse();
        return mallocsLeft >= 0 && mallocsLeft-- == 0 && refuse();
    }
    bool newRefused()
    {
        if (hook) std::exchange(hook, nullptr)();
        if (newsLeft >= 0 && newsLeft-- == 0) all = true;
        return all && refuse();
    }
};

thread_local Refusals gRefusals;

// Of threads other than one.
std::atomic<bool> gOthersRefused{false};
std::atomic<long> gOthersLeft{0};
thread_local bool gSpared = false;

bool refusedToOthers() { return gOthersRefused && !gSpared && gOthersLeft.fetch_sub(1) <= 0; }

}  // namespace

namespace starved
{

void refuseMalloc(long n) { gRefusals = {n, -1, false, false, nullptr}; }
void refuseAllFromNew(long n) { gRefusals = {-1, n, false, false, nullptr}; }
void refuseAll() { gRefusals = {-1, -1, true, false, nullptr}; }
void refuseOthersFromNew(long n)
{
    gSpared = true;
    gOthersLeft = n;
    gOthersRefused = true;
}
void refuseNone() { gRefusals = {-1, -1, false, gRefusals.happened, nullptr}; }
bool refused() { return gRefusals.happened; }
void atNextNew(void (*function)()) { gRefusals.hook = function; }

}  // namespace starved

extern "C" {

void* malloc(std::size_t size) { return gRefusals.mallocRefused() ? nullptr : __libc_malloc(size); }

void* calloc(std::size_t count, std::size_t size)
{
    return gRefusals.mallocRefused() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size)
{
    return gRefusals.mallocRefused() ? nullptr : __libc_realloc(memory, size);
}

}  // extern "C"

namespace
{

// As the language wants operator new.
template <class Take>
void* takeOrHandle(Take take)
{
    for (;;) {
        const bool refused = gRefusals.newRefused() || refusedToOthers();
        void* memory = refused ? nullptr : take();
        if (memory) return memory;
        const std::new_handler handler = std::get_new_handler();
        if (!handler) throw std::bad_alloc();
        handler();
    }
}

}  // namespace

void* operator new(std::size_t size)
{
    return takeOrHandle([&] { return __libc_malloc(size ? size : 1); });
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    return takeOrHandle([&] { return __libc_memalign(static_cast<std::size_t>(alignment), size); });
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
