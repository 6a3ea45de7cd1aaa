// Grids that are made by hand.
#pragma once

#include "geom/grid.h"

namespace zebtest
{

// Takes positions for what they are: raster coordinates and depths.
inline void projectAsTheyAre(zeb::Grid& grid)
{
    zeb::Option option;
    option.projection = false;
    grid.project(zeb::RenderFrame(option, zeb::Matrix()));
}

}  // namespace zebtest
