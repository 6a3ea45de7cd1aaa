// Vectors and colours of three components, by lanes: what math/point.h has for single ones, to the
// same bits. Included after lanes.h.
#pragma once

#include "util/lanes.h"

namespace zeb
{
namespace
{

// A point, vector, normal or colour.
struct Vector {
    Float x, y, z;
};

inline Vector broadcast(const float (&v)[3]) { return {v[0], v[1], v[2]}; }

inline Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vector operator-(Vector a) { return {-a.x, -a.y, -a.z}; }
inline Vector operator*(Vector a, Float s) { return {a.x * s, a.y * s, a.z * s}; }
// By components, as colours are.
inline Vector operator*(Vector a, Vector b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline Vector operator/(Vector a, Float s) { return {a.x / s, a.y / s, a.z / s}; }
inline Vector select(Mask m, Vector yes, Vector no)
{
    return {select(m, yes.x, no.x), select(m, yes.y, no.y), select(m, yes.z, no.z)};
}

inline Float dot(Vector a, Vector b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
// Rounded once.
inline Vector cross(Vector a, Vector b)
{
    const auto minor = [](Double p, Double q, Double r, Double s) { return p * q - r * s; };
    return {inDouble(minor, a.y, b.z, a.z, b.y), inDouble(minor, a.z, b.x, a.x, b.z),
            inDouble(minor, a.x, b.y, a.y, b.x)};
}
inline Float length(Vector a) { return sqrt(dot(a, a)); }
inline Vector lerp(Float t, Vector a, Vector b) { return (b - a) * t + a; }

// Unit length; one shorter than 1e-10 stays.
inline Vector normalize(Vector a)
{
    const Float l = length(a);
    return select(l >= 1e-10f, a / l, a);
}

// Times the power of two that brings the longest component to 1 ... 2, if that is far from it.
inline Vector scaled(Vector a)
{
    constexpr float kLong = 1 << 20;
    const Float largest = most(abs(a.x), most(abs(a.y), abs(a.z)));
    const Mask far = ((largest <= 1 / kLong) | (largest >= kLong)) & (largest > 0.0f) &
                     (largest < __builtin_inff());
    if (!any(far)) return a;
    // The exponent of 1 / 2^e is 2046 less that of 2^e.
    const auto rescale = [](Double x, Double size) {
        constexpr std::uint64_t kExponent = 0x7FF0000000000000, kTwice = 0x7FE0000000000000;
        return x * ofBits(kTwice - (bitsOf(size) & kExponent));
    };
    return select(far,
                  {inDouble(rescale, a.x, largest), inDouble(rescale, a.y, largest),
                   inDouble(rescale, a.z, largest)},
                  a);
}

// N turned so that Nref would face against I; nothing if I lies across Nref.
inline Vector faceforward(Vector N, Vector I, Vector Nref)
{
    const Float d = dot(-I, Nref);
    return N * select(d > 0.0f, 1.0f, select(d < 0.0f, -1.0f, 0.0f));
}

}  // namespace
}  // namespace zeb
