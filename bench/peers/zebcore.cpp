// Renders with zebcore: spheres, patches and NURBS as they are, meshes as triangles.
#include <zebcore/zebcore.h>

#include "host.h"

using namespace zebpeers;

namespace
{

void span(void* data, long x0, long x1, long y, const unsigned int* words)
{
    unsigned char* to = static_cast<Picture*>(data)->at(x0, y);
    for (long k = 0; k < 3 * (x1 - x0 + 1); ++k) to[k] = static_cast<unsigned char>(words[k]);
}

// What the scene's lists become in the form that the library takes them.
struct Lists {
    std::vector<Vec> centers, colors;
    std::vector<float> radii;
    struct Triangles {
        std::vector<long> sizes, indices;
    };
    std::vector<Triangles> meshes;
};

Lists makeLists(const Scene& scene)
{
    Lists lists;
    for (const Sphere& sphere : scene.spheres) {
        lists.centers.push_back(sphere.center);
        lists.radii.push_back(sphere.radius);
        lists.colors.push_back(sphere.color);
    }
    for (const Mesh& mesh : scene.meshes) {
        Lists::Triangles triangles;
        triangles.sizes.assign(mesh.triangles.size(), 3);
        for (const auto& corners : mesh.triangles) {
            triangles.indices.insert(triangles.indices.end(), corners.begin(), corners.end());
        }
        lists.meshes.push_back(std::move(triangles));
    }
    return lists;
}

void addLights()
{
    const float from[3] = {0, 0, 0};
    for (const Vec& way : kWays) {
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), way.data(),
                       zebQuark("intensity"), &kBright, 0);
    }
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &kAmbient, 0);
}

void addCurved(const Scene& scene)
{
    zebColor(scene.color.data());
    for (const Patch& patch : scene.patches) {
        zebPatch(ZEB_BICUBIC, zebQuark("point"), patch.data(), 0);
    }
    for (const Nurbs& nurbs : scene.nurbs) {
        zebNurbMesh(nurbs.size, nurbs.order, nurbs.knots.data(), 0, nurbs.end(), nurbs.size,
                    nurbs.order, nurbs.knots.data(), 0, nurbs.end(), zebQuark("point"),
                    nurbs.points.data(), 0);
    }
}

void addMeshes(const Scene& scene, const Lists& lists)
{
    for (std::size_t k = 0; k < scene.meshes.size(); ++k) {
        const Mesh& mesh = scene.meshes[k];
        const Lists::Triangles& triangles = lists.meshes[k];
        zebColor(mesh.color.data());
        zebPolygonMesh(static_cast<long>(triangles.sizes.size()), triangles.sizes.data(),
                       triangles.indices.data(), zebQuark("point"), mesh.points.data(),
                       zebQuark("normal"), mesh.normals.data(), 0);
    }
}

void render(const Scene& scene, const Lists& lists, Picture& picture)
{
    zebReset();
    zebRasterViewport(0, kSize, 0, kSize);
    zebSampleUniform(kRate, kRate);
    ZebDisplay device{};
    device.data = &picture;
    device.span = span;
    zebCustomDisplay(&device);
    zebQuirks(0);
    zebViewPerspective(kFieldOfView);
    zebTranslate(-kEye[0], -kEye[1], -kEye[2]);
    zebSceneBegin();
    addLights();
    zebSurface(zebQuark("plastic"), zebQuark("ka"), &kKa, zebQuark("kd"), &kKd, zebQuark("ks"),
               &kKs, zebQuark("roughness"), &kRoughness, 0);
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(1);
    if (!scene.spheres.empty()) {
        zebSpheres(static_cast<long>(lists.radii.size()), lists.centers.data()->data(),
                   lists.radii.data(), zebQuark("color"), lists.colors.data(), 0);
    }
    if (scene.curved()) {
        addCurved(scene);
    } else {
        addMeshes(scene, lists);
    }
    zebSceneEnd();
}

}  // namespace

int main(int argc, char** argv)
{
    return runHost(argc, argv, [](const Scene& scene) {
        const Lists lists = makeLists(scene);
        return [&scene, lists](Picture& picture) { render(scene, lists, picture); };
    });
}
