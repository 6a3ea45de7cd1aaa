#include "hider/piece.h"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "hider/seams.h"
#include "state/error.h"

namespace zeb
{

namespace
{

bool isMoreThanOpaque(const Color& opacity)
{
    return opacity.r > 1 || opacity.g > 1 || opacity.b > 1;
}

Bound grown(Bound box, float room)
{
    box.xmin -= room;
    box.xmax += room;
    box.ymin -= room;
    box.ymax += room;
    return box;
}

}  // namespace

void Counts::add(const Counts& more)
{
    shaded += more.shaded;
    seen += more.seen;
    pieces += more.pieces;
    grids += more.grids;
    micropolygons += more.micropolygons;
    tests += more.tests;
    hits += more.hits;
    samples += more.samples;
}

double depthRounding(float zmin, float zmax)
{
    constexpr double kRounding = 4e-6;
    return kRounding * double{std::max(std::fabs(zmin), std::fabs(zmax))};
}

Piece::Piece(std::unique_ptr<Primitive> primitive, const Dicing& dicing)
    : fPrimitive(std::move(primitive)),
      fFrame(&dicing.frame),
      fUSteps(dicing.fUSteps),
      fVSteps(dicing.fVSteps),
      fMoreThanOpaque(fPrimitive->hasOpacities() ||
                      isMoreThanOpaque(fPrimitive->attrib().surfaceOpacity)),
      fHostShading(fPrimitive->attrib().hostShading),
      fSeq(fPrimitive->common().fSeq),
      fEdges(fPrimitive->edges()),
      fBox(grown(fPrimitive->screen(), Seams::reach(fPrimitive->attrib()) + kRoom))
{
}

Piece::Piece(std::shared_ptr<const Grid> grid)
    : fGrid(std::move(grid)), fDiced(true), fSeq(fGrid->fSeq), fEdges(fGrid->fEdges)
{
    const Color* const opacity = fGrid->uniformOpacity();
    fMoreThanOpaque = !opacity || isMoreThanOpaque(*opacity);
    takeBox();
}

void Piece::takeBox() { fBox = grown(fGrid->bound(), Seams::reach(*fGrid->fAttrib)); }

void Piece::settle(Counts& counts)
{
    dice(counts);
    takeBox();
}

const Grid& Piece::dice(Counts& counts)
{
    if (!fDiced.load(std::memory_order_acquire)) {
        const std::lock_guard lock(fLock);
        if (!fDiced) {
            fReports = keepingReports([&] { makeGrid(counts); });
            fDiced.store(true, std::memory_order_release);
        }
    }
    tellReports();
    return *fGrid;
}

void Piece::makeGrid(Counts& counts)
{
    const Attrib& attrib = fPrimitive->attrib();
    const AttribNamesScope names(attrib.object.text(), attrib.group.text());
    std::shared_ptr<Grid> grid(fPrimitive->dice(Dicing{*fFrame, fUSteps, fVSteps}).release(),
                               std::default_delete<Grid>(), PoolAllocator<Grid>());
    if (attrib.hostShading != HostShading::kNone) {
        grid->fPart = fPrimitive->surfacePart();
        grid->fTransform = fPrimitive->common().fTransform;
        grid->displace(*fPrimitive, *fFrame);
    }
    grid->project(*fFrame);
    const Option& option = fFrame->option;
    const bool depthOnly = option.depth && !option.rgb && !option.alpha;
    if (!depthOnly && !grid->fMatte) grid->shadeOnDemand(*fFrame);
    // Functions that are called in order wait for their turn.
    if (fFrame->plain && attrib.hostShading != HostShading::kInOrder) grid->shade(counts);
    fGrid = std::move(grid);
    fPrimitive.reset();
    countGrid(counts);
}

void Piece::countGrid(Counts& counts) const
{
    ++counts.grids;
    for (int j = 0; j < fGrid->fVSize; ++j) {
        counts.micropolygons += static_cast<std::uint64_t>(fGrid->cellCount(j));
    }
}

void Piece::countAgain(Counts& counts) const
{
    ++counts.pieces;
    if (fDiced) countGrid(counts);
}

// Micropolygons are about as large as they should be: so many of them reach no farther than this.
bool Piece::isLoose() const
{
    const float side = std::max(fPrimitive->attrib().micropolygonSide, Primitive::kMinSide);
    const float reach = 2 * (static_cast<float>(fUSteps + fVSteps) * side + 4);
    return !(fBox.xmax - fBox.xmin <= reach && fBox.ymax - fBox.ymin <= reach);
}

SampleOrder Piece::least(const RenderFrame& frame) const
{
    if (frame.option.hiderType == kHiderSequence) {
        return -static_cast<double>(seq());
    }
    return double{fBox.zmin} - depthRounding(fBox.zmin, fBox.zmax);
}

}  // namespace zeb
