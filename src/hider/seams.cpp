#include "hider/seams.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "geom/primitive.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// The corners of a cell all round, and where they lie in it.
constexpr int kAcross[4] = {0, 1, 1, 0}, kDown[4] = {0, 0, 1, 1};

// How far rounding alone can part two straight sides.
constexpr float kRounding = 1.0f / 64;

double depthRoom(const Bound& bound) { return double{bound.zmax} - double{bound.zmin}; }

float longestSide(const Attrib& attrib)
{
    return std::max(attrib.micropolygonSide, Primitive::kMinSide);
}

// The vertices along an edge of a grid.
struct Vertices {
    const Grid& grid;
    std::size_t first, step;

    Point operator[](int k) const
    {
        return grid.raster(first + static_cast<std::size_t>(k) * step);
    }
};

// How far gaps reach from a side of n steps: as far as its chords, and others that are as long as a
// micropolygon may be, stray from a curve that bends as this one does. Where a side is a single
// chord nothing is known of its curve but what it was diced for.
float reachOf(const Vertices& vertices, int n)
{
    const Attrib& attrib = *vertices.grid.fAttrib;
    const float longest = longestSide(attrib), most = Seams::reach(attrib);
    if (n < 2) return most;
    float bend = 0, shortest = kInfinity;  // squared
    Point p = vertices[0], q = vertices[1];
    const auto measure = [&shortest](const Point& from, const Point& to) {
        const float x = to.x - from.x, y = to.y - from.y;
        shortest = std::min(shortest, x * x + y * y);
    };
    measure(p, q);
    for (int k = 2; k <= n; ++k) {
        const Point r = vertices[k];
        const float x = p.x - 2 * q.x + r.x, y = p.y - 2 * q.y + r.y;
        bend = std::max(bend, x * x + y * y);
        measure(q, r);
        p = std::exchange(q, r);
    }
    // The second difference is eight times what a chord strays by, which grows with its square.
    if (!(shortest > 0)) return most;
    const float longer = std::max(longest * longest / shortest, 1.0f);
    return std::min(std::sqrt(bend) * (1 + longer) * 0.25f + kRounding, most);
}

// The places within reach of a box; depths are left out.
Bound around(const Bound& box, float reach)
{
    return {box.xmin - reach, box.xmax + reach, box.ymin - reach, box.ymax + reach, 0, 0};
}

// Whether a cell's trapezoids, whose sum its facing is but for the sign, sum up to more than 0.
bool positive(const Grid& grid, double facing)
{
    return grid.fFlip != grid.fTransposed ? facing < 0 : facing > 0;
}

}  // namespace

namespace
{

// Sides of triangles are straight.
float edgeReach(const Grid& grid)
{
    return grid.fTriangular ? kRounding : Seams::reach(*grid.fAttrib);
}

}  // namespace

// As far as chords may stray from a smooth surface, or half a micropolygon where that is less.
// Grids that a function of the host's has moved meet along the same chords.
float Seams::reach(const Attrib& attrib)
{
    if (attrib.displacementShader) return kRounding;
    return std::min(0.5f * longestSide(attrib), 2 * attrib.flatnessLimit) + kRounding;
}

Bound Seams::reached(const Grid& grid) { return around(grid.bound(), edgeReach(grid)); }

void Lines::add(std::uint32_t line, float x, float y)
{
    if (fLines.empty() || fLines.back().line != line) fLines.push_back({line, Bound::empty()});
    fLines.back().box.add(Point(x, y, 0));
}

void Lines::sort()
{
    std::sort(fLines.begin(), fLines.end(),
              [](const Line& a, const Line& b) { return a.line < b.line; });
    std::size_t count = 0;
    for (const Line& next : fLines) {
        if (count && fLines[count - 1].line == next.line) {
            fLines[count - 1].box = joined(fLines[count - 1].box, next.box);
        } else {
            fLines[count++] = next;
        }
    }
    fLines.resize(count);
    fRectangle = Bound::empty();
    for (const Line& line : fLines) fRectangle = joined(fRectangle, line.box);
}

const Bound* Lines::find(std::uint32_t line) const
{
    if (!line) return nullptr;
    if (fAll) return &fRectangle;
    const auto found = std::lower_bound(fLines.begin(), fLines.end(), line,
                                        [](const Line& l, std::uint32_t n) { return l.line < n; });
    return found != fLines.end() && found->line == line ? &found->box : nullptr;
}

