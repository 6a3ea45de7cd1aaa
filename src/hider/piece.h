// A piece of a surface that becomes one grid.
#pragma once

#include <cstdint>
#include <memory>

#include "geom/grid.h"
#include "geom/primitive.h"
#include "hider/sample.h"

namespace zeb
{

// What a picture took.
struct Counts : ShadingCounts {
    std::uint64_t pieces = 0;         // small enough for one grid
    std::uint64_t grids = 0;          // that were diced of them
    std::uint64_t micropolygons = 0;  // in these
    // Of micropolygons with samples, and how many met; not counted in adaptive sampling.
    std::uint64_t tests = 0, hits = 0;
    std::uint64_t samples = 0;
};

// Is diced by the first bucket that sees anything of it. The buckets that it reaches share it.
class Piece
{
public:
    Piece(std::unique_ptr<Primitive> primitive, const Dicing& dicing);
    // Of a projected grid.
    explicit Piece(std::shared_ptr<const Grid> grid);

    // Null until the piece is diced.
    const Grid* grid() const { return fGrid.get(); }
    const Grid& dice(Counts& counts);
    std::uint32_t seq() const { return fGrid ? fGrid->fSeq : fPrimitive->common().fSeq; }
    const Edges& edges() const { return fGrid ? fGrid->fEdges : fPrimitive->edges(); }
    // In raster space, x and y alone: where samples may see it, or what closes its gaps.
    const Bound& box() const { return fBox; }
    // Whether the box is much larger than what will be diced.
    bool isLoose() const;
    // What orders its hits is at least this.
    SampleOrder least(const RenderFrame& frame) const;
    // Whether opacities beyond 1 are possible.
    bool mayBeMoreThanOpaque() const { return fMoreThanOpaque; }

private:
    void takeGrid();

    std::unique_ptr<Primitive> fPrimitive;
    const RenderFrame* fFrame = nullptr;
    unsigned short fUSteps = 0, fVSteps = 0;
    std::shared_ptr<const Grid> fGrid;
    bool fMoreThanOpaque = false;
    Bound fBox;
};

// Room for what rounding makes of depths between these.
double depthRounding(float zmin, float zmax);

}  // namespace zeb
