// Convex polygons and their meshes.
#pragma once

#include "geom/polygon_mesh.h"

namespace zeb
{

class ConvexPolygon : public Polygon
{
public:
    static bool verify(long n, long nargs, const unsigned short* tokens, void* const* values);
    ConvexPolygon(long n, long nargs, const unsigned short* tokens, void* const* values);
    ConvexPolygon(const Polygon& parent, std::uint32_t face, long n, const long* indices)
        : Polygon(parent, face, n, indices),
          fSides(parent, n, indices, [n](long k) { return (k + 1) % n; })
    {
    }

    unsigned short type() const override { return kConvexPolygon; }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<ConvexPolygon>(*this);
    }
    bool shared(long from, long to) const override;
    // Cuts along the diagonal between nearly opposite vertices whose corners are widest.
    void split(PrimitiveSink& sink) override;

    struct Diagonal {
        long from, to;
    };
    Diagonal bestDiagonal() const;
    // The largest cosine of the four angles between the diagonal and the edges at its ends.
    float cosMinAngle(long i, long j) const;

private:
    SideFlags fSides;
};

class ConvexPolygonMesh : public PolygonMesh
{
public:
    static bool verify(long nfaces, const long* nverts, const long* verts, long nargs,
                       const unsigned short* tokens, void* const* values);
    ConvexPolygonMesh(long nfaces, const long* nverts, const long* verts, long nargs,
                      const unsigned short* tokens, void* const* values);

    unsigned short type() const override { return kConvexPolygonMesh; }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<ConvexPolygonMesh>(*this);
    }

private:
    std::unique_ptr<Primitive> makeFace(std::uint32_t face, long loops,
                                        const MeshFaces::Place& place) const override;
};

}  // namespace zeb
