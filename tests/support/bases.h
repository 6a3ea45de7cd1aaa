// The cubic bases by the textbook, for tests of patches.
#pragma once

#include <array>
#include <vector>

#include "support/sampling.h"
#include "zebcore/zebcore.h"

namespace zebtest
{

using Weights = std::array<double, 4>;

// The weights of four control points, by the textbook.
inline Weights bezier(double t)
{
    const double s = 1 - t;
    return {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
}
inline Weights bspline(double t)
{
    const double s = 1 - t, t2 = t * t, t3 = t2 * t;
    return {s * s * s / 6, (3 * t3 - 6 * t2 + 4) / 6, (-3 * t3 + 3 * t2 + 3 * t + 1) / 6, t3 / 6};
}
inline Weights catmullRom(double t)
{
    const double t2 = t * t, t3 = t2 * t;
    return {(-t + 2 * t2 - t3) / 2, (2 - 5 * t2 + 3 * t3) / 2, (t + 4 * t2 - 3 * t3) / 2,
            (t3 - t2) / 2};
}
inline Weights hermite(double t)
{
    const double t2 = t * t, t3 = t2 * t;
    return {2 * t3 - 3 * t2 + 1, t3 - 2 * t2 + t, 3 * t2 - 2 * t3, t3 - t2};
}
inline Weights power(double t) { return {t * t * t, t * t, t, 1}; }

inline ZebMatrix gCustom = {
    {0.5f, -1.25f, 2, 0.75f}, {1, 0.5f, -0.25f, -2}, {-1.5f, 2, 0, 1}, {0.25f, 0.5f, 1, -0.5f}};

inline Weights custom(double t)
{
    Weights w{};
    for (std::size_t i = 0; i < 4; ++i) {
        w[i] = ((gCustom[0][i] * t + gCustom[1][i]) * t + gCustom[2][i]) * t + gCustom[3][i];
    }
    return w;
}

using Basis = Weights (*)(double);
inline constexpr Basis gBases[] = {bezier, bspline, catmullRom, hermite, power, custom};

inline void setBasis(int i, short application)
{
    if (i < 5) zebBasis(static_cast<short>(ZEB_BASIS_BEZIER + i), application);
    if (i == 5) zebCustomBasis(application, gCustom, 1);
}

inline std::vector<zeb::Point> randomPoints(Numbers& n, std::size_t count)
{
    std::vector<zeb::Point> points;
    while (points.size() < count) points.push_back(n.point(5));
    return points;
}

}  // namespace zebtest
