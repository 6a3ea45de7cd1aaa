// What the renderer is told about the world in front of the camera.
#pragma once

#include "camera.h"
#include "mesh.h"
#include "settings.h"

namespace zebview
{

// Lights, and what lies behind the model.
void addSurroundings(const Stage& stage, const Camera& camera, const Settings& settings);
void addMesh(const Mesh& mesh, const Settings& settings);

}  // namespace zebview
