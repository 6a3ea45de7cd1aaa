#define ZEB_LANES 1
#include "shade/shading_lanes.h"

namespace zeb
{

ShadingKernel shadingKernel1() { return shadeBlock; }

}  // namespace zeb
