// The scalar functions that shaders and geometry share.
#pragma once

#include "math/point.h"
#include "util/random.h"

namespace zeb
{

// 0 below min, 1 from max on, a cubic between; the bounds may come in either order.
float smoothstep(float min, float max, float x);

// Catmull-Rom through k[1] ... k[n - 2] (E. Catmull, R. Rom, 1974); fewer than 4 knots are
// reported and give k[0].
float spline(float t, long n, const float* k);

// Gradient noise (K. Perlin, 1985) over a fixed table. In one dimension around 0.5; in two and
// three dimensions scaled and offset the same way.
float noise(float x);
float noise(float u, float v);
float noise(const Point& p);

// x to the power y, and e to the power x, within one unit in the last place; the same bits on every
// machine. Zeros and infinities below zero count as above.
float power(float x, float y);
float exponential(float x);

inline float lerp(float t, float a, float b) { return (b - a) * t + a; }

// (u, v) over the corners a (0, 0), b (1, 0), c (0, 1), d (1, 1).
inline float bilerp(float u, float v, float a, float b, float c, float d)
{
    const float p = (b - a) * u + a;
    const float q = (d - c) * u + c;
    return p + (q - p) * v;
}
float trilerp(float u, float v, float w, const float (&corners)[8]);
inline float barylerp(float u, float v, float a, float b, float c)
{
    return bilerp(u, v, a, b, c, c + b - a);
}

// The integer one * value becomes after dither of the given amplitude, rounded half away from zero
// and clamped to min ... max.
long quantize(float value, long one, long min, long max, float dither, Random& random);

// The stream of draws that belong to nothing in particular.
Random& processRandom();

}  // namespace zeb
