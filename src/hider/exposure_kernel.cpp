#include "hider/exposure_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

ExposureKernel exposureKernel1();
ExposureKernel exposureKernel4();
ExposureKernel exposureKernel8();
ExposureKernel exposureKernel16();

ExposureKernel exposureKernel(int lanes)
{
    return makeKernel(lanes, ZEB_EACH_KERNEL(exposureKernel));
}

ExposureKernel exposureKernel()
{
    static const ExposureKernel kernel = exposureKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
