// What a mesh is made of, as far as the built-in surfaces can show it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "color.h"

struct aiMesh;
struct aiScene;

namespace zebview
{

struct Material {
    std::optional<Color> color;  // none where the file names none
    float opacity = 1;
    bool isLit = true;
    // As the surface "plastic" takes them.
    float diffuse = 0.8f, specular = 0.3f, roughness = 0.1f;
    Color specularColor{1, 1, 1};

    // glTF: the vertices' colours and opacities are factors of the material's.
    bool tintsVertices = false, blendsVertices = false;
};

Material readMaterial(const aiScene& scene, const aiMesh& mesh);

// Whether a file's colours are amounts of light, and not the numbers that are shown.
bool holdsLight(const aiScene& scene);

// What the materials that meshes use name and no surface can show, such as "2 textures and 1
// transparency map are not shown". Empty if it is nothing.
std::string whatIsNotShown(const aiScene& scene);

}  // namespace zebview
