#define ZEB_LANES 16
#include "math/noise_lanes.h"

namespace zeb
{

NoiseKernel noiseKernel16() { return findNoise; }

}  // namespace zeb
