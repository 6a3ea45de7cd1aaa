#define ZEB_LANES 4
#include "shade/shading_lanes.h"

namespace zeb
{

ShadingKernel shadingKernel4() { return {shadeBlock, orientRow, faceRow, gatherRow, arriveRow}; }

}  // namespace zeb
