#pragma once

#include <vector>

#include "mesh.h"

namespace zebview
{

// A camera that shows all of a model, with a margin, as large as the picture allows.
struct Camera {
    float toCamera[4][4];         // row vectors: x right, y up, z away from the eye
    float halfWidth, halfHeight;  // of the picture, where half the field of view makes 1
    float nearest, farthest;      // distances along z, the model being between them
};
Camera frameModel(const std::vector<Mesh>& meshes, const Settings& settings);

}  // namespace zebview
