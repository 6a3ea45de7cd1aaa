#include "shade/shading_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

ShadingKernel shadingKernel1();
ShadingKernel shadingKernel4();
ShadingKernel shadingKernel8();
ShadingKernel shadingKernel16();

ShadingKernel shadingKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(shadingKernel)); }

ShadingKernel shadingKernel()
{
    static const ShadingKernel kernel = shadingKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
