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
            for (const ControlPoint& point : points) {
                values.push_back(weighed(assoc->point(static_cast<long>(values.size())), point));
            }
            args.detach(token);
        }
        return values;
    };
    fColors = take(Quark::fVertexColor);
    fOpacities = take(Quark::fVertexOpacity);
}

template class ControlValues<Point>;
template class ControlValues<Pointwd>;

}  // namespace zeb
