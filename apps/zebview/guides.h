// What tells how a model lies and how large it is: the file's axes, and a grid under it.
#pragma once

#include <string>

#include "camera.h"
#include "model.h"
#include "settings.h"

namespace zebview
{

// The camera with room for those that the settings ask for.
Camera roomForGuides(Camera camera, const Model& model, const Settings& settings);

// Shows the file's axes in the lower left corner, in front of everything, as they are turned.
void addAxes(const FileSpace& space, const Camera& camera);

// Shows lines under the model, on multiples of their spacing from the file's origin: that of the
// settings, unless it makes more lines than can be told apart, or else 1, 2 or 5 times a power of
// ten of the file's units.
void addGrid(const Model& model, const Camera& camera, const Settings& settings);

// Says what the user has to know of the grid, or wants to.
void tellOfGrid(const std::string& name, const Model& model, const Settings& settings);

}  // namespace zebview
