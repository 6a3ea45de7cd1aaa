#define ZEB_LANES 1
#include "geom/sweep_lanes.h"

namespace zeb
{

SweepKernel sweepKernel1() { return measurePlaces; }

}  // namespace zeb
