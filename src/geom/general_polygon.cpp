#include "geom/general_polygon.h"

#include <algorithm>
#include <numeric>

#include "geom/convex_polygon.h"
#include "geom/triangle.h"
#include "util/host_array.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

bool GeneralPolygon::verify(long nloops, const long* nverts, long nargs,
                            const unsigned short* tokens, void* const* values)
{
    long total = 0;
    return verifyCount("loop count", nloops, 1) && verifyLoops(nloops, nverts, total) &&
           verifyPolygon(total, 1, nargs, tokens, values);
}

GeneralPolygon::GeneralPolygon(long nloops, const long* nverts, long nargs,
                               const unsigned short* tokens, void* const* values)
    : fLoopSizes(nverts, nverts + nloops)
{
    indexLoops();
    init(fLoopStarts.back(), 1, nargs, tokens, values);
}

GeneralPolygon::GeneralPolygon(const Polygon& parent, std::uint32_t face,
                               std::vector<long> loopSizes, const long* indices)
    : Polygon(parent, face, std::accumulate(loopSizes.begin(), loopSizes.end(), 0L), indices),
      fLoopSizes(std::move(loopSizes))
{
    indexLoops();
    fSides = SideFlags(parent, fLoopStarts.back(), indices, [this](long k) { return after(k); });
}

// Lines that are no sides are where a polygon was cut, or bridges to its holes.
bool GeneralPolygon::shared(long from, long to) const
{
    if (to == after(from)) return fSides[from];
    if (from == after(to)) return fSides[to];
    return true;
}

void GeneralPolygon::indexLoops()
{
    fLoopStarts.push_back(0);
    for (std::size_t loop = 0; loop < fLoopSizes.size(); ++loop) {
        fLoopOf.insert(fLoopOf.end(), static_cast<std::size_t>(fLoopSizes[loop]),
                       static_cast<long>(loop));
        fLoopStarts.push_back(fLoopStarts.back() + fLoopSizes[loop]);
    }
}

long GeneralPolygon::after(long i) const
{
    const long loop = fLoopOf[i];
    return i + 1 < fLoopStarts[loop + 1] ? i + 1 : fLoopStarts[loop];
}

long GeneralPolygon::before(long i) const
{
    const long loop = fLoopOf[i];
    return i > fLoopStarts[loop] ? i - 1 : fLoopStarts[loop + 1] - 1;
}

// About the loop's first vertex: far from the origin the sums would cancel.
Pointd GeneralPolygon::loopNormal(long first, long count) const
{
    Pointd sum;
    for (long k = 0; k < count; ++k) {
        const Pointd p = edge(first, first + k), q = edge(first, first + (k + 1) % count);
        sum = sum + Pointd((p.y - q.y) * (p.z + q.z), (p.z - q.z) * (p.x + q.x),
                           (p.x - q.x) * (p.y + q.y));
    }
    return sum;
}

// Corners that are straight but for rounding turn neither way, however long their edges are.
bool GeneralPolygon::reflex(long i, const Pointd& N) const
{
    constexpr double kStraight = 1e-10;  // the sine
    const Pointd next = edge(i, after(i)), previous = edge(i, before(i)), c = next ^ previous;
    const double straight = kStraight * std::sqrt(dot(next, next) * dot(previous, previous));
    return std::sqrt(dot(c, c)) > straight && dot(c, N) < 0;
}

bool GeneralPolygon::convex(const Pointd& N) const
{
    for (long i = 0; i < fLoopSizes[0]; ++i) {
        if (reflex(i, N)) return false;
    }
    return true;
}

// Whether a direction points from a corner into the polygon. Corners that only touch the line count
// as inside.
bool GeneralPolygon::insideCorner(long corner, const Pointd& direction, const Pointd& N) const
{
    const Pointd next = edge(corner, after(corner)), previous = edge(corner, before(corner));
    const bool leftOfNext = dot(next ^ direction, N) >= 0;
    const bool rightOfPrevious = dot(direction ^ previous, N) >= 0;
    const bool wide = dot(next ^ previous, N) < 0;
    return wide ? leftOfNext || rightOfPrevious : leftOfNext && rightOfPrevious;
}

