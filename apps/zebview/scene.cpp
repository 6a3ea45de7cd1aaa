#include "scene.h"

#include <cmath>
#include <numbers>

#include "surface.h"
#include "texture_lookup.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

const Color kDefaultColor = toLight({0.8f, 0.8f, 0.8f});

void addDistantLight(const Vector& from, const Color& color)
{
    const ZebPoint start{static_cast<float>(from.x), static_cast<float>(from.y),
                         static_cast<float>(from.z)};
    const ZebPoint end{0, 0, 0};
    zebLightSource(zebQuark("distant"), zebQuark("color"), color.data(), zebQuark("from"), start,
                   zebQuark("to"), end, 0);
}

// A key light from the upper left and a fill from the right, where z points to the eye.
void addOwnLights(double towardsEye)
{
    const Color key{0.95f, 0.95f, 0.95f}, fill{0.15f, 0.15f, 0.15f}, glow{0.04f, 0.04f, 0.04f};
    addDistantLight({-0.8, 1, towardsEye}, key);
    addDistantLight({1, 0.3, 0.7 * towardsEye}, fill);
    zebLightSource(zebQuark("ambient"), zebQuark("color"), glow.data(), 0);
}

void addLamp(const Lamp& lamp)
{
    const Vector aim = lamp.from + lamp.direction;
    const ZebPoint from{static_cast<float>(lamp.from.x), static_cast<float>(lamp.from.y),
                        static_cast<float>(lamp.from.z)};
    const ZebPoint to{static_cast<float>(aim.x), static_cast<float>(aim.y),
                      static_cast<float>(aim.z)};
    const auto cone = static_cast<float>(lamp.coneAngle);
    const auto delta = static_cast<float>(lamp.coneDeltaAngle);
    const float even = 0;
    switch (lamp.kind) {
        case Lamp::kAmbient:
            zebLightSource(zebQuark("ambient"), zebQuark("color"), lamp.color.data(), 0);
            break;
        case Lamp::kDistant:
            addDistantLight(-lamp.direction, lamp.color);
            break;
        case Lamp::kOmni:
            zebLightSource(zebQuark("omni"), zebQuark("color"), lamp.color.data(), zebQuark("from"),
                           from, 0);
            break;
        case Lamp::kSpot:
            zebLightSource(zebQuark("spot"), zebQuark("color"), lamp.color.data(), zebQuark("from"),
                           from, zebQuark("to"), to, zebQuark("coneangle"), &cone,
                           zebQuark("conedeltaangle"), &delta, zebQuark("beamdistribution"), &even,
                           0);
            break;
    }
}

// Lights of the camera stand still as the eye goes around the model: what is seen is always well
// lit.
void addLights(const Stage& stage, const Settings& settings)
{
    if (settings.lightFor(!stage.lamps.empty()) == Light::kFile) {
        for (const Lamp& lamp : stage.lamps) addLamp(lamp);
    } else if (settings.light == Light::kModel) {
        addOwnLights(1);
    } else {
        zebMatrixPush();
        zebLoadIdentity();
        addOwnLights(-1);
        zebMatrixPop();
    }
}

// Behind everything and larger than the picture, with next to no shading to do.
void addBackdrop(const Camera& camera, const Settings& settings)
{
    const float z = camera.farthest * 1.05f;
    const auto slope = static_cast<float>(std::tan(camera.fov * std::numbers::pi / 360));
    const float size = 1.1f * (camera.fov > 0 ? z * slope : 1);
    const float x = size * camera.halfWidth, y = size * camera.halfHeight;
    const ZebPoint corners[4] = {{-x, -y, z}, {-x, y, z}, {x, y, z}, {x, -y, z}};
    zebAttributePush();
    zebLoadIdentity();
    zebSurface(zebQuark("constant"), 0);
    zebColor(toLight(*settings.background).data());
    zebShadingRate(256);
    zebPolygon(4, zebQuark("point"), corners, 0);
    zebAttributePop();
}

void setPlastic(const Material& material)
{
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &material.diffuse, zebQuark("ks"),
               &material.specular, zebQuark("roughness"), &material.roughness,
               zebQuark("specularcolor"), material.specularColor.data(), 0);
}

void setSurface(const Material& material, const Settings& settings)
{
    const float shine = 0.8f, dull = 0.15f;
    if (settings.surface == "plastic") {
        setPlastic(Material());
    } else if (settings.surface == "metal") {
        zebSurface(zebQuark("metal"), zebQuark("ks"), &shine, zebQuark("roughness"), &dull, 0);
    } else if (!settings.surface.empty()) {
        zebSurface(zebQuark(settings.surface.c_str()), 0);
    } else if (needsFunction(material)) {
        setFunction(material, !settings.color);
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

void addConvex(const FaceList& faces, const Parameters& list)
{
    if (faces.sizes.empty()) return;
    zebPolygonMeshV(static_cast<long>(faces.sizes.size()), faces.sizes.data(), faces.corners.data(),
                    list.count(), list.tokens.data(), list.values.data());
}

void addConcave(const FaceList& faces, const Parameters& list)
{
    if (faces.sizes.empty()) return;
    const std::vector<long> loops(faces.sizes.size(), 1);
    zebGeneralPolygonMeshV(static_cast<long>(loops.size()), loops.data(), faces.sizes.data(),
                           faces.corners.data(), list.count(), list.tokens.data(),
                           list.values.data());
}

}  // namespace

void addSurroundings(const Stage& stage, const Camera& camera, const Settings& settings)
{
    addLights(stage, settings);
    if (settings.background) addBackdrop(camera, settings);
}

void addMesh(const Mesh& mesh, const Settings& settings)
{
    const Color color =
        settings.color ? toLight(*settings.color) : mesh.material.color.value_or(kDefaultColor);
    zebColor(color.data());
    const bool byFunction = settings.surface.empty() && needsFunction(mesh.material);
    const float opacity = byFunction ? mesh.material.opacity : mesh.material.plainOpacity();
    zebOpacity(Color{opacity, opacity, opacity}.data());
    Parameters list;
    list.add("point", mesh.points);
    if (!settings.color && !mesh.colors.empty()) list.add("color", mesh.colors);
    if (!mesh.opacities.empty()) list.add("opacity", mesh.opacities);
    for (unsigned channel = 0; byFunction && channel < mesh.coordinates.size(); ++channel) {
        const std::vector<float>& pairs = mesh.coordinates[channel];
        if (!pairs.empty()) list.add(coordinateToken(channel), pairs);
    }
    setSurface(mesh.material, settings);
    // Of materials that do not count nothing is known.
    zebBackface(mesh.material.showsBacks || !settings.surface.empty() ? 2 : 1);
    zebOrientation(mesh.isMirrored ? ZEB_INSIDE : ZEB_OUTSIDE);
    addConcave(mesh.flatConcave, list);
    list.add("normal", mesh.normals);
    addConvex(mesh.convex, list);
    addConcave(mesh.concave, list);
}

}  // namespace zebview
