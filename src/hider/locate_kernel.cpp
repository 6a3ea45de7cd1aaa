#include "hider/locate_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

LocateKernel locateKernel1();
LocateKernel locateKernel4();
#if defined(__x86_64__) || defined(__i386__)
LocateKernel locateKernel8();
LocateKernel locateKernel16();
#endif

LocateKernel locateKernel(int lanes)
{
    if (!hasLanes(lanes)) return nullptr;
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return locateKernel16();
        case 8:
            return locateKernel8();
#endif
        case 4:
            return locateKernel4();
        default:
            return locateKernel1();
    }
}

LocateKernel locateKernel()
{
    static const LocateKernel kernel = locateKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
