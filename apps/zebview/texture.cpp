#include "texture.h"

#include <assimp/mesh.h>

#include <cmath>

#include "material.h"

namespace zebview
{

namespace
{

Wrap wrapOf(const aiMaterial& material, const char* key, aiTextureType type)
{
    int mode = aiTextureMapMode_Wrap;
    material.Get(key, type, 0, mode);
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

}  // namespace

std::optional<Texture> readTexture(const aiScene& scene, const aiMesh& mesh,
                                   const aiMaterial& material, aiTextureType type)
{
    aiString name;
    if (material.Get(AI_MATKEY_TEXTURE(type, 0), name) != aiReturn_SUCCESS) return std::nullopt;
    int channel = 0, mapping = aiTextureMapping_UV, flags = 0;
    material.Get(AI_MATKEY_UVWSRC(type, 0), channel);
    material.Get(AI_MATKEY_MAPPING(type, 0), mapping);
    material.Get(AI_MATKEY_TEXFLAGS(type, 0), flags);
    if (name.length == 0 || channel < 0 || mapping != aiTextureMapping_UV) return std::nullopt;
    Texture texture;
    texture.name = name.C_Str();
    texture.channel = static_cast<unsigned>(channel);
    if (!mesh.HasTextureCoords(texture.channel)) return std::nullopt;
    texture.across = wrapOf(material, _AI_MATKEY_MAPPINGMODE_U_BASE, type);
    texture.down = wrapOf(material, _AI_MATKEY_MAPPINGMODE_V_BASE, type);
    texture.isInverted = (flags & aiTextureFlags_Invert) != 0;
    texture.hidesAlpha = (flags & aiTextureFlags_IgnoreAlpha) != 0;
    aiUVTransform move;
    if (material.Get(AI_MATKEY_UVTRANSFORM(type, 0), move) == aiReturn_SUCCESS) {
        const Place place = holdsLight(scene) ? gltfPlaceOf(move) : placeOf(move);
        if (isFinite(place)) texture.place = place;
    }
    return texture;
}

float textureNumber(const aiMaterial& material, const char* key, aiTextureType type,
                    float otherwise)
{
    float value = otherwise;
    material.Get(key, type, 0, value);
    return std::isfinite(value) ? value : otherwise;
}

}  // namespace zebview
