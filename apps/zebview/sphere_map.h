// A picture of all directions, which can be asked for what lies between its points: longitudes run
// across, latitudes down.
#pragma once

#include <vector>

#include "color.h"

namespace zebview
{

// Directions are given as how far across the picture they are, where whole turns do not matter, and
// as the angle from its upper pole.
class SphereMap
{
public:
    SphereMap() = default;
    // hasPoles  the first row and the last lie on the poles, not half a row away
    SphereMap(long width, long height, bool hasPoles);

    long width() const { return fWidth; }
    long height() const { return fHeight; }
    float* at(long x, long y) { return &fLight[static_cast<std::size_t>(y * fWidth + x) * 3]; }
    const float* at(long x, long y) const
    {
        return &fLight[static_cast<std::size_t>(y * fWidth + x) * 3];
    }
    // From row to row, in radians.
    float step() const { return fStep; }
    float angle(long y) const { return (static_cast<float>(y) + fShift) * fStep; }
    Color look(float across, float angle) const;

    // Of half the size. Rows weigh as much as there is of the sphere in them.
    SphereMap halved() const;
    // Each row averaged along itself, so far that points are as wide as they are high.
    void evenOut();

private:
    long fWidth = 0, fHeight = 0;
    float fShift = 0.5f, fStep = 0;
    std::vector<float> fLight;
};

}  // namespace zebview
