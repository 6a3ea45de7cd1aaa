// Guards arithmetic against the host's floating-point modes.
#pragma once

#include <cfenv>
#if defined(__SSE2__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace zeb
{

// Sets the default rounding mode, with denormal numbers kept, and restores the host's at the end of
// the scope: a picture must not depend on them.
class FloatEnvironment
{
#if defined(__SSE2__) || defined(_M_X64)
public:
    FloatEnvironment() : fSaved(_mm_getcsr())
    {
        if (fSaved != kDefault) _mm_setcsr(kDefault);
    }
    ~FloatEnvironment()
    {
        if (_mm_getcsr() != fSaved) _mm_setcsr(fSaved);
    }

private:
    static constexpr unsigned kDefault = 0x1F80;
    unsigned fSaved;
#else
public:
    FloatEnvironment()
    {
        std::fegetenv(&fSaved);
        std::fesetenv(FE_DFL_ENV);
    }
    ~FloatEnvironment() { std::fesetenv(&fSaved); }

private:
    std::fenv_t fSaved;
#endif
    FloatEnvironment(const FloatEnvironment&) = delete;
    FloatEnvironment& operator=(const FloatEnvironment&) = delete;
};

}  // namespace zeb
