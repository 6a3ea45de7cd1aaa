// Numbers that mean the same everywhere, and conversions that cannot go wrong.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace zeb
{

constexpr float kInfinity = 1e38f;
constexpr float kEpsilon = 1e-10f;
constexpr float kPi = 3.1415927f;
constexpr double kDegrees = kPi * (1.0L / 180);

// Near zero: the open interval (-1e-10, 1e-10).
inline bool nearZero(double x) { return x > -1e-10 && x < 1e-10; }

inline bool isFinite(double x) { return std::isfinite(x); }

inline bool allFinite(const float* values, std::size_t count)
{
    return std::all_of(values, values + count, [](float v) { return std::isfinite(v); });
}

// The integer part of x, clamped to lo ... hi; lo for NaN.
inline long clampToLong(double x, long lo, long hi)
{
    if (!(x > static_cast<double>(lo))) return lo;
    return x >= static_cast<double>(hi) ? hi : static_cast<long>(x);
}

}  // namespace zeb
