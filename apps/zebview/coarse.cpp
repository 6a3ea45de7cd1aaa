#include "coarse.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace zebview
{

namespace
{

constexpr std::size_t kFew = 12'000;
// Cells along the diameter of the unit sphere, at first.
constexpr double kCells = 64, kFewestCells = 8;

std::size_t partCount(const Model& model)
{
    std::size_t count = 0;
    for (const Mesh& mesh : model.meshes) {
        std::size_t parts = mesh.dots.size() + mesh.lines.size() / 2;
        for (const FaceList* list : {&mesh.convex, &mesh.concave, &mesh.flatConcave}) {
            parts += list->sizes.size();
        }
        count += parts * (1 + mesh.copies.size());
    }
    return count;
}

// The vertices of a mesh by the cells that they lie in.
class Clusters
{
public:
    Clusters(const Mesh& mesh, double cellSize) : fMesh(mesh), fOf(mesh.vertexCount())
    {
        std::unordered_map<std::uint64_t, std::size_t> numbers;
        for (std::size_t vertex = 0; vertex < fOf.size(); ++vertex) {
            const auto [found, isNew] = numbers.emplace(keyOf(vertex, cellSize), fFirst.size());
            if (isNew) {
                fFirst.push_back(vertex);
                fSizes.push_back(0);
            }
            fOf[vertex] = found->second;
            ++fSizes[found->second];
        }
    }

    std::size_t operator[](std::size_t vertex) const { return fOf[vertex]; }

    // Of values that go with vertices.
    std::vector<float> means(const std::vector<float>& values) const
    {
        if (values.empty()) return {};
        const std::size_t width = values.size() / fOf.size();
        std::vector<float> result(fFirst.size() * width, 0);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t cluster = fOf[i / width];
            result[cluster * width + i % width] += values[i] / fSizes[cluster];
        }
        return result;
    }
    // Where means have no meaning, as beside the seams of textures.
    std::vector<float> firsts(const std::vector<float>& values) const
    {
        if (values.empty()) return {};
        const std::size_t width = values.size() / fOf.size();
        std::vector<float> result;
        for (const std::size_t vertex : fFirst) {
            for (std::size_t i = 0; i < width; ++i) result.push_back(values[vertex * width + i]);
        }
        return result;
    }

private:
    // The two sides of a sheet, however thin, stay apart, and so do those of sharp edges.
    std::uint64_t keyOf(std::size_t vertex, double cellSize) const
    {
        std::uint64_t key = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double place = (fMesh.points[3 * vertex + axis] + 2) / cellSize;
            const auto cell = static_cast<std::uint64_t>(std::clamp(place, 0.0, 1e6));
            key = key << 20 | cell;
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            key = key << 1 | (fMesh.normals[3 * vertex + axis] < 0 ? 1 : 0);
        }
        return key;
    }

    const Mesh& fMesh;
    std::vector<std::size_t> fOf;     // by vertex
    std::vector<std::size_t> fFirst;  // by cluster: a vertex of it
    std::vector<float> fSizes;
};

// Faces whose corners have met in one or two places are gone, and of those that have come to lie on
// each other one is left.
class CoarseFaces
{
public:
    // mesh  its vertices are those of the clusters
    CoarseFaces(const Clusters& clusters, const Mesh& mesh) : fClusters(clusters), fMesh(mesh) {}

    // What was convex need not be so any more: triangles are.
    void addTriangles(const FaceList& from, FaceList& to)
    {
        everyFace(from, [&](const std::vector<long>& corners) {
            for (std::size_t i = 2; i < corners.size(); ++i) {
                addTriangle(corners[0], corners[i - 1], corners[i], to);
            }
        });
    }
    void addWhole(const FaceList& from, FaceList& to)
    {
        everyFace(from, [&](const std::vector<long>& corners) { add(corners, to); });
    }

private:
    static Vector at(const std::vector<float>& values, long vertex)
    {
        const float* value = &values[3 * static_cast<std::size_t>(vertex)];
        return {value[0], value[1], value[2]};
    }

    // Small ones may have been turned over; their normals tell.
    void addTriangle(long a, long b, long c, FaceList& to)
    {
        const Vector start = at(fMesh.points, a);
        const Vector across = (at(fMesh.points, b) - start) ^ (at(fMesh.points, c) - start);
        const Vector normal = at(fMesh.normals, a) + at(fMesh.normals, b) + at(fMesh.normals, c);
        if (across * normal < 0) std::swap(b, c);
        add({a, b, c}, to);
    }

