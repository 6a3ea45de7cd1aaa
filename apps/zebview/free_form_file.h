// The free-form surfaces of a model's file, which assimp passes over.
#pragma once

#include <assimp/Importer.hpp>
#include <functional>
#include <map>
#include <utility>

#include "free_form.h"

struct aiNode;

namespace zebview
{

class FreeFormFile
{
public:
    // If there are any surfaces, the importer will read the rest of the file instead of all of it.
    FreeFormFile(const std::string& name, Assimp::Importer& importer);

    void readMaterials(const aiScene& scene, TextureImages* images);
    // Points on all surfaces, as they are in the file.
    void everyPoint(const std::function<void(const Vector&)>& visit) const;
    std::vector<FreeForm> place(const Place& place) const;

private:
    // The material's name, and whether there are texture coordinates.
    using Look = std::pair<std::string, bool>;
    static Look lookOf(const ObjSurface& surface)
    {
        return {surface.material, !surface.coordinates.empty()};
    }

    std::string fName;
    std::vector<ObjSurface> fSurfaces;
    std::vector<std::vector<Vector>> fPoints;  // by surface
    std::map<Look, Material> fMaterials;
};

// Whether a node is only there for the materials of surfaces to be read with its meshes.
bool holdsMaterials(const aiNode& node);

}  // namespace zebview
