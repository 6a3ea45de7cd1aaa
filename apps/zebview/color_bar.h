// A bar that tells which values the colors of a scalar stand for.
#pragma once

#include <memory>
#include <string>

#include "camera.h"
#include "colormap.h"
#include "model.h"
#include "settings.h"

namespace zebview
{

// Whether numbers can be read in a picture.
bool hasRoomForBar(long width, long height);

bool showsBar(const Model& model, const Settings& settings);

// Shows the bar at the right, in front of everything.
void addColorBar(const Range& range, const std::shared_ptr<const Colormap>& map,
                 const Camera& camera);

// Says what the user wants to know of the scalar.
void tellOfScalar(const std::string& name, const Model& model, const Settings& settings);

}  // namespace zebview
