#include "hider/exposure_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

ExposureKernel exposureKernel1();
ExposureKernel exposureKernel4();
#if defined(__x86_64__) || defined(__i386__)
ExposureKernel exposureKernel8();
ExposureKernel exposureKernel16();
#endif

ExposureKernel exposureKernel(int lanes)
{
    if (!hasLanes(lanes)) return nullptr;
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return exposureKernel16();
        case 8:
            return exposureKernel8();
#endif
        case 4:
            return exposureKernel4();
        default:
            return exposureKernel1();
    }
}

ExposureKernel exposureKernel()
{
    static const ExposureKernel kernel = exposureKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
