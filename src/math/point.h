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

// Both in double: surfaces are evaluated and brought to camera space in it, so that the large parts
// of coordinates cancel before anything is rounded.
struct Pointd {
    double x = 0, y = 0, z = 0;

    Pointd() = default;
    constexpr Pointd(double px, double py, double pz) : x(px), y(py), z(pz) {}
    constexpr Pointd(const Point& p) : x(p.x), y(p.y), z(p.z) {}
};

// Starts as an empty sum; a point has a w of 1.
struct Pointwd {
    double x = 0, y = 0, z = 0, w = 0;

    Pointwd() = default;
    constexpr Pointwd(double px, double py, double pz, double pw) : x(px), y(py), z(pz), w(pw) {}
    constexpr Pointwd(const Pointd& p) : x(p.x), y(p.y), z(p.z), w(1) {}
    constexpr Pointwd(const Pointw& p) : x(p.x), y(p.y), z(p.z), w(p.w) {}

    Pointwd& operator+=(const Pointwd& b)
    {
        x += b.x;
        y += b.y;
        z += b.z;
        w += b.w;
        return *this;
    }
    Pointwd& operator*=(double s)
    {
        x *= s;
        y *= s;
        z *= s;
        w *= s;
        return *this;
    }
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

inline Pointd operator+(const Pointd& a, const Pointd& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Pointd operator-(const Pointd& a, const Pointd& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Pointd operator*(const Pointd& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
inline Pointd operator^(const Pointd& a, const Pointd& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline bool operator==(const Pointd& a, const Pointd& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
inline double dot(const Pointd& a, const Pointd& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Pointwd operator+(Pointwd a, const Pointwd& b) { return a += b; }
inline Pointwd operator*(Pointwd a, double s) { return a *= s; }
inline Point rounded(const Pointd& p)
{
    return {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
}
inline Pointw rounded(const Pointwd& p)
{
    return {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z),
            static_cast<float>(p.w)};
}

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

// Far longer or shorter than 1: times the power of two that brings the longest component to 1
// ... 2. The direction stays to the last digit, at a length that no unit of measurement decides.
Point rescaled(const Point& p);
inline Point scaled(const Point& p)
{
    constexpr float kLong = 1 << 20;
    const auto larger = [](float a, float b) { return a > b ? a : b; };
    const float largest = larger(std::fabs(p.x), larger(std::fabs(p.y), std::fabs(p.z)));
    return largest > 1 / kLong && largest < kLong ? p : rescaled(p);
}

// Unit length; the zero vector stays.
inline Pointd normalized(const Pointd& p)
{
    const double squared = dot(p, p);
    return squared > 0 ? p * (1 / std::sqrt(squared)) : p;
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
template <class T>
inline T div(T a, T b)
{
    const T m = std::fabs(b), infinity = static_cast<T>(1e38f);
    if (m >= 1 || infinity * m > std::fabs(a)) return a / b;
    return a > 0 ? infinity : a < 0 ? -infinity : T{0};
}

// Divides by w with the clamped division and sets w to 1.
template <class T>
inline void homogenize(T& x, T& y, T& z, T& w)
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

inline Pointd homogenized(Pointwd p)
{
    if (p.w != 1) homogenize(p.x, p.y, p.z, p.w);
    return {p.x, p.y, p.z};
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
