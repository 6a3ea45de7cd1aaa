// How materials name their textures.
#pragma once

#include <assimp/material.h>

#include <array>
#include <optional>
#include <string>

struct aiMesh;
struct aiScene;

namespace zebview
{

// What lies beyond the edges of a picture: itself again, its edge, itself mirrored, or nothing.
enum class Wrap { kRepeat, kClamp, kMirror, kNone };

// A picture on a surface.
struct Texture {
    std::string name;      // of a file, or what assimp calls one within the model's
    unsigned channel = 0;  // of the texture coordinates
    // What takes a place, with y up, to where the picture covers 0 to 1 by 0 to 1, from the top.
    std::array<std::array<float, 3>, 2> place{{{1, 0, 0}, {0, -1, 1}}};
    Wrap across = Wrap::kRepeat, down = Wrap::kRepeat;
    bool isInverted = false, hidesAlpha = false;

    bool operator==(const Texture&) const = default;
};

// What a material has several of: their kind, and which of them.
struct TextureUse {
    aiTextureType type;
    unsigned index = 0;
};

// Nothing if it cannot be shown on the mesh.
std::optional<Texture> readTexture(const aiScene& scene, const aiMesh& mesh,
                                   const aiMaterial& material, const TextureUse& use);

// A number that belongs to a texture, such as "$tex.scale".
float textureNumber(const aiMaterial& material, const char* key, const TextureUse& use,
                    float otherwise);

// What the materials of meshes name and no surface can show, such as "2 textures are not shown".
// Empty if it is nothing.
std::string whatIsNotShown(const aiScene& scene);

}  // namespace zebview
