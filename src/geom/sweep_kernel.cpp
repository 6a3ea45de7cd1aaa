#include "geom/sweep_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

SweepKernel sweepKernel1();
SweepKernel sweepKernel4();
SweepKernel sweepKernel8();
SweepKernel sweepKernel16();

SweepKernel sweepKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(sweepKernel)); }

SweepKernel sweepKernel()
{
    static const SweepKernel kernel = sweepKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