bool Lines::reach(const Edges& edges, const Bound& box) const
{
    if (fRectangle.misses(box)) return false;
    const std::uint32_t all[] = {edges.umin, edges.umax, edges.vmin, edges.vmax};
    return std::any_of(std::begin(all), std::end(all), [&](std::uint32_t line) {
        const Bound* const where = find(line);
        return where && !where->misses(box);
    });
}

std::vector<Seams::Side>& Seams::sides(const Grid& grid, const Lines& where)
{
    fWhere = &where;
    fSides.clear();
    if (grid.fTriangular) {
        addTriangleSides(grid);
    } else {
        addSides(grid);
    }
    return fSides;
}

void Seams::addSides(const Grid& grid)
{
    const Edges& e = grid.fEdges;
    const int nu = grid.fUSize, nv = grid.fVSize;
    const auto along = [&](std::uint32_t line, int edge, int i, int j, int di, int dj, int n) {
        const Bound* const where = fWhere->find(line);
        if (!where || (dj == 0 && missesRow(grid, j, *where))) return;
        const std::size_t first = grid.at(i, j);
        const Vertices vertices{grid, first, grid.at(i + di, j + dj) - first};
        const float reach = reachOf(vertices, n);
        const int ci = std::min(i, nu - 1), cj = std::min(j, nv - 1);
        // Round a cell, the last two edges run against the order of vertices.
        const bool back = edge >= 2;
        for (int k = 0; k < n; ++k) {
            addSide({&grid, edge, ci + k * di, cj + k * dj, edge, vertices[k + back],
                     vertices[k + !back], reach, line},
                    *where);
        }
    };
    along(e.vmin, 0, 0, 0, 1, 0, nu);
    along(e.umax, 1, nu, 0, 0, 1, nv);
    along(e.vmax, 2, 0, nv, 1, 0, nu);
    along(e.umin, 3, 0, 0, 0, 1, nv);
}

// The long side of a triangle runs along the ends of its rows, and below what cells they have more
// than the next.
void Seams::addTriangleSides(const Grid& grid)
{
    const Edges& e = grid.fEdges;
    const float reach = edgeReach(grid);
    const auto add = [&](int edge, int i, int j, int first, std::uint32_t line,
                         const Bound& where) {
        const int second = (first + 1) % 4;
        addSide({&grid, edge, i, j, first, grid.raster(i + kAcross[first], j + kDown[first]),
                 grid.raster(i + kAcross[second], j + kDown[second]), reach, line},
                where);
    };
    if (const Bound* const where = fWhere->find(e.vmin); where && !missesRow(grid, 0, *where)) {
        for (int i = 0; i < grid.cellCount(0); ++i) add(0, i, 0, 0, e.vmin, *where);
    }
    const Bound *const left = fWhere->find(e.umin), *const across = fWhere->find(e.umax);
    for (int j = 0; j < grid.fVSize; ++j) {
        if (left) add(3, 0, j, 3, e.umin, *left);
        if (!across) continue;
        const int count = grid.cellCount(j), next = j + 1 < grid.fVSize ? grid.cellCount(j + 1) : 0;
        add(1, count - 1, j, 1, e.umax, *across);
        for (int i = next; i < count; ++i) add(1, i, j, 2, e.umax, *across);
    }
}

// Whether all of a row of vertices is beyond where samples look for sides.
bool Seams::missesRow(const Grid& grid, int j, const Bound& where)
{
    return around(grid.rowBound(j), reach(*grid.fAttrib)).misses(where);
}

void Seams::addSide(const Side& side, const Bound& where)
{
    if (!side.bound().misses(where)) fSides.push_back(side);
}

void Seams::know(Side& side) const
{
    side.known = true;
    const Grid& grid = *side.grid;
    MicroPolygon cell(grid);
    cell.place(side.i, side.j);
    const Bound bound = cell.bound();
    const double facing = cell.znormal();
    if (bound.zmax < 0 || double{bound.zmin} > fDepthOne || nearZero(facing)) return;
    side.away = facing > 0;
    side.mayBeSeen = !side.away || grid.fAttrib->sides > 1;
    // The cell lies to the left of the way round it where its trapezoids sum up to less than 0.
    side.left = !positive(grid, facing);
    side.room = depthRoom(bound);
}

