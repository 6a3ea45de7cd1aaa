// A model file as a list of meshes around the origin.
#pragma once

#include <vector>

#include "mesh.h"
#include "settings.h"

namespace zebview
{

// Reads a file, turns it so that y points up, and moves and scales it into the unit sphere: what
// comes after needs no thought for models as large as a country or as small as a hair. Throws a
// Failure if there is nothing to be seen.
std::vector<Mesh> loadModel(const Settings& settings);

}  // namespace zebview
