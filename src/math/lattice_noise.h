// Noise over a lattice of 1 to 4 dimensions, without tables: the same everywhere, at once.
#pragma once

#include <cstddef>

namespace zeb
{

// Gradient noise (K. Perlin, 2002) at a place of so many coordinates: 0 at the lattice's points,
// which are the whole numbers, and within -1 ... 1 between. Where a coordinate has a period above
// 0, noise repeats along it; null is none at all. 0 where a coordinate is not finite.
float latticeNoise(int dimensions, const float* place, const long* periods = nullptr);
// The same at so many places, a plane for each coordinate, without periods. Result and planes may
// be the same.
void latticeNoise(int dimensions, const float* const* places, std::size_t count, float* result);

}  // namespace zeb
