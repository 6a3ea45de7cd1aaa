#include "geom/polygon.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "state/quark.h"
#include "util/host_array.h"
#include "util/report.h"

namespace zeb
{

Polygon::Polygon(const Polygon& parent, std::uint32_t face, long n, const long* indices)
    : Primitive(parent, face, false)
{
    fPoints.reserve(static_cast<std::size_t>(n));
    for (long i = 0; i < n; ++i) fPoints.push_back(parent.vertex(indices[i]));
    fArgs.split(n, indices, parent.args(), static_cast<long>(face));
}

std::uint32_t Polygon::placeHash(const Point& p)
{
    // A zero of either sign is one place.
    const auto bits = [](float v) { return std::bit_cast<std::uint32_t>(v + 0.0f); };
    return mixSeeds(mixSeeds(bits(p.x), bits(p.y)), bits(p.z));
}

std::uint32_t Polygon::lineBetween(const Point& a, const Point& b)
{
    return mixBits(placeHash(a) + placeHash(b)) | 1;
}

void Polygon::init(long n, long faces, long nargs, const unsigned short* tokens,
                   void* const* values)
{
    fArgs.init(nargs, tokens, values, ArgCounts{n, faces, n});
    extractP(n);
}

void Polygon::extractP(long n)
{
    const ArgAssoc* position = fArgs.find(kQPoint);
    fPoints.reserve(static_cast<std::size_t>(n));
    for (long i = 0; i < n; ++i) fPoints.push_back(position->point(i));
    fArgs.detach(kQPoint);
}

Boundw Polygon::clipped(const Bound& box) const
{
    Boundw result(box, 1, 1);
    clipToBound(result);
    return result;
}

Boundw Polygon::bound() const
{
    Bound box = Bound::empty();
    const Matrix& toCamera = matrix();
    for (const Point& p : fPoints) box.add(p * toCamera);
    return clipped(box);
}

bool verifyCount(const char* name, long count, long min)
{
    if (count >= min && count <= Polygon::kMaxVertices) return true;
    error(kRange, kError, "%s %ld out of range", name, count);
    return false;
}

bool verifyLoops(long n, const long* sizes, long& total)
{
    if (!sizes) {
        error(kRange, kError, "vertex counts are null");
        return false;
    }
    sizes = HostArrays::read("vertex counts", sizes, n);
    if (!sizes) return false;
    for (long i = 0; i < n; ++i) {
        if (!verifyCount("vertex count", sizes[i], 3)) return false;
        total += sizes[i];
        if (!verifyCount("total vertex count", total, 3)) return false;
    }
    return true;
}

bool verifyIndices(long n, const long* indices)
{
    if (!indices) {
        error(kRange, kError, "vertex indices are null");
        return false;
    }
    indices = HostArrays::read("vertex indices", indices, n);
    return indices && std::all_of(indices, indices + n,
                                  [](long index) { return verifyCount("vertex index", index, 0); });
}

long vertexCount(long n, const long* indices)
{
    return *std::max_element(indices, indices + n) + 1;
}

bool verifyPolygon(long vertices, long faces, long n, const unsigned short* tokens,
                   void* const* values)
{
    return ArgList::usable(n, tokens, values, ArgCounts{vertices, faces, vertices}) &&
           verify(n, tokens, {kQPoint});
}

}  // namespace zeb
