// Points, vectors, normals and homogeneous points.
#pragma once

#include <cmath>
#include <iosfwd>

namespace zeb
{

class Matrix;
struct Pointw;

// A point, vector or normal.
struct Point {
    float x = 0, y = 0, z = 0;

    Point() = default;
    constexpr Point(float px, float py, float pz) : x(px), y(py), z(pz) {}
    // Divides by w.
    inline Point(const Pointw& p);

    Point& operator+=(const Point& b)
    {
        x += b.x;
        y += b.y;
        z += b.z;
        return *this;
    }
    Point& operator-=(const Point& b)
    {
        x -= b.x;
        y -= b.y;
        z -= b.z;
        return *this;
    }
    Point& operator*=(float s)
    {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    Point& operator*=(const Point& b)
    {
        x *= b.x;
        y *= b.y;
        z *= b.z;
        return *this;
    }
    // A divisor near zero is reported and leaves the point as it was.
    Point& operator/=(float s);
    Point& operator/=(const Point& b);
    // Cross product.
    Point& operator^=(const Point& b);
    Point& operator*=(const Matrix& m);
};

// A homogeneous point, (w x, w y, w z, w).
struct Pointw {
    float x = 0, y = 0, z = 0, w = 1;

    Pointw() = default;
    constexpr Pointw(float px, float py, float pz, float pw) : x(px), y(py), z(pz), w(pw) {}
    constexpr Pointw(const Point& p) : x(p.x), y(p.y), z(p.z) {}

    Pointw& operator+=(const Pointw& b)
    {
        x += b.x;
        y += b.y;
        z += b.z;
        w += b.w;
        return *this;
    }
    Pointw& operator-=(const Pointw& b)
    {
        x -= b.x;
        y -= b.y;
        z -= b.z;
        w -= b.w;
        return *this;
    }
    Pointw& operator*=(float s)
    {
        x *= s;
        y *= s;
        z *= s;
        w *= s;
        return *this;
    }
    Pointw& operator*=(const Matrix& m);
};

extern const Point gOrigin;

inline Point operator+(Point a, const Point& b) { return a += b; }
inline Point operator-(Point a, const Point& b) { return a -= b; }
inline Point operator-(const Point& a) { return {-a.x, -a.y, -a.z}; }
inline Point operator*(Point a, float s) { return a *= s; }
inline Point operator*(float s, Point a) { return a *= s; }
inline Point operator*(Point a, const Point& b) = delete;  // dot() or a component-wise *=
inline Point operator/(Point a, float s) { return a /= s; }
inline Point operator/(Point a, const Point& b) { return a /= b; }
inline bool operator==(const Point& a, const Point& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
inline bool operator!=(const Point& a, const Point& b) { return !(a == b); }
inline Point operator^(const Point& a, const Point& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
std::ostream& operator<<(std::ostream& stream, const Point& p);

inline Pointw operator+(Pointw a, const Pointw& b) { return a += b; }
inline Pointw operator-(Pointw a, const Pointw& b) { return a -= b; }
inline Pointw operator*(Pointw a, float s) { return a *= s; }
inline Pointw operator*(float s, Pointw a) { return a *= s; }
inline bool operator==(const Pointw& a, const Pointw& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
}
inline bool operator!=(const Pointw& a, const Pointw& b) { return !(a == b); }
std::ostream& operator<<(std::ostream& stream, const Pointw& p);

inline float length(const Point& p) { return std::sqrt(dot(p, p)); }
inline float distance(const Point& a, const Point& b) { return length(b - a); }
inline float depth(const Point& p) { return p.z; }

// Unit length; a point shorter than 1e-10 is returned as it is.
inline Point normalize(const Point& p)
{
    const float l = length(p);
    if (!(l >= 1e-10f)) return p;
    return {p.x / l, p.y / l, p.z / l};
}

// N turned so that Nref would face against I; the zero vector if I lies across Nref, because the
// sign has three values.
Point faceforward(const Point& N, const Point& I, const Point& Nref);
Point reflect(const Point& I, const Point& N);
// Snell's law; (0, 0, 0) under total internal reflection.
Point refract(const Point& I, const Point& N, float eta);
// Unpolarized Fresnel terms, and both directions.
void fresnel(const Point& I, const Point& N, float eta, float& Kr, float& Kt, Point& R, Point& T);

// Leaves a point where it is: shading happens in one space.
Point transform(unsigned short from, unsigned short to, const Point& p);

// a / b, or 1e38 with the sign of a where the quotient would be larger; 0 / 0 is 0. The sign of b
// is ignored in the clamped case.
inline float div(float a, float b)
{
    const float m = std::fabs(b);
    if (m >= 1 || 1e38f * m > std::fabs(a)) return a / b;
    return a > 0 ? 1e38f : a < 0 ? -1e38f : 0.0f;
}

// Divides by w with the clamped division and sets w to 1.
inline void homogenize(float& x, float& y, float& z, float& w)
{
    x = div(x, w);
    y = div(y, w);
    z = div(z, w);
    w = 1;
}

Point::Point(const Pointw& p) : x(p.x), y(p.y), z(p.z)
{
    if (p.w == 1) return;
    float w = p.w;
    homogenize(x, y, z, w);
}

Point lerp(float t, const Point& a, const Point& b);
Point bilerp(float u, float v, const Point& a, const Point& b, const Point& c, const Point& d);
Pointw bilerp(float u, float v, const Pointw& a, const Pointw& b, const Pointw& c, const Pointw& d);
Point trilerp(float u, float v, float w, const Point (&corners)[8]);
Point barylerp(float u, float v, const Point& a, const Point& b, const Point& c);
Pointw barylerp(float u, float v, const Pointw& a, const Pointw& b, const Pointw& c);
Point spline(float t, long n, const Point* knots);
Point randomp();
Point noisep(float u, float v);
Point noisep(const Point& p);

}  // namespace zeb
