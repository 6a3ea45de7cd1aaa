#include "scalar_colors.h"

#include "zebcore/zebcore.h"

namespace zebview
{

unsigned short scalarToken()
{
    static const unsigned short token = zebDeclare("scalar", ZEB_VERTEX, ZEB_FLOAT);
    return token;
}

ScalarColors::ScalarColors(std::shared_ptr<const Colormap> map, const Model& model,
                           const Camera& camera)
    : fMap(std::move(map))
{
    if (!model.scalar || !model.scalar->axis || !model.shownRange) return;
    const Range& range = *model.shownRange;
    if (range.least == range.most) {
        fInModel = fInCamera = Slope{Vector(), 0.5};
        return;
    }
    const FileSpace& space = model.space;
    const Vector& axis = space.axes[*model.scalar->axis];
    const double extent = range.most - range.least;
    fInModel = {axis / (space.unit * extent),
                -(axis * space.origin / space.unit + range.least) / extent};
    fInCamera = fInModel;
    fInCamera->way = Vector();
    for (unsigned to = 0; to < 3; ++to) {
        for (unsigned from = 0; from < 3; ++from) {
            fInCamera->way[to] += fInModel->way[from] * camera.toCamera[from][to];
        }
        fInCamera->offset -= fInCamera->way[to] * camera.toCamera[3][to];
    }
}

const Color& ScalarColors::at(const Mesh& mesh, std::size_t vertex, const Vector& point) const
{
    return fMap->at(fInModel ? fInModel->at(point) : mesh.scalars[vertex]);
}

void ScalarColors::find(const ZebRow& row, const Planes& colors) const
{
    const float* const places = fInCamera ? nullptr : zebRowVariable(&row, scalarToken(), 0);
    for (long k = 0; k < row.count; ++k) {
        const Color& color = fMap->at(
            places ? places[k] : fInCamera->at(Vector(row.P[0][k], row.P[1][k], row.P[2][k])));
        for (std::size_t c = 0; c < 3; ++c) colors[c][k] = color[c];
    }
}

}  // namespace zebview
