#include "geom/vertex_kernel.h"

#include "util/instruction_set.h"

namespace zeb
{

VertexKernel vertexKernel1();
VertexKernel vertexKernel4();
#if defined(__x86_64__) || defined(__i386__)
VertexKernel vertexKernel8();
VertexKernel vertexKernel16();
#endif

VertexKernel vertexKernel(int lanes)
{
    if (!hasLanes(lanes)) return {};
    switch (lanes) {
#if defined(__x86_64__) || defined(__i386__)
        case 16:
            return vertexKernel16();
        case 8:
            return vertexKernel8();
#endif
        case 4:
            return vertexKernel4();
        default:
            return vertexKernel1();
    }
}

VertexKernel vertexKernel()
{
    static const VertexKernel kernel = vertexKernel(bestLanes());
    return kernel;
}

}  // namespace zeb
