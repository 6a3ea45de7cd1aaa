#include "model.h"

#include <assimp/commonMetaData.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>

#include "failure.h"
#include "material.h"
#include "texture_images.h"

namespace zebview
{

namespace
{

constexpr std::uintmax_t kMaxFileSize = std::uintmax_t{4} << 30;
constexpr std::uintmax_t kMaxVertices = 100'000'000;

// A mesh at one of the places where the model shows it.
struct Placement {
    const aiMesh* mesh;
    Matrix toWorld;
};

struct Box {
    Vector min{std::numeric_limits<double>::infinity()};
    Vector max{-std::numeric_limits<double>::infinity()};

    void add(const Vector& p)
    {
        min = Vector(std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z));
        max = Vector(std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z));
    }
};

// assimp reads on for ever where the header of a PLY file breaks off.
void checkHeader(std::FILE* file)
{
    constexpr std::size_t longest = 1 << 20;
    std::string start(longest, '\0');
    start.resize(std::fread(start.data(), 1, longest, file));
    if (start.rfind("ply", 0) == 0 && start.find("end_header") == std::string::npos) {
        throw Failure("cannot be read: its header does not end");
    }
}

// What assimp would report at length, or after hours, is said here in short.
void checkFile(const std::string& name)
{
    namespace fs = std::filesystem;
    std::error_code failed;
    const fs::file_status status = fs::status(name, failed);
    if (status.type() == fs::file_type::none) throw Failure("cannot read it: " + failed.message());
    if (fs::is_directory(status)) throw Failure("it is a directory");
    if (fs::exists(status) && !fs::is_regular_file(status)) throw Failure("it is not a file");
    errno = 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "rb"),
                                                               std::fclose);
    if (!file) throw Failure(std::string("cannot read it: ") + std::strerror(errno));
    const std::uintmax_t size = fs::file_size(name, failed);
    if (failed) throw Failure("cannot read it: " + failed.message());
    if (size == 0) throw Failure("the file is empty");
    if (size > kMaxFileSize) throw Failure("the file is larger than 4 GiB");
    checkHeader(file.get());
}

template <class T>
std::optional<T> metadata(const aiScene& scene, const char* key)
{
    T value;
    if (!scene.mMetaData || !scene.mMetaData->Get(key, value)) return std::nullopt;
    return value;
}

// Formats that have an upward axis of their own, by the beginning of assimp's names for them.
struct Format {
    const char* name;
    const char* up;
    bool turned;  // by assimp, from z to y; then the file's own axes are brought back
    // Of the others assimp loses where cameras and lights point to.
    bool hasStage;
};

constexpr Format kFormats[] = {{"Discreet 3DS", "z", true, false},
                               {"ASE", "z", true, false},
                               {"Quake II Mesh", "z", true, true},
                               {"Blender", "z", false, true},
                               {"Stereolithography", "z", false, true}};

Format formatOf(const aiScene& scene)
{
    const auto name = metadata<aiString>(scene, AI_METADATA_SOURCE_FORMAT);
    for (const Format& format : kFormats) {
        if (name && std::strncmp(name->C_Str(), format.name, std::strlen(format.name)) == 0) {
            return format;
        }
    }
    return {"", "y", false, true};
}

std::string upAxis(const aiScene& scene, const std::string& wanted)
{
    if (!wanted.empty()) return wanted;
    const auto axis = metadata<std::int32_t>(scene, "UpAxis");
    if (!axis || *axis < 0 || *axis > 2) return formatOf(scene).up;
    const bool down = metadata<std::int32_t>(scene, "UpAxisSign").value_or(1) < 0;
    static constexpr const char* names[2][3] = {{"x", "y", "z"}, {"-x", "-y", "-z"}};
    return names[down ? 1 : 0][*axis];
}

