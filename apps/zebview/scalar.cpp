#include "scalar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zebview
{

void RangeFinder::add(double value)
{
    if (!std::isfinite(value)) return;
    if (!fRange) fRange = {value, value};
    fRange->least = std::min(fRange->least, value);
    fRange->most = std::max(fRange->most, value);
}

std::optional<unsigned> axisNamed(const std::string& name)
{
    if (name.size() != 1 || name[0] < 'x' || name[0] > 'z') return std::nullopt;
    return static_cast<unsigned>(name[0] - 'x');
}

std::string lineOf(const Scalar& scalar)
{
    if (!scalar.range) return scalar.name + " has no finite values";
    char text[80];
    std::snprintf(text, sizeof text, " from %.9g to %.9g", scalar.range->least, scalar.range->most);
    return scalar.name + text;
}

float placeIn(const Range& range, double value)
{
    if (!std::isfinite(value)) return -1e37f;
    if (range.least == range.most) return 0.5f;
    // Halves, since the largest numbers have no difference.
    const double extent = range.most / 2 - range.least / 2;
    constexpr double farthest = 1e18;
    return static_cast<float>(
        std::clamp((value / 2 - range.least / 2) / extent, -farthest, farthest));
}

}  // namespace zebview
