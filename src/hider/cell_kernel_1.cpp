#define ZEB_LANES 1
#include "hider/cell_lanes.h"

namespace zeb
{

CellKernel cellKernel1() { return findCells; }

}  // namespace zeb
