// Points of a model as spheres.
#pragma once

#include "mesh.h"

namespace zebview
{

// How large the points of a model are if nobody asks, for one of radius 1: those of a closed cloud
// about touch.
double usualDotRadius(std::size_t count);
// Makes spheres of the points of a mesh.
//
// colored  as their vertices are, if those have colors
void addDots(const Mesh& mesh, bool colored);

}  // namespace zebview
