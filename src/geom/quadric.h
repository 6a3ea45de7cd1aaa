// The quadrics: surfaces that a curve sweeps about the z axis.
#pragma once

#include <limits>

#include "geom/primitive.h"

namespace zeb
{

// A place on the swept curve where the sweep begins, and its derivative.
struct CurvePoint {
    double x, y, z;
    double dx, dy, dz;
};

// The curve of each quadric over 0 ... 1. Its box is given by two opposite corners; curves off the
// xz plane are straight, and their ends are the corners. sag() is how far the middle of a chord
// over 2 h is from the curve at most, infinite where that is not known. A closed curve ends where
// it begins. describe() puts at() down for the kernel.
struct SphereCurve {
    double radius, phimin, phimax;
    SphereCurve(float radius, float zmin, float zmax);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double h) const;
    bool closed() const { return false; }
};

struct ConeCurve {
    double radius, height;
    double extent;  // of the height, what the cut leaves
    ConeCurve(float radius, float height, float cutheight);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double) const { return 0; }
    bool closed() const { return false; }
};

struct CylinderCurve {
    double radius, zmin, zmax;
    CylinderCurve(float radius, float zmin, float zmax);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double) const { return 0; }
    bool closed() const { return false; }
};

struct HyperboloidCurve {
    Point p1, p2;
    HyperboloidCurve(const float* point1, const float* point2);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double) const { return 0; }
    bool closed() const { return false; }
};

struct ParaboloidCurve {
    double rmax, zmin, zmax;
    // zmax is not 0, and zmin not on its other side.
    ParaboloidCurve(float rmax, float zmin, float zmax);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double) const { return std::numeric_limits<double>::infinity(); }
    bool closed() const { return false; }

private:
    // The square of the radius, in units of rmax.
    double area(double v) const { return std::max((zmin + v * (zmax - zmin)) / fZmax, 0.0); }
    double fZmax;
};

struct DiskCurve {
    double inner, radius;
    DiskCurve(float inner, float radius);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double) const { return 0; }
    bool closed() const { return false; }
};

struct TorusCurve {
    double major, minor, phimin, phimax;
    TorusCurve(float major, float minor, float phimin, float phimax);
    CurvePoint at(double v) const;
    void describe(Sweep& sweep) const;
    void corners(double v0, double v1, CurvePoint& a, CurvePoint& b) const;
    double sag(double h) const;
    bool closed() const { return fClosed; }

private:
    bool fClosed;
};

// What does not depend on the curve. Evaluation is in double, so that neighbouring pieces agree on
// the points of their common edge.
class Quadric : public Primitive
{
protected:
    // Degrees: beyond a full turn is a full turn.
    Quadric(float thetamax, long n, const unsigned short* tokens, void* const* values);
    // A whole turn about an axis through the origin given.
    Quadric(const Point& origin, const ArgList& args);
    Quadric(const Quadric& other);
    // A part of the parent, given in its parameters.
    Quadric(float umin, float umax, float vmin, float vmax, const Quadric& parent,
            std::uint32_t child);

    // Of the surface between two opposite corners of the curve's box.
    Boundw boundRevolve(const CurvePoint& a, const CurvePoint& b) const;
    Differential revolve(double u, const CurvePoint& curve) const;
    void revolveRow(Columns& columns, const CurvePoint& curve, Differential* row) const;
    // Of the sweep of a box's corners.
    double sagOfSweep(double h, const CurvePoint& a, const CurvePoint& b) const;
    void describePart(Sweep& sweep) const;
    double curveParameter(double v) const { return (1 - v) * fVmin + v * fVmax; }

    Point fOrigin;
    double fThetaMin = 0, fThetaMax;
    double fVmin = 0, fVmax = 1;  // of the curve's own parameter
};

template <class Curve, PrimitiveType kType>
class QuadricOf final : public Quadric
{
public:
    QuadricOf(const Curve& curve, float thetamax, long n, const unsigned short* tokens,
              void* const* values)
        : Quadric(thetamax, n, tokens, values), fCurve(curve)
    {
        if (curve.closed()) fEdges.closeV(path());
    }
    QuadricOf(const Curve& curve, const Point& origin, const ArgList& args)
        : Quadric(origin, args), fCurve(curve)
    {
        if (curve.closed()) fEdges.closeV(path());
    }
    QuadricOf(const QuadricOf& other) = default;
    QuadricOf(float umin, float umax, float vmin, float vmax, const QuadricOf& parent,
              std::uint32_t child)
        : Quadric(umin, umax, vmin, vmax, parent, child), fCurve(parent.fCurve)
    {
    }

    const Curve& curve() const { return fCurve; }

    unsigned short type() const override { return kType; }
    Boundw bound() const override
    {
        CurvePoint a, b;
        fCurve.corners(fVmin, fVmax, a, b);
        return boundRevolve(a, b);
    }
    void split(PrimitiveSink& sink) override { addQuarters(sink); }
    void splitAcross(PrimitiveSink& sink, const RenderFrame& frame) override
    {
        addHalves(sink, frame);
    }
    Differential evaluate(float u, float v) const override
    {
        return revolve(u, fCurve.at(curveParameter(v)));
    }
    void evaluateRow(Columns& columns, float v, Differential* row) const override
    {
        revolveRow(columns, fCurve.at(curveParameter(v)), row);
    }
    bool describe(Sweep& sweep) const override
    {
        fCurve.describe(sweep);
        describePart(sweep);
        return true;
    }
    double sagAlongU(double h) const override
    {
        CurvePoint a, b;
        fCurve.corners(fVmin, fVmax, a, b);
        return sagOfSweep(h, a, b);
    }
    double sagAlongV(double h) const override { return fCurve.sag(h * (fVmax - fVmin)); }
    Pointwd pointAt(float u, float v) const override { return evaluate(u, v).P; }
    Pointw evalP(float u, float v) const override { return rounded(evaluate(u, v).P); }
    Pointw evaldPdu(float u, float v) const override { return rounded(evaluate(u, v).dPdu); }
    Pointw evaldPdv(float u, float v) const override { return rounded(evaluate(u, v).dPdv); }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<QuadricOf>(*this);
    }

private:
    std::unique_ptr<Primitive> part(float umin, float umax, float vmin, float vmax,
                                    std::uint32_t child) const override
    {
        return std::make_unique<QuadricOf>(umin, umax, vmin, vmax, *this, child);
    }

    Curve fCurve;
};

using Sphere = QuadricOf<SphereCurve, kSphere>;
using Cone = QuadricOf<ConeCurve, kCone>;
using Cylinder = QuadricOf<CylinderCurve, kCylinder>;
using Hyperboloid = QuadricOf<HyperboloidCurve, kHyperboloid>;
using Paraboloid = QuadricOf<ParaboloidCurve, kParaboloid>;
using Disk = QuadricOf<DiskCurve, kDisk>;
using Torus = QuadricOf<TorusCurve, kTorus>;

}  // namespace zeb
