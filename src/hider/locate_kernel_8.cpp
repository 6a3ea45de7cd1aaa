#define ZEB_LANES 8
#include "hider/locate_lanes.h"

namespace zeb
{

LocateKernel locateKernel8() { return locate; }

}  // namespace zeb
