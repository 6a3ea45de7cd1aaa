#include "hider/cell_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

CellKernel cellKernel1();
CellKernel cellKernel4();
#if defined(__x86_64__) || defined(__i386__)
CellKernel cellKernel8();
CellKernel cellKernel16();
#endif

CellKernel cellKernel(int lanes)
{
    if (!hasLanes(lanes)) return nullptr;
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return cellKernel16();
        case 8:
            return cellKernel8();
#endif
        case 4:
            return cellKernel4();
        default:
            return cellKernel1();
    }
}

CellKernel cellKernel()
{
    static const CellKernel kernel = cellKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
