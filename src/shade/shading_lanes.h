// The surfaces, lights and atmospheres by lanes, to the bits that their classes give for one point.
// Included after lanes.h.
#pragma once

#include "shade/shading_kernel.h"
#include "util/lane_math.h"
#include "util/lane_vector.h"

namespace zeb
{
namespace
{

// Of a right angle in float: surfaces take light from the half-space about their normal.
constexpr float kHalfSpaceCosine = -4.37113883e-8f;

struct ShadedPoints {
    Vector P, N, Ng, I, Cs, Os;
};

// What a light gives to points.
struct Arriving {
    Mask lit;
    Vector toLight;  // unit length
    Vector Cl;
};

struct Gathered {
    Vector diffuse, specular;
    bool needsReport = false;
};

inline Vector loadVector(const ShadingBlock::Planes& planes, int k)
{
    return {Float::load(planes[0] + k), Float::load(planes[1] + k), Float::load(planes[2] + k)};
}
inline Vector loadVector(const ShadingBlock::Planes& planes, int k, bool isMany)
{
    return isMany ? loadVector(planes, k) : Vector{planes[0][0], planes[1][0], planes[2][0]};
}

inline ShadedPoints pointsOf(const ShadingBlock& block, int k)
{
    ShadedPoints p;
    p.P = loadVector(block.P, k);
    p.I = block.isPerspective ? p.P : p.P - Vector{p.P.x, p.P.y, 0.0f};
    p.Ng = cross(loadVector(block.dPdu, k), loadVector(block.dPdv, k));
    if (block.isFlipped) p.Ng = -p.Ng;
    p.N = block.hasNormals ? loadVector(block.N, k) : p.Ng;
    p.Cs = loadVector(block.Cs, k, block.hasColors);
    p.Os = loadVector(block.Os, k, block.hasOpacities);
    return p;
}

inline Float smoothstep(Float low, Float high, Float x)
{
    const Float t = (x - low) / (high - low);
    return select(x < low, 0.0f, select(x >= high, 1.0f, t * t * (Float(3.0f) - 2.0f * t)));
}

inline Vector loadVector(const float* const* planes, int k)
{
    return {Float::load(planes[0] + k), Float::load(planes[1] + k), Float::load(planes[2] + k)};
}

inline void storeVector(float* const* planes, int k, Vector v)
{
    v.x.store(planes[0] + k);
    v.y.store(planes[1] + k);
    v.z.store(planes[2] + k);
}

// At places of a row from `at` on. axis is the surface's, about which it takes light; nothing for
// light from all sides.
inline Arriving arriving(const LightRecord& light, Vector P, Vector axis, int at)
{
    if (light.kind == LightRecord::kDistant) {
        const Vector toLight = broadcast(light.toLight);
        return {dot(axis, toLight) >= kHalfSpaceCosine, toLight,
                broadcast(light.color) * Float(light.intensity)};
    }
    if (light.kind == LightRecord::kGiven) {
        const Vector toLight = normalize(scaled(-loadVector(light.L, at)));
        return {dot(axis, toLight) >= kHalfSpaceCosine, toLight, loadVector(light.Cl, at)};
    }
    const Vector L = -(P - broadcast(light.from));  // from the surface
    const Vector toLight = normalize(scaled(L));
    const Mask faces = dot(axis, toLight) >= kHalfSpaceCosine;
    const Float squared = dot(L, L);
    if (light.kind == LightRecord::kOmni) {
        const Vector Cl = broadcast(light.color) * Float(light.intensity);
        return {faces, toLight, Cl / squared};
    }
    const Vector way = scaled(-L), beam = broadcast(light.axis);
    const Float d = dot(way, beam) / length(way);
    const Float falloff = power(d, light.beamdistribution) / squared;
    const Float a = falloff * smoothstep(light.edge[0], light.edge[1], d);
    const Mask outside = Float(light.coscone) > dot(broadcast(light.cone), -toLight);
    return {andNot(faces, outside), toLight, broadcast(light.color) * (a * light.intensity)};
}

// Whether what a light sends to some point needs a report.
inline bool isTooNear(const LightRecord& light, Vector P, Mask lit)
{
    constexpr float kNearZero = 1e-10f;
    if (light.kind != LightRecord::kOmni) return false;
    const Vector L = P - broadcast(light.from);
    return any(lit & (dot(L, L) < kNearZero));
}

// Calls visit(what arrives) for the lights that reach some point on the side of the axis. False if
// a point needs a report.
template <class Visit>
inline bool eachArriving(const LightRecord* lights, int lightCount, Vector P, Vector axis, int at,
                         const Visit& visit)
{
    bool good = true;
    for (int k = 0; k < lightCount; ++k) {
        const LightRecord& light = lights[k];
        if (light.isAmbient()) continue;
        const Arriving from = arriving(light, P, axis, at);
        if (!any(from.lit)) continue;
        if (isTooNear(light, P, from.lit)) good = false;
        visit(from);
    }
    return good;
}

// N and V have unit length, or are too short for that.
template <bool isDiffuse, bool isSpecular>
Gathered gather(const LightRecord* lights, int lightCount, Vector P, Vector Nf, Vector V,
                float roughness, int at)
{
    Gathered sum{{0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 0.0f}};
    const Vector N = normalize(Nf);
    V = normalize(V);
    sum.needsReport = !eachArriving(lights, lightCount, P, normalize(N), at, [&](Arriving from) {
        if (isDiffuse) {
            const Vector more = sum.diffuse + from.Cl * dot(from.toLight, N);
            sum.diffuse = select(from.lit, more, sum.diffuse);
        }
        if (isSpecular) {
            const Float cosine = dot(N, normalize(from.toLight + V));
            const Float shine = power(select(cosine > 0.0f, cosine, 0.0f), 1 / roughness);
            sum.specular = select(from.lit, sum.specular + from.Cl * shine, sum.specular);
        }
    });
    return sum;
}

// About the mirror direction.
inline Gathered gatherMirrored(const LightRecord* lights, int lightCount, Vector P, Vector Nf,
                               Vector V, float size, int at)
{
    Gathered sum{{0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 0.0f}};
    const Vector N = normalize(Nf), I = -normalize(V);
    const Vector R = I - N * (Float(2.0f) * dot(I, N));
    sum.needsReport = !eachArriving(lights, lightCount, P, normalize(N), at, [&](Arriving from) {
        const Float cosine = dot(R, from.toLight);
        const Float shine = power(select(cosine > 0.0f, cosine, 0.0f), size);
        sum.specular = select(from.lit, sum.specular + from.Cl * shine, sum.specular);
    });
    return sum;
}

inline Vector ambient(const LightRecord* lights, int lightCount, int at)
{
    Vector sum{0.0f, 0.0f, 0.0f};
    for (int k = 0; k < lightCount; ++k) {
        const LightRecord& light = lights[k];
        if (light.kind == LightRecord::kGivenAmbient) sum = sum + loadVector(light.Cl, at);
        if (light.kind != LightRecord::kAmbient) continue;
        sum = sum + broadcast(light.color) * Float(light.intensity);
    }
    return sum;
}

inline Vector through(const VolumeRecord& volume, const ShadedPoints& points, Vector Ci)
{
    if (volume.kind == VolumeRecord::kNone) return Ci;
    Float t;
    if (volume.kind == VolumeRecord::kDepthCue) {
        t = (points.P.z - volume.hither) / volume.range;
        t = select(t < 0.0f, 0.0f, t);
        t = select(t > 1.0f, 1.0f, t);
    } else {
        t = Float(1.0f) - exp(-length(points.I) / volume.distance);
    }
    const Vector color = broadcast(volume.color);
    return lerp(t, Ci, volume.coversAll ? color : points.Os * color);
}

inline Gathered lightOf(const SurfaceRecord& surface, const LightRecord* lights, int lightCount,
                        const ShadedPoints& p, int at)
{
    const Vector Nf = faceforward(normalize(scaled(p.N)), scaled(p.I), scaled(p.Ng));
    const Vector V = normalize(scaled(-p.I));
    switch (surface.kind) {
        case SurfaceRecord::kMatte:
            return gather<true, false>(lights, lightCount, p.P, Nf, V, surface.roughness, at);
        case SurfaceRecord::kMetal:
            return gather<false, true>(lights, lightCount, p.P, Nf, V, surface.roughness, at);
        default:
            return gather<true, true>(lights, lightCount, p.P, Nf, V, surface.roughness, at);
    }
}

inline Vector reflected(const SurfaceRecord& s, const ShadedPoints& p, const Gathered& light,
                        Vector ambientLight)
{
    const Vector dim = ambientLight * s.ka;
    switch (s.kind) {
        case SurfaceRecord::kMatte:
            return (p.Os * p.Cs) * (dim + light.diffuse * s.kd);
        case SurfaceRecord::kMetal:
            return (p.Os * p.Cs) * (dim + light.specular * s.ks);
        default: {
            const Vector shine = (broadcast(s.specularcolor) * s.ks) * light.specular;
            return p.Os * (p.Cs * (dim + light.diffuse * s.kd) + shine);
        }
    }
}

bool shadeBlock(const SurfaceRecord& surface, const LightRecord* lights, int lightCount,
                const VolumeRecord& volume, ShadingBlock& block)
{
    for (int k = 0; k < block.count; k += kLanes) {
        const ShadedPoints p = pointsOf(block, k);
        Vector Ci = p.Os * p.Cs;
        if (surface.kind != SurfaceRecord::kConstant) {
            const int at = block.first + k;
            const Gathered light = lightOf(surface, lights, lightCount, p, at);
            if (light.needsReport) return false;
            Ci = reflected(surface, p, light, ambient(lights, lightCount, at));
        }
        Ci = through(volume, p, Ci);
        Ci.x.store(block.Ci[0] + k);
        Ci.y.store(block.Ci[1] + k);
        Ci.z.store(block.Ci[2] + k);
    }
    return true;
}

void orientRow(const RowGeometry& row)
{
    for (int k = 0; k < row.count; k += kLanes) {
        const Vector P = loadVector(row.P, k);
        storeVector(row.I, k, row.isPerspective ? P : P - Vector{P.x, P.y, 0.0f});
        const Vector Ng = cross(loadVector(row.dPdu, k), loadVector(row.dPdv, k));
        storeVector(row.Ng, k, row.isFlipped ? -Ng : Ng);
    }
}

void faceRow(const RowFacing& row)
{
    for (int k = 0; k < row.count; k += kLanes) {
        storeVector(row.result, k,
                    faceforward(normalize(scaled(loadVector(row.N, k))),
                                scaled(loadVector(row.I, k)), scaled(loadVector(row.Ng, k))));
    }
}

bool gatherRow(const RowGathering& row)
{
    bool good = true;
    for (int k = 0; k < row.count; k += kLanes) {
        if (row.kind == RowGathering::kAmbient) {
            storeVector(row.result, k, ambient(row.lights, row.lightCount, k));
            continue;
        }
        const Vector P = loadVector(row.P, k), N = loadVector(row.N, k);
        if (row.kind == RowGathering::kDiffuse) {
            const Gathered light =
                gather<true, false>(row.lights, row.lightCount, P, N, N, row.shine, k);
            good &= !light.needsReport;
            storeVector(row.result, k, light.diffuse);
            continue;
        }
        const Vector V = loadVector(row.V, k);
        const Gathered light =
            row.kind == RowGathering::kSpecular
                ? gather<false, true>(row.lights, row.lightCount, P, N, V, row.shine, k)
                : gatherMirrored(row.lights, row.lightCount, P, N, V, row.shine, k);
        good &= !light.needsReport;
        storeVector(row.result, k, light.specular);
    }
    return good;
}

bool arriveRow(const RowArrival& row)
{
    bool good = true;
    for (int k = 0; k < row.count; k += kLanes) {
        const Vector P = loadVector(row.P, k), none{0.0f, 0.0f, 0.0f};
        const Arriving from = arriving(*row.light, P, none, k);
        if (isTooNear(*row.light, P, from.lit)) good = false;
        storeVector(row.L, k, from.toLight);
        storeVector(row.Cl, k, select(from.lit, from.Cl, none));
    }
    return good;
}

}  // namespace
}  // namespace zeb
