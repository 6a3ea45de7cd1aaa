#include "material.h"

#include <assimp/GltfMaterial.h>
#include <assimp/commonMetaData.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "texture_images.h"

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

std::string formatOf(const aiScene& scene)
{
    aiString format;
    if (!scene.mMetaData || !scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format)) return "";
    return format.C_Str();
}

bool isBlack(const Color& color) { return color == Color{}; }

// What assimp and its formats give to meshes that have no material: white or a grey, no name. For
// glTF, where materials need no names, it is put after all others.
bool isStandIn(const aiScene& scene, const aiMesh& mesh)
{
    if (holdsLight(scene)) return mesh.mMaterialIndex + 1 == scene.mNumMaterials;
    const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
    const aiString name = material.GetName();
    aiString texture;
    const bool textured = material.Get(AI_MATKEY_TEXTURE_DIFFUSE(0), texture) == aiReturn_SUCCESS &&
                          std::strncmp(texture.C_Str(), "$texture_dummy", 14) != 0;
    const bool named = name.length > 0 && std::strcmp(name.C_Str(), AI_DEFAULT_MATERIAL_NAME) != 0;
    const auto color = colorNamed(material, "$clr.diffuse");
    const bool grey = color && (*color)[0] == (*color)[1] && (*color)[1] == (*color)[2];
    return !named && !textured && (!color || (grey && (*color)[0] > 0.5f));
}

bool isUnlit(const aiMaterial& material)
{
    int model = 0;
    return material.Get(AI_MATKEY_SHADING_MODEL, model) == aiReturn_SUCCESS &&
           model == aiShadingMode_NoShading;
}

// Textures of a material, as far as they can be had.
class MapReader
{
public:
    MapReader(const aiScene& scene, const aiMesh& mesh, TextureImages& images)
        : fScene(scene),
          fMesh(mesh),
          fSource(*scene.mMaterials[mesh.mMaterialIndex]),
          fImages(images)
    {
    }

    Map operator()(const TextureUse& use, Meaning meaning) const
    {
        const auto texture = readTexture(fScene, fMesh, fSource, use);
        if (!texture) return {};
        if (texture->hidesAlpha && meaning == Meaning::kPaint) meaning = Meaning::kColor;
        return {*texture, fImages.find(*texture, meaning)};
    }
    float number(const char* key, const TextureUse& use) const
    {
        return textureNumber(fSource, key, use, 1);
    }

private:
    const aiScene& fScene;
    const aiMesh& fMesh;
    const aiMaterial& fSource;
    TextureImages& fImages;
};

// A single byte, which assimp itself reads as four.
bool isTwoSided(const aiMaterial& source)
{
    const aiMaterialProperty* property = nullptr;
    return aiGetMaterialProperty(&source, AI_MATKEY_TWOSIDED, &property) == aiReturn_SUCCESS &&
           property->mDataLength > 0 && property->mData[0] != 0;
}

Facets readFacets(const aiMaterial& source)
{
    Facets facets;
    const float glossiness = number(source, "$mat.glossinessFactor", -1);
    facets.isGlossy = glossiness >= 0;
    facets.metal = std::clamp(number(source, "$mat.metallicFactor", 1), 0.0f, 1.0f);
    facets.rough = std::clamp(number(source, "$mat.roughnessFactor", 1), 0.0f, 1.0f);
    if (facets.isGlossy) {
        facets.metal = 0;
        facets.rough = std::clamp(1 - glossiness, 0.0f, 1.0f);
        facets.facing = colorNamed(source, "$clr.specular").value_or(Color{1, 1, 1});
    }
    return facets;
}

std::optional<Coat> readCoat(const aiMaterial& source)
{
    Coat coat;
    coat.amount = std::clamp(number(source, "$mat.clearcoat.factor", 0), 0.0f, 1.0f);
    coat.rough = std::clamp(number(source, "$mat.clearcoat.roughnessFactor", 0), 0.0f, 1.0f);
    if (coat.amount == 0) return std::nullopt;
    return coat;
}

void readGltf(const aiMaterial& source, Material& material)
{
    aiString mode;
    source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode);
    aiColor4D color;
    source.Get(AI_MATKEY_COLOR_DIFFUSE, color);
    const bool masks = mode == aiString("MASK");
    material.blendsVertices = masks || mode == aiString("BLEND");
    if (material.blendsVertices) {
        material.opacity = std::isfinite(color.a) ? std::clamp(color.a, 0.0f, 1.0f) : 1;
    }
    if (masks) material.cutoff = number(source, "$mat.gltf.alphaCutoff", 0.5f);
    material.facets = readFacets(source);
    material.showsBacks = isTwoSided(source);
    if (!material.isLit) return;
    material.coat = readCoat(source);
    material.transmission = std::clamp(number(source, "$mat.transmission.factor", 0), 0.0f, 1.0f);
    material.emission = colorNamed(source, "$clr.emissive").value_or(Color{});
    const float strength = number(source, "$mat.emissiveIntensity", 1);
    for (float& c : material.emission) c *= std::clamp(strength, 0.0f, 1e6f);
}

