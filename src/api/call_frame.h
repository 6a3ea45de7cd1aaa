// What every exported function begins and ends with.
#pragma once

#include <cstdarg>
#include <optional>
#include <vector>

#include "state/callback.h"
#include "state/error.h"
#include "state/host_shader.h"
#include "util/float_environment.h"
#include "util/host_array.h"

namespace zeb
{

// Names the function for messages, minds what becomes of running out of memory, and keeps the
// host's floating-point modes out. A call from inside a callback gives the name of the outer one
// back. Some functions go by no name: null.
class NameFrame
{
public:
    explicit NameFrame(const char* name) : fPrevious(setErrorFuncName(name))
    {
        // A name that goes takes the guard with it.
        guardFreeStore(true);
    }
    ~NameFrame() { setErrorFuncName(fPrevious); }
    NameFrame(const NameFrame&) = delete;
    NameFrame& operator=(const NameFrame&) = delete;

private:
    FloatEnvironment fEnvironment;
    FreeStoreScope fMemory{true};
    const char* fPrevious;
};

// The same for all functions that take the arrays which the host has described: but for those that
// prepare a call's arguments. What they let go is freed when they end.
class CallFrame : public NameFrame
{
public:
    explicit CallFrame(const char* name) : NameFrame(name)
    {
        if (!CallbackScope::shades()) fArrays.emplace();
    }
    ~CallFrame()
    {
        if (!CallbackScope::shades()) HostShader::freeGone();
    }

private:
    // Not for calls that are refused, perhaps on another thread.
    std::optional<HostArrays::Call> fArrays;
};

// The pairs of tokens and value pointers at the end of a call's arguments. A token comes as an
// integer slot, of which the low 16 bits count; the first that is 0 there ends the list.
class ParameterPairs
{
public:
    explicit ParameterPairs(std::va_list args)
    {
        while (const auto token = static_cast<unsigned short>(va_arg(args, int))) {
            fTokens.push_back(token);
            fValues.push_back(va_arg(args, void*));
        }
    }
    long n() const { return static_cast<long>(fTokens.size()); }
    const unsigned short* tokens() const { return fTokens.empty() ? nullptr : fTokens.data(); }
    void* const* values() const { return fValues.empty() ? nullptr : fValues.data(); }

private:
    std::vector<unsigned short> fTokens;
    std::vector<void*> fValues;
};

}  // namespace zeb
