#include "far_points.h"

#include <limits>
#include <numbers>

namespace zebview
{

namespace
{

constexpr int kDirections = 300;

}  // namespace

// Along a spiral from pole to pole, a golden angle apart (R. Swinbank and R. J. Purser, 2006).
FarPoints::FarPoints()
{
    const double golden = std::numbers::pi * (3 - std::sqrt(5.0));
    for (int i = 0; i < kDirections; ++i) {
        const double y = 1 - (2 * i + 1) / double{kDirections};
        const double across = std::sqrt(1 - y * y), angle = golden * i;
        fFarthest.push_back({Vector(across * std::cos(angle), y, across * std::sin(angle)),
                             Vector(), -std::numeric_limits<double>::infinity()});
    }
}

void FarPoints::add(const Vector& point)
{
    for (Farthest& farthest : fFarthest) {
        const double reach = farthest.direction * point;
        if (reach <= farthest.reach) continue;
        farthest.reach = reach;
        farthest.point = point;
    }
}

std::vector<Vector> FarPoints::points() const
{
    std::vector<Vector> result;
    for (const Farthest& farthest : fFarthest) {
        if (std::isfinite(farthest.reach)) result.push_back(farthest.point);
    }
    return result;
}

}  // namespace zebview
