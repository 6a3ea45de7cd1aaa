// One cell of a projected grid, and the walk over all of them.
#pragma once

#include "geom/grid.h"
#include "hider/sample.h"
#include "math/shading_math.h"

namespace zeb
{

// A cursor onto the bilinear cell between the vertices (u, v), (u + 1, v), (u + 1, v + 1) and
// (u, v + 1). It owns nothing.
class MicroPolygon
{
public:
    explicit MicroPolygon(const Grid& grid, bool bySequence = false)
        : fGrid(&grid), fBySequence(bySequence)
    {
        place(0, 0);
    }

    void place(int u, int v)
    {
        fColumn = u;
        fRow = v;
        f00 = fGrid->at(u, v);
        f01 = fGrid->at(u, v + 1);
        fReady = false;
    }

    const Grid& grid() const { return *fGrid; }
    bool bySequence() const { return fBySequence; }
    int column() const { return fColumn; }
    int row() const { return fRow; }
    Bound bound() const;
    // Positive: faces away; negative: faces the viewer; near zero: edge-on.
    double znormal() const;
    // Whether (x, y) lies in the cell, its edges included; if so, where.
    bool locate(float x, float y, float& s, float& t) const;
    // What is seen at a place of the cell.
    double depthAt(float s, float t) const
    {
        const float* const z = fGrid->rasterPlane(2);
        return double{bilerp(s, t, z[f00], z[f00 + 1], z[f01], z[f01 + 1])};
    }
    SampleOrder orderAt(float s, float t) const
    {
        return fBySequence ? -static_cast<double>(fGrid->fSeq) : depthAt(s, t);
    }
    Color colorAt(float s, float t) const { return fGrid->colorAt(fColumn, fRow, s, t); }
    Color opacityAt(float s, float t) const { return fGrid->opacityAt(fColumn, fRow, s, t); }

private:
    void prepare() const;
    bool inside(double s, double px, double py, double& t) const;

    const Grid* fGrid;
    bool fBySequence;
    int fColumn = 0, fRow = 0;
    // The left vertices above and below; the right ones follow.
    std::size_t f00 = 0, f01 = 0;

    // The coefficients of the quadratic in s that do not depend on the position; found when the
    // first sample is tested. In double: products of differences of floats are exact there, so a
    // position on an edge that two cells share lies in both.
    mutable bool fReady = false;
    mutable double x0 = 0, y0 = 0;
    mutable double e1x = 0, e1y = 0, e2x = 0, e2y = 0, dx = 0, dy = 0, A = 0, B0 = 0;
};

// Visits the cells row by row.
class GridIterator
{
public:
    explicit GridIterator(const Grid& grid, bool bySequence = false)
        : fGrid(grid), fMicroPolygon(grid, bySequence)
    {
        restart();
    }
    void restart();
    // The current cell, advancing past it; null when the walk is over.
    MicroPolygon* operator++(int);
    // Advances, then answers the new cell; null past the last.
    MicroPolygon* operator++();

private:
    void advance();
    const Grid& fGrid;
    MicroPolygon fMicroPolygon;
    int fColumn = 0, fRow = 0, fRowCount = 0;
};

}  // namespace zeb
