#include "geom/control_values.h"

#include "state/quark.h"

namespace zeb
{

namespace
{

Point weighed(const Point& value, const Point&) { return value; }
Pointwd weighed(const Point& value, const Pointwd& point)
{
    return Pointwd{double{value.x}, double{value.y}, double{value.z}, 1} * point.w;
}

}  // namespace

template <class ControlPoint>
ControlValues<ControlPoint>::ControlValues(ArgList& args, const std::vector<ControlPoint>& points)
{
    const auto valuesOf = [&points](const ArgAssoc& assoc) {
        std::vector<ControlPoint> values;
        values.reserve(points.size());
        const float* words = assoc.words();
        const long width = assoc.width();
        for (const ControlPoint& point : points) {
            const Point value(words[0], width > 1 ? words[1] : 0, width > 2 ? words[2] : 0);
            values.push_back(weighed(value, point));
            words += width;
        }
        return values;
    };
    const auto take = [&](unsigned short token) {
        std::vector<ControlPoint> values;
        if (const ArgAssoc* const assoc = token ? args.find(token) : nullptr) {
            values = valuesOf(*assoc);
            args.detach(token);
        }
        return values;
    };
    fColors = take(Quark::fVertexColor);
    fOpacities = take(Quark::fVertexOpacity);
    for (const ArgAssoc& assoc : args) {
        if (assoc.storage() != kVertexClass || assoc.token <= kQPointw) continue;
        if (!assoc.words() || assoc.type() == kInteger || assoc.width() > 3) continue;
        fVariables.push_back({assoc.token, assoc.width(), valuesOf(assoc)});
    }
}

template class ControlValues<Point>;
template class ControlValues<Pointwd>;

}  // namespace zeb
