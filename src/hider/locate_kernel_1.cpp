#define ZEB_LANES 1
#include "hider/locate_lanes.h"

namespace zeb
{

LocateKernel locateKernel1() { return locate; }

}  // namespace zeb
