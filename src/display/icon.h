// The icons of the library's windows.
#pragma once

#include <cstdint>
#include <vector>

namespace zeb
{

enum class Icon { kPicture, kMessages };

// Rows from the top, four bytes a pixel, colours not multiplied by alpha.
struct IconImage {
    int size;
    std::vector<std::uint8_t> rgba;
};

// Kept as long as the process runs.
const IconImage& iconImage(Icon which);

}  // namespace zeb
