// A model file, as meshes around the origin.
#pragma once

#include <string>
#include <vector>

#include "mesh.h"
#include "settings.h"
#include "stage.h"

namespace zebview
{

struct Model {
    std::vector<Mesh> meshes;
    Stage stage;
    std::string notShown;  // in words, if it is anything
};

// Reads a file, turns it so that y points up, and moves and scales it into the unit sphere: what
// comes after needs no thought for models as large as a country or as small as a hair. Throws a
// Failure if there is nothing to be seen.
Model loadModel(const std::string& name, const Settings& settings);

}  // namespace zebview