bool Seams::look(Side& side, float x, float y, Near& near) const
{
    const Point &a = side.a, &b = side.b;
    const double ex = double{b.x} - double{a.x}, ey = double{b.y} - double{a.y};
    const double px = double{x} - double{a.x}, py = double{y} - double{a.y};
    const double cross = ex * py - ey * px, squared = ex * ex + ey * ey;
    const double reach = side.reach;
    if (cross * cross > reach * reach * squared || squared == 0) return false;
    const double place = (ex * px + ey * py) / squared, along = std::clamp(place, 0.0, 1.0);
    const double dx = px - along * ex, dy = py - along * ey;
    const double distance = std::sqrt(dx * dx + dy * dy);
    if (distance > reach) return false;
    if (!side.known) know(side);
    if (!side.mayBeSeen) return false;
    const double sign = side.left ? 1 : -1;
    const int beyond = place < 0 ? -1 : place > 1 ? 1 : 0;
    const auto between = [along](double from, double to) { return from + along * (to - from); };
    const int first = side.first, second = (first + 1) % 4;
    const auto s = static_cast<float>(between(kAcross[first], kAcross[second]));
    const auto t = static_cast<float>(between(kDown[first], kDown[second]));
    near = {&side, cross * sign < 0,  beyond,   ex * sign, ey * sign, distance, s,
            t,     between(a.z, b.z), near.next};
    return true;
}

namespace
{

bool sameLayer(const Seams::Near& a, const Seams::Near& b, double room)
{
    return a.side->grid->fSeq == b.side->grid->fSeq && a.side->away == b.side->away &&
           std::fabs(a.depth - b.depth) <= room;
}

// Of the sides along one edge of a grid the nearest tells whether the sample lies outside: drops
// those of edges that it lies within, and all but the nearest of others.
Seams::Near* outsideOnly(Seams::Near* list)
{
    const auto sameEdge = [](const Seams::Near& a, const Seams::Near& b) {
        return a.side->grid == b.side->grid && a.side->edge == b.side->edge;
    };
    Seams::Near* kept = nullptr;
    Seams::Near** last = &kept;
    while (list) {
        Seams::Near* nearest = std::exchange(list, list->next);
        bool outside = nearest->outside;
        for (Seams::Near** place = &list; *place;) {
            Seams::Near* other = *place;
            if (!sameEdge(*nearest, *other)) {
                place = &other->next;
                continue;
            }
            *place = other->next;
            // At a corner that two sides have in common, both count.
            if (other->distance < nearest->distance) {
                outside = other->outside;
                nearest = other;
            } else if (other->distance == nearest->distance) {
                outside = outside && other->outside;
            }
        }
        if (!outside) continue;
        *last = nearest;
        last = &nearest->next;
    }
    *last = nullptr;
    return kept;
}

bool samePlace(const Point& a, const Point& b)
{
    return std::fabs(a.x - b.x) <= kRounding && std::fabs(a.y - b.y) <= kRounding;
}

// Whether a place is an end of an edge of a grid.
bool isEnd(const Grid& grid, int edge, const Point& place)
{
    const auto isCorner = [&](int corner) {
        // The third corner of a triangle stands for two of a rectangle.
        const bool across = grid.fTriangular ? corner == 1 : kAcross[corner] != 0;
        return samePlace(grid.raster(across ? grid.fUSize : 0, kDown[corner] ? grid.fVSize : 0),
                         place);
    };
    return isCorner(edge) || isCorner((edge + 1) % 4);
}

// What lies beyond the end of an edge lies by it only where the next grid along the line says so
// too: both look on the line from one side, at a grid whose edge goes past where they meet.
void dropLoneEnds(Seams::Near*& list)
{
    const auto goesOn = [&list](const Seams::Near& near) {
        for (const Seams::Near* other = list; other; other = other->next) {
            if (other != &near && other->beyond && other->side->line == near.side->line &&
                samePlace(other->end(), near.end())) {
                return true;
            }
        }
        return false;
    };
    // What goes is nothing that another goes on with: it would go on with that one, too.
    for (Seams::Near** place = &list; *place;) {
        const Seams::Near& near = **place;
        if (near.beyond && isEnd(*near.side->grid, near.side->edge, near.end()) && !goesOn(near)) {
            *place = near.next;
        } else {
            place = &(*place)->next;
        }
    }
}

// Drops those along lines of which none is seen.
void dropUnseen(Seams::Near*& list, std::vector<std::uint32_t>& seen)
{
    seen.clear();
    for (const Seams::Near* near = list; near; near = near->next) {
        if (near->seen) seen.push_back(near->side->line);
    }
    std::sort(seen.begin(), seen.end());
    for (Seams::Near** place = &list; *place;) {
        if (std::binary_search(seen.begin(), seen.end(), (*place)->side->line)) {
            place = &(*place)->next;
        } else {
            *place = (*place)->next;
        }
    }
}

// Whether two sides have a gap between them: they follow one line, from its two sides.
bool match(const Seams::Near& a, const Seams::Near& b)
{
    // Beyond ends of both lies what an outline turns round. Grids that only end together have the
    // line in common, but no part of it.
    if (a.beyond && b.beyond) return false;
    if (a.beyond && isEnd(*b.side->grid, b.side->edge, a.end())) return false;
    if (b.beyond && isEnd(*a.side->grid, a.side->edge, b.end())) return false;
    return a.side->line == b.side->line && a.dx * b.dx + a.dy * b.dy < 0 &&
           sameLayer(a, b, a.side->room + b.side->room);
}

}  // namespace

