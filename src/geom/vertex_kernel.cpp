#include "geom/vertex_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

VertexKernel vertexKernel1();
VertexKernel vertexKernel4();
VertexKernel vertexKernel8();
VertexKernel vertexKernel16();

VertexKernel vertexKernel(int lanes) { return makeKernel(lanes, ZEB_EACH_KERNEL(vertexKernel)); }

VertexKernel vertexKernel()
{
    static const VertexKernel kernel = vertexKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
