#include "math/noise_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

NoiseKernel noiseKernel1();
NoiseKernel noiseKernel4();
NoiseKernel noiseKernel8();
NoiseKernel noiseKernel16();

NoiseKernel noiseKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(noiseKernel)); }

NoiseKernel noiseKernel()
{
    static const NoiseKernel kernel = noiseKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
