#pragma once

#include "settings.h"

namespace zebview
{

// Renders what the settings ask for. False, or a Failure, if a picture is missing then; if it is
// false the user knows why. A file is whole or not there.
bool makePictures(const Settings& settings);

}  // namespace zebview
