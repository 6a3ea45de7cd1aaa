// What all polygons have in common.
#pragma once

#include <string>
#include <vector>

#include "geom/primitive.h"

namespace zeb
{

// Vertices are in object space.
class Polygon : public Primitive
{
public:
    // More than this is taken for a mistake.
    static constexpr long kMaxVertices = 1L << 27;

    virtual Point vertex(long i) const { return fPoints[static_cast<std::size_t>(i)]; }
    virtual long nVertices() const { return static_cast<long>(fPoints.size()); }
    // Whether pieces meet along the line between two vertices of a face; its number is that of both
    // places, whichever face asks.
    virtual bool shared(long, long) const { return false; }
    static std::uint32_t lineBetween(const Point& a, const Point& b);
    static std::uint32_t placeHash(const Point& place);

    Boundw bound() const override;
    bool diceable(Dicing&, float) const override { return false; }

protected:
    Polygon() = default;
    // A copy for an instance, variables and all.
    Polygon(const Polygon& other) : Primitive(other), fPoints(other.fPoints)
    {
        fArgs.init(other.fArgs);
    }
    // Face number `face` of a parent: the n vertices listed, with their values.
    Polygon(const Polygon& parent, std::uint32_t face, long n, const long* indices);
    Polygon(const Polygon& parent, std::uint32_t child, bool halved)
        : Primitive(parent, child, halved)
    {
    }

    void init(long n, long faces, long nargs, const unsigned short* tokens, void* const* values);
    // What the bound that the host has given leaves of a box in camera space.
    Boundw clipped(const Bound& box) const;
    // Takes the first n values of "point" out of the variables.
    void extractP(long n);

    std::vector<Point> fPoints;
};

// Which sides of a polygon other faces share; none of a surface that is one polygon.
class SideFlags
{
public:
    SideFlags() = default;
    // Side k of a part of the parent runs from vertex k to vertex next(k) of those listed.
    template <class Next>
    SideFlags(const Polygon& parent, long n, const long* indices, const Next& next)
    {
        fFlags.reserve(static_cast<std::size_t>(n));
        for (long k = 0; k < n; ++k) {
            fFlags.push_back(parent.shared(indices[k], indices[next(k)]) ? 1 : 0);
        }
    }
    bool operator[](long side) const
    {
        return !fFlags.empty() && fFlags[static_cast<std::size_t>(side)];
    }

private:
    std::string fFlags;  // which keeps those of small polygons without an allocation
};

// Whether a list can make a polygon of that many vertices and faces: exactly one "point", and every
// value a number.
bool verifyPolygon(long vertices, long faces, long n, const unsigned short* tokens,
                   void* const* values);
// Whether a count lies in min ... Polygon::kMaxVertices; reports it by its name if not.
bool verifyCount(const char* name, long count, long min);
// Whether n loops of 3 or more vertices each can be read; adds their sizes up.
bool verifyLoops(long n, const long* sizes, long& total);
// Whether n indices can be read.
bool verifyIndices(long n, const long* indices);
// The vertices that n indices reach.
long vertexCount(long n, const long* indices);

}  // namespace zeb
