// Marks the time the host's own code runs inside a call.
#pragma once

#include <functional>
#include <utility>

#include "state/error.h"
#include "state/free_store.h"

namespace zeb
{

// Alive while a handler, printer, filter, procedural or device of the host runs. No interface
// function is under way meanwhile: a report carries the name of the call that the host makes from
// there, if that call has one. Interface calls that would pull the ground from under the caller
// look at it and refuse.
class CallbackScope
{
public:
    // A function that shades may make no calls.
    explicit CallbackScope(bool shades = false)
        : fName(setErrorFuncName(nullptr)),
          fOuter(fInnermost),
          fOuterShades(std::exchange(fShades, shades))
    {
        fInnermost = stackPosition();
    }
    ~CallbackScope()
    {
        fShades = fOuterShades;
        fInnermost = fOuter;
        setErrorFuncName(fName);
    }
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    // Null if none was named.
    const char* callersName() const { return fName; }
    static bool active() { return fInnermost; }
    // Whether a jump has left all callbacks, as a caller shows that is no deeper on the stack.
    static bool left()
    {
        return fInnermost && std::less<const void*>()(fInnermost, stackPosition());
    }
    static void forget()
    {
        fInnermost = nullptr;
        fShades = false;
    }
    // Whether a function shades on this thread, and nothing else was called from it.
    static bool shades() { return fShades; }
    // Whether calls are legal otherwise; reports that this one is not.
    static bool allowsCalls();

private:
    // How deep the caller is; the stack grows downwards. A function of its own: where a frame's
    // address is taken, GCC tells Windows wrongly where vector registers were saved, and exceptions
    // spoil them.
    static const void* stackPosition();

    // The first to begin and the last to end: a name that goes or comes moves the guard, too.
    FreeStoreScope fHostsMemory{false};
    const char* fName;
    const void* const fOuter;
    // A position on the stack: what stood there may be gone.
    static thread_local const void* fInnermost;
    const bool fOuterShades;
    static thread_local bool fShades;
};

}  // namespace zeb
