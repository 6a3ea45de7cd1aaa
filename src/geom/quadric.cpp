#include "geom/quadric.h"

#include <algorithm>
#include <cmath>

#include "geom/sweep_kernel.h"
#include "math/trigonometry.h"
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

// The latitude of a height, also where that is a pole or beyond it.
double latitude(double z, double r) { return r == 0 ? 0 : arcsine(std::clamp(z / r, -1.0, 1.0)); }

double lengthOf(double x, double y) { return std::sqrt(x * x + y * y); }

struct Range {
    double min, max;
};

// A turn about the origin of a plane, from one angle to another.
struct Arc {
    double angle;  // between them, whichever way round
    SinCos from, to;

    Arc(double first, double last)
        : angle(std::fabs(last - first)),
          from(sincos(std::min(first, last))),
          to(sincos(std::max(first, last)))
    {
    }
};

struct Box {
    Range x, y;
};

// Quarters of the plane, all round.
int quarterOf(double x, double y)
{
    if (y > 0) return x > 0 ? 0 : 1;
    if (y < 0) return x < 0 ? 2 : 3;
    return x < 0 ? 2 : 0;
}

// Of what the point (x, y) passes on its turn: where that begins and ends, and what lies on the
// axes between. That the ends are rounded may add an axis that they are next to, or leave one out:
// then an end is as far out as its place on the axis, but for rounding.
Box swept(double x, double y, const Arc& arc)
{
    const double x0 = x * arc.from.cos - y * arc.from.sin;
    const double y0 = y * arc.from.cos + x * arc.from.sin;
    const double x1 = x * arc.to.cos - y * arc.to.sin;
    const double y1 = y * arc.to.cos + x * arc.to.sin;
    Box box{{std::min(x0, x1), std::max(x0, x1)}, {std::min(y0, y1), std::max(y0, y1)}};
    const double radius = lengthOf(x, y);
    constexpr double kHalfTurn = 3.14159265358979323846;
    const int first = quarterOf(x0, y0);
    int passed = (quarterOf(x1, y1) - first) & 3;
    // Where it ends in the quarter where it began, nothing was passed, or everything.
    if (passed == 0 && arc.angle > kHalfTurn) passed = 4;
    if (arc.angle >= 2 * kHalfTurn) passed = 4;
    for (int k = first + 1; k <= first + passed; ++k) {
        switch (k & 3) {
            case 0:
                box.x.max = radius;
                break;
            case 1:
                box.y.max = radius;
                break;
            case 2:
                box.x.min = -radius;
                break;
            default:
                box.y.min = -radius;
        }
    }
    return box;
}

void set(double (&to)[3], double x, double y, double z)
{
    to[0] = x;
    to[1] = y;
    to[2] = z;
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
    const auto [sine, cosine] = sincos(phi);
    const double x = radius * cosine, z = radius * sine;
    return {x, 0, z, -range * z, 0, range * x};
}

void SphereCurve::describe(Sweep& sweep) const
{
    sweep.kind = Sweep::kCircle;
    sweep.radius = radius;
    sweep.first = phimin;
    sweep.last = phimax;
}

void SphereCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    const auto [x, z] = swept(radius, 0, {lerp(v0, phimin, phimax), lerp(v1, phimin, phimax)});
    a = corner(x.min, z.min);
    b = corner(x.max, z.max);
}

