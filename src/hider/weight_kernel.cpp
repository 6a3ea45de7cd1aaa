#include "hider/weight_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

WeightKernel weightKernel1();
WeightKernel weightKernel4();
WeightKernel weightKernel8();
WeightKernel weightKernel16();

WeightKernel weightKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(weightKernel)); }

WeightKernel weightKernel()
{
    static const WeightKernel kernel = weightKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
