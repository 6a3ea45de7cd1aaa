// Lines as ribbons that face the eye: as wide in the picture wherever they are, and shaded like
// wires.
#pragma once

#include <memory>

#include "camera.h"
#include "environment.h"
#include "model.h"
#include "scalar_colors.h"

namespace zebview
{

// Lines lie a little nearer to the eye than their points do.
Camera roomForLines(Camera camera, const Model& model, const Settings& settings);

// The lines of the file, in the colors of their vertices or of the material.
//
// scalar  the colors that they have instead, if there are such
void addLines(const Mesh& mesh, const Camera& camera, const Settings& settings,
              const std::shared_ptr<const Around>& around,
              const std::optional<ScalarColors>& scalar);

// All edges of a mesh's polygons, each once, a little before them.
void addEdges(const Mesh& mesh, const Camera& camera, const Settings& settings,
              const std::shared_ptr<const Around>& around);

}  // namespace zebview
