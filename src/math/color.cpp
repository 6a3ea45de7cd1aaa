#include "math/color.h"

#include <ostream>

#include "math/shading_math.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

const Color gBlack(0, 0, 0);
const Color gWhite(1, 1, 1);

void Color::toNsamples(float* out) const
{
    const ColorSpace& space = currentColorSpace();
    if (space.standard) {
        out[0] = r;
        out[1] = g;
        out[2] = b;
        return;
    }
    const long n = space.samples;
    for (long i = 0; i < n; ++i) {
        out[i] = r * space.fromRgb[i] + g * space.fromRgb[n + i] + b * space.fromRgb[2 * n + i];
    }
}

void Color::fromNsamples(const float* in)
{
    const ColorSpace& space = currentColorSpace();
    if (space.standard) {
        *this = Color(in[0], in[1], in[2]);
        return;
    }
    *this = gBlack;
    for (long i = 0; i < space.samples; ++i) {
        const float* rgb = &space.toRgb[3 * i];
        *this += in[i] * Color(rgb[0], rgb[1], rgb[2]);
    }
}

float Color::comp(long i) const
{
    const long n = currentColorSpace().samples;
    if (i < 0 || i >= n) {
        error(kRange, kError, "color component %ld out of range", i);
        return 0;
    }
    std::vector<float> samples(n);
    toNsamples(samples.data());
    return samples[i];
}

void Color::setcomp(long i, float value)
{
    const long n = currentColorSpace().samples;
    if (i < 0 || i >= n) {
        error(kRange, kError, "color component %ld out of range", i);
        return;
    }
    std::vector<float> samples(n);
    toNsamples(samples.data());
    samples[i] = value;
    fromNsamples(samples.data());
}

Color& Color::operator/=(float s)
{
    if (nearZero(s)) {
        error(kMath, kError, "dividing color by zero");
        return *this;
    }
    r /= s;
    g /= s;
    b /= s;
    return *this;
}

Color& Color::operator/=(const Color& c)
{
    if (nearZero(c.r) || nearZero(c.g) || nearZero(c.b)) {
        error(kMath, kError, "dividing by zero color");
        return *this;
    }
    r /= c.r;
    g /= c.g;
    b /= c.b;
    return *this;
}

std::ostream& operator<<(std::ostream& stream, const Color& c)
{
    return stream << '[' << c.r << ' ' << c.g << ' ' << c.b << ']';
}

Color barylerp(float u, float v, const Color& a, const Color& b, const Color& c)
{
    return bilerp(u, v, a, b, c, c + b - a);
}

Color trilerp(float u, float v, float w, const Color (&k)[8])
{
    return lerp(w, bilerp(u, v, k[0], k[1], k[2], k[3]), bilerp(u, v, k[4], k[5], k[6], k[7]));
}

Color spline(float t, long n, const Color* knots)
{
    const auto component = [&](auto member) {
        std::vector<float> k;
        for (long i = 0; knots && i < n; ++i) k.push_back(knots[i].*member);
        return spline(t, n, knots ? k.data() : nullptr);
    };
    const float r = component(&Color::r);
    const float g = component(&Color::g);
    return {r, g, component(&Color::b)};
}

Color randomc()
{
    const Point p = randomp();
    return {p.x, p.y, p.z};
}

Color noisec(float u, float v)
{
    const Point p = noisep(u, v);
    return {p.x, p.y, p.z};
}

Color noisec(const Point& q)
{
    const Point p = noisep(q);
    return {p.x, p.y, p.z};
}

}  // namespace zeb
