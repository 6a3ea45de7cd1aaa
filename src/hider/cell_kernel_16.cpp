#define ZEB_LANES 16
#include "hider/cell_lanes.h"

namespace zeb
{

CellKernel cellKernel16() { return findCells; }

}  // namespace zeb
