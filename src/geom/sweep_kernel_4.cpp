#define ZEB_LANES 4
#include "geom/sweep_lanes.h"

namespace zeb
{

SweepKernel sweepKernel4() { return measurePlaces; }

}  // namespace zeb
