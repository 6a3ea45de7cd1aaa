#include "hider/hits.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "util/cancel.h"

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
    if (order > point.cover.order) return;
    Hit hit{order,
            &cell.grid(),
            rank,
            point.count++,
            0,
            static_cast<std::uint16_t>(cell.column()),
            static_cast<std::uint16_t>(cell.row()),
            s,
            t};
    const bool opaque = isOpaque(hit);
    const bool covers = opaque && !fInOrder && order < double{fFrame.depthScale};
    if (covers && order < point.cover.order) {
        point.cover = hit;
        return;
    }
    hit.colored = !opaque && !fInOrder;
    point.latest =
        fArena.make<ListedHit>(hit, hit.colored ? cell.colorAt(s, t) : gBlack, point.latest);
    if (hit.colored) return;
    point.colorless = true;
    // Beyond the far clipping plane, what is opaque leaves the depth to what is behind it.
    if (!covers) point.byRank = true;
}

bool Hits::isOpaque(const Hit& hit)
{
    const Grid& grid = *hit.grid;
    return grid.fMatte || grid.isOpaque() ||
           grid.opacityAt(hit.column, hit.row, hit.s, hit.t) == gWhite;
}

SampleOrder Hits::coverOf(const SamplePoint& point) const
{
    SampleOrder cover = point.cover.order;
    if (!fCovers || !fInOrder) return cover;
    point.eachHit([&](const Hit& hit) {
        const bool covers = hit.order < double{fFrame.depthScale} && isOpaque(hit);
        if (covers) cover = std::min(cover, hit.order);
    });
    return cover;
}

void Hits::want(const SamplePoint& point, Wants& wants) const
{
    if (point.cover.grid) wants.add(point.cover);
    if (!point.colorless) return;
    for (const ListedHit* hit = point.latest; hit; hit = hit->earlier) {
        if (!hit->colored && hit->order <= point.cover.order) wants.add(*hit);
    }
}

Wants::Wants(std::size_t grids, Arena& arena)
    : fArena(arena), fMask(std::bit_ceil(2 * grids + 1) - 1), fSlots(arena.array<Slot>(fMask + 1))
{
}

Wants::OfGrid& Wants::find(const Grid& grid)
{
    if (fLast && fLast->grid == &grid) return *fLast;
    const auto address = reinterpret_cast<std::uintptr_t>(&grid);
    std::size_t slot = (address * 0x9E3779B1u >> 12) & fMask;
    while (fSlots[slot].known && fSlots[slot].known->grid != &grid) slot = (slot + 1) & fMask;
    OfGrid*& known = fSlots[slot].known;
    if (known) return *known;
    known = fFreeGrids ? std::exchange(fFreeGrids, fFreeGrids->next) : fArena.make<OfGrid>();
    *known = {&grid, &fSlots[slot], nullptr, nullptr, nullptr};
    (fLast ? fLast->next : fFirst) = known;
    fLast = known;
    return *known;
}

AskedCells* Wants::takeBlock()
{
    if (!fFreeBlocks) return fArena.make<AskedCells>();
    AskedCells* const block = std::exchange(fFreeBlocks, fFreeBlocks->next);
    block->count = 0;
    block->next = nullptr;
    return block;
}

void Wants::add(const Hit& hit)
{
    OfGrid& asked = find(*hit.grid);
    AskedCells*& last = asked.last;
    if (last) {
        const VertexPlace before = last->cells[last->count - 1];
        if (before.i == hit.column && before.j == hit.row) return;
    }
    if (!last || last->count == AskedCells::kMost) {
        AskedCells* const block = takeBlock();
        (last ? last->next : asked.first) = block;
        last = block;
    }
    last->cells[last->count++] = {hit.column, hit.row};
}

void Wants::shade(ShadingCounts& counts)
{
    for (OfGrid* asked = fFirst; asked; asked = asked->next) {
        checkCancelled();
        asked->grid->shade(asked->first, counts);
        asked->slot->known = nullptr;
        asked->last->next = std::exchange(fFreeBlocks, asked->first);
    }
    if (fLast) fLast->next = std::exchange(fFreeGrids, fFirst);
    fFirst = fLast = nullptr;
}

SampleHit Hits::seen(const Entry& entry)
{
    const Hit& hit = *entry.hit;
    const Grid& grid = *hit.grid;
    return {hit.order, entry.color ? *entry.color : grid.colorAt(hit.column, hit.row, hit.s, hit.t),
            grid.opacityAt(hit.column, hit.row, hit.s, hit.t), grid.fMatte};
}

PackedSample Hits::resolve(const SamplePoint& point) const
{
    if (!point.latest) return resolveCover(point);
    Entry few[kFew];
    Entry* const entries = point.count <= kFew ? few : fArena.array<Entry>(point.count);
    int count = 0;
    for (const ListedHit* hit = point.latest; hit; hit = hit->earlier) {
        if (hit->order > point.cover.order) continue;
        entries[count++] = {hit->order, hit, hit->colored ? &hit->color : nullptr};
    }
    if (point.cover.grid) entries[count++] = {point.cover.order, &point.cover, nullptr};
    if (point.byRank) return resolveByRank(point, entries, count);
    if (count > 1) {
        std::sort(entries, entries + count,
                  [](const Entry& a, const Entry& b) { return a.order < b.order; });
    }
    for (int k = 1; k < count; ++k) {
        if (entries[k].order == entries[k - 1].order) return resolveByRank(point, entries, count);
    }
    Composite composite(point.x, point.y, double{fFrame.depthScale}, fFrame.option.quirks);
    for (int k = 0; k < count && composite.add(seen(entries[k])); ++k) {
    }
    return composite.result();
}

// What Composite makes of nothing, or of one that is opaque.
PackedSample Hits::resolveCover(const SamplePoint& point) const
{
    const Hit& hit = point.cover;
    if (!hit.grid || hit.grid->fMatte) {
        return {point.x, point.y, gBlack, 0, double{fFrame.depthScale}};
    }
    const Color color = hit.grid->colorAt(hit.column, hit.row, hit.s, hit.t);
    return {point.x, point.y, gBlack + color, 1, hit.order};
}

// What lies behind a cover is missing: in the list it would be behind it, too, and move nothing
// that is before it.
PackedSample Hits::resolveByRank(const SamplePoint& point, Entry* entries, int count) const
{
    std::sort(entries, entries + count, [](const Entry& a, const Entry& b) {
        return a.hit->rank != b.hit->rank ? a.hit->rank < b.hit->rank : a.hit->index < b.hit->index;
    });
    Sample sample;
    sample.place(point.x, point.y);
    for (int k = 0; k < count; ++k) sample.add(seen(entries[k]), fArena);
    return sample.pack(double{fFrame.depthScale}, fFrame.option.quirks);
}

}  // namespace zeb
