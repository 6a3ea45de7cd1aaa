// Marks the time the host's own code runs inside a call.
#pragma once

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
    CallbackScope() : fName(setErrorFuncName(nullptr)) { ++fDepth; }
    ~CallbackScope()
    {
        --fDepth;
        setErrorFuncName(fName);
    }
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    static bool active() { return fDepth > 0; }

private:
    // The first to begin and the last to end: a name that goes or comes moves the guard, too.
    FreeStoreScope fHostsMemory{false};
    const char* fName;
    static thread_local int fDepth;
};

}  // namespace zeb
