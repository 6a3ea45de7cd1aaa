// Pictures of light: amounts, of any size, as files of photographs of surroundings hold them.
#pragma once

#include <string>
#include <vector>

namespace zebview
{

struct LightPicture {
    long width = 0, height = 0;
    std::vector<float> light;  // red, green and blue, row by row from the top; finite, none below 0
};

// Radiance (.hdr) or OpenEXR, whatever the name says. Throws a Failure, which names the file, if it
// holds no picture. Memory is taken as the file turns out to fill it, not as it claims.
LightPicture readLightPicture(const std::string& name);

}  // namespace zebview
