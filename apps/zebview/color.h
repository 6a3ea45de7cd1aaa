// Colours as numbers that are shown, which is what people type and most files hold, and as amounts
// of light, which is what shading needs: the sRGB curve lies between the two.
#pragma once

#include <array>
#include <cmath>

namespace zebview
{

using Color = std::array<float, 3>;

inline float toLight(float shown)
{
    if (shown <= 0.04045f) return shown / 12.92f;
    return std::pow((shown + 0.055f) / 1.055f, 2.4f);
}

inline float toShown(float light)
{
    if (light <= 0.0031308f) return light * 12.92f;
    return 1.055f * std::pow(light, 1 / 2.4f) - 0.055f;
}

inline Color toLight(const Color& shown)
{
    return {toLight(shown[0]), toLight(shown[1]), toLight(shown[2])};
}

}  // namespace zebview
