#include "geom/sweep_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

SweepKernel sweepKernel1();
SweepKernel sweepKernel4();
#if defined(__x86_64__) || defined(__i386__)
SweepKernel sweepKernel8();
SweepKernel sweepKernel16();
#endif

SweepKernel sweepKernel(int lanes)
{
    if (!hasLanes(lanes)) return nullptr;
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return sweepKernel16();
        case 8:
            return sweepKernel8();
#endif
        case 4:
            return sweepKernel4();
        default:
            return sweepKernel1();
    }
}

SweepKernel sweepKernel()
{
    static const SweepKernel kernel = sweepKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
