#include "geom/polygon_mesh.h"

#include <algorithm>
#include <bit>
#include <mutex>
#include <numeric>
#include <utility>

#include "util/number.h"

namespace zeb
{

void SharedSides::add(const Point& a, const Point& b) { fKeys.push_back(key(a, b)); }

// Keeps those that occur more than once.
void SharedSides::sort()
{
    std::sort(fKeys.begin(), fKeys.end());
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 1 < fKeys.size(); ++i) {
        const bool seen = kept > 0 && fKeys[kept - 1] == fKeys[i];
        if (fKeys[i] == fKeys[i + 1] && !seen) fKeys[kept++] = fKeys[i];
    }
    fKeys.resize(kept);
    fKeys.shrink_to_fit();
    fShift = 64 - static_cast<int>(std::bit_width(kept | 1));
    fStarts.assign(first(~std::uint64_t{0}) + 2, 0);
    for (const std::uint64_t key : fKeys) ++fStarts[first(key) + 1];
    std::partial_sum(fStarts.begin(), fStarts.end(), fStarts.begin());
}

bool SharedSides::contains(const Point& a, const Point& b) const
{
    const std::uint64_t wanted = key(a, b);
    const std::size_t start = first(wanted);
    const auto* const keys = fKeys.data();
    return std::binary_search(keys + fStarts[start], keys + fStarts[start + 1], wanted);
}

std::uint64_t SharedSides::key(const Point& a, const Point& b)
{
    const std::uint64_t p = Polygon::placeHash(a), q = Polygon::placeHash(b);
    return p < q ? p << 32 | q : q << 32 | p;
}

MeshFaces::MeshFaces(std::vector<long> faceLoops, std::vector<long> loopSizes, const long* indices)
    : fFaceLoops(std::move(faceLoops)),
      fLoopSizes(std::move(loopSizes)),
      fIndices(indices, indices + std::accumulate(fLoopSizes.begin(), fLoopSizes.end(), 0L))
{
}

long MeshFaces::vertices(const Place& place, long loops)
{
    return std::accumulate(place.size, place.size + loops, 0L);
}

MeshFaces::Place MeshFaces::next(std::size_t face, const Place& place) const
{
    const long count = loops(face);
    return {place.size + count, place.index + vertices(place, count)};
}

MeshFaces::Place MeshFaces::place(std::size_t face) const
{
    const Start& start = fStarts[face / kStride];
    Place place{fLoopSizes.data() + start.loop, fIndices.data() + start.index};
    for (std::size_t k = face / kStride * kStride; k < face; ++k) place = next(k, place);
    return place;
}

void MeshFaces::prepare()
{
    const std::lock_guard scope(fLock);
    if (!fStarts.empty()) return;
    std::vector<Start> starts;
    SharedSides sides;
    Place place{fLoopSizes.data(), fIndices.data()};
    for (std::size_t face = 0; face < count(); place = next(face++, place)) {
        if (face % kStride == 0) {
            starts.push_back({place.size - fLoopSizes.data(), place.index - fIndices.data()});
        }
        const long* index = place.index;
        for (long loop = 0; loop < loops(face); ++loop) {
            const long size = place.size[loop];
            for (long k = 0; k < size; ++k) {
                const Point& p = fPoints[static_cast<std::size_t>(index[k])];
                fBox.add(p);
                sides.add(p, fPoints[static_cast<std::size_t>(index[(k + 1) % size])]);
            }
            index += size;
        }
    }
    sides.sort();
    fSides = std::move(sides);
    fStarts = std::move(starts);
}

Bound MeshFaces::boxOf(std::size_t face) const
{
    const Place at = place(face);
    Bound box = Bound::empty();
    for (long k = 0; k < vertices(at, loops(face)); ++k) {
        box.add(fPoints[static_cast<std::size_t>(at.index[k])]);
    }
    return box;
}

