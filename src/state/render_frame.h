// What a picture is rendered under.
#pragma once

#include <cmath>
#include <cstdlib>

#include "math/matrix.h"
#include "state/option.h"

namespace zeb
{

// Read once, when the world block opens, and never changed after. Splitting, dicing, shading,
// hiding and filtering take options from here alone; attributes and transformations come with the
// primitives. What else they look at is process-wide: the state that procedurals build in and its
// camera, the table of tokens, the handlers of reports, and the device with its windows.
struct RenderFrame {
    const Option option;
    const Matrix cameraToRaster;
    // Depths are kept as (z - near) / (far - near) times this power of two. Under the default
    // clipping range the quotient itself lies among the denormal floats, which are short of digits
    // and slow; a power of two changes no digit.
    const float depthScale;
    // Everything is diced and shaded, and nothing left out because it is hidden: the pictures are
    // the same, and slower made. For tests, which set ZEBCORE_PLAIN.
    const bool plain = std::getenv("ZEBCORE_PLAIN") != nullptr;
    // 1 or more. Tests may set ZEBCORE_THREADS, which goes before the option.
    const long threads;

    RenderFrame(const Option& options, const Matrix& toRaster)
        : option(options),
          cameraToRaster(toRaster),
          depthScale(options.projection ? static_cast<float>(powerWithin(range())) : 1.0f),
          threads(threadsOf(options))
    {
    }

    double range() const { return double{option.farClip} - double{option.nearClip}; }

    // Camera z to the depth that hits are ordered by.
    float hiderDepth(float z) const
    {
        return option.projection ? (z - option.nearClip) / depthRange() : z;
    }
    // What one is of hider's depths, in camera space.
    float depthRange() const { return static_cast<float>(range() / depthScale); }

private:
    static long threadsOf(const Option& option)
    {
        const char* const asked = std::getenv("ZEBCORE_THREADS");
        return asked ? std::atol(asked) : option.threadCount();
    }
    // The largest power of two that is not larger.
    static double powerWithin(double x)
    {
        int exponent;
        std::frexp(x, &exponent);
        return std::ldexp(1.0, exponent - 1);
    }
};

}  // namespace zeb
