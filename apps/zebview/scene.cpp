#include "scene.h"

#include <cmath>
#include <numbers>

#include "dots.h"
#include "lights.h"
#include "surface.h"
#include "texture_lookup.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

const Color kDefaultColor = toLight({0.8f, 0.8f, 0.8f});
constexpr float kMetalShine = 0.8f, kMetalRoughness = 0.15f;

// Behind everything and larger than the picture; of one colour there is next to nothing to shade.
void addBackdrop(const Camera& camera, const Settings& settings,
                 const std::shared_ptr<const Around>& around)
{
    const float z = camera.farthest * 1.05f;
    const auto slope = static_cast<float>(std::tan(camera.fov * std::numbers::pi / 360));
    const float size = 1.1f * (camera.fov > 0 ? z * slope : 1);
    const float x = size * camera.halfWidth, y = size * camera.halfHeight;
    const ZebPoint corners[4] = {{-x, -y, z}, {-x, y, z}, {x, y, z}, {x, -y, z}};
    zebAttributePush();
    zebLoadIdentity();
    if (settings.showsEnvironment) {
        setSky(around);
        zebShadingRate(static_cast<float>(settings.shadingRate));
    } else {
        zebSurface(zebQuark("constant"), 0);
        zebColor(toLight(*settings.background).data());
        zebShadingRate(256);
    }
    zebPolygon(4, zebQuark("point"), corners, 0);
    zebAttributePop();
}

void setPlastic(const Material& material)
{
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &material.diffuse, zebQuark("ks"),
               &material.specular, zebQuark("roughness"), &material.roughness,
               zebQuark("specularcolor"), material.specularColor.data(), 0);
}

// What a surface of the library's is as a function.
//
// isAround  in an environment, of which the library's know nothing
Material materialNamed(const std::string& surface, bool isAround)
{
    Material material;
    material.isLit = surface != "constant";
    if (surface == "metal" && !isAround) {
        material.diffuse = 0;
        material.specular = kMetalShine;
        material.roughness = kMetalRoughness;
        material.tintsHighlights = true;
    } else if (surface == "metal") {
        Facets& facets = material.facets.emplace();
        facets.rough = 0.3f;
    } else if (surface == "diffuse") {
        material.diffuse = 1;
        material.specular = 0;
    }
    return material;
}

void setNamedSurface(const std::string& name)
{
    if (name == "plastic") {
        setPlastic(Material());
    } else if (name == "metal") {
        zebSurface(zebQuark("metal"), zebQuark("ks"), &kMetalShine, zebQuark("roughness"),
                   &kMetalRoughness, 0);
    } else {
        zebSurface(zebQuark(name.c_str()), 0);
    }
}

// Functions show what the library's own surfaces can't.
bool isFunction(const Material& material, const Settings& settings,
                const std::shared_ptr<const Around>& around)
{
    if (!settings.surface.empty()) return around && settings.surface != "constant";
    return needsFunction(material) || (around && material.isLit);
}

void setSurface(const Material& material, const Settings& settings,
                const std::shared_ptr<const Around>& around,
                const std::optional<ScalarColors>& scalar)
{
    if (scalar || isFunction(material, settings, around)) {
        const bool named = !settings.surface.empty();
        setFunction(named ? materialNamed(settings.surface, around != nullptr) : material,
                    !settings.color, around, scalar);
    } else if (!settings.surface.empty()) {
        setNamedSurface(settings.surface);
    } else if (material.isLit) {
        setPlastic(material);
    } else {
        zebSurface(zebQuark("constant"), 0);
    }
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(static_cast<float>(settings.shadingRate));
}

// The values that go with the vertices of a mesh.
struct Parameters {
    std::vector<unsigned short> tokens;
    std::vector<void*> values;

    // The library takes values as pointers to what it does not change.
    void add(unsigned short token, const std::vector<float>& list)
    {
        tokens.push_back(token);
        values.push_back(const_cast<float*>(list.data()));
    }
    void add(const char* name, const std::vector<float>& list) { add(zebQuark(name), list); }
    long count() const { return static_cast<long>(tokens.size()); }
};

// Row vectors, as the library has them.
void multMatrix(const Matrix& m)
{
    ZebMatrix rows;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            rows[row][column] = static_cast<float>(m[column][row]);
        }
    }
    zebMultMatrix(rows);
}

// Faces of one kind, wherever they show.
template <class Add>
void addFaces(const FaceList& faces, const std::vector<Matrix>& copies, const Add& add)
{
    if (faces.sizes.empty()) return;
    if (copies.empty()) {
        add();
        return;
    }
    const void* const object = zebObjectBegin();
    add();
    zebObjectEnd();
    zebObjectCall(object);
    for (const Matrix& move : copies) {
        zebMatrixPush();
        multMatrix(move);
        zebObjectCall(object);
        zebMatrixPop();
    }
}

void addConvex(const FaceList& faces, const Parameters& list)
{
    zebPolygonMeshV(static_cast<long>(faces.sizes.size()), faces.sizes.data(), faces.corners.data(),
                    list.count(), list.tokens.data(), list.values.data());
}

void addConcave(const FaceList& faces, const Parameters& list)
{
    const std::vector<long> loops(faces.sizes.size(), 1);
    zebGeneralPolygonMeshV(static_cast<long>(loops.size()), loops.data(), faces.sizes.data(),
                           faces.corners.data(), list.count(), list.tokens.data(),
                           list.values.data());
}

