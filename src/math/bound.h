// Axis-aligned boxes.
#pragma once

#include <algorithm>
#include <iosfwd>

#include "math/point.h"
#include "util/number.h"

namespace zeb
{

class Matrix;

// A box; the default one is infinite and says so in its flag.
struct Bound {
    float xmin = -kInfinity, xmax = kInfinity;
    float ymin = -kInfinity, ymax = kInfinity;
    float zmin = -kInfinity, zmax = kInfinity;
    unsigned short finite = 0;

    Bound() = default;
    explicit Bound(float v) : Bound(v, v, v, v, v, v) {}
    Bound(float x0, float x1, float y0, float y1, float z0, float z1)
        : xmin(x0), xmax(x1), ymin(y0), ymax(y1), zmin(z0), zmax(z1), finite(1)
    {
    }
    explicit Bound(const float* v) : Bound(v[0], v[1], v[2], v[3], v[4], v[5]) {}

    // The box that nothing has been added to yet.
    static Bound empty()
    {
        return {kInfinity, -kInfinity, kInfinity, -kInfinity, kInfinity, -kInfinity};
    }

    void add(const Point& p)
    {
        xmin = std::min(xmin, p.x);
        xmax = std::max(xmax, p.x);
        ymin = std::min(ymin, p.y);
        ymax = std::max(ymax, p.y);
        zmin = std::min(zmin, p.z);
        zmax = std::max(zmax, p.z);
    }
    bool holds(float x, float y) const { return x >= xmin && x <= xmax && y >= ymin && y <= ymax; }
    // Whether the two share no place, depths aside.
    bool misses(const Bound& b) const
    {
        return b.xmin > xmax || b.xmax < xmin || b.ymin > ymax || b.ymax < ymin;
    }
    // Makes up for one rounding of each extent.
    void roundOut();
    // Two infinite boxes stay as they are. Nothing tests whether the result is empty.
    void intersect(const Bound& b);
    Bound& operator*=(const Matrix& m);
};

// What holds both.
inline Bound joined(const Bound& a, const Bound& b)
{
    return {std::min(a.xmin, b.xmin), std::max(a.xmax, b.xmax), std::min(a.ymin, b.ymin),
            std::max(a.ymax, b.ymax), std::min(a.zmin, b.zmin), std::max(a.zmax, b.zmax)};
}

// A box with the range of w over the homogeneous points it bounds.
struct Boundw : Bound {
    float wmin = -kInfinity, wmax = kInfinity;

    Boundw() = default;
    Boundw(float x0, float x1, float y0, float y1, float z0, float z1, float w0, float w1)
        : Bound(x0, x1, y0, y1, z0, z1), wmin(w0), wmax(w1)
    {
    }
    Boundw(const Bound& box, float w0, float w1) : Bound(box), wmin(w0), wmax(w1) {}

    static Boundw empty() { return {Bound::empty(), kInfinity, -kInfinity}; }

    void add(const Pointw& p)
    {
        Bound::add(Point(p.x, p.y, p.z));
        wmin = std::min(wmin, p.w);
        wmax = std::max(wmax, p.w);
    }
    void add(const Boundw& b);
    void intersect(const Boundw& b);
    Boundw& operator*=(const Matrix& m);

    // Whether dividing by w stays below 1e38.
    bool homogenizable() const;
    // The tightest box of the projected points; w must not reach 0.
    void homogenize();
};

bool operator==(const Bound& a, const Bound& b);
inline bool operator!=(const Bound& a, const Bound& b) { return !(a == b); }
std::ostream& operator<<(std::ostream& stream, const Bound& b);
std::ostream& operator<<(std::ostream& stream, const Boundw& b);

}  // namespace zeb
