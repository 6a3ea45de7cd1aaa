// A piece of a surface that becomes one grid.
#pragma once

#include <atomic>
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

    void add(const Counts& more);
};

// Is diced by the first bucket that sees anything of it. The buckets that it reaches share it, and
// may ask for its grid at once.
class Piece
{
public:
    // In pixels: how far beyond its primitive's bound, and what closes gaps, a piece is looked for.
    static constexpr float kRoom = 1;

    Piece(std::unique_ptr<Primitive> primitive, const Dicing& dicing);
    // Of a projected grid.
    explicit Piece(std::shared_ptr<const Grid> grid);

    const Grid& dice(Counts& counts);
    // Of a piece that was counted elsewhere, for nothing.
    void countAgain(Counts& counts) const;
    // What dicing has reported so far.
    void tellReports() const
    {
        if (fReports) tellInTurn(fReports);
    }
    std::uint32_t seq() const { return fSeq; }
    const Edges& edges() const { return fEdges; }
    // In raster space, x and y alone: where samples may see it, or what closes its gaps. The same
    // before and after it is diced, so that what buckets do does not depend on others.
    const Bound& box() const { return fBox; }
    // Whether the box is much larger than what will be diced.
    bool isLoose() const;
    // Dices it, and takes the box that the grid has. Before it is shared.
    void settle(Counts& counts);
    // What orders its hits is at least this.
    SampleOrder least(const RenderFrame& frame) const;
    // Whether opacities beyond 1 are possible.
    bool mayBeMoreThanOpaque() const { return fMoreThanOpaque; }
    // Which functions of the host's shade it.
    HostShading hostShading() const { return fHostShading; }

private:
    void makeGrid(Counts& counts);
    void countGrid(Counts& counts) const;
    void takeBox();

    std::unique_ptr<Primitive> fPrimitive;  // until it is diced
    const RenderFrame* fFrame = nullptr;
    std::shared_ptr<const Grid> fGrid;
    std::shared_ptr<ReportLog> fReports;  // of dicing, where they are kept
    std::atomic<bool> fDiced{false};
    Lock fLock;  // of who dices it
    unsigned short fUSteps = 0, fVSteps = 0;
    bool fMoreThanOpaque = false;
    HostShading fHostShading = HostShading::kNone;
    std::uint32_t fSeq;
    Edges fEdges;
    Bound fBox;
};

// Room for what rounding makes of depths between these.
double depthRounding(float zmin, float zmax);

}  // namespace zeb
