// Where the pieces of a surface meet.
#pragma once

#include <cstdint>

#include "util/random.h"

namespace zeb
{

// The lines that the sides of a piece lie on. Pieces on either side of a line give it the same
// number; 0 is a side where the surface ends. A triangle's long side is its umax.
struct Edges {
    std::uint32_t umin = 0, umax = 0, vmin = 0, vmax = 0;

    Edges transposed() const { return {vmin, vmax, umin, umax}; }
    // Of the piece over a rectangle, when the surface of the given path is halved along u, v or
    // both: sides within it lie on the line between the halves.
    Edges part(float u0, float u1, float v0, float v1, std::uint32_t path) const
    {
        return {u0 == 0 ? umin : line(path, kBetweenU), u1 == 1 ? umax : line(path, kBetweenU),
                v0 == 0 ? vmin : line(path, kBetweenV), v1 == 1 ? vmax : line(path, kBetweenV)};
    }
    // The surface closes: where u (v) ends, it begins again.
    void closeU(std::uint32_t path) { umin = umax = line(path, kSeamU); }
    void closeV(std::uint32_t path) { vmin = vmax = line(path, kSeamV); }

    enum Line : std::uint32_t {
        kBetweenU = 100,
        kBetweenV,
        kBetween0,
        kBetween1,
        kBetween2,
        kSeamU,
        kSeamV
    };
    static std::uint32_t line(std::uint32_t path, Line which) { return mixSeeds(path, which) | 1; }
};

}  // namespace zeb
