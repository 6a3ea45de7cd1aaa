#include "hider/cell_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

CellKernel cellKernel1();
CellKernel cellKernel4();
CellKernel cellKernel8();
CellKernel cellKernel16();

CellKernel cellKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(cellKernel)); }

CellKernel cellKernel()
{
    static const CellKernel kernel = cellKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
