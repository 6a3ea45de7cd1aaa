// The scenes that zebcore and its peers render, as plain data that all hosts share.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "../generators.h"

namespace zebpeers
{

using zebbench::Nurbs;
using zebbench::Vec;

constexpr int kSize = 1024;  // pixels across and down
constexpr int kRate = 2;     // samples across and down a pixel

// The eye looks along +z, x to the right, y up.
constexpr Vec kEye = {0, 0, -4};
constexpr float kFieldOfView = 40;

// Distant lights shine along these ways.
constexpr Vec kWays[3] = {{0.5f, -0.6f, 1}, {-0.8f, -0.3f, 0.6f}, {0, 1, 0.4f}};
constexpr float kBright = 0.4f, kAmbient = 0.2f;

// color (kKa ambient + kKd sum(N.L)) + kKs sum((N.H) ^ (1 / kRoughness))
constexpr float kKa = 1, kKd = 0.5f, kKs = 0.5f, kRoughness = 0.1f;

struct Sphere {
    Vec center;
    float radius;
    Vec color;
};

// Triangles; a normal for each point.
struct Mesh {
    Vec color;
    std::vector<Vec> points, normals;
    std::vector<std::array<unsigned, 3>> triangles;
};

// 4 x 4 control points of a bicubic Bezier patch.
using Patch = std::array<Vec, 16>;

struct Scene {
    std::vector<Sphere> spheres;
    // Of curved surfaces, when there are any, the meshes are a tessellation.
    std::vector<Mesh> meshes;
    // Curved surfaces have one colour.
    std::vector<Patch> patches;
    std::vector<Nurbs> nurbs;
    Vec color = {1, 1, 1};

    bool curved() const { return !patches.empty() || !nurbs.empty(); }
};

// Pixels that a unit at a distance from the eye covers.
float pixelsPerUnit(float distance);

// The scenes, by name, and what makes each; `list` is the order of the table.
const std::vector<std::string>& sceneNames();
Scene makeScene(const std::string& name);

// Vectors, for hosts that shade or tessellate by themselves.
inline Vec operator+(const Vec& a, const Vec& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vec operator-(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Vec operator*(float s, const Vec& a) { return {s * a[0], s * a[1], s * a[2]}; }
inline float dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec cross(const Vec& a, const Vec& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline Vec normalize(const Vec& a)
{
    const float length = std::sqrt(dot(a, a));
    return length > 0 ? 1 / length * a : a;
}

}  // namespace zebpeers
