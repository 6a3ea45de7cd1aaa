#include "shade/shading_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

ShadingKernel shadingKernel1();
ShadingKernel shadingKernel4();
#if defined(__x86_64__) || defined(__i386__)
ShadingKernel shadingKernel8();
ShadingKernel shadingKernel16();
#endif

ShadingKernel shadingKernel(int lanes)
{
    if (!hasLanes(lanes)) return nullptr;
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return shadingKernel16();
        case 8:
            return shadingKernel8();
#endif
        case 4:
            return shadingKernel4();
        default:
            return shadingKernel1();
    }
}

ShadingKernel shadingKernel()
{
    static const ShadingKernel kernel = shadingKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
