#include "vertex_scalars.h"

#include <assimp/commonMetaData.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cstring>

#include "console.h"
#include "failure.h"
#include "mesh.h"
#include "ply_scalars.h"

namespace zebview
{

namespace
{

std::optional<PlyScalars> openPly(const std::string& file, const aiScene& scene)
{
    aiString format;
    if (!scene.mMetaData || !scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format) ||
        !std::strstr(format.C_Str(), "Stanford Polygon")) {
        return std::nullopt;
    }
    return PlyScalars(file);
}

// Whether the model is one mesh of all the file's vertices, in its order.
bool fits(const std::string& file, const aiScene& scene, const PlyScalars& ply)
{
    if (scene.mNumMeshes == 1 && scene.mMeshes[0]->mNumVertices == ply.vertexCount()) return true;
    complain(file + ": its scalars are not shown: they do not go with its vertices");
    return false;
}

}  // namespace

std::vector<Scalar> listVertexScalars(const std::string& file, const aiScene& scene)
{
    const auto ply = openPly(file, scene);
    if (!ply || ply->names().empty() || !fits(file, scene, *ply)) return {};
    const std::vector<bool> used = usedVertices(*scene.mMeshes[0]);
    std::vector<RangeFinder> ranges(ply->names().size());
    std::size_t vertex = 0;
    ply->everyVertex([&](std::span<const double> values) {
        const bool isUsed = used[vertex++];
        for (std::size_t i = 0; i < values.size() && isUsed; ++i) ranges[i].add(values[i]);
    });
    std::vector<Scalar> scalars;
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        scalars.push_back({ply->names()[i], ranges[i].range(), std::nullopt});
    }
    return scalars;
}

std::optional<VertexScalar> readVertexScalar(const std::string& file, const aiScene& scene,
                                             const std::string& name)
{
    const auto ply = openPly(file, scene);
    const std::vector<std::string> names = ply ? ply->names() : std::vector<std::string>();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        throw Failure("it has no scalar '" + name + "': --scalar list names those it has");
    }
    if (!fits(file, scene, *ply)) return std::nullopt;
    const auto index = static_cast<std::size_t>(found - names.begin());
    const std::vector<bool> used = usedVertices(*scene.mMeshes[0]);
    RangeFinder range;
    VertexScalar result{{name, std::nullopt, std::nullopt}, {}};
    result.values.reserve(used.size());
    ply->everyVertex([&](std::span<const double> values) {
        if (used[result.values.size()]) range.add(values[index]);
        result.values.push_back(values[index]);
    });
    result.scalar.range = range.range();
    return result;
}

}  // namespace zebview
