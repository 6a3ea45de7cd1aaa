#define ZEB_LANES 8
#include "hider/cell_lanes.h"

namespace zeb
{

CellKernel cellKernel8() { return findCells; }

}  // namespace zeb
