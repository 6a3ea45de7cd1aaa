// Included after ZEB_LANES is defined. Operation for operation what quadric.cpp and the dicing test
// do with single places.
#pragma once

#include "geom/sweep_kernel.h"
#include "util/lane_math.h"

namespace zeb
{
namespace
{

struct Triple {
    Double x, y, z;
};

inline Triple operator+(const Triple& a, const Triple& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Double lerp(Double t, Double a, Double b) { return (1.0 - t) * a + t * b; }

// Places on the curve, and its derivatives there.
struct Curves {
    Triple p, d;
};

inline Curves onLine(const Sweep& s, Double v)
{
    const Double t = v * s.extent;
    const auto along = [&](int k) { return s.base[k] + lerp(t, s.from[k], s.to[k]); };
    return {{along(0), along(1), along(2)}, {s.slope[0], s.slope[1], s.slope[2]}};
}

inline Curves onCircle(const Sweep& s, Double v)
{
    Double sine, cosine;
    sincos(lerp(v, s.first, s.last), sine, cosine);
    const Double x = s.radius * cosine, z = s.radius * sine, range = s.last - s.first;
    return {{s.base[0] + x, 0.0, z}, {-range * z, 0.0, range * x}};
}

inline Curves onParabola(const Sweep& s, Double v)
{
    constexpr double kTip = 1e-8;
    const Double range = s.last - s.first;
    const Double share = most(0.0, (s.first + v * range) / s.last);
    const Double slope = range / (2 * s.last * sqrt(most(kTip, share)));
    return {{s.radius * sqrt(share), 0.0, lerp(v, s.first, s.last)},
            {s.radius * slope, 0.0, range}};
}

inline Curves onCurve(const Sweep& s, Double v)
{
    switch (s.kind) {
        case Sweep::kLine:
            return onLine(s, v);
        case Sweep::kCircle:
            return onCircle(s, v);
        default:
            return onParabola(s, v);
    }
}

struct ScreenPoint {
    Double x, y;
};

inline ScreenPoint onScreen(const double (&m)[4][4], const Triple& p)
{
    const auto column = [&](int k) {
        return p.x * m[0][k] + p.y * m[1][k] + p.z * m[2][k] + m[3][k];
    };
    const Double w = column(3);
    return {quotient(column(0), w), quotient(column(1), w)};
}

inline Double distance(ScreenPoint a, ScreenPoint b)
{
    const Double x = b.x - a.x, y = b.y - a.y;
    return sqrt(x * x + y * y);
}

void measurePlaces(const Sweep& s, double limit, SweepPlaces& places)
{
    const Double range = s.thetaMax - s.thetaMin, part = s.vMax - s.vMin;
    const Triple origin{s.origin[0], s.origin[1], s.origin[2]};
    for (int k = 0; k < SweepPlaces::kCount; k += kDoubleLanes) {
        const Double u = Double::load(places.u + k), v = Double::load(places.v + k);
        const auto [p, d] = onCurve(s, lerp(v, s.vMin, s.vMax));
        Double sine, cosine;
        sincos(lerp(u, s.thetaMin, s.thetaMax), sine, cosine);
        const Double x = p.x * cosine - p.y * sine, y = p.y * cosine + p.x * sine;
        const Triple P = Triple{x, y, p.z} + origin;
        const Triple dPdu{-range * y, range * x, 0.0};
        const Triple dPdv{part * (d.x * cosine - d.y * sine), part * (d.y * cosine + d.x * sine),
                          part * d.z};
        const ScreenPoint from = onScreen(s.toRaster, P);
        const Double alongU = distance(from, onScreen(s.toRaster, P + dPdu));
        const Double alongV = distance(from, onScreen(s.toRaster, P + dPdv));
        alongU.store(places.alongU + k);
        alongV.store(places.alongV + k);
        if (any((alongU > limit) | (alongV > limit))) return;
    }
}

}  // namespace
}  // namespace zeb
