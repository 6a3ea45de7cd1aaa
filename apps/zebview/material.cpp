#include "material.h"

#include <assimp/GltfMaterial.h>
#include <assimp/commonMetaData.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

namespace zebview
{

namespace
{

float number(const aiMaterial& material, const char* key, float otherwise)
{
    float value = otherwise;
    material.Get(key, 0, 0, value);
    return std::isfinite(value) ? value : otherwise;
}

std::optional<Color> colorNamed(const aiMaterial& material, const char* key)
{
    aiColor3D color;
    if (material.Get(key, 0, 0, color) != aiReturn_SUCCESS) return std::nullopt;
    Color result{color.r, color.g, color.b};
    for (float& c : result) {
        if (!std::isfinite(c)) return std::nullopt;
        c = std::clamp(c, 0.0f, 1.0f);
    }
    return result;
}

bool isBlack(const Color& color) { return color == Color{}; }

// What assimp and its formats give to meshes that have no material: white or a grey, no name. For
// glTF, where materials need no names, it is put after all others.
bool isStandIn(const aiScene& scene, const aiMesh& mesh)
{
    if (holdsLight(scene)) return mesh.mMaterialIndex + 1 == scene.mNumMaterials;
    const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
    const aiString name = material.GetName();
    const bool named = name.length > 0 && std::strcmp(name.C_Str(), AI_DEFAULT_MATERIAL_NAME) != 0;
    const auto color = colorNamed(material, "$clr.diffuse");
    const bool grey = color && (*color)[0] == (*color)[1] && (*color)[1] == (*color)[2];
    return !named && (!color || (grey && (*color)[0] > 0.5f));
}

bool isUnlit(const aiMaterial& material)
{
    int model = 0;
    return material.Get(AI_MATKEY_SHADING_MODEL, model) == aiReturn_SUCCESS &&
           model == aiShadingMode_NoShading;
}

// The highlight of a microfacet surface as that of "plastic": as wide, and about as bright. What
// metals would mirror is not there: part of it is made up for by their own dull colour.
void readPbr(const aiMaterial& source, Material& material)
{
    const float glossiness = number(source, "$mat.glossinessFactor", -1);
    const bool dielectric = glossiness >= 0;
    const float metal =
        dielectric ? 0 : std::clamp(number(source, "$mat.metallicFactor", 1), 0.0f, 1.0f);
    const float rough = std::clamp(
        dielectric ? 1 - glossiness : number(source, "$mat.roughnessFactor", 1), 0.05f, 1.0f);
    const float width = rough * rough * rough * rough;
    const float exponent = std::max(2 / width - 2, 1.0f);
    const float peak = std::min((exponent + 2) / 8, 10.0f);
    const Color base = material.color.value_or(Color{1, 1, 1});
    const Color facing = (dielectric ? colorNamed(source, "$clr.specular") : std::nullopt)
                             .value_or(Color{0.04f, 0.04f, 0.04f});
    material.diffuse *= 1 - metal * (0.7f - 0.5f * rough);
    material.specular = 1;
    material.roughness = 1 / exponent;
    for (std::size_t i = 0; i < 3; ++i) {
        material.specularColor[i] =
            std::min(peak * (facing[i] + metal * (base[i] - facing[i])), 1.0f);
    }
}

void readGltf(const aiMaterial& source, Material& material)
{
    aiString mode;
    source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode);
    const float alpha = std::clamp(number(source, "$mat.opacity", 1), 0.0f, 1.0f);
    material.blendsVertices = mode == aiString("BLEND");
    if (material.blendsVertices) material.opacity = alpha;
    if (mode == aiString("MASK")) {
        material.opacity = alpha < number(source, "$mat.gltf.alphaCutoff", 0.5f) ? 0 : 1;
    }
    readPbr(source, material);
}

// A highlight where the file names one; none for what has a colour and is not said to shine.
void readPhong(const aiMaterial& source, Material& material)
{
    material.opacity = std::clamp(number(source, "$mat.opacity", 1), 0.0f, 1.0f);
    // Formats disagree on what the number means, and files on what their formats say.
    if (material.opacity == 0) material.opacity = 1;
    const auto shine = colorNamed(source, "$clr.specular");
    const float exponent = number(source, "$mat.shininess", 0);
    if (!shine) return;
    material.specular = 0;
    if (isBlack(*shine) || !(exponent >= 1)) return;
    material.specular = number(source, "$mat.shinpercent", 1);
    material.specularColor = toLight(*shine);
    material.roughness = 1 / exponent;
}

std::string counted(std::size_t count, const char* what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

}  // namespace

bool holdsLight(const aiScene& scene)
{
    aiString format;
    return scene.mMetaData && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format) &&
           std::strncmp(format.C_Str(), "glTF2", 5) == 0;
}

Material readMaterial(const aiScene& scene, const aiMesh& mesh)
{
    Material material;
    material.tintsVertices = holdsLight(scene);
    if (mesh.mMaterialIndex >= scene.mNumMaterials || isStandIn(scene, mesh)) return material;
    const aiMaterial& source = *scene.mMaterials[mesh.mMaterialIndex];
    material.color = colorNamed(source, "$clr.diffuse");
    // Black only gives way to a texture.
    const bool textured = source.GetTextureCount(aiTextureType_DIFFUSE) > 0;
    if (textured && material.color && isBlack(*material.color)) material.color.reset();
    material.isLit = !isUnlit(source);
    if (material.tintsVertices) {
        readGltf(source, material);
    } else {
        if (material.color) material.color = toLight(*material.color);
        readPhong(source, material);
    }
    return material;
}

std::string whatIsNotShown(const aiScene& scene)
{
    std::set<unsigned> used;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) used.insert(scene.mMeshes[i]->mMaterialIndex);
    std::set<std::string> textures, transparency;
    for (const unsigned index : used) {
        if (index >= scene.mNumMaterials) continue;
        const aiMaterial& material = *scene.mMaterials[index];
        for (int type = 1; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            const auto kind = static_cast<aiTextureType>(type);
            for (unsigned i = 0; i < material.GetTextureCount(kind); ++i) {
                aiString path;
                if (material.GetTexture(kind, i, &path) != aiReturn_SUCCESS) continue;
                (kind == aiTextureType_OPACITY ? transparency : textures).insert(path.C_Str());
            }
        }
    }
    const std::size_t count = textures.size() + transparency.size();
    if (count == 0) return "";
    std::string text;
    if (!textures.empty()) text = counted(textures.size(), "texture");
    if (!textures.empty() && !transparency.empty()) text += " and ";
    if (!transparency.empty()) text += counted(transparency.size(), "transparency map");
    return text + (count == 1 ? " is not shown" : " are not shown");
}

}  // namespace zebview
