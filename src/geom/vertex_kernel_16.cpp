#define ZEB_LANES 16
#include "geom/vertex_lanes.h"

namespace zeb
{

VertexKernel vertexKernel16() { return {place, project}; }

}  // namespace zeb
