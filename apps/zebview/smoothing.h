#pragma once

#include <vector>

#include "faces.h"

namespace zebview
{

// Normals for every corner of every face: faces that meet in a point at a small angle are smoothed
// into each other, edges stay sharp. Each normal lies on the side of its face's winding, whichever
// way the neighbours are wound.
std::vector<Vector> smoothNormals(const Faces& faces, const std::vector<Vector>& points);

}  // namespace zebview
