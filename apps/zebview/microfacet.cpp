#include "microfacet.h"

#include <algorithm>
#include <cmath>

namespace zebview
{

namespace
{

// Points that are worked out side by side; planes hold a multiple of it.
constexpr long kLanes = 16;

// Lamps that are points would not show in a perfect mirror, and flicker in a good one: they are as
// if they had some size.
constexpr float kSmoothest = 0.15f;

// What is mirrored of the surroundings: there are none but lamps, each of which is taken to fill
// half the sky, dimly. Metals would be black between their highlights.
constexpr float kSky = 0.5f;

// What is not even as bright as water mirrors nothing at its rim either: it is said to be black.
float rimOf(const FacetPlanes& facets, long k)
{
    const float most = std::max({facets.facing[0][k], facets.facing[1][k], facets.facing[2][k]});
    return std::min(50 * most, 1.0f);
}

float steepness(const FacetPlanes& facets, long k)
{
    const float rough = std::max(facets.rough[k], kSmoothest);
    return rough * rough;
}

float dot(const Planes& a, const Planes& b, long k)
{
    return a[0][k] * b[0][k] + a[1][k] * b[1][k] + a[2][k] * b[2][k];
}

// To the power 5 (C. Schlick, 1994).
float towardsRim(float cosine)
{
    const float rest = 1 - cosine;
    return rest * rest * rest * rest * rest;
}

// What one light adds. Mirrors lie as GGX has them, and stand in each other's light and way as
// B. Smith's model says (B. Walter et al., 2007; both ways together after E. Heitz, 2014). A
// white matt surface that faces a light of brightness 1 is of brightness 1, so all is pi times what
// those write.
void addLight(const FacetPlanes& facets, const Planes& L, const Planes& Cl, long first,
              const Planes& sum)
{
    float matt[kLanes], glint[kLanes], rimShare[kLanes], rim[kLanes];
    for (long i = 0; i < kLanes; ++i) {
        const long k = first + i;
        const float hx = L[0][k] + facets.V[0][k], hy = L[1][k] + facets.V[1][k];
        const float hz = L[2][k] + facets.V[2][k];
        const float shorten = 1 / std::sqrt(std::max(hx * hx + hy * hy + hz * hz, 1e-12f));
        const float NL = std::max(dot(facets.N, L, k), 0.0f);
        const float NV = std::max(dot(facets.N, facets.V, k), 1e-3f);
        const float NH =
            (facets.N[0][k] * hx + facets.N[1][k] * hy + facets.N[2][k] * hz) * shorten;
        const float VH =
            (facets.V[0][k] * hx + facets.V[1][k] * hy + facets.V[2][k] * hz) * shorten;
        const float a = steepness(facets, k), a2 = a * a;
        const float spread = NH * NH * (a2 - 1) + 1;
        const float seen =
            NL * std::sqrt(NV * NV * (1 - a2) + a2) + NV * std::sqrt(NL * NL * (1 - a2) + a2);
        matt[i] = NL;
        glint[i] = NL * a2 / (spread * spread * 2 * seen);
        rimShare[i] = towardsRim(std::min(std::max(VH, 0.0f), 1.0f));
        rim[i] = rimOf(facets, k);
    }
    for (std::size_t c = 0; c < 3; ++c) {
        for (long i = 0; i < kLanes; ++i) {
            const long k = first + i;
            const float facing = facets.facing[c][k];
            const float mirrored = facing + std::max(rim[i] - facing, 0.0f) * rimShare[i];
            sum[c][k] +=
                Cl[c][k] * (glint[i] * mirrored + matt[i] * (1 - mirrored) * facets.albedo[c][k]);
        }
    }
}

// Between where a mirror would show the surroundings and the normal, as the surface is rough.
Planes mirrorDirections(const ZebRow& row, const FacetPlanes& facets)
{
    const Planes result = newPlanes(row);
    for (long k = 0; k < row.count; ++k) {
        const float NV = dot(facets.N, facets.V, k), a = steepness(facets, k);
        for (std::size_t c = 0; c < 3; ++c) {
            const float N = facets.N[c][k];
            const float mirrored = 2 * NV * N - facets.V[c][k];
            result[c][k] = mirrored + a * (N - mirrored);
        }
    }
    return result;
}

// What comes from around and from the lamps as the sky. The rougher, the less of it the rim mirrors
// (S. Lagarde, 2011).
void addSurroundings(const ZebRow& row, const FacetPlanes& facets, const Planes& sum)
{
    const Planes ambient = newPlanes(row);
    zebRowAmbient(&row, ambient.data());
    const Planes sky = mirrorDirections(row, facets);
    zebRowDiffuse(&row, sky.data(), sky.data());
    for (std::size_t c = 0; c < 3; ++c) {
        for (long k = 0; k < row.count; ++k) {
            const float facing = facets.facing[c][k];
            const float rim = std::min(rimOf(facets, k), 1 - facets.rough[k]);
            const float share = towardsRim(std::clamp(dot(facets.N, facets.V, k), 0.0f, 1.0f));
            const float mirrored = facing + std::max(rim - facing, 0.0f) * share;
            const float light = ambient[c][k] * ((1 - mirrored) * facets.albedo[c][k] + mirrored) +
                                kSky * sky[c][k] * mirrored;
            sum[c][k] += facets.openness[k] * light;
        }
    }
}

// The light that mirrors send on and the way it takes through them are found apart (B. Karis,
// 2013). What is not mirrored is scattered.
void addEnvironment(const ZebRow& row, const FacetPlanes& facets, const Around& around,
                    const Planes& sum)
{
    const Planes mirror = mirrorWays(row, facets.N, facets.V);
    const float smoothest = *std::min_element(facets.rough, facets.rough + row.count);
    const float* const spread = smoothest < 0.1f ? spreadOf(row, mirror) : nullptr;
    for (long k = 0; k < row.count; ++k) {
        const auto [straight, edge] = mirrorShares(facets.rough[k], dot(facets.N, facets.V, k));
        const Color matt = around.scattered(facets.N, k);
        const Color shine = around.mirrored(mirror, k, facets.rough[k], spread ? spread[k] : 0);
        const float rim = rimOf(facets, k);
        for (std::size_t c = 0; c < 3; ++c) {
            const float facing = facets.facing[c][k];
            const float mirrored = facing * straight + std::max(rim, facing) * edge;
            sum[c][k] += facets.openness[k] *
                         (mirrored * shine[c] + (1 - mirrored) * facets.albedo[c][k] * matt[c]);
        }
    }
}

}  // namespace

float mirroredOf(float facing, const FacetPlanes& facets, long k)
{
    const float cosine = std::clamp(dot(facets.N, facets.V, k), 0.0f, 1.0f);
    return facing + (1 - facing) * towardsRim(cosine);
}

Planes mirrorWays(const ZebRow& row, const Planes& N, const Planes& V)
{
    const Planes result = newPlanes(row);
    for (long k = 0; k < row.count; ++k) {
        const float NV = dot(N, V, k);
        for (std::size_t c = 0; c < 3; ++c) result[c][k] = 2 * NV * N[c][k] - V[c][k];
    }
    return result;
}

void lightFacets(const ZebRow& row, const FacetPlanes& facets, const Around* around,
                 const Planes& result)
{
    for (float* const plane : result) std::fill_n(plane, row.count, 0.0f);
    const Planes L = newPlanes(row), Cl = newPlanes(row);
    const long lights = zebRowLights(&row);
    for (long light = 0; light < lights; ++light) {
        zebRowLight(&row, light, L.data(), Cl.data(), nullptr);
        for (long first = 0; first < row.count; first += kLanes) {
            addLight(facets, L, Cl, first, result);
        }
    }
    if (around) {
        addEnvironment(row, facets, *around, result);
    } else {
        addSurroundings(row, facets, result);
    }
}

}  // namespace zebview
