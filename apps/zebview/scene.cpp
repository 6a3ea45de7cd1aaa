#include "scene.h"

#include <cmath>
#include <numbers>

#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

const Color kDefaultColor = toLight({0.8f, 0.8f, 0.8f});

void addDistantLight(float x, float y, float z, float intensity)
{
    const ZebPoint from{x, y, z}, to{0, 0, 0};
    zebLightSource(zebQuark("distant"), zebQuark("intensity"), &intensity, zebQuark("from"), from,
                   zebQuark("to"), to, 0);
}

// Lights stand still as the eye goes around the model: what is seen is always well lit.
void addLights()
{
    zebMatrixPush();
    zebLoadIdentity();
    addDistantLight(-0.8f, 1, -1, 0.95f);
    addDistantLight(1, 0.3f, -0.7f, 0.15f);
    const float glow = 0.04f;
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &glow, 0);
    zebMatrixPop();
}

// Behind everything and larger than the picture, with next to no shading to do.
void addBackdrop(const Camera& camera, const Settings& settings)
{
    const float z = camera.farthest * 1.05f;
    const auto slope = static_cast<float>(std::tan(settings.fov * std::numbers::pi / 360));
    const float x = 1.1f * z * slope * camera.halfWidth, y = 1.1f * z * slope * camera.halfHeight;
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
    void add(const char* name, const std::vector<float>& list)
    {
        tokens.push_back(zebQuark(name));
        values.push_back(const_cast<float*>(list.data()));
    }
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

void addSurroundings(const Camera& camera, const Settings& settings)
{
    addLights();
    if (settings.background) addBackdrop(camera, settings);
}

void addMesh(const Mesh& mesh, const Settings& settings)
{
    const Color color =
        settings.color ? toLight(*settings.color) : mesh.material.color.value_or(kDefaultColor);
    zebColor(color.data());
    const float opacity = mesh.material.opacity;
    zebOpacity(Color{opacity, opacity, opacity}.data());
    Parameters list;
    list.add("point", mesh.points);
    if (!settings.color && !mesh.colors.empty()) list.add("color", mesh.colors);
    if (!mesh.opacities.empty()) list.add("opacity", mesh.opacities);
    setSurface(mesh.material, settings);
    addConcave(mesh.flatConcave, list);
    list.add("normal", mesh.normals);
    addConvex(mesh.convex, list);
    addConcave(mesh.concave, list);
}

}  // namespace zebview
