// What the renderer is told about the world in front of the camera.
#pragma once

#include <memory>

#include "camera.h"
#include "environment.h"
#include "free_form.h"
#include "mesh.h"
#include "scalar_colors.h"
#include "settings.h"
#include "shadows.h"

namespace zebview
{

// Lights, and what lies behind the model.
//
// around  null: there is no environment
void addSurroundings(const Stage& stage, const Camera& camera, const Settings& settings,
                     const std::shared_ptr<const Around>& around, const Shadows& shadows);
// scalar  the colors that take the place of all others, if there are such
void addMesh(const Mesh& mesh, const Settings& settings,
             const std::shared_ptr<const Around>& around,
             const std::optional<ScalarColors>& scalar);
void addFreeForm(const FreeForm& surface, const Settings& settings,
                 const std::shared_ptr<const Around>& around,
                 const std::optional<ScalarColors>& scalar);
// What is not a surface looks like this: opaque, and of one color where its vertices have none.
void setPlainLook(const Material& material, const Settings& settings,
                  const std::shared_ptr<const Around>& around,
                  const std::optional<ScalarColors>& scalar);
// Of what a lamp sees, its color being how far away it is.
void addCaster(const Mesh& mesh, const Settings& settings);
void addCaster(const FreeForm& surface, const Settings& settings);

}  // namespace zebview
