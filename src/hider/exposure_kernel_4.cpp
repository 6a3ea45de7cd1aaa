#define ZEB_LANES 4
#include "hider/exposure_lanes.h"

namespace zeb
{

ExposureKernel exposureKernel4() { return expose; }

}  // namespace zeb
