// Points of a model as spheres.
#pragma once

#include <optional>

#include "mesh.h"
#include "scalar_colors.h"

namespace zebview
{

// How large the points of a model are if nobody asks, for one of radius 1: those of a closed cloud
// about touch.
double usualDotRadius(std::size_t count);
// Makes spheres of the points of a mesh.
//
// colored  as their vertices are, if those have colors
// scalar   the colors that they have instead
void addDots(const Mesh& mesh, bool colored, const std::optional<ScalarColors>& scalar);

}  // namespace zebview
