// Guards arithmetic against the host's floating-point modes.
#pragma once

#include <cfenv>
#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace zeb
{

#if defined(__SSE2__)

// The modes of SSE, which does the library's own arithmetic.
class SseModes
{
public:
    SseModes() : fSaved(_mm_getcsr())
    {
        if (fSaved != kDefault) _mm_setcsr(kDefault);
    }
    ~SseModes()
    {
        if (_mm_getcsr() != fSaved) _mm_setcsr(fSaved);
    }
    SseModes(const SseModes&) = delete;
    SseModes& operator=(const SseModes&) = delete;

private:
    static constexpr unsigned kDefault = 0x1F80;
    unsigned fSaved;
};

// The modes of the x87, in which some C libraries compute sines and powers. Programs for Windows
// come with less precision than full, or with exceptions that end the process.
class X87Modes
{
public:
    X87Modes() : fSaved(get())
    {
        if (fSaved != kDefault) set(kDefault);
    }
    ~X87Modes()
    {
        if (fSaved == kDefault) return;
        // What happened meanwhile must not raise an exception that the host listens to.
        __asm__ volatile("fnclex");
        set(fSaved);
    }
    X87Modes(const X87Modes&) = delete;
    X87Modes& operator=(const X87Modes&) = delete;

    static unsigned short get()
    {
        unsigned short modes;
        __asm__ volatile("fnstcw %0" : "=m"(modes));
        return modes;
    }
    static void set(unsigned short modes) { __asm__ volatile("fldcw %0" : : "m"(modes)); }

    static constexpr unsigned short kDefault = 0x37F;

private:
    unsigned short fSaved;
};

// Sets the default rounding mode and precision, with denormal numbers kept, and restores the host's
// at the end of the scope: a picture must not depend on them.
class FloatEnvironment
{
    SseModes fSse;
    X87Modes fX87;
};

#else

class FloatEnvironment
{
public:
    FloatEnvironment()
    {
        std::fegetenv(&fSaved);
        std::fesetenv(FE_DFL_ENV);
    }
    ~FloatEnvironment() { std::fesetenv(&fSaved); }
    FloatEnvironment(const FloatEnvironment&) = delete;
    FloatEnvironment& operator=(const FloatEnvironment&) = delete;

private:
    std::fenv_t fSaved;
};

#endif

}  // namespace zeb
