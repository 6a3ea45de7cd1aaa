#define ZEB_LANES 8
#include "math/noise_lanes.h"

namespace zeb
{

NoiseKernel noiseKernel8() { return findNoise; }

}  // namespace zeb
