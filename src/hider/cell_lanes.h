// Included after ZEB_LANES is defined.
#pragma once

#include "hider/cell_kernel.h"
#include "util/lanes.h"

namespace zeb
{
namespace
{

// The corners of cells, all round.
struct Corners {
    Float x[4], y[4], z[4];
};

inline Corners cornersAt(const CellRow& row, int k)
{
    const auto round = [&](Float(&c)[4], int axis) {
        c[0] = Float::load(row.upper[axis] + k);
        c[1] = Float::load(row.upper[axis] + k + 1);
        c[2] = Float::load(row.lower[axis] + k + 1);
        c[3] = Float::load(row.lower[axis] + k);
    };
    Corners corners;
    round(corners.x, 0);
    round(corners.y, 1);
    round(corners.z, 2);
    return corners;
}

struct Interval {
    Float min, max;
};

// Of the left side and of the right one.
inline Interval intervalOf(const Float (&c)[4])
{
    return {least(least(c[0], c[3]), least(c[1], c[2])), most(most(c[0], c[3]), most(c[1], c[2]))};
}

// Twice the area, counted positive one way round; 0 where it is next to nothing.
inline Float facing(const Corners& c, bool isFlipped)
{
    const auto trapezoid = [](Double x0, Double y0, Double x1, Double y1) {
        return (x1 - x0) * (y1 + y0);
    };
    const auto sum = [&](Double x0, Double y0, Double x1, Double y1, Double x2, Double y2,
                         Double x3, Double y3) {
        const Double area = trapezoid(x0, y0, x1, y1) + trapezoid(x1, y1, x2, y2) +
                            trapezoid(x2, y2, x3, y3) + trapezoid(x3, y3, x0, y0);
        return zeroWithin(area, 1e-10);
    };
    const Float area =
        inDouble(sum, c.x[0], c.y[0], c.x[1], c.y[1], c.x[2], c.y[2], c.x[3], c.y[3]);
    return isFlipped ? -area : area;
}

// The first index at or after a place, and the last at or before it, as far as there are any.
inline Int first(Float place, float count)
{
    const Float inside = least(select(place > 0.0f, place, 0.0f), count);
    const Int whole = truncate(inside);
    return whole + select(toFloat(whole) < inside, Int(1), Int(0));
}
inline Int last(Float place, float count)
{
    const Mask isAfter = place >= 0.0f;
    const Float inside = select(isAfter, least(place, count - 1), 0.0f);
    return select(isAfter, truncate(inside), Int(-1));
}

void findCells(const Lattice& l, CellRow& row)
{
    const auto columns = static_cast<float>(l.columns), rows = static_cast<float>(l.rows);
    for (int k = 0; k < row.count; k += kLanes) {
        const Corners corners = cornersAt(row, k);
        const Interval x = intervalOf(corners.x), y = intervalOf(corners.y),
                       z = intervalOf(corners.z);
        x.min.store(row.xmin + k);
        x.max.store(row.xmax + k);
        y.min.store(row.ymin + k);
        y.max.store(row.ymax + k);
        z.min.store(row.zmin + k);
        z.max.store(row.zmax + k);
        facing(corners, row.isFlipped).store(row.facing + k);

        const Mask outside = (x.min > l.xmax) | (x.max < l.xmin) | (y.min > l.ymax) |
                             (y.max < l.ymin) | (z.max < 0.0f) | (z.min > l.far);
        first((x.min - l.xmin - l.jitter) * l.xrate - 0.5f, columns).store(row.i0 + k);
        select(outside, Int(-1), last((x.max - l.xmin + l.jitter) * l.xrate - 0.5f, columns))
            .store(row.i1 + k);
        first((y.min - l.ymin - l.jitter) * l.yrate - 0.5f, rows).store(row.j0 + k);
        last((y.max - l.ymin + l.jitter) * l.yrate - 0.5f, rows).store(row.j1 + k);
    }
}

}  // namespace
}  // namespace zeb
