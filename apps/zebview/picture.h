#pragma once

#include <vector>

#include "camera.h"
#include "mesh.h"
#include "settings.h"

namespace zebview
{

// Renders the meshes into the file that the settings name, or into a window that stays until the
// user closes it, releasing them on the way. False if there can be no picture; then there is no
// file either, and the user knows why.
bool renderPicture(std::vector<Mesh> meshes, const Camera& camera, const Settings& settings);

}  // namespace zebview
