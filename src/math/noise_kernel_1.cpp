#define ZEB_LANES 1
#include "math/noise_lanes.h"

namespace zeb
{

NoiseKernel noiseKernel1() { return findNoise; }

}  // namespace zeb
