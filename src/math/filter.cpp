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
    return std::exp(-(dx * dx + dy * dy) / (2 * s * s)) / (s * 2.50662827462f);
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
    const float t = std::sqrt(dx * dx + dy * dy) * 3.14159274f;
    return t <= 1e-10f ? 1 : std::sin(t) / t;
}

}  // namespace zeb
