#pragma once

#include <memory>

#include "environment.h"
#include "material.h"
#include "scalar_colors.h"

namespace zebview
{

// Whether a material is more than a built-in surface can show.
bool needsFunction(const Material& material);

// Makes a function that shows the material the surface of what follows.
//
// colored  the material's own color is shown; otherwise that of zebColor alone
// around   what lights it besides lamps; null: nothing
// scalar   the colors that take the place of all others, if there are such
void setFunction(const Material& material, bool colored, std::shared_ptr<const Around> around,
                 const std::optional<ScalarColors>& scalar);

// Makes a function the surface of what follows whose color is how far away, along z, it is: that of
// casters of shadows, which are opaque where the material is at least to a half.
//
// varies  the opacity of the vertices is not the same all over
void setDistanceFunction(const Material& material, bool varies);

}  // namespace zebview
