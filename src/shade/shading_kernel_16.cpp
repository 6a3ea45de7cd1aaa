#define ZEB_LANES 16
#include "shade/shading_lanes.h"

namespace zeb
{

ShadingKernel shadingKernel16() { return {shadeBlock, orientRow, faceRow, gatherRow, arriveRow}; }

}  // namespace zeb
