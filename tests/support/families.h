// One surface of every family, about as large as a unit that the test chooses.
#pragma once

#include <functional>
#include <string>

#include "support/surfaces.h"

namespace zebtest
{

struct Family {
    std::string name;
    std::function<void(float unit)> add;
};

inline std::vector<Vec> times(std::vector<Vec> points, float unit)
{
    for (Vec& p : points) p = {p[0] * unit, p[1] * unit, p[2] * unit};
    return points;
}

inline Nurbs times(Nurbs surface, float unit)
{
    for (auto& p : surface.points) p = {p[0] * unit, p[1] * unit, p[2] * unit, p[3]};
    return surface;
}

// A star of five points, concave, with a hole in its middle; both loops in one list.
inline std::vector<Vec> holedStar()
{
    std::vector<Vec> points;
    for (int k = 0; k < 10; ++k) {
        const double a = M_PI * k / 5, r = k % 2 ? 0.45 : 1;
        points.push_back(
            {static_cast<float>(r * std::sin(a)), static_cast<float>(r * std::cos(a)), 0});
    }
    for (int k = 0; k < 4; ++k) {
        const double a = M_PI * (0.25 - 0.5 * k);
        points.push_back(
            {static_cast<float>(0.2 * std::sin(a)), static_cast<float>(0.2 * std::cos(a)), 0});
    }
    return points;
}

// Faces of a cube of side 2, with the corners' directions as normals.
inline void addCube(float unit)
{
    std::vector<Vec> points, normals;
    for (int k = 0; k < 8; ++k) {
        const Vec corner{k & 1 ? 1.0f : -1.0f, k & 2 ? 1.0f : -1.0f, k & 4 ? 1.0f : -1.0f};
        points.push_back(
            {0.6f * unit * corner[0], 0.6f * unit * corner[1], 0.6f * unit * corner[2]});
        normals.push_back(corner);
    }
    const long sizes[] = {4, 4, 4, 4, 4, 4};
    const long indices[] = {0, 1, 3, 2, 4, 6, 7, 5, 0, 4, 5, 1, 2, 3, 7, 6, 0, 2, 6, 4, 1, 5, 7, 3};
    zebPolygonMesh(6, sizes, indices, zebQuark("point"), points.data(), zebQuark("normal"),
                   normals.data(), 0);
}

inline std::vector<Vec> wavePoints()
{
    std::vector<Vec> points;
    for (int k = 0; k < 16; ++k) {
        const auto i = static_cast<float>(k % 4), j = static_cast<float>(k / 4);
        points.push_back({(i - 1.5f) / 1.5f, (j - 1.5f) / 1.5f,
                          0.6f * std::sin(2 * i + 1) * std::cos(1.5f * j)});
    }
    return points;
}

inline const std::vector<Family>& families()
{
    static const auto waist = [](float unit, float z) { return Vec{0.7f * unit, 0, z * unit}; };
    static const std::vector<Family> list = {
        {"sphere", [](float s) { zebSphere(s, -s, s, 360, 0); }},
        {"cone", [](float s) { zebCone(s, s, s, 360, 0); }},
        {"cylinder", [](float s) { zebCylinder(0.7f * s, -0.7f * s, 0.7f * s, 360, 0); }},
        {"hyperboloid",
         [](float s) {
             const Vec a = waist(s, -0.7f), b{0, 0.9f * s, 0.7f * s};
             zebHyperboloid(a.data(), b.data(), 360, 0);
         }},
        {"paraboloid", [](float s) { zebParaboloid(0.8f * s, 0, s, 360, 0); }},
        {"disk", [](float s) { zebDisk(0.2f * s, s, 300, 0); }},
        {"torus", [](float s) { zebTorus(0.7f * s, 0.3f * s, 0, 360, 360, 0); }},
        {"bilinear patch",
         [](float s) {
             const std::vector<Vec> p =
                 times({{-1, -1, 0.3f}, {1, -1, -0.4f}, {-1, 1, -0.2f}, {1, 1, 0.5f}}, s);
             zebPatch(ZEB_BILINEAR, zebQuark("point"), p.data(), 0);
         }},
        {"bicubic patch",
         [](float s) {
             const std::vector<Vec> p = times(wavePoints(), s);
             zebPatch(ZEB_BICUBIC, zebQuark("point"), p.data(), 0);
         }},
        {"patch mesh",
         [](float s) {
             std::mt19937 random(3);
             const std::vector<Vec> p = times(ringPoints(8, 6, 0.7f, 0.3f, random), s);
             zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
             zebPatchMesh(ZEB_BICUBIC, 8, ZEB_PERIODIC, 6, ZEB_PERIODIC, zebQuark("point"),
                          p.data(), 0);
         }},
        {"NURBS", [](float s) { times(nurbsTorus(0.7f, 0.3f), s).add(); }},
        {"polygon",
         [](float s) {
             const std::vector<Vec> p =
                 times({{-1, -1, 0}, {1, -1, 0}, {1, 0.5f, 0}, {0, 1, 0}}, s);
             zebPolygon(4, zebQuark("point"), p.data(), 0);
         }},
        {"general polygon",
         [](float s) {
             const std::vector<Vec> p = times(holedStar(), s);
             const long loops[] = {10, 4};
             zebGeneralPolygon(2, loops, zebQuark("point"), p.data(), 0);
         }},
        {"polygon mesh", [](float s) { addCube(s); }},
    };
    return list;
}

}  // namespace zebtest
