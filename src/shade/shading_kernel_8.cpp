#define ZEB_LANES 8
#include "shade/shading_lanes.h"

namespace zeb
{

ShadingKernel shadingKernel8() { return {shadeBlock, orientRow, faceRow, gatherRow, arriveRow}; }

}  // namespace zeb