namespace
{

// Ten bits of a number, two zeros after each.
std::uint32_t spread(std::uint32_t bits)
{
    bits = (bits | bits << 16) & 0x030000FF;
    bits = (bits | bits << 8) & 0x0300F00F;
    bits = (bits | bits << 4) & 0x030C30C3;
    return (bits | bits << 2) & 0x09249249;
}

// Where in a box a place is: near places mostly have near numbers (G. Morton, 1966).
std::uint32_t mortonNumber(const Point& p, const Bound& box)
{
    const auto part = [](float v, float min, float max) {
        const double place = (double{v} - double{min}) / std::max(double{max} - double{min}, 1e-30);
        return spread(static_cast<std::uint32_t>(clampToLong(place * 1023, 0, 1023)));
    };
    return part(p.x, box.xmin, box.xmax) | part(p.y, box.ymin, box.ymax) << 1 |
           part(p.z, box.zmin, box.zmax) << 2;
}

}  // namespace

void MeshFaces::prepareGroups()
{
    const std::lock_guard scope(fLock);
    if (!fNear.empty()) return;
    std::vector<std::uint64_t> order;
    order.reserve(count());
    Place place{fLoopSizes.data(), fIndices.data()};
    for (std::size_t face = 0; face < count(); place = next(face++, place)) {
        const Point& corner = fPoints[static_cast<std::size_t>(*place.index)];
        order.push_back(std::uint64_t{mortonNumber(corner, fBox)} << 32 | face);
    }
    std::sort(order.begin(), order.end());
    std::vector<std::uint32_t> near;
    std::vector<Bound> boxes, outer;
    near.reserve(count());
    for (const std::uint64_t key : order) {
        const auto face = static_cast<std::uint32_t>(key);
        if (near.size() % kGroup == 0) boxes.push_back(Bound::empty());
        if (near.size() % (kGroup * kGroups) == 0) outer.push_back(Bound::empty());
        const Bound box = boxOf(face);
        boxes.back() = joined(boxes.back(), box);
        outer.back() = joined(outer.back(), box);
        near.push_back(face);
    }
    fBoxes = std::move(boxes);
    fOuterBoxes = std::move(outer);
    fNear = std::move(near);
}

template <class SightOf, class IsSeen>
std::vector<std::uint32_t> MeshFaces::seen(const SightOf& sight, const IsSeen& isSeen)
{
    prepareGroups();
    std::vector<std::uint32_t> faces;
    for (std::size_t k = 0; k < fBoxes.size(); ++k) {
        if (k % kGroups == 0 && sight(fOuterBoxes[k / kGroups]) == Sight::kNone) {
            k += kGroups - 1;
            continue;
        }
        const Sight group = sight(fBoxes[k]);
        if (group == Sight::kNone) continue;
        const std::size_t end = std::min((k + 1) * kGroup, fNear.size());
        for (std::size_t i = k * kGroup; i < end; ++i) {
            if (group == Sight::kAll || isSeen(fNear[i])) faces.push_back(fNear[i]);
        }
    }
    std::sort(faces.begin(), faces.end());
    return faces;
}

void PolygonMesh::init(long nargs, const unsigned short* tokens, void* const* values)
{
    const std::vector<long>& indices = fFaces->indices();
    Polygon::init(vertexCount(static_cast<long>(indices.size()), indices.data()),
                  static_cast<long>(fFaces->count()), nargs, tokens, values);
    fFaces->fPoints = std::exchange(fPoints, {});
}

