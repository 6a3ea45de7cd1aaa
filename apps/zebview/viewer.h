// Models in a window, turned by the mouse.
#pragma once

#include "settings.h"

namespace zebview
{

// Shows the models until the user closes the window. False if that ends with an error, which the
// user has been told. Throws a Failure if a model can't be read, or without a screen.
bool showModels(const Settings& settings);

}  // namespace zebview
