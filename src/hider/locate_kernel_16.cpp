#define ZEB_LANES 16
#include "hider/locate_lanes.h"

namespace zeb
{

LocateKernel locateKernel16() { return locate; }

}  // namespace zeb