namespace
{

// Whether a matrix leaves points undivided.
bool isAffine(const Matrix& matrix)
{
    const auto& m = matrix.m;
    return m[0][3] == 0 && m[1][3] == 0 && m[2][3] == 0 && m[3][3] == 1;
}

// What an affine matrix moves the points of a box into, to the last bit: a term that is larger
// never makes a sum less.
Bound moved(const Bound& box, const Matrix& matrix)
{
    const auto& m = matrix.m;
    const auto least = [&](int k, const Bound& b) {
        const auto term = [&](int from, float min, float max) {
            return double{m[from][k] > 0 ? min : max} * m[from][k];
        };
        const double sum = term(0, b.xmin, b.xmax) + term(1, b.ymin, b.ymax);
        return static_cast<float>(sum + term(2, b.zmin, b.zmax) + m[3][k]);
    };
    const Bound turned{box.xmax, box.xmin, box.ymax, box.ymin, box.zmax, box.zmin};
    return {least(0, box),    least(0, turned), least(1, box),
            least(1, turned), least(2, box),    least(2, turned)};
}

}  // namespace

// Of n points in camera space.
template <class At>
Boundw PolygonMesh::boundOf(std::size_t n, const At& at) const
{
    const Matrix& toCamera = matrix();
    Bound box = Bound::empty();
    if (isAffine(toCamera)) {
        // Rounded once: what is least then is so before.
        Pointd least(kInfinity, kInfinity, kInfinity), most = least * -1;
        const auto& m = toCamera.m;
        for (std::size_t k = 0; k < n; ++k) {
            const Pointd p(at(k));
            const auto along = [&](int axis) {
                return p.x * m[0][axis] + p.y * m[1][axis] + p.z * m[2][axis] + m[3][axis];
            };
            const Pointd q(along(0), along(1), along(2));
            least = {std::min(least.x, q.x), std::min(least.y, q.y), std::min(least.z, q.z)};
            most = {std::max(most.x, q.x), std::max(most.y, q.y), std::max(most.z, q.z)};
        }
        box.add(rounded(least));
        box.add(rounded(most));
    } else {
        for (std::size_t k = 0; k < n; ++k) box.add(at(k) * toCamera);
    }
    return clipped(box);
}

Boundw PolygonMesh::bound() const
{
    const std::vector<Point>& points = fFaces->fPoints;
    return boundOf(points.size(), [&](std::size_t k) -> const Point& { return points[k]; });
}

Boundw PolygonMesh::faceBound(std::size_t face) const
{
    const MeshFaces::Place place = fFaces->place(face);
    const long n = MeshFaces::vertices(place, fFaces->loops(face));
    return boundOf(static_cast<std::size_t>(n), [&](std::size_t k) -> const Point& {
        return fFaces->fPoints[static_cast<std::size_t>(place.index[k])];
    });
}

Sight PolygonMesh::sight(const PrimitiveSink& sink, const Bound& box) const
{
    if (!isAffine(matrix())) return Sight::kSome;
    return sink.sight(*this, clipped(moved(box, matrix())));
}

void PolygonMesh::prepareParts(const PrimitiveSink& sink)
{
    fFaces->prepare();
    fAllSeen = sight(sink, fFaces->box()) == Sight::kAll;
    if (fAllSeen) return;
    fSeen = fFaces->seen(
        [&](const Bound& box) { return sight(sink, box); },
        [&](std::size_t face) { return sink.sight(*this, faceBound(face)) != Sight::kNone; });
}

long PolygonMesh::parts() const
{
    return static_cast<long>((seenCount() + kPartFaces - 1) / kPartFaces);
}

void PolygonMesh::split(PrimitiveSink& sink)
{
    prepareParts(sink);
    for (long part = 0; part < parts(); ++part) splitPart(sink, part);
}

void PolygonMesh::splitPart(PrimitiveSink& sink, long part) const
{
    const std::size_t first = static_cast<std::size_t>(part) * kPartFaces;
    const std::size_t end = std::min(first + kPartFaces, seenCount());
    std::size_t before = 0;
    MeshFaces::Place place{};
    for (std::size_t k = first; k < end; ++k) {
        const std::size_t face = fAllSeen ? k : fSeen[k];
        const bool follows = k > first && face == before + 1;
        place = follows ? fFaces->next(before, place) : fFaces->place(face);
        sink.add(makeFace(static_cast<std::uint32_t>(face), fFaces->loops(face), place));
        before = face;
    }
}

}  // namespace zeb