void addCoordinates(const Mesh& mesh, Parameters& list)
{
    for (unsigned channel = 0; channel < mesh.coordinates.size(); ++channel) {
        const std::vector<float>& pairs = mesh.coordinates[channel];
        if (!pairs.empty()) list.add(coordinateToken(channel), pairs);
    }
}

void addShape(const Mesh& mesh, Parameters& list)
{
    zebOrientation(mesh.isMirrored ? ZEB_INSIDE : ZEB_OUTSIDE);
    addFaces(mesh.flatConcave, mesh.copies, [&] { addConcave(mesh.flatConcave, list); });
    list.add("normal", mesh.normals);
    addFaces(mesh.convex, mesh.copies, [&] { addConvex(mesh.convex, list); });
    addFaces(mesh.concave, mesh.copies, [&] { addConcave(mesh.concave, list); });
}

void addNurbs(const FreeForm& surface, bool withCoordinates, Parameters& list)
{
    const FreeForm::Way &u = surface.u, &v = surface.v;
    list.add(surface.isRational ? "pointw" : "point", surface.net);
    if (withCoordinates && !surface.coordinates.empty())
        list.add(coordinateToken(0), surface.coordinates);
    zebOrientation(ZEB_OUTSIDE);
    zebNurbMeshV(u.count, u.order, u.knots.data(), u.min, u.max, v.count, v.order, v.knots.data(),
                 v.min, v.max, list.count(), list.tokens.data(), list.values.data());
}

// Whether the material shows, and needs a function to do so.
bool showsByFunction(const Material& material, const Settings& settings)
{
    return settings.surface.empty() && needsFunction(material);
}

void setLook(const Material& material, const Settings& settings,
             const std::shared_ptr<const Around>& around, const std::optional<ScalarColors>& scalar)
{
    const Color color =
        settings.color ? toLight(*settings.color) : material.color.value_or(kDefaultColor);
    zebColor(color.data());
    const float opacity =
        showsByFunction(material, settings) ? material.opacity : material.plainOpacity();
    zebOpacity(Color{opacity, opacity, opacity}.data());
    setSurface(material, settings, around, scalar);
    // Of materials that do not count nothing is known.
    zebBackface(material.showsBacks || !settings.surface.empty() ? 2 : 1);
}

// varies  the opacity of the vertices is not the same all over
void setCasterLook(const Material& material, bool varies, const Settings& settings)
{
    const bool isMaterial = settings.surface.empty();
    // Half opaque or more is opaque.
    const float opacity = isMaterial ? material.opacity : 1;
    zebOpacity(Color{opacity, opacity, opacity}.data());
    setDistanceFunction(isMaterial ? material : Material(), varies || opacity < 1);
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(static_cast<float>(settings.shadingRate));
    zebBackface(2);
}

}  // namespace

void addSurroundings(const Stage& stage, const Camera& camera, const Settings& settings,
                     const std::shared_ptr<const Around>& around, const Shadows& shadows)
{
    addLights(stage, camera, settings, shadows);
    if (settings.hasBackground()) addBackdrop(camera, settings, around);
}

void setPlainLook(const Material& material, const Settings& settings,
                  const std::shared_ptr<const Around>& around,
                  const std::optional<ScalarColors>& scalar)
{
    Material plain;
    plain.color = material.color;
    plain.isLit = material.isLit;
    plain.specular = material.specular;
    setLook(plain, settings, around, scalar);
    zebOrientation(ZEB_OUTSIDE);
}

void addMesh(const Mesh& mesh, const Settings& settings,
             const std::shared_ptr<const Around>& around, const std::optional<ScalarColors>& scalar)
{
    setLook(mesh.material, settings, around, scalar);
    Parameters list;
    list.add("point", mesh.points);
    if (!settings.color && !scalar && !mesh.colors.empty()) list.add("color", mesh.colors);
    if (scalar && !mesh.scalars.empty()) list.add(scalarToken(), mesh.scalars);
    if (!mesh.opacities.empty()) list.add("opacity", mesh.opacities);
    if (showsByFunction(mesh.material, settings)) addCoordinates(mesh, list);
    addShape(mesh, list);
    if (mesh.dots.empty()) return;
    setPlainLook(mesh.material, settings, around, {});
    addDots(mesh, !settings.color, scalar);
}

void addFreeForm(const FreeForm& surface, const Settings& settings,
                 const std::shared_ptr<const Around>& around,
                 const std::optional<ScalarColors>& scalar)
{
    setLook(surface.material, settings, around, scalar);
    Parameters list;
    if (!settings.color && !surface.colors.empty()) list.add("vertexcolor", surface.colors);
    addNurbs(surface, showsByFunction(surface.material, settings), list);
}

void addCaster(const Mesh& mesh, const Settings& settings)
{
    const bool varies = settings.surface.empty() && !mesh.opacities.empty();
    setCasterLook(mesh.material, varies, settings);
    Parameters list;
    list.add("point", mesh.points);
    if (varies) list.add("opacity", mesh.opacities);
    addCoordinates(mesh, list);
    addShape(mesh, list);
    if (mesh.dots.empty()) return;
    setCasterLook(Material(), false, settings);
    addDots(mesh, false, {});
}

void addCaster(const FreeForm& surface, const Settings& settings)
{
    setCasterLook(surface.material, false, settings);
    Parameters list;
    addNurbs(surface, true, list);
}

}  // namespace zebview
