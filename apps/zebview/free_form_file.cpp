#include "free_form_file.h"

#include <assimp/DefaultIOSystem.h>
#include <assimp/MemoryIOWrapper.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "console.h"
#include "failure.h"
#include "texture_images.h"

namespace zebview
{

namespace
{

constexpr const char* kMaterialNodes[] = {"zebview:materials", "zebview:textured-materials"};
// On all surfaces together.
constexpr double kMostPoints = 2e6;

// Has a text of its own for one file.
class RestOfFile : public Assimp::DefaultIOSystem
{
public:
    RestOfFile(std::string name, std::string text) : fName(std::move(name)), fText(std::move(text))
    {
    }
    Assimp::IOStream* Open(const char* name, const char* mode) override
    {
        if (name != fName) return DefaultIOSystem::Open(name, mode);
        return new Assimp::MemoryIOStream(reinterpret_cast<const std::uint8_t*>(fText.data()),
                                          fText.size());
    }

private:
    const std::string fName, fText;
};

// Triangles of materials, for assimp to read those.
template <class Looks>
std::string trianglesOf(const Looks& looks)
{
    std::string text;
    for (const bool textured : {false, true}) {
        text +=
            std::string("o ") + kMaterialNodes[textured] + "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\n";
        const std::string face = textured ? "f -3/-1 -2/-1 -1/-1\n" : "f -3 -2 -1\n";
        if (!textured) text += face;
        for (const auto& [material, hasCoordinates] : looks) {
            if (hasCoordinates != textured || material.empty()) continue;
            text.append("usemtl ").append(material).append("\n").append(face);
        }
    }
    return text;
}

const aiNode* findNode(const aiScene& scene, const char* name)
{
    return scene.mRootNode ? scene.mRootNode->FindNode(name) : nullptr;
}

}  // namespace

FreeFormFile::FreeFormFile(const std::string& name, Assimp::Importer& importer) : fName(name)
{
    auto read = readObjSurfaces(name);
    if (!read) return;
    fSurfaces = std::move(read->surfaces);
    std::set<Look> looks;
    for (const ObjSurface& surface : fSurfaces) {
        looks.insert(lookOf(surface));
        fPoints.push_back(pointsOn(surface, kMostPoints / static_cast<double>(fSurfaces.size())));
    }
    importer.SetIOHandler(new RestOfFile(name, read->rest + trianglesOf(looks)));
}

void FreeFormFile::readMaterials(const aiScene& scene, TextureImages* images)
{
    for (const ObjSurface& surface : fSurfaces) {
        const Look look = lookOf(surface);
        const auto [place, isNew] = fMaterials.try_emplace(look);
        const aiNode* const node = findNode(scene, kMaterialNodes[look.second]);
        if (!isNew || look.first.empty() || !node) continue;
        for (unsigned i = 0; i < node->mNumMeshes; ++i) {
            const aiMesh& mesh = *scene.mMeshes[node->mMeshes[i]];
            if (mesh.mMaterialIndex >= scene.mNumMaterials) continue;
            const aiString material = scene.mMaterials[mesh.mMaterialIndex]->GetName();
            if (look.first == material.C_Str()) place->second = readMaterial(scene, mesh, images);
        }
    }
}

void FreeFormFile::everyPoint(const std::function<void(const Vector&)>& visit) const
{
    for (const std::vector<Vector>& points : fPoints) {
        for (const Vector& p : points) visit(p);
    }
}

std::vector<FreeForm> FreeFormFile::place(const Place& place) const
{
    std::vector<FreeForm> result;
    for (std::size_t i = 0; i < fSurfaces.size(); ++i) {
        const ObjSurface& surface = fSurfaces[i];
        try {
            result.push_back(
                placeSurface(surface, fPoints[i], place, fMaterials.at(lookOf(surface))));
        } catch (const Failure& failure) {
            complain(fName + ':' + std::to_string(surface.line) +
                     ": a surface is not shown: " + failure.what());
        }
    }
    return result;
}

bool holdsMaterials(const aiNode& node)
{
    const std::string name = node.mName.C_Str();
    return std::find(std::begin(kMaterialNodes), std::end(kMaterialNodes), name) !=
           std::end(kMaterialNodes);
}

}  // namespace zebview