void readGltfMaps(const MapReader& read, Material& material)
{
    material.colorMap =
        read({aiTextureType_DIFFUSE}, material.blendsVertices ? Meaning::kPaint : Meaning::kColor);
    if (!material.isLit) return;
    Facets& facets = *material.facets;
    facets.map = facets.isGlossy ? read({aiTextureType_SPECULAR}, Meaning::kGloss)
                                 : read({aiTextureType_UNKNOWN}, Meaning::kValues);
    material.normalMap = read({aiTextureType_NORMALS}, Meaning::kNormals);
    material.normalScale = read.number("$tex.scale", {aiTextureType_NORMALS});
    material.emissionMap = read({aiTextureType_EMISSIVE}, Meaning::kColor);
    material.occlusionMap = read({aiTextureType_LIGHTMAP}, Meaning::kValues);
    material.occlusionStrength =
        std::clamp(read.number("$tex.strength", {aiTextureType_LIGHTMAP}), 0.0f, 1.0f);
    if (material.transmission > 0) {
        material.transmissionMap = read({aiTextureType_TRANSMISSION}, Meaning::kValues);
    }
    if (!material.coat) return;
    const TextureUse normals{aiTextureType_CLEARCOAT, 2};
    material.coat->amountMap = read({aiTextureType_CLEARCOAT, 0}, Meaning::kValues);
    material.coat->roughMap = read({aiTextureType_CLEARCOAT, 1}, Meaning::kValues);
    material.coat->normalMap = read(normals, Meaning::kNormals);
    material.coat->normalScale = read.number("$tex.scale", normals);
}

// A highlight where the file names one; none for what has a colour and is not said to shine.
void readPhong(const aiMaterial& source, Material& material)
{
    material.opacity = std::clamp(number(source, "$mat.opacity", 1), 0.0f, 1.0f);
    material.emission = toLight(colorNamed(source, "$clr.emissive").value_or(Color{}));
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

// Where a texture takes the place of the color, and does not go with it.
bool replacesColor(const aiScene& scene)
{
    const std::string format = formatOf(scene);
    for (const char* const one : {"Autodesk FBX", "Collada", "Discreet 3DS", "ASE"}) {
        if (format.starts_with(one)) return true;
    }
    return false;
}

// Pictures that hold opacity do so by their alpha; where a material has one of opacity as well,
// that alone counts.
void readPhongMaps(const MapReader& read, const aiScene& scene, Material& material)
{
    material.opacityMap = read({aiTextureType_OPACITY}, Meaning::kValues);
    material.colorMap =
        read({aiTextureType_DIFFUSE}, material.opacityMap ? Meaning::kColor : Meaning::kPaint);
    if (material.colorMap && (!material.color || replacesColor(scene))) {
        material.color = Color{1, 1, 1};
    }
    material.emissionMap = read({aiTextureType_EMISSIVE}, Meaning::kColor);
    if (material.emissionMap && isBlack(material.emission)) material.emission = {1, 1, 1};
    if (!material.isLit) return;
    material.specularMap = read({aiTextureType_SPECULAR}, Meaning::kColor);
    material.exponentMap = read({aiTextureType_SHININESS}, Meaning::kValues);
    for (const aiTextureType type : {aiTextureType_NORMALS, aiTextureType_HEIGHT}) {
        if (material.normalMap) continue;
        material.normalMap = read({type}, Meaning::kNormals);
        material.normalScale = read.number("$tex.bumpmult", {type});
    }
}

}  // namespace

bool holdsLight(const aiScene& scene) { return formatOf(scene).starts_with("glTF2"); }

std::vector<const Map*> Material::maps() const
{
    std::vector<const Map*> all{&colorMap,  &opacityMap,   &specularMap, &emissionMap,
                                &normalMap, &occlusionMap, &exponentMap, &transmissionMap};
    if (facets) all.push_back(&facets->map);
    if (coat) all.insert(all.end(), {&coat->amountMap, &coat->roughMap, &coat->normalMap});
    std::erase_if(all, [](const Map* map) { return !*map; });
    return all;
}

Material readMaterial(const aiScene& scene, const aiMesh& mesh, TextureImages* images)
{
    Material material;
    material.tintsVertices = holdsLight(scene);
    if (mesh.mMaterialIndex >= scene.mNumMaterials || isStandIn(scene, mesh)) return material;
    const aiMaterial& source = *scene.mMaterials[mesh.mMaterialIndex];
    material.color = colorNamed(source, "$clr.diffuse");
    material.isLit = !isUnlit(source);
    if (material.tintsVertices) {
        readGltf(source, material);
        if (images) readGltfMaps({scene, mesh, *images}, material);
        return material;
    }
    // Black only gives way to a texture.
    const bool textured = source.GetTextureCount(aiTextureType_DIFFUSE) > 0;
    if (textured && material.color && isBlack(*material.color)) material.color.reset();
    if (material.color) material.color = toLight(*material.color);
    readPhong(source, material);
    if (images) readPhongMaps({scene, mesh, *images}, scene, material);
    return material;
}

}  // namespace zebview
