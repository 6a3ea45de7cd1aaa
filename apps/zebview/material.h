// What a mesh is made of, as far as the built-in surfaces can show it.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "color.h"

struct aiMesh;
struct aiScene;

namespace zebview
{

// Whether a file's colours are amounts of light, and not the numbers that are shown.
bool holdsLight(const aiScene& scene);

// None where the file names no colour, and where the colour only gives way to a texture.
std::optional<Color> materialColor(const aiScene& scene, const aiMesh& mesh);

}  // namespace zebview
