#include "hider/hits.h"

#include <algorithm>

namespace zeb
{

namespace
{

constexpr int kFew = 16;

}  // namespace

void Hits::add(SamplePoint& point, const MicroPolygon& cell, float s, float t,
               std::uint32_t rank) const
{
    const SampleOrder order = cell.orderAt(s, t);
    if (order > point.cover) return;
    const Grid& grid = cell.grid();
    Hit* const hit =
        fArena.make<Hit>(order, &grid, rank, static_cast<std::uint16_t>(cell.column()),
                         static_cast<std::uint16_t>(cell.row()), s, t, point.latest, gBlack, false);
    point.latest = hit;
    ++point.count;
    if (!fInOrder && !isOpaque(*hit)) {
        hit->color = cell.colorAt(s, t);
        hit->colored = true;
        return;
    }
    point.colorless = true;
    if (!fInOrder && order < double{fFrame.depthScale}) {
        point.cover = order;
    } else {
        // Beyond the far clipping plane, what is opaque leaves the depth to what is behind it.
        point.byRank = true;
    }
}

bool Hits::isOpaque(const Hit& hit)
{
    const Grid& grid = *hit.grid;
    return grid.fMatte || grid.isOpaque() ||
           grid.opacityAt(hit.column, hit.row, hit.s, hit.t) == gWhite;
}

SampleOrder Hits::coverOf(const SamplePoint& point) const
{
    SampleOrder cover = point.cover;
    if (!fCovers || !fInOrder) return cover;
    for (const Hit* hit = point.latest; hit; hit = hit->earlier) {
        const bool covers = hit->order < double{fFrame.depthScale} && isOpaque(*hit);
        if (covers) cover = std::min(cover, hit->order);
    }
    return cover;
}

void Hits::want(const SamplePoint& point, std::vector<const Grid*>& grids) const
{
    if (!point.colorless) return;
    for (const Hit* hit = point.latest; hit; hit = hit->earlier) {
        if (hit->colored || hit->order > point.cover) continue;
        const bool wanted = hit->grid->wantsAny();
        if (hit->grid->want(hit->column, hit->row) && !wanted) grids.push_back(hit->grid);
    }
}

SampleHit Hits::seen(const Hit& hit) const
{
    const Grid& grid = *hit.grid;
    return {hit.order,
            hit.colored ? hit.color : grid.foundColorAt(hit.column, hit.row, hit.s, hit.t),
            grid.opacityAt(hit.column, hit.row, hit.s, hit.t), grid.fMatte};
}

PackedSample Hits::resolve(const SamplePoint& point) const
{
    if (!point.latest) return {point.x, point.y, gBlack, 0, double{fFrame.depthScale}};
    Entry few[kFew];
    Entry* const entries =
        point.count <= kFew ? few : fArena.array<Entry>(static_cast<std::size_t>(point.count));
    int count = 0, index = point.count;
    for (const Hit* hit = point.latest; hit; hit = hit->earlier) {
        --index;
        if (hit->order <= point.cover) entries[count++] = {hit->order, hit, index};
    }
    if (point.byRank) return resolveByRank(point, entries, count);
    if (count > 1) {
        std::sort(entries, entries + count,
                  [](const Entry& a, const Entry& b) { return a.order < b.order; });
    }
    for (int k = 1; k < count; ++k) {
        if (entries[k].order == entries[k - 1].order) return resolveByRank(point, entries, count);
    }
    Composite composite(point.x, point.y, double{fFrame.depthScale}, fFrame.option.quirks);
    for (int k = 0; k < count && composite.add(seen(*entries[k].hit)); ++k) {
    }
    return composite.result();
}

// What lies behind a cover is missing: in the list it would be behind it, too, and move nothing
// that is before it.
PackedSample Hits::resolveByRank(const SamplePoint& point, Entry* entries, int count) const
{
    std::sort(entries, entries + count, [](const Entry& a, const Entry& b) {
        return a.hit->rank != b.hit->rank ? a.hit->rank < b.hit->rank : a.index < b.index;
    });
    Sample sample;
    sample.place(point.x, point.y);
    for (int k = 0; k < count; ++k) sample.add(seen(*entries[k].hit), fArena);
    return sample.pack(double{fFrame.depthScale}, fFrame.option.quirks);
}

}  // namespace zeb
