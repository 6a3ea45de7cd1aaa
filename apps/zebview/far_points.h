// The points of a cloud that lie farthest out.
#pragma once

#include <vector>

#include "vector.h"

namespace zebview
{

// Of any number of points keeps those that are the farthest in some hundreds of directions, spread
// evenly.
class FarPoints
{
public:
    FarPoints();

    void add(const Vector& point);
    // Some may be there several times.
    std::vector<Vector> points() const;

private:
    struct Farthest {
        Vector direction, point;
        double reach;
    };
    std::vector<Farthest> fFarthest;
};

}  // namespace zebview
