#define ZEB_LANES 4
#include "hider/cell_lanes.h"

namespace zeb
{

CellKernel cellKernel4() { return findCells; }

}  // namespace zeb
