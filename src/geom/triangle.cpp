#include "geom/triangle.h"

#include <algorithm>
#include <cmath>

#include "geom/grid.h"
#include "geom/vertex_placer.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// Steps along the longer side become k, a power of two, times those along the shorter.
void balance(long& larger, long& smaller, long limit)
{
    long k = 1;
    while (k < limit && smaller < larger / (2 * k)) k *= 2;
    larger = (larger + k - 1) / k * k;
    if (2 * smaller * smaller < larger * larger) {
        larger = 2 * k * smaller;
    } else {
        smaller = larger / k;
    }
}

// How long a way is on the screen, at the least and at the most.
struct Lengths {
    double min, max;
};

// Of the way d from any point of a triangle, given by its corners before the division by w. From p
// it leads to (d p.w - p d.w) / (p.w (p.w + d.w)), farther on: what is above the line is linear in
// p, and below it are products of what is. Between 0 and infinity where the eye is near.
Lengths lengthsOnScreen(const Pointwd (&corners)[3], const Pointwd& d)
{
    const auto numerator = [&d](const Pointwd& p) {
        return Pointd(d.x * p.w - p.x * d.w, d.y * p.w - p.y * d.w, 0);
    };
    const auto length = [](const Pointd& p) { return std::sqrt(p.x * p.x + p.y * p.y); };
    const Pointd first = numerator(corners[0]);
    const double size = length(first);
    double stray = 0, wmin = corners[0].w, wmax = wmin, farthest = 0;
    for (const Pointwd& p : corners) {
        stray = std::max(stray, length(numerator(p) - first));
        wmin = std::min(wmin, p.w);
        wmax = std::max(wmax, p.w);
        farthest = std::max({farthest, std::fabs(p.x), std::fabs(p.y)});
    }
    constexpr double kNear = 1e-6, kFar = 1e12;
    const double least = wmin * (wmin + d.w), most = wmax * (wmax + d.w);
    if (!(wmin > kNear && wmin + d.w > kNear && farthest < kFar && size + stray < kFar)) {
        return {0, double{kInfinity}};
    }
    // Of differences of coordinates, and of the rest.
    const double rounding = 1e-14 * farthest / std::min(wmin, wmin + d.w);
    return {std::max((size - stray) / most * (1 - 1e-9) - rounding, 0.0),
            (size + stray) / least * (1 + 1e-9) + rounding};
}

}  // namespace

Triangle::Triangle(const Polygon& parent, std::uint32_t face, const long* indices)
    : Polygon(parent, face, false)
{
    for (int i = 0; i < 3; ++i) fCorners[i] = parent.vertex(indices[i]);
    const auto line = [&](int a, int b) {
        if (!parent.shared(indices[a], indices[b])) return std::uint32_t{0};
        return lineBetween(rounded(fCorners[a]), rounded(fCorners[b]));
    };
    fEdges = {.umin = line(0, 2), .umax = line(1, 2), .vmin = line(0, 1)};
    if (!parent.args().empty()) {
        fArgs.split(3, indices, parent.args(), static_cast<long>(face));
    }
}

Triangle::Triangle(const Triangle& parent, std::uint32_t child, const float (&uv)[6],
                   const Edges& edges)
    : Polygon(parent, child, true)
{
    for (int i = 0; i < 3; ++i) fCorners[i] = parent.at(uv[2 * i], uv[2 * i + 1]);
    if (!parent.args().empty()) fArgs.split(uv, parent.args());
    fEdges = edges;
}

// In double, and symmetric in the corners: two triangles that share an edge agree on its points,
// whichever way each runs along it.
Pointd Triangle::at(double u, double v) const
{
    const double t = 1 - u - v;
    const Pointd &a = fCorners[0], &b = fCorners[1], &c = fCorners[2];
    return {t * a.x + u * b.x + v * c.x, t * a.y + u * b.y + v * c.y, t * a.z + u * b.z + v * c.z};
}

