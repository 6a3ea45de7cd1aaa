// Included after ZEB_LANES is defined.
#pragma once

#include "hider/locate_kernel.h"
#include "util/lanes.h"

namespace zeb
{
namespace
{

inline WideMask isZero(Double x) { return abs(x) < 1e-10; }
inline WideMask inUnit(Double x) { return (x >= 0.0) & (x <= 1.0); }

// P00 + s e1 + t (e2 + s d), with P00 in the origin.
struct Cell {
    Double e1x, e1y, e2x, e2y, dx, dy;
};

// Finds t of the place (px, py) where s is known; whether both are in the cell.
inline WideMask isInside(const Cell& cell, Double s, Double px, Double py, Double& t)
{
    const Double tx = cell.e2x + s * cell.dx, ty = cell.e2y + s * cell.dy;
    const Double alongX = (px - s * cell.e1x) / tx, alongY = (py - s * cell.e1y) / ty;
    t = select(isZero(tx), -1.0, alongX);
    t = select(inUnit(t) | isZero(ty), t, alongY);
    return inUnit(s) & inUnit(t);
}

// Crossing P - s e1 with what t multiplies gives A s^2 + B s + C = 0. Nothing cancels in q; the
// root with +sqrt(D) comes first.
inline void locateAt(LocateBlock& block, int k)
{
    const auto at = [k](const float* plane) { return lowHalf(Float::load(plane + k)); };
    const Double x0 = at(block.x00), y0 = at(block.y00), x3 = at(block.x01), y3 = at(block.y01);
    const Double e1x = at(block.x10) - x0, e1y = at(block.y10) - y0;
    const Double e3x = at(block.x11) - x3, e3y = at(block.y11) - y3;
    const Cell cell{e1x, e1y, x3 - x0, y3 - y0, e3x - e1x, e3y - e1y};
    const Double px = at(block.x) - x0, py = at(block.y) - y0;

    const Double A = e3x * e1y - e1x * e3y;
    const Double B = px * cell.dy - py * cell.dx + (cell.e2x * e1y - e1x * cell.e2y);
    const Double C = px * cell.e2y - cell.e2x * py;
    const Double D = B * B - 4.0 * A * C;
    const Double q = -0.5 * (B + withSign(sqrt(D), B));

    const WideMask isLinear = isZero(A), isDouble = isZero(D), isNegative = B < 0.0;
    const Double nearOver = select(isLinear, -C, select(isDouble, -B, select(isNegative, q, C)));
    const Double nearUnder =
        select(isLinear, B, select(isDouble, 2.0 * A, select(isNegative, A, q)));
    const WideMask isNone = select(isLinear, isZero(B), D < 0.0);
    Double s = nearOver / nearUnder, t;
    WideMask found = andNot(isInside(cell, s, px, py, t), isNone);

    const WideMask hasFar = andNot(andNot(D >= 0.0, isDouble), found | isLinear);
    if (any(hasFar)) {
        const Double far = select(isNegative, C, q) / select(isNegative, q, A);
        Double farT;
        const WideMask isFar = isInside(cell, far, px, py, farT) & hasFar;
        s = select(isFar, far, s);
        t = select(isFar, farT, t);
        found = found | isFar;
    }
    select(found, s, -1.0).store(block.s + k);
    t.store(block.t + k);
}

void locate(LocateBlock& block)
{
    for (int k = 0; k < block.count; k += kDoubleLanes) locateAt(block, k);
}

}  // namespace
}  // namespace zeb
