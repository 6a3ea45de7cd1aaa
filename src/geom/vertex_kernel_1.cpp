#define ZEB_LANES 1
#include "geom/vertex_lanes.h"

namespace zeb
{

VertexKernel vertexKernel1() { return {place, project}; }

}  // namespace zeb
