#include "mesh.h"

#include <assimp/mesh.h>

#include <algorithm>
#include <cmath>

#include "faces.h"
#include "smoothing.h"

namespace zebview
{

namespace
{

// A mesh is hopeless if more than one in so many of its faces has normals to both sides.
constexpr std::size_t kTolerable = 8;

// The file's normals at every corner; none if the file has none, or none to be trusted. Faces that
// are wound against all their normals are turned over.
std::vector<Vector> fileNormals(const std::vector<Vector>& normals, Faces& faces)
{
    std::vector<Vector> result;
    if (normals.empty()) return result;
    result.reserve(faces.cornerCount());
    std::size_t mixed = 0;
    for (std::size_t face = 0; face < faces.size(); ++face) {
        std::size_t with = 0, against = 0;
        for (const std::uint32_t vertex : faces.corners(face)) {
            const double side = normals[vertex] * faces.normal(face);
            with += side > 0;
            against += side < 0;
        }
        if (with == 0 && against > 0) faces.flip(face);
        mixed += (with > 0) == (against > 0);
        for (const std::uint32_t vertex : faces.corners(face)) {
            const Vector& normal = normals[vertex];
            // One that points elsewhere would make the shading turn over within the face.
            result.push_back(normal * faces.normal(face) > 0 ? normal : faces.normal(face));
        }
    }
    if (mixed > faces.size() / kTolerable) result.clear();
    return result;
}

// Collects vertices as faces need them: one that has a normal of its own for each of several faces
// becomes several.
class VertexCollector
{
public:
    VertexCollector(const aiMesh& source, const std::vector<Vector>& points,
                    const std::vector<float>& scalars, Mesh& mesh)
        : fSource(source),
          fPoints(points),
          fScalars(scalars),
          fMesh(mesh),
          fMaps(mesh.material.maps()),
          fFirst(points.size(), -1)
    {
    }

    long vertex(std::uint32_t index, const Vector& normal)
    {
        long& first = fFirst[index];
        if (first >= 0 && normalAt(first) * normal > 0.999999) return first;
        const auto added = static_cast<long>(fMesh.vertexCount());
        append(fMesh.points, fPoints[index]);
        append(fMesh.normals, normal);
        if (fSource.HasVertexColors(0)) appendColor(fSource.mColors[0][index]);
        for (const Map* const map : fMaps) appendPlace(map->texture.channel, index);
        if (!fScalars.empty()) fMesh.scalars.push_back(fScalars[index]);
        if (first < 0) first = added;
        return added;
    }

private:
    // Once, whichever maps share the channel.
    void appendPlace(unsigned channel, std::uint32_t index)
    {
        std::vector<float>& pairs = fMesh.coordinates[channel];
        if (pairs.size() / 2 == fMesh.vertexCount()) return;
        const aiVector3D& place = fSource.mTextureCoords[channel][index];
        for (const float value : {place.x, place.y}) {
            pairs.push_back(std::isfinite(value) ? value : 0);
        }
    }
    void appendColor(const aiColor4D& c)
    {
        const Material& material = fMesh.material;
        const Color factor = material.color.value_or(Color{1, 1, 1});
        const Color own{std::clamp(c.r, 0.0f, 1.0f), std::clamp(c.g, 0.0f, 1.0f),
                        std::clamp(c.b, 0.0f, 1.0f)};
        for (std::size_t i = 0; i < 3; ++i) {
            fMesh.colors.push_back(material.tintsVertices ? own[i] * factor[i] : toLight(own[i]));
            if (!material.blendsVertices) continue;
            fMesh.opacities.push_back(std::clamp(c.a, 0.0f, 1.0f) * material.opacity);
        }
    }
    Vector normalAt(long vertex) const
    {
        const float* n = &fMesh.normals[static_cast<std::size_t>(vertex) * 3];
        return {n[0], n[1], n[2]};
    }

    const aiMesh& fSource;
    const std::vector<Vector>& fPoints;
    const std::vector<float>& fScalars;
    Mesh& fMesh;
    const std::vector<const Map*> fMaps;
    std::vector<long> fFirst;
};

bool isFlat(std::span<const Vector> normals, const Vector& faceNormal)
{
    return std::all_of(normals.begin(), normals.end(),
                       [&](const Vector& normal) { return normal * faceNormal > 0.9999; });
}

}  // namespace

std::vector<Matrix> Mesh::places() const
{
    std::vector<Matrix> all{Matrix()};
    all.insert(all.end(), copies.begin(), copies.end());
    return all;
}

std::vector<bool> usedVertices(const aiMesh& mesh)
{
    std::vector<bool> used(mesh.mNumVertices, mesh.mNumFaces == 0);
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        for (unsigned i = 0; i < face.mNumIndices; ++i) {
            // Those that are not there are reported when the faces are read.
            if (face.mIndices[i] < mesh.mNumVertices) used[face.mIndices[i]] = true;
        }
    }
    return used;
}

Mesh buildMesh(const aiMesh& source, const Shape& shape, bool facets, const Material& material,
               const std::vector<float>& scalars)
{
    const std::vector<Vector>& points = shape.points;
    Mesh mesh;
    mesh.material = material;
    mesh.isMirrored = shape.isMirrored;
    Faces faces(source, points);
    std::vector<Vector> normals;
    if (!facets) normals = fileNormals(shape.normals, faces);
    if (normals.empty()) normals = smoothNormals(faces, points);

    VertexCollector collector(source, points, scalars, mesh);
    for (std::size_t face = 0; face < faces.size(); ++face) {
        const std::span corners = faces.corners(face);
        const Vector* own = &normals[faces.firstCorner(face)];
        FaceList& list = faces.convex(face, points)                          ? mesh.convex
                         : isFlat({own, corners.size()}, faces.normal(face)) ? mesh.flatConcave
                                                                             : mesh.concave;
        for (const std::uint32_t vertex : corners) {
            list.corners.push_back(collector.vertex(vertex, *own++));
        }
        list.sizes.push_back(static_cast<long>(corners.size()));
    }
    const auto addMark = [&collector](std::uint32_t index, std::vector<std::size_t>& list) {
        list.push_back(static_cast<std::size_t>(collector.vertex(index, Vector())));
    };
    for (unsigned f = 0; f < source.mNumFaces; ++f) {
        const aiFace& face = source.mFaces[f];
        if (face.mNumIndices > 2) continue;
        for (unsigned i = 0; i < face.mNumIndices; ++i) {
            addMark(face.mIndices[i], face.mNumIndices == 2 ? mesh.lines : mesh.dots);
        }
    }
    for (unsigned i = 0; source.mNumFaces == 0 && i < points.size(); ++i) addMark(i, mesh.dots);
    return mesh;
}

}  // namespace zebview
