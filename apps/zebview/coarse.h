// Models of fewer faces, to be shown while they move.
#pragma once

#include <optional>

#include "model.h"

namespace zebview
{

// Of faces that a window can draw many times a second; nothing if the model has no more than those
// anyway. Vertices that lie close together and look the same way become one (Rossignac & Borrel,
// 1993, "Multi-resolution 3D approximations for rendering complex scenes").
std::optional<Model> coarsened(const Model& model);

}  // namespace zebview
