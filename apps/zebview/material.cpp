#include "material.h"

#include <assimp/commonMetaData.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zebview
{

namespace
{

// What assimp and its formats give to meshes that have no material: white or a grey, no name. For
// glTF, where materials need no names, it is put after all others.
bool isStandIn(const aiScene& scene, const aiMesh& mesh, const aiColor3D& diffuse)
{
    if (holdsLight(scene)) return mesh.mMaterialIndex + 1 == scene.mNumMaterials;
    const aiString name = scene.mMaterials[mesh.mMaterialIndex]->GetName();
    const bool named = name.length > 0 && std::strcmp(name.C_Str(), AI_DEFAULT_MATERIAL_NAME) != 0;
    const bool grey = diffuse.r == diffuse.g && diffuse.g == diffuse.b;
    return !named && grey && diffuse.r > 0.5f;
}

}  // namespace

bool holdsLight(const aiScene& scene)
{
    aiString format;
    return scene.mMetaData && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format) &&
           std::strncmp(format.C_Str(), "glTF2", 5) == 0;
}

std::optional<Color> materialColor(const aiScene& scene, const aiMesh& mesh)
{
    if (mesh.mMaterialIndex >= scene.mNumMaterials) return std::nullopt;
    const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
    aiColor3D diffuse;
    if (material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) != aiReturn_SUCCESS) return std::nullopt;
    const bool textured = material.GetTextureCount(aiTextureType_DIFFUSE) > 0;
    if (isStandIn(scene, mesh, diffuse) || (textured && diffuse.IsBlack())) return std::nullopt;
    Color color{diffuse.r, diffuse.g, diffuse.b};
    for (float& c : color) {
        if (!std::isfinite(c)) return std::nullopt;
        c = std::clamp(c, 0.0f, 1.0f);
    }
    return holdsLight(scene) ? color : toLight(color);
}

}  // namespace zebview
