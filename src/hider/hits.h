// The surfaces at the positions of samples: which of them are seen, and what comes of them.
#pragma once

#include <limits>
#include <vector>

#include "hider/micropolygon.h"
#include "state/render_frame.h"

namespace zeb
{

// A place of a micropolygon that lies at a sample's position.
struct Hit {
    SampleOrder order = std::numeric_limits<SampleOrder>::infinity();
    const Grid* grid = nullptr;
    // Of the grid, among those of the bucket: decides among hits of equal order.
    std::uint32_t rank = 0;
    std::uint32_t index : 31 = 0;  // among the hits at this position, as they came
    // Whether the colour is known: of what is opaque it is found only if that is seen, of what is
    // not while it is at hand.
    std::uint32_t colored : 1 = 0;
    std::uint16_t column = 0, row = 0;
    float s = 0, t = 0;
};

// One of many at a position.
struct ListedHit : Hit {
    Color color;
    const ListedHit* earlier;
};

struct SamplePoint {
    float x = 0, y = 0;
    // What is opaque and nearest of all, without a grid as long as there is none: what lies behind
    // it is not seen. Most samples have no more.
    Hit cover;
    // What is not opaque, or as near as the cover; what has become hidden may be among it.
    const ListedHit* latest = nullptr;
    std::uint32_t count = 0;  // of hits
    // Whether the order in which surfaces were filed may decide what is seen, even where no two
    // are equally deep.
    bool byRank = false;
    // Whether some listed hit's colour is not known yet.
    bool colorless = false;

    // Calls visit(hit) for all of them; some may be hidden.
    template <class Visit>
    void eachHit(const Visit& visit) const
    {
        if (cover.grid) visit(cover);
        for (const ListedHit* hit = latest; hit; hit = hit->earlier) visit(*hit);
    }
};

// The micropolygons whose colours resolving will read.
class Wants
{
public:
    // Of so many grids at most.
    Wants(std::size_t grids, Arena& arena);

    void add(const Hit& hit);
    // Finds the colours of all, and begins anew. Grids come in the order in which they were added
    // first: what shading reports is told in it.
    void shade(ShadingCounts& counts);

private:
    struct OfGrid;
    struct Slot {
        OfGrid* known = nullptr;
    };
    struct OfGrid {
        const Grid* grid;
        Slot* slot;
        AskedCells *first, *last;
        OfGrid* next;
    };
    OfGrid& find(const Grid& grid);
    AskedCells* takeBlock();

    Arena& fArena;
    std::size_t fMask;  // slots minus 1: a power of two
    Slot* fSlots;       // by the grid's address, or the next one free
    OfGrid *fFirst = nullptr, *fLast = nullptr;
    // Of earlier times.
    OfGrid* fFreeGrids = nullptr;
    AskedCells* fFreeBlocks = nullptr;
};

// Grids may come in any order: what is seen is what taking them by their ranks would give. Where
// some are more than opaque, what hides them from others is only known in the end: then nothing
// covers anything before, and `inOrder` says so.
class Hits
{
public:
    Hits(const RenderFrame& frame, bool inOrder, Arena& arena)
        : fFrame(frame), fCovers(!inOrder), fInOrder(inOrder || frame.plain), fArena(arena)
    {
    }

    // The rank of what closes gaps: after all grids.
    static constexpr std::uint32_t kLast = 0xFFFFFFFF;

    // A grid's hits come in the order of its micropolygons; grids that are not opaque have been
    // shaded.
    void add(SamplePoint& point, const MicroPolygon& cell, float s, float t,
             std::uint32_t rank) const;
    // What lies behind this is not seen at the position, as far as is known.
    SampleOrder coverOf(const SamplePoint& point) const;
    // Adds the micropolygons whose colours resolving will read: they have to be found first.
    void want(const SamplePoint& point, Wants& wants) const;
    PackedSample resolve(const SamplePoint& point) const;

private:
    struct Entry {
        SampleOrder order;
        const Hit* hit;
        const Color* color;  // null where the grid has it
    };

    static bool isOpaque(const Hit& hit);
    static SampleHit seen(const Entry& entry);
    PackedSample resolveCover(const SamplePoint& point) const;
    PackedSample resolveByRank(const SamplePoint& point, Entry* entries, int count) const;

    const RenderFrame& fFrame;
    const bool fCovers;  // something covers others, whether that is made use of or not
    const bool fInOrder;
    Arena& fArena;
};

}  // namespace zeb
