// Marks the time the host's own code runs inside a call.
#pragma once

namespace zeb
{

// Alive while a handler, printer, filter, procedural or device of the host runs. Interface calls
// that would pull the ground from under the caller look at it and refuse.
class CallbackScope
{
public:
    CallbackScope() { ++fDepth; }
    ~CallbackScope() { --fDepth; }
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    static bool active() { return fDepth > 0; }

private:
    static thread_local int fDepth;
};

}  // namespace zeb