    template <class Visit>
    void everyFace(const FaceList& list, const Visit& visit) const
    {
        std::vector<long> corners;
        auto corner = list.corners.begin();
        for (const long size : list.sizes) {
            corners.clear();
            for (long i = 0; i < size; ++i) {
                const auto cluster =
                    static_cast<long>(fClusters[static_cast<std::size_t>(*corner++)]);
                if (corners.empty() || corners.back() != cluster) corners.push_back(cluster);
            }
            while (corners.size() > 1 && corners.back() == corners.front()) corners.pop_back();
            visit(corners);
        }
    }

    void add(const std::vector<long>& corners, FaceList& to)
    {
        std::vector<long> sorted = corners;
        std::sort(sorted.begin(), sorted.end());
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        if (sorted.size() < 3) return;
        std::uint64_t hash = 0;
        for (const long corner : sorted) {
            hash = (hash ^ static_cast<std::uint64_t>(corner)) * 0x9E3779B97F4A7C15u;
            hash ^= hash >> 29;
        }
        if (!fThere.insert(hash).second) return;
        to.sizes.push_back(static_cast<long>(corners.size()));
        to.corners.insert(to.corners.end(), corners.begin(), corners.end());
    }

    const Clusters& fClusters;
    const Mesh& fMesh;
    std::unordered_set<std::uint64_t> fThere;
};

// Those that have met are one.
std::vector<std::size_t> coarseDots(const std::vector<std::size_t>& dots, const Clusters& clusters)
{
    std::vector<std::size_t> result;
    result.reserve(dots.size());
    for (const std::size_t dot : dots) result.push_back(clusters[dot]);
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

std::vector<std::size_t> coarseLines(const std::vector<std::size_t>& lines,
                                     const Clusters& clusters)
{
    std::set<std::pair<std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
        const std::size_t a = clusters[lines[i]], b = clusters[lines[i + 1]];
        if (a != b) pairs.insert(std::minmax(a, b));
    }
    std::vector<std::size_t> result;
    for (const auto& [a, b] : pairs) result.insert(result.end(), {a, b});
    return result;
}

Mesh coarseMesh(const Mesh& mesh, double cellSize)
{
    const Clusters clusters(mesh, cellSize);
    Mesh result;
    result.points = clusters.means(mesh.points);
    result.normals = clusters.means(mesh.normals);
    result.colors = clusters.means(mesh.colors);
    result.opacities = clusters.means(mesh.opacities);
    result.scalars = clusters.means(mesh.scalars);
    for (std::size_t channel = 0; channel < mesh.coordinates.size(); ++channel) {
        result.coordinates[channel] = clusters.firsts(mesh.coordinates[channel]);
    }
    CoarseFaces faces(clusters, result);
    faces.addTriangles(mesh.convex, result.convex);
    faces.addWhole(mesh.concave, result.concave);
    faces.addWhole(mesh.flatConcave, result.flatConcave);
    result.dots = coarseDots(mesh.dots, clusters);
    // The same of them shows.
    const auto fewer = static_cast<double>(mesh.dots.size()) /
                       static_cast<double>(std::max<std::size_t>(result.dots.size(), 1));
    result.dotRadius = mesh.dotRadius * std::sqrt(fewer);
    result.lines = coarseLines(mesh.lines, clusters);
    result.material = mesh.material;
    result.isMirrored = mesh.isMirrored;
    result.copies = mesh.copies;
    return result;
}

Model coarseModel(const Model& model, double cellSize)
{
    Model result;
    result.stage = model.stage;
    result.space = model.space;
    result.room = model.room;
    result.surfaces = model.surfaces;
    result.scalar = model.scalar;
    result.shownRange = model.shownRange;
    for (const Mesh& mesh : model.meshes) result.meshes.push_back(coarseMesh(mesh, cellSize));
    return result;
}

}  // namespace

std::optional<Model> coarsened(const Model& model)
{
    if (partCount(model) <= kFew) return std::nullopt;
    double cells = kCells;
    Model coarse = coarseModel(model, 2 / cells);
    while (partCount(coarse) > kFew && cells > kFewestCells) {
        cells /= 1.5;
        coarse = coarseModel(coarse, 2 / cells);
    }
    return coarse;
}

}  // namespace zebview
