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

#include "animation.h"
#include "copies.h"
#include "dots.h"
#include "failure.h"
#include "far_points.h"
#include "free_form_file.h"
#include "material.h"
#include "reading_limits.h"
#include "skin.h"
#include "texture_images.h"
#include "vertex_scalars.h"

namespace zebview
{

namespace
{

constexpr std::uintmax_t kMaxFileSize = std::uintmax_t{4} << 30;
constexpr std::uintmax_t kMaxVertices = 100'000'000;
constexpr std::size_t kLongestError = 200;

// A mesh at one of the places where the model shows it.
struct Placement {
    const aiMesh* mesh;
    unsigned number;  // the mesh's
    Pose::Placed at;
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

// Readers of damaged files leave some out.
void dropMissingNodes(const aiScene& scene)
{
    std::vector<aiNode*> open;
    if (scene.mRootNode) open.push_back(scene.mRootNode);
    while (!open.empty()) {
        aiNode& node = *open.back();
        open.pop_back();
        aiNode** const end = node.mChildren + node.mNumChildren;
        node.mNumChildren =
            static_cast<unsigned>(std::remove(node.mChildren, end, nullptr) - node.mChildren);
        open.insert(open.end(), node.mChildren, node.mChildren + node.mNumChildren);
    }
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

std::vector<Placement> placements(const aiScene& scene, const Pose& pose)
{
    std::vector<Placement> result;
    for (const Pose::Placed& at : pose.nodes()) {
        if (holdsMaterials(*at.node)) continue;
        for (unsigned i = 0; i < at.node->mNumMeshes; ++i) {
            const unsigned number = at.node->mMeshes[i];
            if (number >= scene.mNumMeshes) throw Failure("a mesh is missing from it");
            result.push_back({scene.mMeshes[number], number, at});
        }
    }
    return result;
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

// How many points it shows.
std::size_t dotCount(const aiMesh& mesh)
{
    if (mesh.mNumFaces == 0) return mesh.mNumVertices;
    const auto isDot = [](const aiFace& face) { return face.mNumIndices == 1; };
    return static_cast<std::size_t>(
        std::count_if(mesh.mFaces, mesh.mFaces + mesh.mNumFaces, isDot));
}

// What a model takes up, at one time or at several.
class Extent
{
public:
    // withRoom  the farthest points are wanted, and not only the box
    Extent(const aiScene& scene, bool withRoom) : fWithRoom(withRoom), fUsed(scene.mNumMeshes) {}

    void add(const std::vector<Placement>& meshes, const Pose& pose)
    {
        for (const auto& [mesh, number, at] : meshes) {
            std::vector<bool>& used = fUsed[number];
            if (used.empty()) used = usedVertices(*mesh);
            const bool bent = isBent(*mesh, pose);
            const std::vector<Vector> points =
                bent ? shapeOf(*mesh, at, pose).points : std::vector<Vector>();
            for (unsigned i = 0; i < mesh->mNumVertices; ++i) {
                if (used[i]) add(bent ? points[i] : at.toWorld * asVector(mesh->mVertices[i]));
            }
        }
    }

    void add(const Vector& p)
    {
        if (!isFinite(p)) throw Failure("a vertex of it is not a finite point");
        fBox.add(p);
        if (fWithRoom) fFar.add(p);
    }

    const Box& box() const { return fBox; }
    const FarPoints& farPoints() const { return fFar; }

private:
    static Vector asVector(const aiVector3D& v) { return {v.x, v.y, v.z}; }

    bool fWithRoom;
    Box fBox;
    FarPoints fFar;
    std::vector<std::vector<bool>> fUsed;  // by mesh
};

}  // namespace

// What is kept of the file while models are made of it.
struct ModelFile::Contents {
    Contents(const std::string& file, const Settings& options);

    // In seconds, if there is an animation.
    Model model(double seconds);
    double secondsAt(long frame) const;
    std::vector<Scalar> scalars() const;

private:
    Pose pose(double seconds) const;
    void read(const std::string& file);
    void measure();
    void readScalar();
    std::vector<Mesh> buildMeshes(const Pose& pose) const;
    Mesh build(const Placement& placement, const Pose& pose) const;
    // A mesh to be made at a placement, and where it is taken from there.
    struct Job {
        std::size_t placement;
        std::vector<Matrix> copies;
    };
    std::vector<Job> jobs(const std::vector<Placement>& all, const Pose& pose) const;

    const std::string name;

public:
    const Settings& settings;
    Assimp::Importer importer;
    FreeFormFile freeForms;
    const aiScene* scene = nullptr;
    const aiAnimation* animation = nullptr;

private:
    Place place;
    std::array<Range, 3> coordinates{};  // along the file's axes
    std::optional<Scalar> scalar;
    std::optional<Range> shownRange;
    std::vector<float> scalarPlaces;  // by vertex, if the file holds them
    std::vector<Vector> room;
    double dotRadius = 0;  // of the spheres that its points are, in the file's units
    std::vector<std::optional<Material>> materials;  // by mesh; of those that are shown
    bool textured = false, facets = false;
    double brightness = 0;  // of its lamps in the first model
};

ModelFile::Contents::Contents(const std::string& file, const Settings& options)
    : name(file), settings(options), freeForms(file, importer)
{
    // Whoever names an axis means one of the file.
    if (!settings.up.empty()) {
        importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, true);
    }
    read(file);
    if (settings.isAnimated()) animation = &findAnimation(*scene, settings.animation);
    const Matrix back = formatOf(*scene).turned ? upright("z").Inverse() : Matrix();
    place.turn = upright(upAxis(*scene, settings.up)) * back;
    measure();
    if (!settings.scalar.empty() && !settings.listsScalars()) readScalar();
    const auto format = metadata<aiString>(*scene, AI_METADATA_SOURCE_FORMAT);
    facets = format && std::strstr(format->C_Str(), "STL");
    textured = settings.surface.empty() && !settings.listsCameras();
    TextureImages images(*scene, file, settings.textures);
    materials.resize(scene->mNumMeshes);
    for (const Placement& placement : placements(*scene, pose(secondsAt(0)))) {
        std::optional<Material>& material = materials[placement.number];
        if (material) continue;
        material = readMaterial(*scene, *placement.mesh, textured ? &images : nullptr);
    }
    freeForms.readMaterials(*scene, textured ? &images : nullptr);
}

void ModelFile::Contents::read(const std::string& file)
{
    const ReadingLimits limits(file, std::filesystem::file_size(file), settings.readLimit);
    try {
        scene = importer.ReadFile(file, aiProcess_GenUVCoords);
    } catch (const std::bad_alloc&) {
        throw Failure(limits.memoryMessage());
    }
    if (scene) return dropMissingNodes(*scene);
    std::string error = importer.GetErrorString();
    if (error == std::bad_alloc().what()) throw Failure(limits.memoryMessage());
    // Some quote all of a damaged file.
    if (error.size() > kLongestError) error.replace(kLongestError, std::string::npos, "...");
    throw Failure("cannot be read: " + error);
}

double ModelFile::Contents::secondsAt(long frame) const
{
    return animation ? settings.secondsAt(frame, lengthOf(*animation)) : 0;
}

Pose ModelFile::Contents::pose(double seconds) const
{
    std::optional<Moment> moment;
    if (animation) moment = Moment{animation, seconds};
    return {*scene, place.turn, moment};
}

// In all frames, so that nothing jumps from one to the next.
void ModelFile::Contents::measure()
{
    const bool moves = settings.movesInTime();
    Extent extent(*scene, moves);
    for (long frame = 0; frame < (moves ? settings.frames : 1); ++frame) {
        const Pose posed = pose(secondsAt(frame));
        const std::vector<Placement> meshes = placements(*scene, posed);
        extent.add(meshes, posed);
    }
    freeForms.everyPoint([&](const Vector& p) { extent.add(place.turn * p); });
    const Box& box = extent.box();
    const Matrix toFile = upright(upAxis(*scene, settings.up)).Inverse();
    const Vector from = toFile * box.min, to = toFile * box.max;
    for (unsigned i = 0; i < 3; ++i) {
        coordinates[i] = {std::min(from[i], to[i]), std::max(from[i], to[i])};
    }
    place.center = (box.min + box.max) * 0.5;
    place.radius = (box.max - place.center).Length();
    std::size_t dots = 0;
    for (const Placement& placement : placements(*scene, pose(secondsAt(0)))) {
        dots += dotCount(*placement.mesh);
    }
    if (!(place.radius > 0) && dots == 0) throw Failure("it has nothing to show");
    if (dots > 0) {
        // Next to nothing else a single one may have any size.
        const double size = place.radius > 0 ? place.radius : 1;
        dotRadius = settings.pointSize ? *settings.pointSize / 2 : size * usualDotRadius(dots);
        place.radius += dotRadius;
    }
    if (!std::isfinite(place.radius)) throw Failure("it is too large");
    if (!moves) return;
    for (const Vector& p : extent.farPoints().points()) room.push_back(place.point(p));
}

void ModelFile::Contents::readScalar()
{
    if (const auto axis = axisNamed(settings.scalar)) {
        scalar = {settings.scalar, coordinates[*axis], axis};
    } else if (const auto read = readVertexScalar(name, *scene, settings.scalar)) {
        scalar = read->scalar;
        const Range range = settings.scalarRange.value_or(scalar->range.value_or(Range{0, 1}));
        scalarPlaces.reserve(read->values.size());
        for (const double value : read->values) scalarPlaces.push_back(placeIn(range, value));
    }
    if (scalar) shownRange = settings.scalarRange ? settings.scalarRange : scalar->range;
}

std::vector<Scalar> ModelFile::Contents::scalars() const
{
    std::vector<Scalar> result = listVertexScalars(name, *scene);
    for (unsigned axis = 0; axis < 3; ++axis) {
        result.push_back({std::string(1, "xyz"[axis]), coordinates[axis], axis});
    }
    return result;
}

Mesh ModelFile::Contents::build(const Placement& placement, const Pose& pose) const
{
    Shape shape = shapeOf(*placement.mesh, placement.at, pose);
    for (Vector& p : shape.points) p = place.point(p);
    return buildMesh(*placement.mesh, shape, facets, *materials[placement.number], scalarPlaces);
}

// Each mesh is made once for all its places, but for those that bend.
std::vector<ModelFile::Contents::Job> ModelFile::Contents::jobs(const std::vector<Placement>& all,
                                                                const Pose& pose) const
{
    std::vector<std::vector<std::size_t>> uses(scene->mNumMeshes);
    std::vector<Job> result;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (isBent(*all[i].mesh, pose)) {
            result.push_back({i, {}});
        } else {
            uses[all[i].number].push_back(i);
        }
    }
    Matrix scaling, centering;
    Matrix::Scaling(Vector(1 / place.radius), scaling);
    Matrix::Translation(-place.center, centering);
    for (const std::vector<std::size_t>& same : uses) {
        std::vector<Matrix> places;
        places.reserve(same.size());
        for (const std::size_t i : same) places.push_back(scaling * centering * all[i].at.toWorld);
        for (Copies& copies : shareMesh(places)) {
            result.push_back({same[copies.made], std::move(copies.moves)});
        }
    }
    // As they are in the file.
    std::sort(result.begin(), result.end(),
              [](const Job& a, const Job& b) { return a.placement < b.placement; });
    return result;
}

std::vector<Mesh> ModelFile::Contents::buildMeshes(const Pose& pose) const
{
    const std::vector<Placement> all = placements(*scene, pose);
    std::vector<Job> work = jobs(all, pose);
    std::uintmax_t vertices = 0;
    for (const Job& job : work) vertices += all[job.placement].mesh->mNumVertices;
    if (vertices > kMaxVertices) throw Failure("it has more than 100 million vertices");
    std::vector<Mesh> meshes;
    for (Job& job : work) {
        Mesh mesh = build(all[job.placement], pose);
        if (mesh.vertexCount() == 0) continue;
        mesh.copies = std::move(job.copies);
        mesh.dotRadius = dotRadius / place.radius;
        meshes.push_back(std::move(mesh));
    }
    return meshes;
}

Model ModelFile::Contents::model(double seconds)
{
    const Pose posed = pose(seconds);
    Model model;
    model.meshes = buildMeshes(posed);
    model.surfaces = freeForms.place(place);
    if (model.meshes.empty() && model.surfaces.empty()) throw Failure("it has nothing to show");
    model.room = room;
    const Matrix turn = upright(upAxis(*scene, settings.up));
    for (Vector& axis : model.space.axes) axis = turn * axis;
    model.space.origin = place.point(Vector());
    model.space.unit = 1 / place.radius;
    model.scalar = scalar;
    model.shownRange = shownRange;
    if (formatOf(*scene).hasStage) model.stage = readStage(*scene, posed, place, brightness);
    if (textured) model.notShown = whatIsNotShown(*scene);
    checkStage(model.stage, settings);
    return model;
}

double reachOf(const Model& model)
{
    double reach = 0;
    for (const Mesh& mesh : model.meshes) {
        if (!mesh.dots.empty()) reach = std::max(reach, mesh.dotRadius);
    }
    return reach;
}

ModelFile::ModelFile(std::string name, const Settings& settings) : fName(std::move(name))
{
    explained([&] {
        checkFile(fName);
        fContents = std::make_unique<Contents>(fName, settings);
    });
}

ModelFile::~ModelFile() = default;

template <class Work>
void ModelFile::explained(const Work& work) const
{
    try {
        work();
    } catch (const Failure& failure) {
        throw Failure(fName + ": " + failure.what());
    }
}

Model ModelFile::model(long frame) { return modelAt(fContents->secondsAt(frame)); }

Model ModelFile::modelAt(double seconds)
{
    Model model;
    explained([&] { model = fContents->model(seconds); });
    return model;
}

std::size_t ModelFile::animation() const
{
    const aiScene& scene = *fContents->scene;
    const auto begin = scene.mAnimations, end = begin + scene.mNumAnimations;
    return static_cast<std::size_t>(std::find(begin, end, fContents->animation) - begin);
}

double ModelFile::length() const { return lengthOf(*fContents->animation); }

std::vector<std::string> ModelFile::scalars() const
{
    std::vector<std::string> lines;
    explained([&] {
        for (const Scalar& scalar : fContents->scalars()) lines.push_back(lineOf(scalar));
    });
    return lines;
}

std::vector<std::string> ModelFile::animations() const
{
    std::vector<std::string> lines;
    explained([&] {
        lines = animationLines(*fContents->scene);
        if (lines.empty()) throw Failure("it has no animations");
    });
    return lines;
}

}  // namespace zebview
