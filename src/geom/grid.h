// The grid of micropolygon vertices that dicing makes.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "geom/control_values.h"
#include "geom/edges.h"
#include "math/bound.h"
#include "math/color.h"
#include "math/transform.h"
#include "state/args.h"
#include "state/attrib.h"
#include "state/render_frame.h"
#include "util/pool.h"

namespace zeb
{

// One sample of a surface, in camera space.
struct Vertex {
    Point P, dPdu, dPdv;
};

// Column i of vertex row j.
struct VertexPlace {
    std::uint16_t i, j;
};

// What was shaded of grids.
struct ShadingCounts {
    std::uint64_t shaded = 0;  // vertices, or micropolygons under constant shading
    std::uint64_t seen = 0;    // micropolygons; of grids that are not opaque, all count
};

// Rectangular: v rows of u micropolygons. Triangular: rows shorten towards the last, so that the
// micropolygons cover u + v <= 1. The buckets that it reaches share it.
class Grid : public Pooled
{
public:
    const unsigned short fUSize, fVSize;
    const std::shared_ptr<const Attrib> fAttrib;
    const std::uint32_t fSeq;
    const bool fFlip;  // transformation and orientation disagree: normals are turned round
    const bool fTriangular;
    const bool fSmooth, fMatte;  // as the attributes say
    const bool fTransposed;      // rows run along the surface's v instead of its u
    const Edges fEdges;          // u along the rows
    // The primitive's variables in camera space: those that shading knows by name, and all others.
    // Positions are in the vertices.
    const ArgList fVertexArgs, fOtherArgs;
    // What its control points say of the surface's colours, in its own u and v.
    PieceColors fPieceColors;

    Grid(unsigned short usize, unsigned short vsize, std::shared_ptr<const Attrib> attrib,
         const Transform& transform, std::uint32_t seq, bool flip, bool triangular,
         const ArgList& args, const Edges& edges = {}, bool transposed = false);

    // Where column i of vertex row j lies: rows lie one behind the other, each as long as it is
    // used.
    std::size_t at(int i, int j) const
    {
        return static_cast<std::size_t>(fRowStarts[j]) + static_cast<std::size_t>(i);
    }
    // Column i of vertex row j.
    Vertex& vertex(int i, int j) { return fVertices[at(i, j)]; }
    const Vertex& vertex(int i, int j) const { return fVertices[at(i, j)]; }
    // All vertices, rows one behind the other.
    Vertex* vertices() { return fVertices.get(); }
    std::size_t vertexCount() const { return at(vertexCount(fVSize) - 1, fVSize) + 1; }
    // Vertices in row j, and micropolygons between rows j and j + 1.
    int vertexCount(int j) const { return j == 0 ? fUSize + 1 : cellCount(j - 1) + 1; }
    int cellCount(int j) const { return fTriangular ? fUSize - j * fUSize / fVSize : fUSize; }

    // Finds the positions in raster space, whose z is the depth that hits are ordered by.
    void project(const RenderFrame& frame);
    Point raster(int i, int j) const { return raster(at(i, j)); }
    Point raster(std::size_t k) const { return {fRaster[0][k], fRaster[1][k], fRaster[2][k]}; }
    // Raster x, y or depth of all vertices. As many more as kernels take at once may be read.
    const float* rasterPlane(int axis) const { return fRaster[axis]; }
    // Of the vertices of row j in raster space, and of all.
    const Bound& rowBound(int j) const { return fRowBounds[j]; }
    const Bound& bound() const { return fBound; }

