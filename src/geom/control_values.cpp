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
    const auto take = [&](unsigned short token) {
        std::vector<ControlPoint> values;
        if (const ArgAssoc* const assoc = token ? args.find(token) : nullptr) {
            values.reserve(points.size());
            const float* words = assoc->words();
            const long width = assoc->width();
            for (const ControlPoint& point : points) {
                values.push_back(
                    weighed({words[0], width > 1 ? words[1] : 0, width > 2 ? words[2] : 0}, point));
                words += width;
            }
            args.detach(token);
        }
        return values;
    };
    fColors = take(Quark::fVertexColor);
    fOpacities = take(Quark::fVertexOpacity);
    // Taking them out changes the list.
    std::vector<std::pair<unsigned short, long>> others;
    for (const ArgAssoc& assoc : args) {
        const bool isNumber = assoc.words() && assoc.type() != kInteger && assoc.width() <= 3;
        if (assoc.storage() == kVertexClass && assoc.token > kQPointw && isNumber) {
            others.emplace_back(assoc.token, assoc.width());
        }
    }
    for (const auto& [token, width] : others) fVariables.push_back({token, width, take(token)});
}

template class ControlValues<Point>;
template class ControlValues<Pointwd>;

}  // namespace zeb
