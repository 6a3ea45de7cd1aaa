#define ZEB_LANES 8
#include "hider/weight_lanes.h"

namespace zeb
{

WeightKernel weightKernel8() { return weigh; }

}  // namespace zeb
