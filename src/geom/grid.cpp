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
      fSmooth(fAttrib->interpolation == kSmoothShading),
      fMatte(fAttrib->matte),
      fTransposed(transposed),
      fEdges(edges),
      fVertexArgs(inCamera(args, transform.matrix(), flip, true)),
      fOtherArgs(inCamera(args, transform.matrix(), flip, false))
{
    std::size_t count = 0;
    for (int j = 0; j <= fVSize; ++j) count += static_cast<std::size_t>(vertexCount(j));
    const std::size_t rows = fVSize + 1u;
    fLasting.reset(new std::byte[rows * (sizeof(std::uint32_t) + sizeof(Bound)) +
                                 count * sizeof(Point)]);
    fRowStarts = new (fLasting.get()) std::uint32_t[rows];
    fRowBounds = new (fRowStarts + rows) Bound[rows];
    fRaster = new (fRowBounds + rows) Point[count];
    std::uint32_t start = 0;
    for (int j = 0; j <= fVSize; ++j) {
        fRowStarts[j] = start;
        start += static_cast<std::uint32_t>(vertexCount(j));
    }
    fVertices.reset(new Vertex[count]);
}

void Grid::shade() const
{
    VertexShader* const asked = fColors.complete ? nullptr : shader();
    if (!asked) return;
    for (int j = 0; j < fVSize + fSmooth; ++j) {
        const int count = fSmooth ? vertexCount(j) : cellCount(j);
        for (int i = 0; i < count; ++i) {
            const std::size_t k = at(i, j);
            if (!fColors.knows(k)) set(fColors, k, ask(*asked, &VertexShader::color, i, j));
            if (fOpacityVaries && !fOpacities.knows(k)) {
                set(fOpacities, k, asked->opacity(i, j));
            }
        }
    }
    fColors.complete = true;
    fOpacities.complete = fOpacityVaries;
    fColors.known.reset();
    fOpacities.known.reset();
    fVertices.reset();
    fShader.reset();
}

void Grid::know(ColorPlane& plane, Find find, int i, int j) const
{
    const std::size_t k = at(i, j);
    if (plane.knows(k)) return;
    if (VertexShader* const asked = shader()) set(plane, k, ask(*asked, find, i, j));
}

Color Grid::ask(VertexShader& shader, Find find, int i, int j) const
{
    if (fShaded && find == &VertexShader::color) ++*fShaded;
    return (shader.*find)(i, j);
}

void Grid::knowCell(ColorPlane& plane, Find find, int i, int j) const
{
    know(plane, find, i, j);
    if (!fSmooth) return;
    know(plane, find, i + 1, j);
    know(plane, find, i, j + 1);
    know(plane, find, i + 1, j + 1);
}

void Grid::set(ColorPlane& plane, std::size_t k, const Color& color) const
{
    if (!plane.known) {
        plane.values.reset(new Color[vertexCount()]);
        plane.known.reset(new bool[vertexCount()]());
    }
    plane.values[k] = color;
    plane.known[k] = true;
}

void Grid::project(const RenderFrame& frame)
{
    fBound = Bound::empty();
    for (int j = 0; j <= fVSize; ++j) {
        Bound bound = Bound::empty();
        const int count = vertexCount(j);
        for (int i = 0; i < count; ++i) {
            Point& P = fRaster[at(i, j)];
            P = vertex(i, j).P;
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
