#define ZEB_LANES 8
#include "geom/sweep_lanes.h"

namespace zeb
{

SweepKernel sweepKernel8() { return measurePlaces; }

}  // namespace zeb
