#include "hider/weight_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

WeightKernel weightKernel1();
WeightKernel weightKernel4();
#if defined(__x86_64__) || defined(__i386__)
WeightKernel weightKernel8();
WeightKernel weightKernel16();
#endif

WeightKernel weightKernel(int lanes)
{
    if (!hasLanes(lanes)) return nullptr;
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return weightKernel16();
        case 8:
            return weightKernel8();
#endif
        case 4:
            return weightKernel4();
        default:
            return weightKernel1();
    }
}

WeightKernel weightKernel()
{
    static const WeightKernel kernel = weightKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
