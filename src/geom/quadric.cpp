#include "geom/quadric.h"

#include <algorithm>
#include <cmath>

#include "util/number.h"

namespace zeb
{

namespace
{

// Degrees, at most a full turn either way, in radians of the library's own pi.
double radians(double degrees)
{
    return std::clamp(degrees, -360.0, 360.0) * 0.005555555555555556 * double{kPi};
}

// Exact at both ends, where pieces meet.
double lerp(double t, double a, double b) { return (1 - t) * a + t * b; }

// asin(z / r), also where that is a point or beyond it.
double latitude(double z, double r) { return r == 0 ? 0 : std::asin(std::clamp(z / r, -1.0, 1.0)); }

struct Range {
    double min, max;
};

// Of the cosine between two angles.
Range cosines(double from, double to)
{
    constexpr double kTurn = 2 * 3.14159265358979323846;
    if (to < from) std::swap(from, to);
    Range range{std::min(std::cos(from), std::cos(to)), std::max(std::cos(from), std::cos(to))};
    const auto passes = [&](double angle) {
        return angle + kTurn * std::ceil((from - angle) / kTurn) <= to;
    };
    if (passes(0)) range.max = 1;
    if (passes(kTurn / 2)) range.min = -1;
    return range;
}

Range sines(double from, double to)
{
    constexpr double kQuarter = 3.14159265358979323846 / 2;
    return cosines(from - kQuarter, to - kQuarter);
}

CurvePoint corner(double x, double z) { return {x, 0, z, 0, 0, 0}; }

}  // namespace

SphereCurve::SphereCurve(float r, float zmin, float zmax)
    : radius(r),
      phimin(zmin > -r ? latitude(zmin, r) : double{kPi} * -0.5),
      phimax(zmax < r ? latitude(zmax, r) : double{kPi} * 0.5)
{
}

CurvePoint SphereCurve::at(double v) const
{
    const double phi = lerp(v, phimin, phimax), range = phimax - phimin;
    const double x = radius * std::cos(phi), z = radius * std::sin(phi);
    return {x, 0, z, -range * z, 0, range * x};
}

void SphereCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    const double from = lerp(v0, phimin, phimax), to = lerp(v1, phimin, phimax);
    const Range x = cosines(from, to), z = sines(from, to);
    a = corner(radius * x.min, radius * z.min);
    b = corner(radius * x.max, radius * z.max);
}

double SphereCurve::sag(double h) const
{
    return std::fabs(radius) * (1 - std::cos(h * (phimax - phimin)));
}

// A cut on the far side of the base leaves nothing, one beyond the tip everything. Cones that point
// down are not cut.
ConeCurve::ConeCurve(float r, float h, float cutheight) : radius(r), height(h), extent(1)
{
    if (h > kEpsilon) extent = double{std::clamp(cutheight, 0.0f, h)} / double{h};
}

CurvePoint ConeCurve::at(double v) const
{
    const double t = v * extent;
    return {(1 - t) * radius, 0, t * height, -extent * radius, 0, extent * height};
}

void ConeCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    a = at(v0);
    b = at(v1);
}

CylinderCurve::CylinderCurve(float r, float z0, float z1) : radius(r), zmin(z0), zmax(z1) {}

CurvePoint CylinderCurve::at(double v) const
{
    return {radius, 0, lerp(v, zmin, zmax), 0, 0, zmax - zmin};
}

void CylinderCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    a = at(v0);
    b = at(v1);
}

HyperboloidCurve::HyperboloidCurve(const float* point1, const float* point2)
    : p1(point1[0], point1[1], point1[2]), p2(point2[0], point2[1], point2[2])
{
}

CurvePoint HyperboloidCurve::at(double v) const
{
    const auto along = [v](float from, float to) { return lerp(v, from, to); };
    return {along(p1.x, p2.x),           along(p1.y, p2.y),           along(p1.z, p2.z),
            double{p2.x} - double{p1.x}, double{p2.y} - double{p1.y}, double{p2.z} - double{p1.z}};
}

void HyperboloidCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    a = at(v0);
    b = at(v1);
}

ParaboloidCurve::ParaboloidCurve(float r, float z0, float z1)
    : rmax(r), zmin(z0), zmax(z1), fZmax(z1)
{
}

// The slope at the tip is infinite; so near to it, a finite one points the same way.
CurvePoint ParaboloidCurve::at(double v) const
{
    constexpr double kTip = 1e-8;
    const double range = zmax - zmin, share = area(v);
    const double slope = range / (2 * fZmax * std::sqrt(std::max(share, kTip)));
    return {rmax * std::sqrt(share), 0, lerp(v, zmin, zmax), rmax * slope, 0, range};
}

void ParaboloidCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    a = at(v0);
    b = at(v1);
}

DiskCurve::DiskCurve(float innerRadius, float r) : radius(std::max(r, 0.0f))
{
    inner = std::clamp(double{innerRadius}, 0.0, radius);
}

CurvePoint DiskCurve::at(double v) const
{
    return {lerp(v, radius, inner), 0, 0, inner - radius, 0, 0};
}

void DiskCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    a = at(v0);
    b = at(v1);
}

TorusCurve::TorusCurve(float majorRadius, float minorRadius, float from, float to)
    : major(majorRadius), minor(minorRadius)
{
    const double sweep = std::clamp(double{to} - double{from}, -360.0, 360.0);
    fClosed = std::fabs(sweep) == 360;
    double start = std::fmod(double{from}, 360.0);
    if (start + sweep > 360) {
        start -= 360;
    } else if (start + sweep < -360) {
        start += 360;
    }
    phimin = radians(start);
    phimax = radians(start + sweep);
}

