#include "hider/locate_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

LocateKernel locateKernel1();
LocateKernel locateKernel4();
LocateKernel locateKernel8();
LocateKernel locateKernel16();

LocateKernel locateKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(locateKernel)); }

LocateKernel locateKernel()
{
    static const LocateKernel kernel = locateKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