    // Lets colours be found when they are asked for, and counted; until then the grid is black and
    // opaque. Frame and counter have to stay.
    void shadeOnDemand(const RenderFrame& frame, ShadingCounts* counts = nullptr);
    Color color(int i, int j) const
    {
        if (wantVertex(i, j)) shadeWanted();
        return fColors.at(at(i, j));
    }
    Color opacity(int i, int j) const
    {
        if (!fOpacityVaries) return fOpacity;
        knowOpacity(i, j);
        return fOpacities.at(at(i, j));
    }
    // At a place of the micropolygon that begins at vertex (i, j).
    Color colorAt(int i, int j, float s, float t) const
    {
        if (want(i, j)) shadeWanted();
        return within(fColors, i, j, s, t);
    }
    Color opacityAt(int i, int j, float s, float t) const
    {
        if (!fOpacityVaries) return fOpacity;
        for (const int v : {j, j + fSmooth}) {
            for (const int u : {i, i + fSmooth}) knowOpacity(u, v);
        }
        return within(fOpacities, i, j, s, t);
    }
    // Says that the colours of the micropolygon that begins at (i, j) will be asked for: many at
    // once are found several times as fast as one after the other. Whether any of those that were
    // wanted are unknown.
    bool want(int i, int j) const
    {
        if (fColors.complete || !fFrame) return false;
        if (fColors.mark(at(i, j), ColorPlane::kSeen, *this)) wantCell(i, j);
        return !fWanted.empty();
    }
    // As colorAt, of what has been wanted and found.
    Color foundColorAt(int i, int j, float s, float t) const { return within(fColors, i, j, s, t); }
    bool wantsAny() const { return !fWanted.empty(); }
    void shadeWanted() const;
    // Finds all colours and opacities now. The vertices are given back then: nothing else reads
    // them.
    void shade() const;
    // Of a vertex that needs no shader.
    void setColor(int i, int j, const Color& color) { fColors.set(at(i, j), *this, color); }
    void setOpacity(int i, int j, const Color& opacity)
    {
        fOpacityVaries = true;
        fOpaque = false;
        fOpacities.set(at(i, j), *this, opacity);
    }
    // The opacity of all vertices; null where they differ.
    const Color* uniformOpacity() const { return fOpacityVaries ? nullptr : &fOpacity; }
    // Whether all is opaque, neither more nor less.
    bool isOpaque() const { return fOpaque; }

private:
    // Colours of vertices, as far as they are known or wanted; others are black.
    struct ColorPlane {
        PoolArray<Color> values;
        // Of a vertex that its colour is known or wanted, and that the micropolygon is seen which
        // begins there.
        enum Mark : std::uint8_t { kTaken = 1, kSeen = 2 };
        PoolArray<std::uint8_t> marks;  // null before there is one, and once all are known
        bool complete = false;

        // Whether this makes it so.
        bool mark(std::size_t k, Mark which, const Grid& grid)
        {
            if (!marks) begin(grid);
            const std::uint8_t before = std::exchange(marks[k], marks[k] | which);
            return !(before & which);
        }
        bool take(std::size_t k, const Grid& grid) { return !complete && mark(k, kTaken, grid); }
        Color at(std::size_t k) const { return values ? values[k] : gBlack; }
        void set(std::size_t k, const Grid& grid, const Color& color)
        {
            take(k, grid);
            values[k] = color;
        }
        void begin(const Grid& grid);
        void isComplete()
        {
            marks.reset();
            complete = true;
        }
    };

    Color within(const ColorPlane& plane, int i, int j, float s, float t) const
    {
        const Color* const values = plane.values.get();
        if (!values) return gBlack;
        const Color* const upper = values + at(i, j);
        if (!fSmooth) return *upper;
        const Color* const lower = values + at(i, j + 1);
        return bilerp(s, t, upper[0], upper[1], lower[0], lower[1]);
    }
    bool wantVertex(int i, int j) const
    {
        if (!fFrame || !fColors.take(at(i, j), *this)) return false;
        if (fWanted.empty()) fWanted.reserve(vertexCount());
        fWanted.push_back({static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j)});
        return true;
    }
    void wantCell(int i, int j) const;
    void knowOpacity(int i, int j) const;
    // What lasts as long as the grid, in one allocation: there are many small grids.
    PoolArray<std::byte> fLasting;
    std::uint32_t* fRowStarts = nullptr;
    Bound* fRowBounds = nullptr;
    float* fRaster[3] = {};               // a plane for each axis
    mutable PoolArray<Vertex> fVertices;  // null when all is shaded
    Bound fBound;

    const RenderFrame* fFrame = nullptr;  // that colours are found under
    ShadingCounts* fCounts = nullptr;
    Color fOpacity = gWhite;
    bool fOpacityVaries = false, fOpaque = true;
    // Found when first asked for. Where shading is constant, those of the micropolygons that begin
    // at the vertices.
    mutable ColorPlane fColors, fOpacities;
    mutable std::vector<VertexPlace, PoolAllocator<VertexPlace>> fWanted;
};

}  // namespace zeb