CurvePoint TorusCurve::at(double v) const
{
    const double phi = lerp(v, phimin, phimax), range = phimax - phimin;
    const double x = minor * std::cos(phi), z = minor * std::sin(phi);
    return {major + x, 0, z, -range * z, 0, range * x};
}

void TorusCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    const double from = lerp(v0, phimin, phimax), to = lerp(v1, phimin, phimax);
    const Range x = cosines(from, to), z = sines(from, to);
    a = corner(major + minor * x.min, minor * z.min);
    b = corner(major + minor * x.max, minor * z.max);
}

double TorusCurve::sag(double h) const
{
    return std::fabs(minor) * (1 - std::cos(h * (phimax - phimin)));
}

Quadric::Quadric(float thetamax, long n, const unsigned short* tokens, void* const* values)
    : fThetaMax(radians(thetamax))
{
    fArgs.init(n, tokens, values, ArgCounts{4, 1, 4});
    if (std::fabs(thetamax) >= 360) fEdges.closeU(path());
}

Quadric::Quadric(const Point& origin, const ArgList& args)
    : fOrigin(origin), fThetaMax(radians(360))
{
    fArgs.init(args);
    fEdges.closeU(path());
}

Quadric::Quadric(const Quadric& other)
    : Primitive(other),
      fOrigin(other.fOrigin),
      fThetaMin(other.fThetaMin),
      fThetaMax(other.fThetaMax),
      fVmin(other.fVmin),
      fVmax(other.fVmax)
{
    fArgs.init(other.fArgs);
}

Quadric::Quadric(float umin, float umax, float vmin, float vmax, const Quadric& parent,
                 std::uint32_t child)
    : Primitive(parent, child, true),
      fOrigin(parent.fOrigin),
      fThetaMin(lerp(umin, parent.fThetaMin, parent.fThetaMax)),
      fThetaMax(lerp(umax, parent.fThetaMin, parent.fThetaMax)),
      fVmin(parent.curveParameter(vmin)),
      fVmax(parent.curveParameter(vmax))
{
    fArgs.split(umin, umax, vmin, vmax, parent.fArgs);
    takeEdges(parent, umin, umax, vmin, vmax);
}

// Sweeping is linear in the swept point: the sweep of a box's corners holds that of the box.
Boundw Quadric::boundRevolve(const CurvePoint& a, const CurvePoint& b) const
{
    constexpr double kRounding = 1e-14;  // of cosines and products, with room
    Range x{1e300, -1e300}, y{1e300, -1e300};
    double size = 0;
    for (const CurvePoint& p : {a, b}) {
        const double radius = std::hypot(p.x, p.y), angle = std::atan2(p.y, p.x);
        const Range c = cosines(fThetaMin + angle, fThetaMax + angle);
        const Range s = sines(fThetaMin + angle, fThetaMax + angle);
        x = {std::min(x.min, radius * c.min), std::max(x.max, radius * c.max)};
        y = {std::min(y.min, radius * s.min), std::max(y.max, radius * s.max)};
        size = std::max({size, radius, std::fabs(p.z)});
    }
    size = std::max({size, double{std::fabs(fOrigin.x)}, double{std::fabs(fOrigin.y)},
                     double{std::fabs(fOrigin.z)}});
    const double room = size * kRounding;
    const Range z{std::min(a.z, b.z), std::max(a.z, b.z)};
    Bound box = Bound::empty();
    for (const double px : {x.min - room, x.max + room}) {
        for (const double py : {y.min - room, y.max + room}) {
            for (const double pz : {z.min - room, z.max + room}) {
                box.add(rounded((Pointd(px, py, pz) + fOrigin) * matrix()));
            }
        }
    }
    box.roundOut();
    Boundw result(box, 1, 1);
    clipToBound(result);
    return result;
}

namespace
{

// A curve's point, turned about the axis by an angle of cosine c and sine s.
Differential turned(const CurvePoint& p, double c, double s, double range, double part,
                    const Point& origin)
{
    const double x = p.x * c - p.y * s, y = p.y * c + p.x * s;
    return {Pointd(x, y, p.z) + origin, Pointd(-range * y, range * x, 0),
            Pointd(part * (p.dx * c - p.dy * s), part * (p.dy * c + p.dx * s), part * p.dz)};
}

}  // namespace

Differential Quadric::revolve(double u, const CurvePoint& p) const
{
    const double theta = lerp(u, fThetaMin, fThetaMax);
    return turned(p, std::cos(theta), std::sin(theta), fThetaMax - fThetaMin, fVmax - fVmin,
                  fOrigin);
}

// The angles of the columns are those of all rows.
void Quadric::revolveRow(Columns& columns, const CurvePoint& p, Differential* row) const
{
    if (columns.kept.empty()) {
        columns.kept.reserve(2 * columns.u.size());
        for (const float u : columns.u) {
            const double theta = lerp(double{u}, fThetaMin, fThetaMax);
            columns.kept.push_back(std::cos(theta));
            columns.kept.push_back(std::sin(theta));
        }
    }
    for (std::size_t k = 0; k < columns.kept.size(); k += 2) {
        *row++ = turned(p, columns.kept[k], columns.kept[k + 1], fThetaMax - fThetaMin,
                        fVmax - fVmin, fOrigin);
    }
}

double Quadric::sagOfSweep(double h, const CurvePoint& a, const CurvePoint& b) const
{
    return std::max(std::hypot(a.x, a.y), std::hypot(b.x, b.y)) *
           (1 - std::cos(h * (fThetaMax - fThetaMin)));
}

}  // namespace zeb