Boundw Triangle::bound() const
{
    Bound box = Bound::empty();
    for (const Pointd& corner : fCorners) box.add(rounded(corner * matrix()));
    Boundw result(box, 1, 1);
    clipToBound(result);
    return result;
}

void Triangle::split(PrimitiveSink& sink)
{
    const Edges& e = fEdges;
    const auto between = [this](Edges::Line line) { return Edges::line(path(), line); };
    const std::uint32_t m0 = between(Edges::kBetween0), m1 = between(Edges::kBetween1),
                        m2 = between(Edges::kBetween2);
    const auto add = [&](std::uint32_t child, const float(&uv)[6], const Edges& edges) {
        sink.add(std::make_unique<Triangle>(*this, child, uv, edges));
    };
    add(0, {0, 0, 0.5f, 0, 0, 0.5f}, {.umin = e.umin, .umax = m0, .vmin = e.vmin});
    add(1, {0, 0.5f, 0.5f, 0.5f, 0, 1}, {.umin = e.umin, .umax = e.umax, .vmin = m1});
    add(2, {0.5f, 0, 1, 0, 0.5f, 0.5f}, {.umin = m2, .umax = e.umax, .vmin = e.vmin});
    add(3, {0.5f, 0.5f, 0, 0.5f, 0.5f, 0}, {.umin = m2, .umax = m0, .vmin = m1});
}

void Triangle::splitAcross(PrimitiveSink& sink, const RenderFrame& frame)
{
    const Matrix toRaster = matrix() * frame.cameraToRaster;
    Pointd raster[3];
    for (int i = 0; i < 3; ++i) raster[i] = fCorners[i] * toRaster;
    const auto length = [&](int a, int b) { return planarLength(raster[a] - raster[b]); };
    const double u = length(0, 1), v = length(0, 2), w = length(1, 2);
    const Edges& e = fEdges;
    const std::uint32_t middle = Edges::line(path(), Edges::kBetween0);
    const auto add = [&](std::uint32_t child, const float(&uv)[6], const Edges& edges) {
        sink.add(std::make_unique<Triangle>(*this, child, uv, edges));
    };
    if (u >= v && u >= w) {
        add(0, {0, 0, 0.5f, 0, 0, 1}, {.umin = e.umin, .umax = middle, .vmin = e.vmin});
        add(1, {0.5f, 0, 1, 0, 0, 1}, {.umin = middle, .umax = e.umax, .vmin = e.vmin});
    } else if (v >= w) {
        add(0, {0, 0, 1, 0, 0, 0.5f}, {.umin = e.umin, .umax = middle, .vmin = e.vmin});
        add(1, {0, 0.5f, 1, 0, 0, 1}, {.umin = e.umin, .umax = e.umax, .vmin = middle});
    } else {
        add(0, {0, 0, 1, 0, 0.5f, 0.5f}, {.umin = middle, .umax = e.umax, .vmin = e.vmin});
        add(1, {0, 0, 0.5f, 0.5f, 0, 1}, {.umin = e.umin, .umax = e.umax, .vmin = middle});
    }
}

void balanceSteps(unsigned short& usteps, unsigned short& vsteps, long limit)
{
    long u = usteps, v = vsteps;
    if (v < u) {
        balance(u, v, limit);
    } else if (u < v) {
        balance(v, u, limit);
    }
    usteps = static_cast<unsigned short>(std::min(u, 65535L));
    vsteps = static_cast<unsigned short>(std::min(v, 65535L));
}

