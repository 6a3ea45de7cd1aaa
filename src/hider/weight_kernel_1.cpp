#define ZEB_LANES 1
#include "hider/weight_lanes.h"

namespace zeb
{

WeightKernel weightKernel1() { return weigh; }

}  // namespace zeb
