#include "hider/micropolygon.h"

#include <algorithm>
#include <cmath>

#include "util/number.h"

namespace zeb
{

Bound MicroPolygon::bound() const
{
    Bound box = Bound::empty();
    for (const std::size_t k : {f00, f00 + 1, f01 + 1, f01}) box.add(fGrid->raster(k));
    return box;
}

double MicroPolygon::znormal() const
{
    const auto trapezoid = [](const Point& a, const Point& b) {
        return (double{b.x} - double{a.x}) * (double{b.y} + double{a.y});
    };
    const Point p00 = fGrid->raster(f00), p10 = fGrid->raster(f00 + 1);
    const Point p01 = fGrid->raster(f01), p11 = fGrid->raster(f01 + 1);
    const double sum =
        trapezoid(p00, p10) + trapezoid(p10, p11) + trapezoid(p11, p01) + trapezoid(p01, p00);
    return fGrid->fFlip != fGrid->fTransposed ? -sum : sum;
}

// With e1 = P10 - P00, e2 = P01 - P00, e3 = P11 - P01 and d = e3 - e1, the cell is
// P00 + s e1 + t (e2 + s d). Crossing P - s e1 with what t multiplies gives
// A s^2 + B s + C = 0, where B is linear in P.
void MicroPolygon::prepare() const
{
    const float *const x = fGrid->rasterPlane(0), *const y = fGrid->rasterPlane(1);
    const auto difference = [](float a, float b) { return double{a} - double{b}; };
    x0 = x[f00];
    y0 = y[f00];
    e1x = difference(x[f00 + 1], x[f00]);
    e1y = difference(y[f00 + 1], y[f00]);
    e2x = difference(x[f01], x[f00]);
    e2y = difference(y[f01], y[f00]);
    const double e3x = difference(x[f01 + 1], x[f01]), e3y = difference(y[f01 + 1], y[f01]);
    dx = e3x - e1x;
    dy = e3y - e1y;
    A = e3x * e1y - e1x * e3y;
    B0 = e2x * e1y - e1x * e2y;
    fReady = true;
}

bool MicroPolygon::inside(double s, double px, double py, double& t) const
{
    if (!(s >= 0 && s <= 1)) return false;
    t = -1;
    const double tx = e2x + s * dx, ty = e2y + s * dy;
    if (!nearZero(tx)) t = (px - s * e1x) / tx;
    if (!(t >= 0 && t <= 1) && !nearZero(ty)) t = (py - s * e1y) / ty;
    return t >= 0 && t <= 1;
}

bool MicroPolygon::locate(float x, float y, float& fs, float& ft) const
{
    if (!fReady) prepare();
    const double px = x - x0, py = y - y0;
    const double B = px * dy - py * dx + B0;
    const double C = px * e2y - e2x * py;
    double s, t = 0;
    if (nearZero(A)) {
        if (nearZero(B)) return false;
        s = -C / B;
        if (!inside(s, px, py, t)) return false;
    } else {
        const double D = B * B - 4 * A * C;
        if (D < 0) return false;
        if (nearZero(D)) {
            s = -B / (2 * A);
            if (!inside(s, px, py, t)) return false;
        } else {
            // Nothing cancels in q; the root with +sqrt(D) comes first.
            const double root = std::sqrt(D);
            const double q = -0.5 * (B + std::copysign(root, B));
            const double near = B < 0 ? q / A : C / q;
            const double far = B < 0 ? C / q : q / A;
            s = near;
            if (!inside(s, px, py, t)) {
                s = far;
                if (!inside(s, px, py, t)) return false;
            }
        }
    }
    fs = static_cast<float>(s);
    ft = static_cast<float>(t);
    return true;
}

void GridIterator::restart()
{
    fColumn = fRow = 0;
    fRowCount = fGrid.cellCount(0);
}

void GridIterator::advance()
{
    if (++fColumn < fRowCount) return;
    fColumn = 0;
    if (++fRow < fGrid.fVSize) fRowCount = fGrid.cellCount(fRow);
}

MicroPolygon* GridIterator::operator++(int)
{
    if (fRow >= fGrid.fVSize) return nullptr;
    fMicroPolygon.place(fColumn, fRow);
    advance();
    return &fMicroPolygon;
}

MicroPolygon* GridIterator::operator++()
{
    if (fRow < fGrid.fVSize) advance();
    if (fRow >= fGrid.fVSize) return nullptr;
    fMicroPolygon.place(fColumn, fRow);
    return &fMicroPolygon;
}

}  // namespace zeb
