// Colours, and the colour space that host values come in.
#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "math/point.h"

namespace zeb
{

// The host's n colour samples against red, green and blue.
struct ColorSpace {
    bool standard = true;
    long samples = 3;
    std::vector<float> toRgb;    // n x 3
    std::vector<float> fromRgb;  // 3 x n
};

// The space of the options in force; defined in state/option.cpp.
const ColorSpace& currentColorSpace();

// Red, green and blue, whatever the colour space.
struct Color {
    float r = 0, g = 0, b = 0;

    Color() = default;
    constexpr Color(float red, float green, float blue) : r(red), g(green), b(blue) {}
    // From as many values as the current space has samples.
    explicit Color(const float* samples) { fromNsamples(samples); }

    void toNsamples(float* out) const;
    void fromNsamples(const float* in);
    // One sample of the current space; an index outside it is reported and reads 0.
    float comp(long i) const;
    void setcomp(long i, float value);

    Color& operator+=(const Color& c)
    {
        r += c.r;
        g += c.g;
        b += c.b;
        return *this;
    }
    Color& operator-=(const Color& c)
    {
        r -= c.r;
        g -= c.g;
        b -= c.b;
        return *this;
    }
    Color& operator*=(float s)
    {
        r *= s;
        g *= s;
        b *= s;
        return *this;
    }
    Color& operator*=(const Color& c)
    {
        r *= c.r;
        g *= c.g;
        b *= c.b;
        return *this;
    }
    // A divisor near zero is reported and leaves the colour as it was.
    Color& operator/=(float s);
    Color& operator/=(const Color& c);
};

extern const Color gBlack;
extern const Color gWhite;

inline Color operator+(Color a, const Color& b) { return a += b; }
inline Color operator-(Color a, const Color& b) { return a -= b; }
inline Color operator*(Color a, float s) { return a *= s; }
inline Color operator*(float s, Color a) { return a *= s; }
inline Color operator*(Color a, const Color& b) { return a *= b; }
inline Color operator/(Color a, float s) { return a /= s; }
inline Color operator/(Color a, const Color& b) { return a /= b; }
inline bool operator==(const Color& a, const Color& b)
{
    return a.r == b.r && a.g == b.g && a.b == b.b;
}
inline bool operator!=(const Color& a, const Color& b) { return !(a == b); }
std::ostream& operator<<(std::ostream& stream, const Color& c);

inline Color lerp(float t, const Color& a, const Color& b) { return (b - a) * t + a; }
inline Color bilerp(float u, float v, const Color& a, const Color& b, const Color& c,
                    const Color& d)
{
    return lerp(v, lerp(u, a, b), lerp(u, c, d));
}
Color barylerp(float u, float v, const Color& a, const Color& b, const Color& c);
Color trilerp(float u, float v, float w, const Color (&corners)[8]);
Color spline(float t, long n, const Color* knots);
Color randomc();
Color noisec(float u, float v);
Color noisec(const Point& p);

}  // namespace zeb
