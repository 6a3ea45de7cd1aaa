// Geometry is worked out in double, whatever the file holds: models far from their origin keep
// their shape.
#pragma once

#include <assimp/types.h>

#include <cmath>
#include <vector>

namespace zebview
{

using Vector = aiVector3t<double>;
using Matrix = aiMatrix4x4t<double>;

inline bool isFinite(const Vector& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// Zero for vectors that have no direction.
inline Vector direction(const Vector& v)
{
    const double length = v.Length();
    return length > 0 && std::isfinite(length) ? v / length : Vector();
}

inline void append(std::vector<float>& list, const Vector& v)
{
    for (const double value : {v.x, v.y, v.z}) list.push_back(static_cast<float>(value));
}

}  // namespace zebview
