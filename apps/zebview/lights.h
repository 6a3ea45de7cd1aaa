// The lamps that a view is lit by.
#pragma once

#include "settings.h"
#include "shadows.h"
#include "stage.h"

namespace zebview
{

// Of the lamps those that throw shadows: the key light, or the file's distant ones.
Shadows shadowsOf(const Stage& stage, const Camera& camera, const Settings& settings);

// None where an environment lights the model, unless they are asked for.
//
// shadows  where they are not empty, those that shadowsOf has found, with their depths
void addLights(const Stage& stage, const Camera& camera, const Settings& settings,
               const Shadows& shadows);

}  // namespace zebview
