#include "geom/grid.h"

#include "state/quark.h"

namespace zeb
{

namespace
{

// The variables that shading knows by name, or all others; positions are neither.
ArgList inCamera(const ArgList& args, const Matrix& toCamera, bool flip, bool known)
{
    ArgList taken;
    for (const ArgAssoc& assoc : args) {
        const bool isColor = Quark::isVertexColor(assoc.token);
        // Nothing reads other values of single control points.
        if (assoc.token <= kQPointw || (assoc.storage() == kVertexClass && !isColor)) continue;
        if ((assoc.token <= kQOpacity || isColor) == known) taken.add(assoc);
    }
    taken.project(toCamera, flip);
    return taken;
}

}  // namespace

Grid::Grid(unsigned short usize, unsigned short vsize, std::shared_ptr<const Attrib> attrib,
           const Transform& transform, std::uint32_t seq, bool flip, bool triangular,
           const ArgList& args, const Edges& edges, bool transposed)
    : fUSize(usize),
      fVSize(vsize),
      fAttrib(std::move(attrib)),
      fSeq(seq),
      fFlip(flip),
      fTriangular(triangular),
      fTransposed(transposed),
      fEdges(edges),
      fVertexArgs(inCamera(args, transform.matrix(), flip, true)),
      fOtherArgs(inCamera(args, transform.matrix(), flip, false)),
      fRowStarts(new std::uint32_t[vsize + 1u])
{
    std::uint32_t count = 0;
    for (int j = 0; j <= fVSize; ++j) {
        fRowStarts[j] = count;
        count += static_cast<std::uint32_t>(vertexCount(j));
    }
    fVertices.reset(new Vertex[count]);
}

void Grid::project(const RenderFrame& frame)
{
    fRowBounds.reset(new Bound[fVSize + 1u]);
    fBound = Bound::empty();
    for (int j = 0; j <= fVSize; ++j) {
        Bound bound = Bound::empty();
        const int count = vertexCount(j);
        for (int i = 0; i < count; ++i) {
            Point& P = vertex(i, j).P;
            const float z = frame.hiderDepth(P.z);
            P *= frame.cameraToRaster;
            P.z = z;
            bound.add(P);
        }
        fRowBounds[j] = bound;
        fBound.add(Point(bound.xmin, bound.ymin, bound.zmin));
        fBound.add(Point(bound.xmax, bound.ymax, bound.zmax));
    }
}

}  // namespace zeb
