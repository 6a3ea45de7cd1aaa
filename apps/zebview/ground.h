// A floor that nothing is seen of but the shadows on it.
#pragma once

#include "camera.h"
#include "shadows.h"

namespace zebview
{

// The camera with room for the floor, which reaches farther than the model does.
Camera roomForGround(Camera camera);
// Adds the floor where the shadows may fall: black, and as opaque as light is missing.
void addGround(const Model& model, const Shadows& shadows, const Camera& camera,
               const Settings& settings);

}  // namespace zebview
