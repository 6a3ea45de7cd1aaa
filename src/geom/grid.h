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

// One sample of a surface, in camera space.
struct Vertex {
    Point P, dPdu, dPdv;
};

// Finds the colours of a grid's vertices. Where its shading is constant, those of the micropolygons
// that begin there.
class VertexShader
{
public:
    virtual ~VertexShader() = default;
    virtual Color color(int i, int j) = 0;
    virtual Color opacity(int i, int j) = 0;
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

    // Column i of vertex row j.
    Vertex& vertex(int i, int j) { return fVertices[at(i, j)]; }
    const Vertex& vertex(int i, int j) const { return fVertices[at(i, j)]; }
    // Vertices in row j, and micropolygons between rows j and j + 1.
    int vertexCount(int j) const { return j == 0 ? fUSize + 1 : cellCount(j - 1) + 1; }
    int cellCount(int j) const { return fTriangular ? fUSize - j * fUSize / fVSize : fUSize; }

    // Finds the positions in raster space, whose z is the depth that hits are ordered by.
    void project(const RenderFrame& frame);
    const Point& raster(int i, int j) const { return fRaster[at(i, j)]; }
    // Of the vertices of row j in raster space, and of all.
    const Bound& rowBound(int j) const { return fRowBounds[j]; }
    const Bound& bound() const { return fBound; }

    // Lets colours be found when they are asked for, and counted; until then the grid is black and
    // opaque. Frame and counter have to stay. Defined in shade/grid_shading.cpp.
    void shadeOnDemand(const RenderFrame& frame, std::uint64_t* shaded = nullptr);
    Color color(int i, int j) const
    {
        know(fColors, &VertexShader::color, i, j);
        return fColors.at(at(i, j));
    }
    Color opacity(int i, int j) const
    {
        if (!fOpacityVaries) return fOpacity;
        know(fOpacities, &VertexShader::opacity, i, j);
        return fOpacities.at(at(i, j));
    }
    // At a place of the micropolygon that begins at vertex (i, j).
    Color colorAt(int i, int j, float s, float t) const
    {
        return within(fColors, &VertexShader::color, i, j, s, t);
    }
    Color opacityAt(int i, int j, float s, float t) const
    {
        if (!fOpacityVaries) return fOpacity;
        return within(fOpacities, &VertexShader::opacity, i, j, s, t);
    }
    // Finds all colours and opacities now. The vertices are given back then: nothing else reads them.
    void shade() const;
    // Of a vertex that needs no shader.
    void setColor(int i, int j, const Color& color) { set(fColors, at(i, j), color); }
    void setOpacity(int i, int j, const Color& opacity)
    {
        fOpacityVaries = true;
        fOpaque = false;
        set(fOpacities, at(i, j), opacity);
    }
    // The opacity of all vertices; null where they differ.
    const Color* uniformOpacity() const { return fOpacityVaries ? nullptr : &fOpacity; }
    // Whether all is opaque, neither more nor less.
    bool isOpaque() const { return fOpaque; }

private:
    // Colours of vertices, as far as they are known; what is unknown is black.
    struct ColorPlane {
        std::unique_ptr<Color[]> values;
        std::unique_ptr<bool[]> known;  // null before the first is, and once all are
        bool complete = false;

        bool knows(std::size_t k) const { return complete || (known && known[k]); }
        Color at(std::size_t k) const { return values ? values[k] : gBlack; }
    };
    using Find = Color (VertexShader::*)(int i, int j);

    Color within(ColorPlane& plane, Find find, int i, int j, float s, float t) const
    {
        const std::size_t k = at(i, j);
        const std::size_t l = fSmooth ? at(i, j + 1) : k;
        const std::size_t next = fSmooth ? 1 : 0;
        if (!(plane.knows(k) && plane.knows(k + next) && plane.knows(l) && plane.knows(l + next))) {
            knowCell(plane, find, i, j);
            if (!plane.values) return gBlack;
        }
        const Color* const values = plane.values.get();
        if (!fSmooth) return values[k];
        return bilerp(s, t, values[k], values[k + 1], values[l], values[l + 1]);
    }
    // Asks the shader for what is not known yet.
    void know(ColorPlane& plane, Find find, int i, int j) const;
    void knowCell(ColorPlane& plane, Find find, int i, int j) const;
    Color ask(VertexShader& shader, Find find, int i, int j) const;
    void set(ColorPlane& plane, std::size_t k, const Color& color) const;
    std::size_t vertexCount() const { return at(vertexCount(fVSize) - 1, fVSize) + 1; }
    VertexShader* shader() const;
    // Rows lie one behind the other, each as long as it is used.
    std::size_t at(int i, int j) const
    {
        return static_cast<std::size_t>(fRowStarts[j]) + static_cast<std::size_t>(i);
    }

    // What lasts as long as the grid, in one allocation: there are many small grids.
    std::unique_ptr<std::byte[]> fLasting;
    std::uint32_t* fRowStarts = nullptr;
    Bound* fRowBounds = nullptr;
    Point* fRaster = nullptr;
    mutable std::unique_ptr<Vertex[]> fVertices;  // null when all is shaded
    Bound fBound;

    const RenderFrame* fFrame = nullptr;  // that colours are found under
    std::uint64_t* fShaded = nullptr;
    Color fOpacity = gWhite;
    bool fOpacityVaries = false, fOpaque = true;
    // Found when first asked for.
    mutable std::unique_ptr<VertexShader> fShader;
    mutable ColorPlane fColors, fOpacities;
};

}  // namespace zeb
