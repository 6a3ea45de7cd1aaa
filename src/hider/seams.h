// Closes the gaps between the grids of one surface.
#pragma once

#include <memory>
#include <vector>

#include "hider/sample.h"
#include "util/list.h"

namespace zeb
{

// Of one bucket. A grid goes with the last bucket that it was handed to.
using Grids = List<std::shared_ptr<const Grid>>;

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
        const Vertex *a, *b;
        float reach;  // in pixels: how far from the side gaps can be
        std::uint32_t line;

        // Of the places within reach; depths are left out.
        Bound bound() const;
    };
    // That a sample lies by a side.
    struct Near {
        Side side;
        bool outside;       // of the surface there
        const Vertex* end;  // that the sample lies beyond, if it does
        double dx, dy;      // the way along the side that has the cell to its left
        double distance;
        float s, t;    // the place of the side nearest to the sample, in the cell
        double depth;  // there
        double room;   // that the cell takes in depth
        bool away;     // whether the cell faces away from the eye
        Near* next;
    };

    // In pixels: how far from a grid gaps can be.
    static float reach(const Grid& grid);
    // Valid until the next call.
    const std::vector<Side>& sides(const Grid& grid);
    // Adds to the list if the sample lies by the side.
    void look(const Side& side, const Sample& sample, Near*& list) const;
    // Adds a hit for every layer in a gap of which the sample lies, as its list tells.
    void close(Sample& sample, Near* list, const Grids& grids) const;

private:
    void addSides(const Grid& grid);
    void addTriangleSides(const Grid& grid);
    void addSide(const Grid& grid, int edge, int i, int j, int first, std::uint32_t line,
                 float reach);
    bool covered(const Sample& sample, const Near& near, double room, const Grids& grids) const;

    const bool fBySequence;
    const double fDepthOne;
    Arena& fArena;
    std::vector<Side> fSides;
};

}  // namespace zeb
