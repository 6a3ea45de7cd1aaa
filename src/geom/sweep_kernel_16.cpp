#define ZEB_LANES 16
#include "geom/sweep_lanes.h"

namespace zeb
{

SweepKernel sweepKernel16() { return measurePlaces; }

}  // namespace zeb
