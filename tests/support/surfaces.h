// Curved surfaces that tests of several kinds draw.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "support/scene.h"

namespace zebtest
{

// A homogeneous point of a profile in the xz plane: (w x, w z, w).
using ProfilePoint = std::array<float, 3>;

// A rational B-spline surface: control points with u fastest, and knots.
struct Nurbs {
    long nu = 0, uorder = 0, nv = 0, vorder = 0;
    std::vector<float> uknots, vknots;
    std::vector<std::array<float, 4>> points;

    void add() const
    {
        zebNurbMesh(nu, uorder, uknots.data(), uknots.front(), uknots.back(), nv, vorder,
                    vknots.data(), vknots.front(), vknots.back(), zebQuark("pointw"), points.data(),
                    0);
    }
};

inline constexpr float kRootHalf = 0.70710678f;

// The unit circle in four quadratic arcs: places and weights.
inline const std::vector<ProfilePoint>& circle()
{
    static const float h = kRootHalf;
    static const std::vector<ProfilePoint> points = {{1, 0, 1},  {h, h, h},  {0, 1, 1},
                                                     {-h, h, h}, {-1, 0, 1}, {-h, -h, h},
                                                     {0, -1, 1}, {h, -h, h}, {1, 0, 1}};
    return points;
}

inline std::vector<float> circleKnots()
{
    return {0, 0, 0, 0.25f, 0.25f, 0.5f, 0.5f, 0.75f, 0.75f, 1, 1, 1};
}

// A profile turned about the z axis.
inline Nurbs revolution(const std::vector<ProfilePoint>& profile, long order,
                        const std::vector<float>& knots)
{
    Nurbs s{9, 3, static_cast<long>(profile.size()), order, circleKnots(), knots, {}};
    for (const ProfilePoint& p : profile) {
        for (const ProfilePoint& c : circle()) {
            s.points.push_back({p[0] * c[0], p[0] * c[1], p[1] * c[2], p[2] * c[2]});
        }
    }
    return s;
}

inline Nurbs nurbsSphere(float r)
{
    const float h = kRootHalf;
    return revolution({{0, -r, 1}, {h * r, -h * r, h}, {r, 0, 1}, {h * r, h * r, h}, {0, r, 1}}, 3,
                      {0, 0, 0, 0.5f, 0.5f, 1, 1, 1});
}

inline Nurbs nurbsTorus(float major, float minor)
{
    std::vector<ProfilePoint> profile;
    for (const ProfilePoint& c : circle()) {
        profile.push_back({major * c[2] + minor * c[0], minor * c[1], c[2]});
    }
    return revolution(profile, 3, circleKnots());
}

// A straight profile.
inline Nurbs nurbsLine(float x0, float z0, float x1, float z1)
{
    return revolution({{x0, z0, 1}, {x1, z1, 1}}, 2, {0, 0, 1, 1});
}

// Control points of a ring, n x m, periodic both ways.
inline std::vector<Vec> ringPoints(int n, int m, float major, float minor, std::mt19937& random)
{
    std::uniform_real_distribution<float> bump(0.8f, 1.2f);
    std::vector<Vec> points;
    for (int j = 0; j < m; ++j) {
        for (int i = 0; i < n; ++i) {
            const double u = 2 * M_PI * i / n, v = 2 * M_PI * j / m;
            const double a = double{minor * bump(random)}, r = double{major} + a * std::cos(v);
            points.push_back({static_cast<float>(r * std::cos(u)),
                              static_cast<float>(r * std::sin(u)),
                              static_cast<float>(a * std::sin(v))});
        }
    }
    return points;
}

}  // namespace zebtest
