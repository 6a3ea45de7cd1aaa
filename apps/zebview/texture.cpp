#include "texture.h"

#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

#include "material.h"

namespace zebview
{

namespace
{

Wrap wrapOf(const aiMaterial& material, const char* key, const TextureUse& use)
{
    int mode = aiTextureMapMode_Wrap;
    material.Get(key, use.type, use.index, mode);
    switch (mode) {
        case aiTextureMapMode_Clamp:
            return Wrap::kClamp;
        case aiTextureMapMode_Mirror:
            return Wrap::kMirror;
        case aiTextureMapMode_Decal:
            return Wrap::kNone;
        default:
            return Wrap::kRepeat;
    }
}

using Place = decltype(Texture::place);

// Scaled, turned about the middle and moved.
Place placeOf(const aiUVTransform& move)
{
    const float c = std::cos(move.mRotation), s = std::sin(move.mRotation);
    const float sx = move.mScaling.x, sy = move.mScaling.y;
    const float x = move.mTranslation.x + 0.5f - 0.5f * c + 0.5f * s;
    const float y = move.mTranslation.y + 0.5f - 0.5f * c - 0.5f * s;
    return {{{c * sx, -s * sy, x}, {-s * sx, -c * sy, 1 - y}}};
}

// glTF turns about the upper left corner, and assimp, which means to say so by the translation,
// has its own idea of it: this finds what stands in the file.
Place gltfPlaceOf(const aiUVTransform& move)
{
    const float c = std::cos(move.mRotation), s = -std::sin(move.mRotation);
    const float sx = move.mScaling.x, sy = move.mScaling.y;
    const float u = move.mTranslation.x - 0.5f * sx * (-c + s + 1);
    const float v = 0.5f * sy * (s + c - 1) + 1 - sy - move.mTranslation.y;
    // Of coordinates whose y has been turned up.
    return {{{c * sx, -s * sy, u + s * sy}, {-s * sx, -c * sy, v + c * sy}}};
}

bool isFinite(const Place& place)
{
    for (const auto& row : place) {
        for (const float value : row) {
            if (!std::isfinite(value)) return false;
        }
    }
    return true;
}

// How many textures of a kind there is a use for.
unsigned useCount(const aiScene& scene, aiTextureType type)
{
    static constexpr aiTextureType all[] = {aiTextureType_DIFFUSE, aiTextureType_NORMALS,
                                            aiTextureType_EMISSIVE, aiTextureType_SPECULAR};
    static constexpr aiTextureType gltf[] = {
        aiTextureType_BASE_COLOR,        aiTextureType_UNKNOWN,  aiTextureType_METALNESS,
        aiTextureType_DIFFUSE_ROUGHNESS, aiTextureType_LIGHTMAP, aiTextureType_TRANSMISSION};
    static constexpr aiTextureType others[] = {aiTextureType_OPACITY, aiTextureType_HEIGHT,
                                               aiTextureType_SHININESS};
    const auto holds = [&](const auto& list) {
        return std::find(std::begin(list), std::end(list), type) != std::end(list);
    };
    if (holdsLight(scene) && type == aiTextureType_CLEARCOAT) return 3;
    return holds(all) || (holdsLight(scene) ? holds(gltf) : holds(others)) ? 1 : 0;
}

}  // namespace

std::optional<Texture> readTexture(const aiScene& scene, const aiMesh& mesh,
                                   const aiMaterial& material, const TextureUse& use)
{
    const auto& [type, index] = use;
    aiString name;
    if (material.Get(AI_MATKEY_TEXTURE(type, index), name) != aiReturn_SUCCESS) return std::nullopt;
    int channel = 0, mapping = aiTextureMapping_UV, flags = 0;
    material.Get(AI_MATKEY_UVWSRC(type, index), channel);
    material.Get(AI_MATKEY_MAPPING(type, index), mapping);
    material.Get(AI_MATKEY_TEXFLAGS(type, index), flags);
    if (name.length == 0 || channel < 0 || mapping != aiTextureMapping_UV) return std::nullopt;
    Texture texture;
    texture.name = name.C_Str();
    texture.channel = static_cast<unsigned>(channel);
    if (!mesh.HasTextureCoords(texture.channel)) return std::nullopt;
    texture.across = wrapOf(material, _AI_MATKEY_MAPPINGMODE_U_BASE, use);
    texture.down = wrapOf(material, _AI_MATKEY_MAPPINGMODE_V_BASE, use);
    texture.isInverted = (flags & aiTextureFlags_Invert) != 0;
    texture.hidesAlpha = (flags & aiTextureFlags_IgnoreAlpha) != 0;
    aiUVTransform move;
    if (material.Get(AI_MATKEY_UVTRANSFORM(type, index), move) == aiReturn_SUCCESS) {
        const Place place = holdsLight(scene) ? gltfPlaceOf(move) : placeOf(move);
        if (isFinite(place)) texture.place = place;
    }
    return texture;
}

float textureNumber(const aiMaterial& material, const char* key, const TextureUse& use,
                    float otherwise)
{
    float value = otherwise;
    material.Get(key, use.type, use.index, value);
    return std::isfinite(value) ? value : otherwise;
}

std::string whatIsNotShown(const aiScene& scene)
{
    std::set<std::string> shown, others;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const aiMesh& mesh = *scene.mMeshes[m];
        if (mesh.mMaterialIndex >= scene.mNumMaterials) continue;
        const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
        for (int number = 1; number <= AI_TEXTURE_TYPE_MAX; ++number) {
            const auto type = static_cast<aiTextureType>(number);
            const unsigned used = useCount(scene, type);
            for (unsigned i = 0; i < std::max(material.GetTextureCount(type), used); ++i) {
                aiString path;
                if (material.GetTexture(type, i, &path) != aiReturn_SUCCESS) continue;
                const bool isShown = i < used && readTexture(scene, mesh, material, {type, i});
                (isShown ? shown : others).insert(path.C_Str());
            }
        }
    }
    std::erase_if(others, [&](const std::string& name) { return shown.contains(name); });
    if (others.empty()) return "";
    return std::to_string(others.size()) +
           (others.size() == 1 ? " texture is not shown" : " textures are not shown");
}

}  // namespace zebview
