// The grid of micropolygon vertices that dicing makes.
#pragma once

#include <cstdint>
#include <memory>

#include "geom/control_values.h"
#include "geom/edges.h"
#include "math/bound.h"
#include "math/color.h"
#include "math/transform.h"
#include "state/args.h"
#include "state/attrib.h"
#include "state/render_frame.h"

namespace zeb
{

// One sample of a surface. P is in camera space until the grid is projected, the derivatives
// always.
struct Vertex {
    Point P, dPdu, dPdv;
    Color Ci = gBlack, Oi = gWhite;
};

// Rectangular: v rows of u micropolygons. Triangular: rows shorten towards the last, so that the
// micropolygons cover u + v <= 1. The buckets that it reaches share it.
class Grid
{
public:
    const unsigned short fUSize, fVSize;
    const std::shared_ptr<const Attrib> fAttrib;
    const std::uint32_t fSeq;
    const bool fFlip;  // transformation and orientation disagree: normals are turned round
    const bool fTriangular;
    const bool fTransposed;  // rows run along the surface's v instead of its u
    const Edges fEdges;      // u along the rows
    // The primitive's variables in camera space: those that shading knows by name, and all others.
    // Positions are in the vertices.
    const ArgList fVertexArgs, fOtherArgs;
    // What its control points say of the surface's colours, in its own u and v.
    PieceColors fColors;

    Grid(unsigned short usize, unsigned short vsize, std::shared_ptr<const Attrib> attrib,
         const Transform& transform, std::uint32_t seq, bool flip, bool triangular,
         const ArgList& args, const Edges& edges = {}, bool transposed = false);

    // Column i of vertex row j.
    Vertex& vertex(int i, int j) { return fVertices[at(i, j)]; }
    const Vertex& vertex(int i, int j) const { return fVertices[at(i, j)]; }
    // Vertices in row j, and micropolygons between rows j and j + 1.
    int vertexCount(int j) const { return j == 0 ? fUSize + 1 : cellCount(j - 1) + 1; }
    int cellCount(int j) const { return fTriangular ? fUSize - j * fUSize / fVSize : fUSize; }

    // Colours the vertices; defined in shade/grid_shading.cpp.
    void shade(const RenderFrame& frame);
    // Moves the positions to raster space: z becomes the depth that hits are ordered by.
    void project(const RenderFrame& frame);
    // Of the vertices of row j, valid once projected.
    const Bound& rowBound(int j) const { return fRowBounds[j]; }
    // Of all vertices, likewise.
    const Bound& bound() const { return fBound; }

private:
    // Rows lie one behind the other, each as long as it is used.
    std::size_t at(int i, int j) const
    {
        return static_cast<std::size_t>(fRowStarts[j]) + static_cast<std::size_t>(i);
    }

    std::unique_ptr<std::uint32_t[]> fRowStarts;
    std::unique_ptr<Vertex[]> fVertices;
    std::unique_ptr<Bound[]> fRowBounds;
    Bound fBound;
};

}  // namespace zeb
