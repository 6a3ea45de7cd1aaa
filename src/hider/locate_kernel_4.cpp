#define ZEB_LANES 4
#include "hider/locate_lanes.h"

namespace zeb
{

LocateKernel locateKernel4() { return locate; }

}  // namespace zeb
