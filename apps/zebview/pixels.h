// Picture files, decoded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zebview
{

struct Pixels {
    std::size_t width = 0, height = 0;
    bool hasAlpha = false;           // some are not opaque
    std::vector<std::uint8_t> rgba;  // from the top, row by row, not multiplied by alpha

    std::size_t count() const { return width * height; }
};

// file  what a PNG or JPEG file holds, or one of another format that the system reads. Throws a
// Failure if it is none, if it breaks off, and if the picture is too large.
Pixels decodePixels(std::span<const std::uint8_t> file);

// Finds out whether all pixels are opaque.
void findAlpha(Pixels& pixels);

}  // namespace zebview
