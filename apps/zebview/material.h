// What a mesh is made of.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "color.h"
#include "texture.h"

struct aiMesh;
struct aiScene;

namespace zebview
{

class TextureImage;
class TextureImages;

// A texture that is there.
struct Map {
    Texture texture;
    std::shared_ptr<const TextureImage> image;  // null: there is none

    explicit operator bool() const { return image != nullptr; }
};

// What glTF says of a surface that is lit, other than its color.
struct Facets {
    float metal = 1, rough = 1;
    // What is not metal mirrors so much of what comes straight at it. Of the color, what is
    // mirrored is not scattered.
    Color facing{0.04f, 0.04f, 0.04f};
    // The other way of saying it: facing is in the map's color, smoothness in its alpha.
    bool isGlossy = false;
    Map map;
};

// A layer of varnish, which mirrors what what is not metal does.
struct Coat {
    float amount = 0, rough = 0, normalScale = 1;
    Map amountMap, roughMap, normalMap;
};

struct Material {
    std::optional<Color> color;  // none where the file names none
    float opacity = 1;
    // What is less opaque is not there, and what is more is there fully.
    std::optional<float> cutoff;
    bool isLit = true;
    bool showsBacks = true;
    // As the surface "plastic" takes them, for all but glTF.
    float diffuse = 0.8f, specular = 0.3f, roughness = 0.1f;
    Color specularColor{1, 1, 1};
    bool tintsHighlights = false;  // by the color of its surface, too
    std::optional<Facets> facets;
    std::optional<Coat> coat;
    // glTF: how much of what is not mirrored goes through and not back, in the color of the
    // surface.
    float transmission = 0;
    Color emission{};

    Map colorMap, opacityMap, specularMap, emissionMap, normalMap, occlusionMap;
    Map exponentMap;  // factors of 1 / roughness
    Map transmissionMap;
    float normalScale = 1, occlusionStrength = 1;

    // glTF: the vertices' colours and opacities are factors of the material's.
    bool tintsVertices = false, blendsVertices = false;

    // Opacity for all of it.
    float plainOpacity() const { return cutoff ? float(opacity >= *cutoff) : opacity; }
    std::vector<const Map*> maps() const;
};

// images  null: materials have no textures
Material readMaterial(const aiScene& scene, const aiMesh& mesh, TextureImages* images);

// Whether a file's colours are amounts of light, and not the numbers that are shown.
bool holdsLight(const aiScene& scene);

}  // namespace zebview
