// A picture as screens want it: one word of 8-bit colour a pixel.
#pragma once

#include <cstdint>
#include <vector>

#include "display/display.h"

namespace zeb
{

// Red in bits 0-7, green in bits 8-15, blue in bits 16-23.
using ScreenColor = std::uint32_t;

struct ColorImage {
    long width, height;
    std::vector<ScreenColor> pixels;  // row by row, black at first

    ColorImage(long w, long h)
        : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h))
    {
    }
    ScreenColor* row(long y)
    {
        return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
    const ScreenColor* row(long y) const { return const_cast<ColorImage*>(this)->row(y); }
};

// The colour of a pixel's words: red, green and blue where there are such, otherwise the first word
// as grey. Floats are clamped. Integers give their low byte, green's the bytes above it too, which
// spill into blue; with mended quirks a "one" above 255 is scaled down to 255 instead.
ScreenColor screenColor(const PixelFormat& format, const std::uint32_t* words);

}  // namespace zeb
