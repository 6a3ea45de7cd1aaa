// Along which chords the grids of a moved surface meet.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "math/point.h"

namespace zeb
{

// A function of the host's may move places of a line that are close together far apart: grids that
// meet along it with chords of their own would leave gaps. So each halves the part of the line that
// is a side of its own until what is over a chord is short on the screen, before it is moved. That
// finds the same chords for all grids along the line, as sides come of halving, too.
//
// Calls visit(from, to) for each chord along a side, or for what is left after so many halvings
// that there would be more than most of the same length. raster(t) is where the unmoved side is on
// the screen, t from 0 to 1; side is that of a micropolygon.
template <class Raster, class Visit>
void everyChord(const Raster& raster, double side, int most, const Visit& visit)
{
    using Places = std::array<Pointd, 5>;  // evenly along a part
    const auto isShort = [side](const Places& at) {
        constexpr double kLongest = 1;  // in sides of micropolygons
        double longest = 0;
        for (std::size_t i = 1; i < at.size(); ++i) {
            const Pointd way = at[i] - at[i - 1];
            longest = std::max(longest, std::sqrt(way.x * way.x + way.y * way.y));
        }
        return 4 * longest <= kLongest * side;
    };
    const auto within = [&](const auto& self, float from, float to, const Places& at, int left) {
        if (left <= 1 || isShort(at)) {
            visit(from, to);
            return;
        }
        const float middle = 0.5f * (from + to);
        const auto between = [&](float eighths) {
            return raster(from + 0.125f * eighths * (to - from));
        };
        self(self, from, middle, {at[0], between(1), at[1], between(3), at[2]}, left / 2);
        self(self, middle, to, {at[2], between(5), at[3], between(7), at[4]}, left / 2);
    };
    within(within, 0, 1, {raster(0), raster(0.25f), raster(0.5f), raster(0.75f), raster(1)}, most);
}

}  // namespace zeb
