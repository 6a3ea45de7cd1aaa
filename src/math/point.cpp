#include "math/point.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "math/matrix.h"
#include "math/shading_math.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

const Point gOrigin(0, 0, 0);

namespace
{
float sign(float x) { return x > 0 ? 1.0f : x < 0 ? -1.0f : 0.0f; }
}  // namespace

Point& Point::operator/=(float s)
{
    if (nearZero(s)) {
        error(kMath, kError, "dividing point by zero");
        return *this;
    }
    x /= s;
    y /= s;
    z /= s;
    return *this;
}

Point& Point::operator/=(const Point& b)
{
    if (nearZero(b.x) || nearZero(b.y) || nearZero(b.z)) {
        error(kMath, kError, "dividing by zero point");
        return *this;
    }
    x /= b.x;
    y /= b.y;
    z /= b.z;
    return *this;
}

Point& Point::operator^=(const Point& b) { return *this = *this ^ b; }
Point& Point::operator*=(const Matrix& m) { return *this = *this * m; }
Pointw& Pointw::operator*=(const Matrix& m) { return *this = *this * m; }

std::ostream& operator<<(std::ostream& stream, const Point& p)
{
    return stream << '[' << p.x << ' ' << p.y << ' ' << p.z << ']';
}

std::ostream& operator<<(std::ostream& stream, const Pointw& p)
{
    return stream << '[' << p.x << ' ' << p.y << ' ' << p.z << ' ' << p.w << ']';
}

Point faceforward(const Point& N, const Point& I, const Point& Nref)
{
    return sign(dot(-I, Nref)) * N;
}

Point reflect(const Point& I, const Point& N)
{
    const float t = 2 * dot(I, N);
    return I - t * N;
}

Point refract(const Point& I, const Point& N, float eta)
{
    const float d = dot(I, N);
    const float k = 1 - (1 - d * d) * eta * eta;
    if (k < 0) return gOrigin;
    return eta * I - (eta * d + std::sqrt(k)) * N;
}

void fresnel(const Point& I, const Point& N, float eta, float& Kr, float& Kt, Point& R, Point& T)
{
    const float d = dot(I, N);
    const float k = 1 - (1 - d * d) * eta * eta;
    if (k >= kEpsilon) {
        T = eta * I - (eta * d + std::sqrt(k)) * N;
        const float c = dot(N, T);
        const float rpar = (eta * d - c) / (eta * d + c);
        const float rperp = (d - eta * c) / (eta * c + d);
        Kr = (rpar * rpar + rperp * rperp) * 0.5f;
        Kt = 1 - Kr;
    } else {
        T = gOrigin;
        Kt = 0;
        Kr = 1;
    }
    R = reflect(I, N);
}

Point rescaled(const Point& p)
{
    const float largest = std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    if (!(largest > 0) || !isFinite(largest)) return p;
    return rounded(Pointd(p) * std::ldexp(1.0, -std::ilogb(largest)));
}

Point transform(unsigned short, unsigned short, const Point& p) { return p; }

Point lerp(float t, const Point& a, const Point& b) { return (b - a) * t + a; }

Point bilerp(float u, float v, const Point& a, const Point& b, const Point& c, const Point& d)
{
    return {bilerp(u, v, a.x, b.x, c.x, d.x), bilerp(u, v, a.y, b.y, c.y, d.y),
            bilerp(u, v, a.z, b.z, c.z, d.z)};
}

Pointw bilerp(float u, float v, const Pointw& a, const Pointw& b, const Pointw& c, const Pointw& d)
{
    return {bilerp(u, v, a.x, b.x, c.x, d.x), bilerp(u, v, a.y, b.y, c.y, d.y),
            bilerp(u, v, a.z, b.z, c.z, d.z), bilerp(u, v, a.w, b.w, c.w, d.w)};
}

Point trilerp(float u, float v, float w, const Point (&k)[8])
{
    const Point p = bilerp(u, v, k[0], k[1], k[2], k[3]);
    const Point q = bilerp(u, v, k[4], k[5], k[6], k[7]);
    return (q - p) * w + p;
}

Point barylerp(float u, float v, const Point& a, const Point& b, const Point& c)
{
    return bilerp(u, v, a, b, c, c + b - a);
}

Pointw barylerp(float u, float v, const Pointw& a, const Pointw& b, const Pointw& c)
{
    return bilerp(u, v, a, b, c, c + b - a);
}

Point spline(float t, long n, const Point* knots)
{
    const auto component = [&](auto member) {
        std::vector<float> k;
        for (long i = 0; knots && i < n; ++i) k.push_back(knots[i].*member);
        return spline(t, n, knots ? k.data() : nullptr);
    };
    const float x = component(&Point::x);
    const float y = component(&Point::y);
    return {x, y, component(&Point::z)};
}

Point randomp()
{
    const float z = processRandom().unit();
    const float y = processRandom().unit();
    const float x = processRandom().unit();
    return {x, y, z};
}

Point noisep(float u, float v)
{
    return {noise(u, v), noise(u + 123.456f, v + 123.456f), noise(u + 456.789f, v + 456.789f)};
}

Point noisep(const Point& p)
{
    return {noise(p), noise(p + Point(123.456f, 123.456f, 123.456f)),
            noise(p + Point(456.789f, 456.789f, 456.789f))};
}

}  // namespace zeb
