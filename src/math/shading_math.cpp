#include "math/shading_math.h"

#include <array>

#include "util/number.h"
#include "util/report.h"

namespace zeb
{

namespace
{

struct NoiseTables {
    std::array<Point, 512> gradients;
    std::array<unsigned short, 512> permutation;

    NoiseTables()
    {
        Random& random = processRandom();
        random = Random(1);
        for (int count = 0; count < 256;) {
            const auto component = [&] { return (random.next() % 512 - 256) * 0.00390625f; };
            Point g;
            g.x = component();
            g.y = component();
            g.z = component();
            if (dot(g, g) <= 1) gradients[count++] = normalize(g);
        }
        for (int i = 0; i < 256; ++i) permutation[i] = static_cast<unsigned short>(i);
        // Only odd places are exchanged: the table is part of how noise looks.
        for (int i = 255; i > 0; i -= 2) {
            const int j = random.next() % 256;
            if (j != i) std::swap(permutation[i], permutation[j]);
        }
        for (int i = 0; i < 256; ++i) {
            permutation[256 + i] = permutation[i];
            gradients[256 + i] = gradients[i];
        }
    }
};

const NoiseTables& noiseTables()
{
    static const NoiseTables tables;
    return tables;
}

// A coordinate's place in the noise lattice.
struct LatticeCell {
    int i0, i1;
    float f, g, s;

    explicit LatticeCell(float x)
    {
        const float shifted = x + 10000.0f;
        i0 = static_cast<int>(clampToLong(std::trunc(shifted), -0x7FFFFFF0, 0x7FFFFFF0)) & 255;
        i1 = (i0 + 1) & 255;
        f = std::fmod(shifted, 1.0f);
        g = f - 1;
        s = f * f * (3 - 2 * f);
    }
};

float aroundHalf(float n) { return n * 0.75f + 0.5f; }

}  // namespace

Random& processRandom()
{
    static Random random(1);
    return random;
}

float smoothstep(float min, float max, float x)
{
    if (min > max) std::swap(min, max);
    if (x < min) return 0;
    if (x >= max) return 1;
    const float t = (x - min) / (max - min);
    return t * t * (3 - 2 * t);
}

float spline(float t, long n, const float* k)
{
    if (n < 4) {
        error(kMath, kError, "Catmull-Rom splines require at least 4 control points");
        return k && n > 0 ? k[0] : 0;
    }
    if (!(t > 0)) return k[1];
    if (t >= 1) return k[n - 2];
    const float x = static_cast<float>(n - 3) * t;
    long i = static_cast<long>(x);
    if (i > n - 4) i = n - 4;
    const float f = x - static_cast<float>(i);
    const float* p = k + i;
    const float a = -p[0] + 3 * p[1] - 3 * p[2] + p[3];
    const float b = 2 * p[0] - 5 * p[1] + 4 * p[2] - p[3];
    const float c = -p[0] + p[2];
    const float d = 2 * p[1];
    return (((a * f + b) * f + c) * f + d) * 0.5f;
}

float noise(float x)
{
    const auto& G = noiseTables().gradients;
    const LatticeCell c(x);
    const float n0 = c.f * G[c.i0].x;
    return aroundHalf(n0 + c.s * (c.g * G[c.i1].x - n0));
}

float noise(float u, float v)
{
    const auto& G = noiseTables().gradients;
    const auto& P = noiseTables().permutation;
    const LatticeCell a(u), b(v);
    const auto corner = [&](int i, int j, float x, float y) {
        const Point& g = G[P[i] + j];
        return g.x * x + g.y * y;
    };
    const float n0 = lerp(a.s, corner(a.i0, b.i0, a.f, b.f), corner(a.i1, b.i0, a.g, b.f));
    const float n1 = lerp(a.s, corner(a.i0, b.i1, a.f, b.g), corner(a.i1, b.i1, a.g, b.g));
    return aroundHalf(lerp(b.s, n0, n1));
}

float noise(const Point& p)
{
    const auto& G = noiseTables().gradients;
    const auto& P = noiseTables().permutation;
    const LatticeCell a(p.x), b(p.y), c(p.z);
    const auto plane = [&](int k, float z) {
        const auto corner = [&](int i, int j, float x, float y) {
            return dot(G[P[P[i] + j] + k], Point(x, y, z));
        };
        const float n0 = lerp(a.s, corner(a.i0, b.i0, a.f, b.f), corner(a.i1, b.i0, a.g, b.f));
        const float n1 = lerp(a.s, corner(a.i0, b.i1, a.f, b.g), corner(a.i1, b.i1, a.g, b.g));
        return lerp(b.s, n0, n1);
    };
    return aroundHalf(lerp(c.s, plane(c.i0, c.f), plane(c.i1, c.g)));
}

float trilerp(float u, float v, float w, const float (&k)[8])
{
    const float p = bilerp(u, v, k[0], k[1], k[2], k[3]);
    const float q = bilerp(u, v, k[4], k[5], k[6], k[7]);
    return (q - p) * w + p;
}

long quantize(float value, long one, long min, long max, float dither, Random& random)
{
    const double r = random.next() * (1.0 / 32767) * 2 - 1;
    const float x = static_cast<float>(r * dither + static_cast<double>(one) * value);
    // Compared before the conversion, so that nothing overflows; max wins over a larger min.
    const long atLeast = clampToLong(x >= 0 ? x + 0.5 : x - 0.5, min, max < min ? min : max);
    return atLeast > max ? max : atLeast;
}

}  // namespace zeb
