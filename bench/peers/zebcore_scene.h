// How a scene is handed to zebcore: spheres, patches and NURBS as they are, meshes as triangles.
#pragma once

#include <zebcore/zebcore.h>

#include <vector>

#include "scenes.h"

namespace zebpeers
{

// What the scene's lists become in the form that the library takes them.
struct Lists {
    std::vector<Vec> centers, colors;
    std::vector<float> radii;
    struct Triangles {
        std::vector<long> sizes, indices;
    };
    std::vector<Triangles> meshes;
};

inline Lists makeLists(const Scene& scene)
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

inline void addLights()
{
    const float from[3] = {0, 0, 0};
    for (const Vec& way : kWays) {
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), way.data(),
                       zebQuark("intensity"), &kBright, 0);
    }
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &kAmbient, 0);
}

inline void addCurved(const Scene& scene)
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

inline void addMesh(const Mesh& mesh, const Lists::Triangles& triangles)
{
    zebPolygonMesh(static_cast<long>(triangles.sizes.size()), triangles.sizes.data(),
                   triangles.indices.data(), zebQuark("point"), mesh.points.data(),
                   zebQuark("normal"), mesh.normals.data(), 0);
}

inline void addMeshes(const Scene& scene, const Lists& lists)
{
    for (std::size_t k = 0; k < scene.meshes.size(); ++k) {
        zebColor(scene.meshes[k].color.data());
        addMesh(scene.meshes[k], lists.meshes[k]);
    }
}

// Options and camera: all that comes before the world.
inline void setUp(const ZebDisplay& device, long size)
{
    zebReset();
    zebRasterViewport(0, size, 0, size);
    zebSampleUniform(kRate, kRate);
    zebCustomDisplay(&device);
    zebQuirks(0);
    zebViewPerspective(kFieldOfView);
    zebTranslate(-kEye[0], -kEye[1], -kEye[2]);
}

inline void addSurface()
{
    zebSurface(zebQuark("plastic"), zebQuark("ka"), &kKa, zebQuark("kd"), &kKd, zebQuark("ks"),
               &kKs, zebQuark("roughness"), &kRoughness, 0);
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(1);
}

inline void addShapes(const Scene& scene, const Lists& lists)
{
    if (!scene.spheres.empty()) {
        zebSpheres(static_cast<long>(lists.radii.size()), lists.centers.data()->data(),
                   lists.radii.data(), zebQuark("color"), lists.colors.data(), 0);
    }
    if (scene.curved()) {
        addCurved(scene);
    } else {
        addMeshes(scene, lists);
    }
}

}  // namespace zebpeers
