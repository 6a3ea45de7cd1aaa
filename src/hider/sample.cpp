#include "hider/sample.h"

#include <algorithm>
#include <limits>

namespace zeb
{

bool Composite::add(const SampleHit& hit)
{
    if (hit.matte) return false;
    const Color seen = fT * hit.color;
    fResult.color += fQuirks ? seen * hit.opacity : seen;
    fT *= gWhite - hit.opacity;
    if (fResult.depth >= fDepthOne) fResult.depth = hit.order;
    return fT != gBlack || fResult.depth >= fDepthOne;
}

PackedSample Composite::result()
{
    fResult.alpha = static_cast<float>(0.3333333333333333 * (3.0 - fT.r - fT.g - fT.b));
    return fResult;
}

void Sample::add(const SampleHit& hit, Arena& arena)
{
    if (fCount < kShallow) {
        fCount += fHits.add(hit, arena);
    } else {
        addDeep(hit, arena);
    }
}

// As the list would: the nearest hit of all hides nothing from those that come after it, any other
// opaque hit does.
void Sample::addDeep(const SampleHit& hit, Arena& arena)
{
    constexpr SampleOrder kNone = std::numeric_limits<SampleOrder>::infinity();
    if (!fDeep) {
        const auto* head = fHits.head();
        SampleOrder opaque = kNone;
        for (const auto* node = head->next; node; node = node->next) {
            if (node->value.opaque()) opaque = std::min(opaque, node->value.order);
        }
        fDeep =
            arena.make<Deep>(nullptr, 0, head->value.order, head->value.opaque(), opaque, &arena);
    }
    Deep& deep = *fDeep;
    Place place = kNearest;
    if (hit.order < deep.nearest) {
        if (deep.nearestOpaque) deep.cover = std::min(deep.cover, deep.nearest);
        deep.nearest = hit.order;
        deep.nearestOpaque = hit.opaque();
        if (hit.opaque()) {
            fHits.clear();
            deep.latest = nullptr;
            deep.count = 0;
            deep.cover = kNone;
        }
    } else {
        if (deep.cover < hit.order) return;
        if (hit.opaque()) deep.cover = hit.order;
        place = hit.order == deep.nearest ? kBehindNearest : kInFront;
    }
    deep.latest = arena.make<Deep::Node>(hit, place, deep.latest);
    ++deep.count;
}

// All hits in the order that inserting one after the other into the list would have given, without
// those that an opaque one dropped which came later and lies in front.
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
    int kept = 0, latestOpaque = count;
    for (int i = 0; i < count; ++i) {
        if (sorted[i].index > latestOpaque) continue;
        if (sorted[i].hit->opaque() && sorted[i].index < fDeep->count) {
            latestOpaque = sorted[i].index;
        }
        sorted[kept++] = sorted[i];
    }
    count = kept;
    return sorted;
}

PackedSample Sample::pack(double depthOne, bool quirks) const
{
    Composite composite(x, y, depthOne, quirks);
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
