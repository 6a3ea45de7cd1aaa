#define ZEB_LANES 4
#include "geom/vertex_lanes.h"

namespace zeb
{

VertexKernel vertexKernel4() { return {place, project}; }

}  // namespace zeb