double SphereCurve::sag(double h) const
{
    return std::fabs(radius) * (1 - sincos(h * (phimax - phimin)).cos);
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

void ConeCurve::describe(Sweep& sweep) const
{
    set(sweep.from, radius, 0, 0);
    set(sweep.to, 0, 0, height);
    set(sweep.slope, -extent * radius, 0, extent * height);
    sweep.extent = extent;
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

void CylinderCurve::describe(Sweep& sweep) const
{
    set(sweep.base, radius, 0, 0);
    set(sweep.from, 0, 0, zmin);
    set(sweep.to, 0, 0, zmax);
    set(sweep.slope, 0, 0, zmax - zmin);
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

void HyperboloidCurve::describe(Sweep& sweep) const
{
    const CurvePoint start = at(0);
    set(sweep.from, p1.x, p1.y, p1.z);
    set(sweep.to, p2.x, p2.y, p2.z);
    set(sweep.slope, start.dx, start.dy, start.dz);
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

void ParaboloidCurve::describe(Sweep& sweep) const
{
    sweep.kind = Sweep::kParabola;
    sweep.radius = rmax;
    sweep.first = zmin;
    sweep.last = zmax;
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

void DiskCurve::describe(Sweep& sweep) const
{
    set(sweep.from, radius, 0, 0);
    set(sweep.to, inner, 0, 0);
    set(sweep.slope, inner - radius, 0, 0);
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
    const auto [sine, cosine] = sincos(phi);
    const double x = minor * cosine, z = minor * sine;
    return {major + x, 0, z, -range * z, 0, range * x};
}

void TorusCurve::describe(Sweep& sweep) const
{
    sweep.kind = Sweep::kCircle;
    sweep.base[0] = major;
    sweep.radius = minor;
    sweep.first = phimin;
    sweep.last = phimax;
}

void TorusCurve::corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const
{
    const auto [x, z] = swept(minor, 0, {lerp(v0, phimin, phimax), lerp(v1, phimin, phimax)});
    a = corner(major + x.min, z.min);
    b = corner(major + x.max, z.max);
}

double TorusCurve::sag(double h) const
{
    return std::fabs(minor) * (1 - sincos(h * (phimax - phimin)).cos);
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
    takePlace(parent, umin, umax, vmin, vmax);
}

void Quadric::describePart(Sweep& sweep) const
{
    sweep.thetaMin = fThetaMin;
    sweep.thetaMax = fThetaMax;
    sweep.vMin = fVmin;
    sweep.vMax = fVmax;
    set(sweep.origin, fOrigin.x, fOrigin.y, fOrigin.z);
}

// Sweeping is linear in the swept point: the sweep of a box's corners holds that of the box.
Boundw Quadric::boundRevolve(const CurvePoint& a, const CurvePoint& b) const
{
    constexpr double kRounding = 1e-14;  // of cosines and products, with room
    const Arc arc(fThetaMin, fThetaMax);
    const Box first = swept(a.x, a.y, arc), last = swept(b.x, b.y, arc);
    const Range x{std::min(first.x.min, last.x.min), std::max(first.x.max, last.x.max)};
    const Range y{std::min(first.y.min, last.y.min), std::max(first.y.max, last.y.max)};
    const double size = std::max({lengthOf(a.x, a.y), lengthOf(b.x, b.y), std::fabs(a.z),
                                  std::fabs(b.z), double{std::fabs(fOrigin.x)},
                                  double{std::fabs(fOrigin.y)}, double{std::fabs(fOrigin.z)}});
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
    const auto [sine, cosine] = sincos(theta);
    return turned(p, cosine, sine, fThetaMax - fThetaMin, fVmax - fVmin, fOrigin);
}

// The angles of the columns are those of all rows.
void Quadric::revolveRow(Columns& columns, const CurvePoint& p, Differential* row) const
{
    if (columns.kept.empty()) {
        columns.kept.reserve(2 * columns.u.size());
        for (const float u : columns.u) {
            const double theta = lerp(double{u}, fThetaMin, fThetaMax);
            const auto [sine, cosine] = sincos(theta);
            columns.kept.push_back(cosine);
            columns.kept.push_back(sine);
        }
    }
    for (std::size_t k = 0; k < columns.kept.size(); k += 2) {
        *row++ = turned(p, columns.kept[k], columns.kept[k + 1], fThetaMax - fThetaMin,
                        fVmax - fVmin, fOrigin);
    }
}

double Quadric::sagOfSweep(double h, const CurvePoint& a, const CurvePoint& b) const
{
    return std::max(lengthOf(a.x, a.y), lengthOf(b.x, b.y)) *
           (1 - sincos(h * (fThetaMax - fThetaMin)).cos);
}

}  // namespace zeb