bool GeneralPolygon::crosses(long i, long j, const Pointd& N) const
{
    const Pointd d = edge(i, j);
    const double dd = dot(d, d);
    if (dd == 0) return false;
    const Pointd m = d ^ N;
    for (long k = 0, n = nVertices(); k < n; ++k) {
        const long next = after(k);
        if (k == i || k == j || next == i || next == j) continue;
        const Pointd a = edge(i, k), b = edge(i, next);
        const double sideA = dot(a, m), sideB = dot(b, m);
        if ((sideA > 0) == (sideB > 0) && sideA != 0 && sideB != 0) continue;
        if (sideA == sideB) {
            // The edge lies in the line: it is met if one of its ends lies between the two.
            const double ta = dot(a, d) / dd, tb = dot(b, d) / dd;
            if ((ta > 0 && ta < 1) || (tb > 0 && tb < 1)) return true;
            continue;
        }
        const double s = sideA / (sideA - sideB);
        const double t = (dot(a, d) * (1 - s) + dot(b, d) * s) / dd;
        // Vertices that lie on an end of the line are copies of it, left by a joined hole.
        if (t > 1e-6 && t < 1 - 1e-6) return true;
    }
    return !insideCorner(j, d * -1, N);
}

GeneralPolygon::Diagonal GeneralPolygon::concaveDiagonal(const Pointd& N) const
{
    const long n = fLoopSizes[0];
    Diagonal best{0, n / 2};
    double least = double{kInfinity};
    for (long i = 0; i < n; ++i) {
        if (!reflex(i, N)) continue;
        const Pointd e1 = normalized(edge(i, after(i))), e0 = normalized(edge(i, before(i)));
        const Pointd c = normalized(e1 ^ e0);
        const Pointd side0 = e0 ^ c, side1 = c ^ e1;
        for (long j = 0; j < n; ++j) {
            const long apart = std::labs(i - j);
            if (apart <= 1 || apart >= n - 1) continue;
            const Pointd line = edge(i, j), direction = normalized(line);
            const double d = std::sqrt(dot(line, line));
            if (!(d < least)) continue;
            const bool leaves = dot(direction, side0) <= -0.01 || dot(direction, side1) <= -0.01;
            if (!leaves || crosses(i, j, N)) continue;
            least = d;
            best = {i, j};
        }
    }
    return best;
}

void GeneralPolygon::splitOutline(PrimitiveSink& sink, const Pointd& N)
{
    const long n = fLoopSizes[0];
    std::vector<long> part;
    if (n == 3) {
        const long corners[3] = {0, 1, 2};
        sink.add(std::make_unique<Triangle>(*this, 0u, corners));
        return;
    }
    if (convex(N)) {
        part.resize(static_cast<std::size_t>(n));
        std::iota(part.begin(), part.end(), 0L);
        sink.add(std::make_unique<ConvexPolygon>(*this, 0u, n, part.data()));
        return;
    }
    const auto [a, b] = concaveDiagonal(N);
    const auto addPart = [&](std::uint32_t child, long from, long count) {
        part.clear();
        for (long i = 0; i < count; ++i) part.push_back((from + i) % n);
        sink.add(
            std::make_unique<GeneralPolygon>(*this, child, std::vector<long>{count}, part.data()));
    };
    const long count = (b - a + n) % n + 1;
    addPart(0, a, count);
    addPart(1, b, n - count + 2);
}

