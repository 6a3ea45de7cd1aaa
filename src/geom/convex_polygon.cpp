#include "geom/convex_polygon.h"

#include <algorithm>
#include <numeric>

#include "geom/triangle.h"
#include "util/host_array.h"
#include "util/report.h"

namespace zeb
{

bool ConvexPolygon::verify(long n, long nargs, const unsigned short* tokens, void* const* values)
{
    return verifyCount("vertex count", n, 3) && verifyPolygon(n, 1, nargs, tokens, values);
}

ConvexPolygon::ConvexPolygon(long n, long nargs, const unsigned short* tokens, void* const* values)
{
    init(n, 1, nargs, tokens, values);
}

// Lines that are no sides are where a polygon was cut.
bool ConvexPolygon::shared(long from, long to) const
{
    const long n = nVertices();
    if (to == (from + 1) % n) return fSides[from];
    if (from == (to + 1) % n) return fSides[to];
    return true;
}

float ConvexPolygon::cosMinAngle(long i, long j) const
{
    const long n = nVertices();
    const auto edge = [&](long from, long to) {
        return normalized(Pointd(fPoints[static_cast<std::size_t>((to + n) % n)]) -
                          fPoints[static_cast<std::size_t>(from)]);
    };
    const Pointd d = edge(i, j);
    return static_cast<float>(std::max({dot(d, edge(i, i - 1)), dot(d, edge(i, i + 1)),
                                        -dot(d, edge(j, j - 1)), -dot(d, edge(j, j + 1))}));
}

// A polygon whose vertices lie on a line has no diagonal better than another.
ConvexPolygon::Diagonal ConvexPolygon::bestDiagonal() const
{
    const long n = nVertices(), half = n / 2, odd = n % 2;
    Diagonal best{0, half};
    float least = 1;
    const auto consider = [&](long i, long j) {
        const float c = cosMinAngle(i, j);
        if (c < least) {
            least = c;
            best = {i, j};
        }
    };
    for (long i = 0; i < half + odd; ++i) {
        const long j = half + i;
        if (j < n) consider(i, j);
        if (odd && j + 1 < n) consider(i, j + 1);
    }
    return best;
}

void ConvexPolygon::split(PrimitiveSink& sink)
{
    const long n = nVertices();
    std::vector<long> part;
    if (n < 4) {
        const long corners[3] = {0, 1, 2};
        sink.add(std::make_unique<Triangle>(*this, 0u, corners));
        return;
    }
    const auto [a, b] = bestDiagonal();
    const auto addPart = [&](std::uint32_t child, long from, long count) {
        part.clear();
        for (long i = 0; i < count; ++i) part.push_back((from + i) % n);
        if (count < 4) {
            sink.add(std::make_unique<Triangle>(*this, child, part.data()));
        } else {
            sink.add(std::make_unique<ConvexPolygon>(*this, child, count, part.data()));
        }
    };
    addPart(0, a, b - a + 1);
    addPart(1, b, n - (b - a + 1) + 2);
}

bool ConvexPolygonMesh::verify(long nfaces, const long* nverts, const long* verts, long nargs,
                               const unsigned short* tokens, void* const* values)
{
    if (!verifyCount("face count", nfaces, 1)) return false;
    long total = 0;
    return verifyLoops(nfaces, nverts, total) && verifyIndices(total, verts) &&
           verifyPolygon(vertexCount(total, HostArrays::dense(verts)), nfaces, nargs, tokens,
                         values);
}

ConvexPolygonMesh::ConvexPolygonMesh(long nfaces, const long* nverts, const long* verts, long nargs,
                                     const unsigned short* tokens, void* const* values)
    : PolygonMesh(std::make_shared<MeshFaces>(std::vector<long>(),
                                              std::vector<long>(nverts, nverts + nfaces), verts))
{
    init(nargs, tokens, values);
}

std::unique_ptr<Primitive> ConvexPolygonMesh::makeFace(std::uint32_t face, long,
                                                       const MeshFaces::Place& place) const
{
    if (*place.size < 4) return std::make_unique<Triangle>(*this, face, place.index);
    return std::make_unique<ConvexPolygon>(*this, face, *place.size, place.index);
}

}  // namespace zeb
