#pragma once

#include "settings.h"

namespace zebview
{

// Renders the model into the file that the settings name, or into a window that stays until the
// user closes it. False, or a Failure, if there can be no picture; then there is no file either. If
// it is false the user knows why.
bool makePicture(const Settings& settings);

}  // namespace zebview
