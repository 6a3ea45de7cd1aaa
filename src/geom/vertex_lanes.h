// Included after ZEB_LANES is defined.
#pragma once

#include "geom/vertex_kernel.h"
#include "util/lane_math.h"
#include "util/lane_vector.h"

namespace zeb
{
namespace
{

struct WideVector {
    Double x, y, z;
};

inline WideVector load(const double (&planes)[3][VertexBlock::kMost], int k)
{
    return {Double::load(planes[0] + k), Double::load(planes[1] + k), Double::load(planes[2] + k)};
}

inline Double column(const double (&m)[4][4], int j, WideVector p)
{
    return p.x * m[0][j] + p.y * m[1][j] + p.z * m[2][j];
}

inline Vector store(float (&planes)[3][VertexBlock::kMost], int k, Vector v)
{
    v.x.store(planes[0] + k);
    v.y.store(planes[1] + k);
    v.z.store(planes[2] + k);
    return v;
}

inline Vector point(const double (&m)[4][4], const double (&planes)[3][VertexBlock::kMost], int k)
{
    const auto along = [&](int axis) {
        return roundedFrom(k, [&](int n) {
            const WideVector p = load(planes, n);
            const Double w = column(m, 3, p) + m[3][3], at = column(m, axis, p) + m[3][axis];
            return any(w != 1.0) ? quotient(at, w) : at;
        });
    };
    return {along(0), along(1), along(2)};
}

inline Vector direction(const double (&m)[4][4], const double (&planes)[3][VertexBlock::kMost],
                        int k)
{
    const auto along = [&](int axis) {
        return roundedFrom(k, [&](int n) { return column(m, axis, load(planes, n)); });
    };
    return {along(0), along(1), along(2)};
}

// Crossing in float, and in so few digits, is enough to say that two are far from parallel.
inline Mask isSpread(Vector u, Vector v, Float longer)
{
    constexpr float kSquaredSine = 1e-8f;
    const Vector n{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
    return dot(n, n) > longer * longer * kSquaredSine;
}

void place(const double (&m)[4][4], VertexBlock& block)
{
    Float shortest = __builtin_inff(), longest = 0;
    const Mask all = Float(0.0f) == 0.0f;
    Mask spread = all;
    for (int k = 0; k < block.count; k += kLanes) {
        store(block.camera.P, k, point(m, block.P, k));
        const Vector u = store(block.camera.dPdu, k, direction(m, block.dPdu, k));
        const Vector v = store(block.camera.dPdv, k, direction(m, block.dPdv, k));
        const Float longer = most(dot(u, u), dot(v, v));
        shortest = least(longer, shortest);
        longest = most(longer, longest);
        spread = spread & isSpread(u, v, longer);
    }
    float least[kLanes], most[kLanes];
    shortest.store(least);
    longest.store(most);
    block.shortest = least[0];
    block.longest = most[0];
    for (int k = 1; k < kLanes; ++k) {
        if (least[k] < block.shortest) block.shortest = least[k];
        if (most[k] > block.longest) block.longest = most[k];
    }
    block.spread = !any(andNot(all, spread));
}

void project(const Projection& projection, PointBlock& block)
{
    const auto& m = projection.toRaster;
    for (int k = 0; k < block.count; k += kLanes) {
        const Vector P{Float::load(block.x + k), Float::load(block.y + k),
                       Float::load(block.z + k)};
        const auto along = [&](int axis) {
            const auto onScreen = [&](Double x, Double y, Double z) {
                const WideVector p{x, y, z};
                return quotient(column(m, axis, p) + m[3][axis], column(m, 3, p) + m[3][3]);
            };
            return inDouble(onScreen, P.x, P.y, P.z);
        };
        const Float x = along(0), y = along(1);
        const Float depth = (P.z - projection.near) / projection.range;
        x.store(block.x + k);
        y.store(block.y + k);
        (projection.isScaled ? depth : P.z).store(block.z + k);
    }
}

}  // namespace
}  // namespace zeb
