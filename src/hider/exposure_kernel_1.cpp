#define ZEB_LANES 1
#include "hider/exposure_lanes.h"

namespace zeb
{

ExposureKernel exposureKernel1() { return expose; }

}  // namespace zeb
