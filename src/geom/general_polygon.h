// Polygons that may be concave or have holes, and their meshes.
#pragma once

#include "geom/polygon_mesh.h"

namespace zeb
{

// Loop 0 is the outline, the others are holes; the vertices follow loop by loop.
class GeneralPolygon : public Polygon
{
public:
    static bool verify(long nloops, const long* nverts, long nargs, const unsigned short* tokens,
                       void* const* values);
    GeneralPolygon(long nloops, const long* nverts, long nargs, const unsigned short* tokens,
                   void* const* values);
    GeneralPolygon(const Polygon& parent, std::uint32_t face, std::vector<long> loopSizes,
                   const long* indices);

    unsigned short type() const override { return kGeneralPolygon; }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<GeneralPolygon>(*this);
    }
    bool shared(long from, long to) const override;
    // Joins holes to the outline, one at a time, then cuts concave outlines at reflex corners.
    void split(PrimitiveSink& sink) override;

    // Newell's normal of the outline (in: I. Sutherland, R. Sproull, R. Schumacker, 1974), not
    // normalized.
    Pointd normal() const { return loopNormal(0, fLoopSizes[0]); }
    // Whether the outline turns one way only.
    bool convex(const Pointd& N) const;
    // Whether the line between two vertices meets an edge on the way, or leaves the polygon at its
    // far end.
    bool crosses(long i, long j, const Pointd& N) const;

private:
    struct Diagonal {
        long from, to;
    };

    Pointd loopNormal(long first, long count) const;
    // The neighbours of a vertex in its loop.
    long after(long i) const;
    long before(long i) const;
    // From one vertex to another: exact, wherever the polygon lies.
    Pointd edge(long from, long to) const
    {
        return Pointd(fPoints[static_cast<std::size_t>(to)]) -
               fPoints[static_cast<std::size_t>(from)];
    }
    bool reflex(long i, const Pointd& N) const;
    Diagonal concaveDiagonal(const Pointd& N) const;
    void splitOutline(PrimitiveSink& sink, const Pointd& N);
    void bridgeHole(PrimitiveSink& sink, const Pointd& N);
    bool insideCorner(long corner, const Pointd& direction, const Pointd& N) const;

    std::vector<long> fLoopSizes;
    std::vector<long> fLoopStarts;  // and one more, past the end
    std::vector<long> fLoopOf;      // the loop of each vertex
    SideFlags fSides;
    void indexLoops();
};

class GeneralPolygonMesh : public PolygonMesh
{
public:
    static bool verify(long nfaces, const long* nloops, const long* nverts, const long* verts,
                       long nargs, const unsigned short* tokens, void* const* values);
    GeneralPolygonMesh(long nfaces, const long* nloops, const long* nverts, const long* verts,
                       long nargs, const unsigned short* tokens, void* const* values);

    unsigned short type() const override { return kGeneralPolygonMesh; }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<GeneralPolygonMesh>(*this);
    }

private:
    std::unique_ptr<Primitive> makeFace(std::uint32_t face, long loops,
                                        const MeshFaces::Place& place) const override;
};

}  // namespace zeb
