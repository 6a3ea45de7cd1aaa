// Quadrics with their closed forms, for tests that compare the two.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string>

#include "geom/quadric.h"
#include "support/sampling.h"

namespace zebtest
{

inline constexpr double kHalfTurn = 3.14159265358979323846;

inline double radians(double degrees)
{
    return std::clamp(degrees, -360.0, 360.0) / 180 * kHalfTurn;
}

// A surface and its closed form.
struct Sample {
    std::string what;
    std::unique_ptr<zeb::Primitive> surface;
    std::function<Exact(double u, double v)> form;
    double size;
};

inline Exact turned(double angle, double rho, double z)
{
    return {rho * std::cos(angle), rho * std::sin(angle), z, 1};
}

template <class Surface, class Curve>
std::unique_ptr<zeb::Primitive> make(const Curve& curve, float thetamax)
{
    return std::make_unique<Surface>(curve, thetamax, 0, nullptr, nullptr);
}

inline Sample sphere(float r, float zmin, float zmax, float theta)
{
    const double phi0 = zmin > -r ? std::asin(double{zmin} / r) : -kHalfTurn / 2;
    const double phi1 = zmax < r ? std::asin(double{zmax} / r) : kHalfTurn / 2;
    return {"sphere " + std::to_string(r) + " " + std::to_string(zmin) + " " +
                std::to_string(zmax) + " " + std::to_string(theta),
            make<zeb::Sphere>(zeb::SphereCurve(r, zmin, zmax), theta),
            [=](double u, double v) {
                const double phi = phi0 + v * (phi1 - phi0);
                return turned(u * radians(theta), r * std::cos(phi), r * std::sin(phi));
            },
            std::fabs(r)};
}

inline Sample cone(float r, float h, float c, float theta)
{
    const double cut = h > 0 ? std::clamp(c, 0.0f, h) : std::clamp(c, h, 0.0f);
    const double most = double{h} > 1e-10 ? cut / h : 1;
    return {"cone " + std::to_string(r) + " " + std::to_string(h) + " " + std::to_string(c) + " " +
                std::to_string(theta),
            make<zeb::Cone>(zeb::ConeCurve(r, h, c), theta),
            [=](double u, double v) {
                const double t = v * most;
                return turned(u * radians(theta), (1 - t) * r, t * h);
            },
            std::max(std::fabs(r), std::fabs(h))};
}

inline Sample cylinder(float r, float zmin, float zmax, float theta)
{
    return {"cylinder " + std::to_string(r) + " " + std::to_string(zmin) + " " +
                std::to_string(zmax) + " " + std::to_string(theta),
            make<zeb::Cylinder>(zeb::CylinderCurve(r, zmin, zmax), theta),
            [=](double u, double v) {
                return turned(u * radians(theta), r, zmin + v * (double{zmax} - zmin));
            },
            std::max({std::fabs(r), std::fabs(zmin), std::fabs(zmax)})};
}

inline Sample hyperboloid(const zeb::Point& a, const zeb::Point& b, float theta)
{
    const float p1[3] = {a.x, a.y, a.z}, p2[3] = {b.x, b.y, b.z};
    return {"hyperboloid " + std::to_string(theta),
            make<zeb::Hyperboloid>(zeb::HyperboloidCurve(p1, p2), theta),
            [=](double u, double v) {
                const double angle = u * radians(theta), c = std::cos(angle), s = std::sin(angle);
                const double x = a.x + v * (double{b.x} - a.x), y = a.y + v * (double{b.y} - a.y);
                return Exact{x * c - y * s, y * c + x * s, a.z + v * (double{b.z} - a.z), 1};
            },
            double{std::max(length(a), length(b))}};
}

inline Sample paraboloid(float rmax, float zmin, float zmax, float theta)
{
    return {"paraboloid " + std::to_string(rmax) + " " + std::to_string(zmin) + " " +
                std::to_string(zmax) + " " + std::to_string(theta),
            make<zeb::Paraboloid>(zeb::ParaboloidCurve(rmax, zmin, zmax), theta),
            [=](double u, double v) {
                const double z = zmin + v * (double{zmax} - zmin);
                return turned(u * radians(theta), rmax * std::sqrt(z / zmax), z);
            },
            std::max({std::fabs(rmax) * std::sqrt(std::max(zmin / zmax, 1.0f)), std::fabs(zmin),
                      std::fabs(zmax)})};
}

inline Sample disk(float inner, float radius, float theta)
{
    const double outer = std::max(radius, 0.0f), hole = std::clamp<double>(inner, 0.0, outer);
    return {"disk " + std::to_string(inner) + " " + std::to_string(radius) + " " +
                std::to_string(theta),
            make<zeb::Disk>(zeb::DiskCurve(inner, radius), theta),
            [=](double u, double v) {
                return turned(u * radians(theta), outer + v * (hole - outer), 0);
            },
            outer};
}

inline Sample torus(float R, float a, float phimin, float phimax, float theta)
{
    const double sweep = std::clamp(double{phimax} - phimin, -360.0, 360.0);
    return {"torus " + std::to_string(R) + " " + std::to_string(a) + " " + std::to_string(phimin) +
                " " + std::to_string(phimax) + " " + std::to_string(theta),
            make<zeb::Torus>(zeb::TorusCurve(R, a, phimin, phimax), theta),
            [=](double u, double v) {
                const double phi = (phimin + v * sweep) / 180 * kHalfTurn;
                return turned(u * radians(theta), R + a * std::cos(phi), a * std::sin(phi));
            },
            std::fabs(R) + std::fabs(a)};
}

inline float sweep(Numbers& n)
{
    return n.integer(0, 3) == 0 ? n.uniform(-1000, 1000) : n.uniform(-360, 360);
}
inline float signedSize(Numbers& n)
{
    return (n.unit() < 0.5f ? -1.0f : 1.0f) * n.uniform(0.1f, 10);
}

using Family = Sample (*)(Numbers&);

inline Sample anySphere(Numbers& n)
{
    const float r = n.uniform(0.1f, 10);
    return sphere(r, r * n.uniform(-1.5f, 0.95f), r * n.uniform(-0.95f, 1.5f), sweep(n));
}
inline Sample anyCone(Numbers& n)
{
    const float r = signedSize(n), h = signedSize(n), c = n.uniform(-15, 15);
    return cone(r, h, c, sweep(n));
}
inline Sample anyCylinder(Numbers& n)
{
    const float r = signedSize(n), z = signedSize(n);
    return cylinder(r, z, signedSize(n), sweep(n));
}
inline Sample anyHyperboloid(Numbers& n)
{
    const zeb::Point a = n.point(5), b = n.point(5);
    return hyperboloid(a, b, sweep(n));
}
inline Sample anyParaboloid(Numbers& n)
{
    const float r = signedSize(n), zmax = signedSize(n);
    return paraboloid(r, zmax * n.uniform(0, 1.8f), zmax, sweep(n));
}
inline Sample anyDisk(Numbers& n)
{
    const float inner = n.uniform(-1, 6), radius = n.uniform(-1, 8);
    return disk(inner, radius, sweep(n));
}
inline Sample anyTorus(Numbers& n)
{
    const float R = signedSize(n), a = signedSize(n), phi = n.uniform(-800, 800);
    return torus(R, a, phi, phi + n.uniform(-500, 500), sweep(n));
}

inline constexpr Family gFamilies[] = {anySphere,     anyCone, anyCylinder, anyHyperboloid,
                                       anyParaboloid, anyDisk, anyTorus};

}  // namespace zebtest
