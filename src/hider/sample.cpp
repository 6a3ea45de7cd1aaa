#include "hider/sample.h"

#include <algorithm>
#include <limits>

namespace zeb
{

namespace
{

// Composites hits front to back.
class Composite
{
public:
    Composite(float x, float y, double depthOne)
        : fDepthOne(depthOne), fResult{x, y, gBlack, 0, depthOne}
    {
    }
    // False when nothing behind can be seen.
    bool add(const SampleHit& hit)
    {
        if (hit.matte) return false;
        fResult.color += fT * hit.color * hit.opacity;
        fT *= gWhite - hit.opacity;
        if (fResult.depth >= fDepthOne) fResult.depth = hit.order;
        return fT != gBlack;
    }
    PackedSample result()
    {
        fResult.alpha = static_cast<float>(0.3333333333333333 * (3.0 - fT.r - fT.g - fT.b));
        return fResult;
    }

private:
    double fDepthOne;
    PackedSample fResult;
    Color fT = gWhite;
};

}  // namespace

bool Sample::sample(const MicroPolygon& micropolygon, Arena& arena)
{
    SampleOrder order = 0;
    Color color, opacity;
    if (!micropolygon.sample(x, y, order, color, opacity)) return false;
    add(SampleHit(order, color, opacity, micropolygon.grid().fAttrib->matte), arena);
    return true;
}

void Sample::add(const SampleHit& hit, Arena& arena)
{
    if (fCount < kShallow) {
        fCount += fHits.add(hit, arena);
    } else {
        addDeep(hit, arena);
    }
}

void Sample::addDeep(const SampleHit& hit, Arena& arena)
{
    if (!fDeep) {
        SampleOrder opaque = std::numeric_limits<SampleOrder>::infinity();
        for (const auto* node = fHits.head(); node; node = node->next) {
            if (node->value.opaque()) opaque = std::min(opaque, node->value.order);
        }
        fDeep = arena.make<Deep>(nullptr, 0, fHits.head()->value.order, opaque, &arena);
    }
    Deep& deep = *fDeep;
    if (hit.order > deep.nearestOpaque) return;
    if (hit.opaque()) deep.nearestOpaque = hit.order;
    const Place place = hit.order < deep.nearest    ? kNearest
                        : hit.order == deep.nearest ? kBehindNearest
                                                    : kInFront;
    deep.nearest = std::min(deep.nearest, hit.order);
    deep.latest = arena.make<Deep::Node>(hit, place, deep.latest);
    ++deep.count;
}

// All hits in the order that inserting one after the other into the list would have given.
Sample::Sorted* Sample::sortDeep(int& count) const
{
    auto* sorted = fDeep->arena->array<Sorted>(static_cast<std::size_t>(fDeep->count) + kShallow);
    count = 0;
    for (const auto* node = fDeep->latest; node; node = node->earlier) {
        sorted[count] = {&node->hit, node->place, count};
        ++count;
    }
    Place place = kNearest;
    for (const auto* node = fHits.head(); node; node = node->next, place = kListed) {
        sorted[count] = {&node->value, place, count};
        ++count;
    }
    std::sort(sorted, sorted + count);
    return sorted;
}

PackedSample Sample::pack(double depthOne) const
{
    Composite composite(x, y, depthOne);
    if (fDeep) {
        int count = 0;
        const Sorted* sorted = sortDeep(count);
        for (int i = 0; i < count && composite.add(*sorted[i].hit); ++i) {
        }
    } else {
        for (const auto* node = fHits.head(); node && composite.add(node->value);
             node = node->next) {
        }
    }
    return composite.result();
}

}  // namespace zeb
