// The one-lane instance of what the kernels compute with, and what is made of it.
#define ZEB_LANES 1
#include "util/lane_math.h"

#include "math/trigonometry.h"

namespace zeb
{

namespace
{

constexpr double kQuarter = 1.57079632679489661923;

}  // namespace

SinCos sincos(double angle)
{
    constexpr double kMost = 1e5, kTurn = 6.28318530717958647693;
    // Exact on every machine, unlike the library's other functions.
    if (!(__builtin_fabs(angle) <= kMost)) angle = __builtin_fmod(angle, kTurn);
    Double sine, cosine;
    sincos(Double{angle}, sine, cosine);
    return {sine.v, cosine.v};
}

// Begins with the first two terms of the series about 1, which are 0.04 off at most, and turns
// towards the point (y, x) of the unit circle: what is left has the sine x cos - y sin. Its own
// series, too, is cut after two terms, which leaves 1e-8 after the first turn.
double arcsine(double x)
{
    const double size = __builtin_fabs(x);
    const double y = __builtin_sqrt((1 - size) * (1 + size));
    double angle = kQuarter - __builtin_sqrt(2 * (1 - size)) * (1 + (1 - size) / 12);
    for (int turn = 0; turn < 2; ++turn) {
        const auto [sine, cosine] = sincos(angle);
        const double left = size * cosine - y * sine;
        angle += left + left * left * left / 6;
    }
    return __builtin_copysign(angle, x);
}

double arccosine(double x) { return kQuarter - arcsine(x); }

}  // namespace zeb