// The nearest pair of an outline vertex and a hole vertex that see each other carries a bridge: the
// hole becomes part of the outline, whose two copies of the bridge enclose nothing.
void GeneralPolygon::bridgeHole(PrimitiveSink& sink, const Pointd& N)
{
    const long outline = fLoopSizes[0], n = nVertices();
    Diagonal bridge{0, outline};
    double least = double{kInfinity};
    for (long i = 0; i < outline; ++i) {
        for (long m = outline; m < n; ++m) {
            const Pointd line = edge(i, m);
            const double d = std::sqrt(dot(line, line));
            if (d < least && !crosses(i, m, N)) {
                least = d;
                bridge = {i, m};
            }
        }
    }
    const long hole = fLoopOf[bridge.to];
    std::vector<long> indices;
    for (long i = 0; i <= bridge.from; ++i) indices.push_back(i);
    for (long k = 0, m = bridge.to; k <= fLoopSizes[hole]; ++k, m = after(m)) indices.push_back(m);
    for (long i = bridge.from; i < outline; ++i) indices.push_back(i);

    std::vector<long> sizes{static_cast<long>(indices.size())};
    for (long loop = 1; loop < static_cast<long>(fLoopSizes.size()); ++loop) {
        if (loop == hole) continue;
        sizes.push_back(fLoopSizes[loop]);
        for (long m = fLoopStarts[loop]; m < fLoopStarts[loop + 1]; ++m) indices.push_back(m);
    }
    sink.add(std::make_unique<GeneralPolygon>(*this, 0u, std::move(sizes), indices.data()));
}

void GeneralPolygon::split(PrimitiveSink& sink)
{
    const Pointd N = normal();
    if (fLoopSizes.size() == 1) {
        splitOutline(sink, N);
        return;
    }
    // A hole runs against the outline; one that runs with it is taken from its end.
    std::vector<long> indices(fPoints.size());
    std::iota(indices.begin(), indices.end(), 0L);
    bool turned = false;
    for (std::size_t loop = 1; loop < fLoopSizes.size(); ++loop) {
        if (dot(loopNormal(fLoopStarts[loop], fLoopSizes[loop]), N) <= 0) continue;
        std::reverse(&indices[0] + fLoopStarts[loop], &indices[0] + fLoopStarts[loop + 1]);
        turned = true;
    }
    if (turned) {
        GeneralPolygon(*this, 0u, fLoopSizes, indices.data()).bridgeHole(sink, N);
    } else {
        bridgeHole(sink, N);
    }
}

bool GeneralPolygonMesh::verify(long nfaces, const long* nloops, const long* nverts,
                                const long* verts, long nargs, const unsigned short* tokens,
                                void* const* values)
{
    if (!verifyCount("face count", nfaces, 1)) return false;
    if (!nloops) {
        error(kRange, kError, "loop counts are null");
        return false;
    }
    nloops = HostArrays::read("loop counts", nloops, nfaces);
    if (!nloops) return false;
    long loops = 0, total = 0;
    for (long i = 0; i < nfaces; ++i) {
        if (!verifyCount("loop count", nloops[i], 1)) return false;
        loops += nloops[i];
        if (!verifyCount("total loop count", loops, 1)) return false;
    }
    return verifyLoops(loops, nverts, total) && verifyIndices(total, verts) &&
           verifyPolygon(vertexCount(total, HostArrays::dense(verts)), nfaces, nargs, tokens,
                         values);
}

GeneralPolygonMesh::GeneralPolygonMesh(long nfaces, const long* nloops, const long* nverts,
                                       const long* verts, long nargs, const unsigned short* tokens,
                                       void* const* values)
    : PolygonMesh(std::make_shared<MeshFaces>(
          std::vector<long>(nloops, nloops + nfaces),
          std::vector<long>(nverts, nverts + std::accumulate(nloops, nloops + nfaces, 0L)), verts))
{
    init(nargs, tokens, values);
}

std::unique_ptr<Primitive> GeneralPolygonMesh::makeFace(std::uint32_t face, long loops,
                                                        const MeshFaces::Place& place) const
{
    const auto& [size, index] = place;
    if (loops == 1 && *size < 4) return std::make_unique<Triangle>(*this, face, index);
    return std::make_unique<GeneralPolygon>(*this, face, std::vector<long>(size, size + loops),
                                            index);
}

}  // namespace zeb
