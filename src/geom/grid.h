// The grid of micropolygon vertices that dicing makes.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "geom/control_values.h"
#include "geom/edges.h"
#include "geom/surface_part.h"
#include "math/bound.h"
#include "math/color.h"
#include "math/transform.h"
#include "state/args.h"
#include "state/attrib.h"
#include "state/render_frame.h"
#include "state/report_log.h"
#include "util/lock.h"
#include "util/pool.h"

namespace zeb
{

class Primitive;

// One sample of a surface, in camera space.
struct Vertex {
    Point P, dPdu, dPdv;
};

// Column i of vertex row j.
struct VertexPlace {
    std::uint16_t i, j;
};

// Micropolygons whose colours will be read, named by the vertices that they begin at, in blocks.
struct AskedCells {
    static constexpr int kMost = 30;
    VertexPlace cells[kMost];
    int count = 0;
    AskedCells* next = nullptr;
};

// What shading reported of a vertex.
struct VertexReports {
    VertexPlace place;
    std::shared_ptr<ReportLog> log;
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
    // What its control points say of colours and variables, in the surface's own u and v.
    PieceValues fPieceValues;
    // Where it lies on its surface, and that surface: for functions of the host's.
    SurfacePart fPart;
    std::shared_ptr<const Transform> fTransform;
    // A function of the host's has moved the vertices. Their derivatives tell all about normals
    // then, given ones included.
    bool fDisplaced = false;

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

    // Lets the function of the attributes that displaces move the vertices, once the place on the
    // surface is known; without one, nothing happens.
    void displace(const Primitive& primitive, const RenderFrame& frame);
    // Finds the positions in raster space, whose z is the depth that hits are ordered by.
    void project(const RenderFrame& frame);
    Point raster(int i, int j) const { return raster(at(i, j)); }
    Point raster(std::size_t k) const { return {fRaster[0][k], fRaster[1][k], fRaster[2][k]}; }
    // Raster x, y or depth of all vertices. As many more as kernels take at once may be read.
    const float* rasterPlane(int axis) const { return fRaster[axis]; }
    // Of the vertices of row j in raster space, and of all.
    const Bound& rowBound(int j) const { return fRowBounds[j]; }
    const Bound& bound() const { return fBound; }

    // Whether functions of the host's find colours: they get all points at once.
    bool shadedByHost() const { return fAttrib->colorsByHost; }
    // Lets colours be found when they are asked for; until then the grid is black and opaque. The
    // frame has to stay.
    void shadeOnDemand(const RenderFrame& frame);
    // Finds the colours of micropolygons that nobody has asked for before: many at once are found
    // several times as fast as one after the other. Any thread may ask, and read then what it has
    // asked for.
    void shade(const AskedCells* cells, ShadingCounts& counts) const;
    // Finds all colours. The vertices are given back then: nothing else reads them.
    void shade(ShadingCounts& counts) const;
    // Colours that nobody has asked for are black.
    Color color(int i, int j) const { return fColors.at(at(i, j)); }
    Color opacity(int i, int j) const
    {
        return fOpacityVaries ? fOpacities.at(at(i, j)) : fOpacity;
    }
    // At a place of the micropolygon that begins at vertex (i, j).
    Color colorAt(int i, int j, float s, float t) const { return within(fColors, i, j, s, t); }
    Color opacityAt(int i, int j, float s, float t) const
    {
        return fOpacityVaries ? within(fOpacities, i, j, s, t) : fOpacity;
    }
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
    // Of the vertices; black where nobody has set them.
    struct ColorPlane {
        PoolArray<Color> values;  // null before the first

        Color at(std::size_t k) const { return values ? values[k] : gBlack; }
        void set(std::size_t k, const Grid& grid, const Color& color)
        {
            if (!values) values = makeArray<Color>(grid.vertexCount());
            values[k] = color;
        }
    };
    using Places = std::vector<VertexPlace, PoolAllocator<VertexPlace>>;

    Color within(const ColorPlane& plane, int i, int j, float s, float t) const
    {
        const Color* const values = plane.values.get();
        if (!values) return gBlack;
        const Color* const upper = values + at(i, j);
        if (!fSmooth) return *upper;
        const Color* const lower = values + at(i, j + 1);
        return bilerp(s, t, upper[0], upper[1], lower[0], lower[1]);
    }
    // Calls visit(place) for all that can be shaded: vertices, or micropolygons under constant
    // shading.
    template <class Visit>
    void eachPoint(const Visit& visit) const
    {
        for (int j = 0; j < fVSize + fSmooth; ++j) {
            const int count = fSmooth ? vertexCount(j) : cellCount(j);
            for (int i = 0; i < count; ++i) {
                visit(VertexPlace{static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j)});
            }
        }
    }
    // Whether this is what makes the mark.
    bool mark(int i, int j, std::uint8_t which) const
    {
        std::uint8_t& marks = fMarks[at(i, j)];
        const std::uint8_t before = std::exchange(marks, marks | which);
        return !(before & which);
    }
    void want(int i, int j, Places& wanted) const;
    void wantCell(VertexPlace cell, Places& wanted, ShadingCounts& counts) const;
    void beginShading() const;
    // Finds all colours that are not found yet.
    void complete(ShadingCounts& counts) const;
    void shadeVertices(const Places& wanted, ShadingCounts& counts) const;
    void shadeByHost(const Places& all) const;
    void findOpacities() const;
    void logReports(const AskedCells* cells) const;
    void logReports(VertexPlace place) const;

    // What lasts as long as the grid, in one allocation: there are many small grids.
    PoolArray<std::byte> fLasting;
    std::uint32_t* fRowStarts = nullptr;
    Bound* fRowBounds = nullptr;
    float* fRaster[3] = {};               // a plane for each axis
    mutable PoolArray<Vertex> fVertices;  // null when all is shaded
    Bound fBound;

    const RenderFrame* fFrame = nullptr;  // that colours are found under
    Color fOpacity = gWhite;
    bool fOpacityVaries = false, fOpaque = true;
    // Where shading is constant, of the micropolygons that begin at the vertices.
    mutable ColorPlane fOpacities, fColors;
    // Of a vertex that its colour is found, and that the micropolygon is seen which begins there.
    enum Mark : std::uint8_t { kFound = 1, kSeen = 2 };
    mutable PoolArray<std::uint8_t> fMarks;  // null before there is one, and once all are found
    mutable std::vector<VertexReports> fReports;
    mutable std::shared_ptr<ReportLog> fAllReports;  // of functions of the host's
    mutable std::atomic<bool> fComplete{false};
    mutable Lock fLock;  // of who finds colours
};

}  // namespace zeb
