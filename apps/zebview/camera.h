#pragma once

#include <vector>

#include "mesh.h"
#include "settings.h"
#include "stage.h"

namespace zebview
{

// A camera that shows all of a model, with a margin: as large as the picture allows, or so that it
// would fit whichever side it is seen from.
struct Camera {
    float toCamera[4][4];  // row vectors: x right, y up, z away from the eye
    float fov;             // degrees; 0 without perspective
    // Of the picture, where half the field of view makes 1; without perspective, distances.
    float halfWidth, halfHeight;
    float nearest, farthest;  // distances along z, the model being between them
};

// azimuth  where the eye is, instead of what the settings say
Camera frameModel(const std::vector<Mesh>& meshes, double azimuth, const Settings& settings);

// A camera of the file: what it shows is shown whole.
//
// turn  how far it goes to the right around the model first, in degrees
Camera lookThrough(const FileCamera& source, double turn, const std::vector<Mesh>& meshes,
                   const Settings& settings);

}  // namespace zebview
