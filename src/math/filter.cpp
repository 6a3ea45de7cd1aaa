#include "math/filter.h"

#include <algorithm>
#include <cmath>

#include "math/shading_math.h"

namespace zeb
{

namespace
{

bool outside(float dx, float dy, float xwidth, float ywidth)
{
    return !(std::fabs(dx) <= xwidth * 0.5f && std::fabs(dy) <= ywidth * 0.5f);
}

constexpr double kHalfTurn = 3.14159265358979323846;

// The sine of so many half turns, from 0 up: the same bits on every machine, which those of C
// libraries are not. The rest of a half turn goes into the series.
double sineOfHalfTurns(double t)
{
    const double whole = std::floor(t), rest = t - whole;
    const double angle = kHalfTurn * std::min(rest, 1 - rest), z = angle * angle;
    double series = 1;
    for (const double ratio :
         {1 / 272.0, 1 / 210.0, 1 / 156.0, 1 / 110.0, 1 / 72.0, 1 / 42.0, 1 / 20.0, 1 / 6.0}) {
        series = 1 - series * z * ratio;
    }
    const bool isOdd = whole * 0.5 != std::floor(whole * 0.5);
    return (isOdd ? -angle : angle) * series;
}

}  // namespace

float zebBoxFilter(float dx, float dy, float xwidth, float ywidth)
{
    return outside(dx, dy, xwidth, ywidth) ? 0.0f : 1.0f;
}

float zebTriangleFilter(float dx, float dy, float xwidth, float ywidth)
{
    if (outside(dx, dy, xwidth, ywidth)) return 0;
    return std::min(1 - 2 * std::fabs(dx) / xwidth, 1 - 2 * std::fabs(dy) / ywidth);
}

float zebGaussianFilter(float dx, float dy, float xwidth, float ywidth)
{
    if (outside(dx, dy, xwidth, ywidth)) return 0;
    const float s = std::sqrt((xwidth * xwidth + ywidth * ywidth) * 0.25f) * 0.5f;
    return exponential(-(dx * dx + dy * dy) / (2 * s * s)) / (s * 2.50662827462f);
}

float zebCatmullRomFilter(float dx, float dy, float xwidth, float ywidth)
{
    if (outside(dx, dy, xwidth, ywidth)) return 0;
    const float r = std::sqrt(dx * dx + dy * dy);
    if (r >= 2) return 0;
    static const float knots[5] = {0, 1, 0, 0, 0};
    return spline(r * 0.5f, 5, knots);
}

float zebSincFilter(float dx, float dy, float xwidth, float ywidth)
{
    if (outside(dx, dy, xwidth, ywidth)) return 0;
    const double r = std::sqrt(double{dx} * dx + double{dy} * dy);
    return r == 0 ? 1 : static_cast<float>(sineOfHalfTurns(r) / (r * kHalfTurn));
}

}  // namespace zeb
