#include "hider/sample.h"

namespace zeb
{

bool Sample::sample(const MicroPolygon& micropolygon, Arena& arena)
{
    SampleOrder order = 0;
    Color color, opacity;
    if (!micropolygon.sample(x, y, order, color, opacity)) return false;
    fHits.add(SampleHit(order, color, opacity, micropolygon.grid().fAttrib->matte), arena);
    return true;
}

PackedSample Sample::pack(double depthOne) const
{
    PackedSample result{x, y, gBlack, 0, depthOne};
    Color T = gWhite;
    for (const auto* node = fHits.head(); node && !node->value.matte; node = node->next) {
        const SampleHit& hit = node->value;
        result.color += T * hit.color * hit.opacity;
        T *= gWhite - hit.opacity;
        if (result.depth >= depthOne) result.depth = hit.order;
    }
    result.alpha = static_cast<float>(0.3333333333333333 * (3.0 - T.r - T.g - T.b));
    return result;
}

}  // namespace zeb
