// What becomes of running out of memory.
#pragma once

#include <cstdlib>
#include <memory>

namespace zeb
{

// Memory that there may be none of: unlike new, malloc asks no handler then.
struct MallocFree {
    void operator()(void* memory) const { std::free(memory); }
};
using MallocMemory = std::unique_ptr<void, MallocFree>;

// Whether running out of memory on this thread is the library's affair: a severe report, and the
// end of the process. Answers what it was before.
bool guardFreeStore(bool on);

// For a scope, running out of memory on this thread is an exception, whatever handlers there are.
class ThrowingFreeStoreScope
{
public:
    ThrowingFreeStoreScope();
    ~ThrowingFreeStoreScope();
    ThrowingFreeStoreScope(const ThrowingFreeStoreScope&) = delete;
    ThrowingFreeStoreScope& operator=(const ThrowingFreeStoreScope&) = delete;

private:
    const bool fBefore;
};

// The severe report, and the end of the process.
[[noreturn]] void endWithoutMemory();

// The handler in force meanwhile. What the host allocates, on other threads or in its callbacks,
// fails as it would without the library.
void errorNewHandler();

// For a scope the library's affair, or the host's.
class FreeStoreScope
{
public:
    explicit FreeStoreScope(bool guarded) : fBefore(guardFreeStore(guarded)) {}
    ~FreeStoreScope() { guardFreeStore(fBefore); }
    FreeStoreScope(const FreeStoreScope&) = delete;
    FreeStoreScope& operator=(const FreeStoreScope&) = delete;

private:
    bool fBefore;
};

}  // namespace zeb
