#pragma once

#include "material.h"

namespace zebview
{

// Whether a material is more than a built-in surface can show.
bool needsFunction(const Material& material);

// Makes a function that shows the material the surface of what follows.
//
// colored  the material's own color is shown; otherwise that of zebColor alone
void setFunction(const Material& material, bool colored);

}  // namespace zebview
