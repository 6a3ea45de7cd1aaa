#pragma once

#include <vector>

#include "mesh.h"
#include "settings.h"

namespace zebview
{

// A camera that shows all of a model, with a margin: as large as the picture allows, or so that it
// would fit whichever side it is seen from.
struct Camera {
    float toCamera[4][4];         // row vectors: x right, y up, z away from the eye
    float halfWidth, halfHeight;  // of the picture, where half the field of view makes 1
    float nearest, farthest;      // distances along z, the model being between them
};

// azimuth  where the eye is, instead of what the settings say
Camera frameModel(const std::vector<Mesh>& meshes, double azimuth, const Settings& settings);

}  // namespace zebview