bool Triangle::diceable(Dicing& dicing, float maxSize) const
{
    maxSize = dicingLimit(dicing.frame, maxSize);
    const Matrix toRaster = matrix() * dicing.frame.cameraToRaster;
    // Points of the triangle are sums of these three, before the division by w.
    const Pointwd origin = Pointwd(fCorners[0]) * toRaster;
    const auto direction = [&](const Pointd& corner) {
        const Pointd d = corner - fCorners[0];
        return Pointwd(d.x, d.y, d.z, 0) * toRaster;
    };
    const Pointwd du = direction(fCorners[1]), dv = direction(fCorners[2]);
    if (!dicing.frame.plain && knowSteps(dicing, maxSize, origin, du, dv)) return true;

    Random draws = random(kDicingDraws);
    double maxU = 0, maxV = 0, maxArea = 0, minArea = double{kInfinity};
    for (int cell = 0; cell < 16; ++cell) {
        const int row = cell / 4, column = cell % 4;
        float u = (static_cast<float>(column) + draws.unit()) * 0.25f;
        float v = (static_cast<float>(row) + draws.unit()) * 0.25f;
        if (u + v > 1) {
            u = 1 - u;
            v = 1 - v;
        }
        const Pointwd p = origin + du * double{u} + dv * double{v};
        const Pointd P = homogenized(p);
        const double lengthU = planarLength(homogenized(p + du) - P);
        const double lengthV = planarLength(homogenized(p + dv) - P);
        maxU = std::max(maxU, lengthU);
        maxV = std::max(maxV, lengthV);
        if (!(maxU <= double{maxSize} && maxV <= double{maxSize})) return false;
        maxArea = std::max(maxArea, lengthU * lengthV);
        minArea = std::min(minArea, lengthU * lengthV);
    }
    dicing.fUSteps = stepsFor(maxU);
    dicing.fVSteps = stepsFor(maxV);
    balanceSteps(dicing.fUSteps, dicing.fVSteps, dicing.frame.option.tuning[0]);
    return !(dicing.even && maxArea > 2.0 * minArea && dicing.fUSteps * dicing.fVSteps > 16);
}

// Whether all places of the triangle are so alike that any draws would find the same steps; if so,
// finds them. Most triangles of a fine mesh are.
bool Triangle::knowSteps(Dicing& dicing, float maxSize, const Pointwd& origin, const Pointwd& du,
                         const Pointwd& dv) const
{
    const Pointwd corners[3] = {origin, origin + du, origin + dv};
    const Lengths u = lengthsOnScreen(corners, du), v = lengthsOnScreen(corners, dv);
    const bool small = u.max <= double{maxSize} && v.max <= double{maxSize};
    const bool even = u.max * v.max <= 1.9 * u.min * v.min;
    if (!small || !even || stepsFor(u.min) != stepsFor(u.max) ||
        stepsFor(v.min) != stepsFor(v.max)) {
        return false;
    }
    dicing.fUSteps = stepsFor(u.max);
    dicing.fVSteps = stepsFor(v.max);
    balanceSteps(dicing.fUSteps, dicing.fVSteps, dicing.frame.option.tuning[0]);
    return true;
}

SurfacePart Triangle::surfacePart() const
{
    SurfacePart part{};
    for (int k = 0; k < 3; ++k) {
        part.u[k] = static_cast<float>(fCorners[k].x);
        part.v[k] = static_cast<float>(fCorners[k].y);
    }
    return part;
}

std::unique_ptr<Grid> Triangle::dice(const Dicing& dicing) const
{
    auto grid = std::make_unique<Grid>(dicing.fUSteps, dicing.fVSteps, fCommon->fAttrib,
                                       transform(), fCommon->fSeq, flipped(), true, fArgs, fEdges);
    const Pointd dPdu = fCorners[1] - fCorners[0], dPdv = fCorners[2] - fCorners[0];
    VertexPlacer placer(*grid, matrix(), dicing.frame.plain);
    const int usteps = dicing.fUSteps, vsteps = dicing.fVSteps;
    for (int j = 0; j <= vsteps; ++j) {
        const int count = grid->vertexCount(j);
        for (int i = 0; i < count; ++i) {
            double u = static_cast<double>(i) / usteps;
            double v = static_cast<double>(j) / vsteps;
            // In integers, so that rounding never pulls a vertex that lies on the hypotenuse.
            if (i * vsteps + j * usteps > usteps * vsteps) {
                if (usteps < vsteps) {
                    u = 1 - v;
                } else {
                    v = 1 - u;
                }
            }
            placer.add(at(u, v), dPdu, dPdv);
        }
    }
    placer.finish();
    return grid;
}

}  // namespace zeb
