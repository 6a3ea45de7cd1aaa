#include "hider/piece.h"

#include <algorithm>
#include <cmath>

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

}  // namespace

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
      fBox(fPrimitive->screen())
{
    const float room = Seams::reach(fPrimitive->attrib()) + 1;
    fBox.xmin -= room;
    fBox.xmax += room;
    fBox.ymin -= room;
    fBox.ymax += room;
}

Piece::Piece(std::shared_ptr<const Grid> grid) : fGrid(std::move(grid))
{
    const Color* const opacity = fGrid->uniformOpacity();
    fMoreThanOpaque = !opacity || isMoreThanOpaque(*opacity);
    takeGrid();
}

void Piece::takeGrid()
{
    const float room = Seams::reach(*fGrid->fAttrib);
    fBox = fGrid->bound();
    fBox.xmin -= room;
    fBox.xmax += room;
    fBox.ymin -= room;
    fBox.ymax += room;
}

const Grid& Piece::dice(Counts& counts)
{
    if (fGrid) return *fGrid;
    const Attrib& attrib = fPrimitive->attrib();
    const AttribNamesScope names(attrib.object.text(), attrib.group.text());
    std::shared_ptr<Grid> grid(fPrimitive->dice(Dicing{*fFrame, fUSteps, fVSteps}).release(),
                               std::default_delete<Grid>(), PoolAllocator<Grid>());
    fPrimitive.reset();
    grid->project(*fFrame);
    const Option& option = fFrame->option;
    const bool depthOnly = option.depth && !option.rgb && !option.alpha;
    if (!depthOnly && !grid->fMatte) grid->shadeOnDemand(*fFrame, &counts);
    ++counts.grids;
    for (int j = 0; j < grid->fVSize; ++j) {
        counts.micropolygons += static_cast<std::uint64_t>(grid->cellCount(j));
    }
    fGrid = std::move(grid);
    takeGrid();
    return *fGrid;
}

// Micropolygons are about as large as they should be: so many of them reach no farther than this.
bool Piece::isLoose() const
{
    if (fGrid) return false;
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
