#include "display/color_image.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zeb
{

namespace
{

std::uint32_t toByte(double fraction)
{
    // Not a number goes to 0.
    return fraction > 0 ? static_cast<std::uint32_t>(std::lround(std::min(fraction, 1.0) * 255))
                        : 0;
}

std::uint32_t screenWord(std::uint32_t word, const Quantizer& quantizer, bool quirks)
{
    if (quantizer.one < 1) {
        float value;
        std::memcpy(&value, &word, sizeof value);
        return toByte(static_cast<double>(value));
    }
    if (quirks || quantizer.one <= 255) return word;
    return toByte(static_cast<std::int32_t>(word) / static_cast<double>(quantizer.one));
}

}  // namespace

ScreenColor screenColor(const PixelFormat& format, const std::uint32_t* words)
{
    const Quantizer& quantizer = format.rgb || format.alpha ? format.color : format.depthQuantizer;
    const std::uint32_t first = screenWord(words[0], quantizer, format.quirks) & 0xFF;
    if (!format.rgb) return first | first << 8 | first << 16;
    const std::uint32_t green = screenWord(words[1], quantizer, format.quirks) & 0xFFFF;
    const std::uint32_t blue = screenWord(words[2], quantizer, format.quirks) & 0xFF;
    return first | green << 8 | blue << 16;
}

}  // namespace zeb
