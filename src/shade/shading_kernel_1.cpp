#define ZEB_LANES 1
#include "shade/shading_lanes.h"

namespace zeb
{

ShadingKernel shadingKernel1() { return {shadeBlock, orientRow, faceRow, gatherRow, arriveRow}; }

}  // namespace zeb
