#define ZEB_LANES 8
#include "geom/vertex_lanes.h"

namespace zeb
{

VertexKernel vertexKernel8() { return {place, project}; }

}  // namespace zeb
