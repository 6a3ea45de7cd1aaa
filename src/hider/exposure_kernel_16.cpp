#define ZEB_LANES 16
#include "hider/exposure_lanes.h"

namespace zeb
{

ExposureKernel exposureKernel16() { return expose; }

}  // namespace zeb
