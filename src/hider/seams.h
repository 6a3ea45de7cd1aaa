// Closes the gaps between the grids of one surface.
#pragma once

#include <algorithm>
#include <vector>

#include "hider/micropolygon.h"
#include "hider/piece.h"
#include "util/arena.h"

namespace zeb
{

// Of one bucket, in the order that decides among surfaces of equal depth.
using Pieces = std::vector<Piece*>;

// Where samples are looked for along which line.
class Lines
{
public:
    Lines() = default;
    // Anywhere in a rectangle, along all lines.
    explicit Lines(const Bound& rectangle) : fRectangle(rectangle), fAll(true) {}

    // Along a line at one more place.
    void add(std::uint32_t line, float x, float y);
    // After the last place.
    void sort();
    // Null where there is none.
    const Bound* find(std::uint32_t line) const;
    // Whether any of a grid's lines may come by one in the grid's box.
    bool reach(const Edges& edges, const Bound& box) const;

private:
    struct Line {
        std::uint32_t line;
        Bound box;
    };
    std::vector<Line> fLines;
    Bound fRectangle;  // around all of them
    bool fAll = false;
};

// Two grids that meet along a line follow it with chords of their own, as long as their
// micropolygons are; where these differ, samples between them would see through the surface. Such a
// sample lies outside both grids, close by a side of either that is on the same line, and between
// the two: it takes what is seen on the nearer side. Borders, holes and outlines have no grid on
// their other side, so nothing is added there; nor where a sample hits the surface already.
class Seams
{
public:
    Seams(bool bySequence, double depthOne, Arena& arena)
        : fBySequence(bySequence), fDepthOne(depthOne), fArena(arena)
    {
    }

    // The side of a cell that lies on a line which its grid shares with others.
    struct Side {
        const Grid* grid;
        int edge;   // of the grid
        int i, j;   // the cell
        int first;  // its corner where the side begins, counted round the cell
        Point a, b;
        float reach;  // in pixels: how far from the side gaps can be
        std::uint32_t line;
        // Of the cell, found when a sample lies by the side.
        bool known = false;
        bool mayBeSeen = false;
        bool left = false;  // whether it lies to the left of the way from a to b
        bool away = false;  // whether it faces away from the eye
        double room = 0;    // that it takes in depth
        // What lists refer to: null before the first does.
        const Side* kept = nullptr;

        // Of the places within reach; depths are left out.
        Bound bound() const
        {
            return {std::min(a.x, b.x) - reach,
                    std::max(a.x, b.x) + reach,
                    std::min(a.y, b.y) - reach,
                    std::max(a.y, b.y) + reach,
                    0,
                    0};
        }
    };
    // That a sample lies by a side.
    struct Near {
        const Side* side;
        bool outside;   // of the surface there
        int beyond;     // a: -1, b: 1, or neither: where the sample lies along the side
        double dx, dy;  // the way along the side that has the cell to its left
        double distance;
        float s, t;    // the place of the side nearest to the sample, in the cell
        double depth;  // there
        Near* next;
        bool seen = false;

        // Where the side ends that the sample lies beyond.
        const Point& end() const { return beyond < 0 ? side->a : side->b; }
    };

    // In pixels: how far from a grid gaps can be.
    static float reach(const Attrib& attrib);
    // Where gaps by a grid's sides can be; depths are left out.
    static Bound reached(const Grid& grid);
    // Where samples may lie by them. Valid until the next call.
    std::vector<Side>& sides(const Grid& grid, const Lines& where);
    // Whether the sample at (x, y) lies by the side of a cell that may be seen; if so, how.
    bool look(Side& side, float x, float y, Near& near) const;
    // Adds it to the list if so.
    void look(Side& side, float x, float y, Near*& list) const
    {
        Near near;
        near.next = list;
        if (!look(side, x, y, near)) return;
        if (!side.kept) side.kept = fArena.make<Side>(side);
        near.side = side.kept;
        list = fArena.make<Near>(near);
    }
    // Whether a cell that the sample hits at (s, t) is of the layer that a gap there would be in.
    static bool covers(const MicroPolygon& cell, float s, float t, const Near& near, double room);
    // Calls add(cell, s, t) for every layer in a gap of which the sample lies, as its list tells:
    // a gap along a line that isSeen(near) by some side of it.
    template <class IsSeen, class Add>
    void close(float x, float y, Near* list, const Pieces& pieces, Counts& counts,
               const IsSeen& isSeen, const Add& add) const
    {
        for (Near* near = list; near; near = near->next) near->seen = isSeen(*near);
        list = candidates(list);
        while (const Near* gap = nextGap(x, y, list, pieces, counts)) {
            MicroPolygon cell(*gap->side->grid, fBySequence);
            cell.place(gap->side->i, gap->side->j);
            add(cell, gap->s, gap->t);
        }
    }

private:
    void addSides(const Grid& grid);
    void addTriangleSides(const Grid& grid);
    static bool missesRow(const Grid& grid, int j, const Bound& where);
    void addSide(const Side& side, const Bound& where);
    void know(Side& side) const;
    // Those of a list that may lie by a gap.
    Near* candidates(Near* list) const;
    // Takes the nearest gap that is still open out of a list, with all of its layer.
    static const Near* nextGap(float x, float y, Near*& list, const Pieces& pieces, Counts& counts);
    static bool covered(float x, float y, const Near& near, double room, const Pieces& pieces,
                        Counts& counts);

    const bool fBySequence;
    const double fDepthOne;
    Arena& fArena;
    const Lines* fWhere = nullptr;
    std::vector<Side> fSides;
    mutable std::vector<std::uint32_t> fSeenLines;
};

}  // namespace zeb
