#define ZEB_LANES 4
#include "math/noise_lanes.h"

namespace zeb
{

NoiseKernel noiseKernel4() { return findNoise; }

}  // namespace zeb
