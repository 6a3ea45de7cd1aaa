#define ZEB_LANES 8
#include "hider/exposure_lanes.h"

namespace zeb
{

ExposureKernel exposureKernel8() { return expose; }

}  // namespace zeb