bool Seams::covers(const MicroPolygon& cell, float s, float t, const Near& near, double room)
{
    const double apart = std::fabs(cell.depthAt(s, t) - near.depth);
    return apart <= room + depthRoom(cell.bound());
}

// Whether the sample hits the layer that a gap is in.
bool Seams::covered(float x, float y, const Near& near, double room, const Pieces& pieces,
                    Counts& counts)
{
    for (Piece* piece : pieces) {
        if (piece->seq() != near.side->grid->fSeq || !piece->box().holds(x, y)) continue;
        const Grid& grid = piece->dice(counts);
        MicroPolygon cell(grid);
        for (int j = 0; j < grid.fVSize; ++j) {
            const Bound &upper = grid.rowBound(j), &lower = grid.rowBound(j + 1);
            if (y < std::min(upper.ymin, lower.ymin) || y > std::max(upper.ymax, lower.ymax)) {
                continue;
            }
            for (int i = 0; i < grid.cellCount(j); ++i) {
                cell.place(i, j);
                const double facing = cell.znormal();
                float s, t;
                if (nearZero(facing) || (facing > 0) != near.side->away) continue;
                if (cell.locate(x, y, s, t) && covers(cell, s, t, near, room)) return true;
            }
        }
    }
    return false;
}

Seams::Near* Seams::candidates(Near* list) const
{
    dropUnseen(list, fSeenLines);
    // Surfaces that had to be given up pile up sides; pairing them would take forever.
    constexpr int kMostSides = 64;
    int count = 0;
    for (const Near* near = list; near; near = near->next) ++count;
    if (count < 2 || count > kMostSides) return nullptr;
    list = outsideOnly(list);
    dropLoneEnds(list);
    return list;
}

const Seams::Near* Seams::nextGap(float x, float y, Near*& list, const Pieces& pieces,
                                  Counts& counts)
{
    while (list && list->next) {
        // Of all pairs, the one with the nearest side.
        const Near *nearer = nullptr, *other = nullptr;
        for (const Near* a = list; a; a = a->next) {
            if (nearer && nearer->distance <= a->distance) continue;
            for (const Near* b = list; b; b = b->next) {
                if (b->distance < a->distance || !match(*a, *b)) continue;
                nearer = a;
                other = b;
            }
        }
        if (!nearer) return nullptr;
        const double room = nearer->side->room + other->side->room;
        for (Near** place = &list; *place;) {
            if (sameLayer(*nearer, **place, room + (*place)->side->room)) {
                *place = (*place)->next;
            } else {
                place = &(*place)->next;
            }
        }
        if (!covered(x, y, *nearer, room, pieces, counts)) return nearer;
    }
    return nullptr;
}

}  // namespace zeb
