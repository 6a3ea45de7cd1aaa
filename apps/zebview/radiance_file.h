#pragma once

#include "light_picture.h"

namespace zebview
{

// bytes  of a Radiance file. Throws a Failure if they are none.
LightPicture readRadiance(const std::string& bytes);

}  // namespace zebview
