#define ZEB_LANES 16
#include "hider/weight_lanes.h"

namespace zeb
{

WeightKernel weightKernel16() { return weigh; }

}  // namespace zeb
