#define ZEB_LANES 4
#include "hider/weight_lanes.h"

namespace zeb
{

WeightKernel weightKernel4() { return weigh; }

}  // namespace zeb