// A rotation, so that nothing is mirrored. With z up the front is where y is least.
Matrix upright(const std::string& up)
{
    const double sign = up[0] == '-' ? -1 : 1;
    switch (up.back()) {
        case 'x':
            return {0, -sign, 0, 0, sign, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        case 'z':
            return {1, 0, 0, 0, 0, 0, sign, 0, 0, -sign, 0, 0, 0, 0, 0, 1};
        default:
            return {sign, 0, 0, 0, 0, sign, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    }
}

// Without recursion: files can nest nodes as deep as they like.
std::vector<Placement> placements(const aiScene& scene, const Matrix& root)
{
    std::vector<Placement> result;
    std::vector<std::pair<const aiNode*, Matrix>> open;
    if (scene.mRootNode) open.emplace_back(scene.mRootNode, root);
    while (!open.empty()) {
        const auto [node, parent] = open.back();
        open.pop_back();
        const Matrix toWorld = parent * Matrix(node->mTransformation);
        for (unsigned i = 0; i < node->mNumMeshes; ++i) {
            if (node->mMeshes[i] >= scene.mNumMeshes) throw Failure("a mesh is missing from it");
            result.push_back({scene.mMeshes[node->mMeshes[i]], toWorld});
        }
        // Backwards, so that meshes come in the file's order.
        for (unsigned i = node->mNumChildren; i-- > 0;) {
            open.emplace_back(node->mChildren[i], toWorld);
        }
    }
    return result;
}

void checkSize(const std::vector<Placement>& meshes)
{
    std::uintmax_t vertices = 0;
    for (const Placement& placement : meshes) vertices += placement.mesh->mNumVertices;
    if (vertices > kMaxVertices) throw Failure("it has more than 100 million vertices");
}

Vector placed(const aiVector3D& v, const Matrix& toWorld)
{
    return toWorld * Vector(v.x, v.y, v.z);
}

// The box around what polygons use: stray vertices count for nothing.
Box boundingBox(const std::vector<Placement>& meshes)
{
    Box box;
    for (const auto& [mesh, toWorld] : meshes) {
        for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
            const aiFace& face = mesh->mFaces[f];
            if (face.mNumIndices < 3) continue;
            for (unsigned i = 0; i < face.mNumIndices; ++i) {
                // Those that are not there are reported when the faces are read.
                if (face.mIndices[i] >= mesh->mNumVertices) continue;
                const Vector p = placed(mesh->mVertices[face.mIndices[i]], toWorld);
                if (!isFinite(p)) throw Failure("a vertex of it is not a finite point");
                box.add(p);
            }
        }
    }
    return box;
}

Model buildModel(const aiScene& scene, const std::string& name, const Settings& settings)
{
    const Matrix back = formatOf(scene).turned ? upright("z").Inverse() : Matrix();
    Place place{upright(upAxis(scene, settings.up)) * back, {}, 1};
    const auto meshes = placements(scene, place.turn);
    checkSize(meshes);
    const Box box = boundingBox(meshes);
    place.center = (box.min + box.max) * 0.5;
    place.radius = (box.max - place.center).Length();
    const auto format = metadata<aiString>(scene, AI_METADATA_SOURCE_FORMAT);
    const bool facets = format && std::strstr(format->C_Str(), "STL");

    Model model;
    if (!(place.radius > 0)) return model;
    if (!std::isfinite(place.radius)) throw Failure("it is too large");
    TextureImages images(scene, name, settings.textures);
    const bool textured = settings.surface.empty() && !settings.listsCameras();
    for (const auto& [source, toWorld] : meshes) {
        std::vector<Vector> points(source->mNumVertices);
        for (unsigned i = 0; i < source->mNumVertices; ++i) {
            points[i] = place.point(placed(source->mVertices[i], toWorld));
        }
        Mesh mesh = buildMesh(*source, points, toWorld, facets,
                              readMaterial(scene, *source, textured ? &images : nullptr));
        if (mesh.vertexCount() > 0) model.meshes.push_back(std::move(mesh));
    }
    if (formatOf(scene).hasStage) model.stage = readStage(scene, place);
    if (textured) model.notShown = whatIsNotShown(scene);
    return model;
}

// What is asked of the file's cameras and lights must be there.
void checkStage(const Stage& stage, const Settings& settings)
{
    if (settings.light == Light::kFile && stage.lamps.empty()) throw Failure("it has no lights");
    if (settings.listsCameras()) {
        if (stage.cameras.empty()) throw Failure("it has no cameras");
    } else if (!settings.camera.empty()) {
        findCamera(stage, settings.camera);
    }
}

}  // namespace

Model loadModel(const std::string& name, const Settings& settings)
{
    try {
        checkFile(name);
        Assimp::Importer importer;
        // Whoever names an axis means one of the file.
        if (!settings.up.empty()) {
            importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, true);
        }
        const aiScene* scene = importer.ReadFile(name, aiProcess_GenUVCoords);
        if (!scene) throw Failure(std::string("cannot be read: ") + importer.GetErrorString());
        Model model = buildModel(*scene, name, settings);
        if (model.meshes.empty()) throw Failure("it has no polygons");
        checkStage(model.stage, settings);
        return model;
    } catch (const Failure& failure) {
        throw Failure(name + ": " + failure.what());
    }
}

}  // namespace zebview
