// The rows of points that functions which shade are given.
#pragma once

#include <array>

#include "zebcore/zebcore.h"

namespace zebview
{

// Three numbers a point.
using Planes = std::array<float*, 3>;

inline Planes newPlanes(const ZebRow& row)
{
    return {zebRowPlane(&row), zebRowPlane(&row), zebRowPlane(&row)};
}

}  // namespace zebview
