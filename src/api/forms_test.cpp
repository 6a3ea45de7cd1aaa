// The two forms of every call with a parameter list: both hand on what they are given, all of it
// and in its place. The operation behind them, called with the same arguments, says what is right.

#include <functional>

#include "hider/scene.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/scene.h"

using namespace zeb;

namespace
{

// A parameter list: pairs of a token and values.
struct Parameters {
    std::vector<unsigned short> tokens;
    std::vector<std::vector<float>> numbers;
    std::vector<void*> values;

    void add(unsigned short token, std::vector<float> floats)
    {
        tokens.push_back(token);
        numbers.push_back(std::move(floats));
        values.clear();
        for (auto& each : numbers) values.push_back(each.data());
    }
    long n() const { return static_cast<long>(tokens.size()); }
};

// Colours and opacities that differ from corner to corner.
Parameters colored(std::size_t corners)
{
    std::vector<float> colors, opacities;
    for (std::size_t k = 0; k < corners; ++k) {
        const float t = static_cast<float>(k) / static_cast<float>(corners);
        colors.insert(colors.end(), {1 - t, t, 0.5f * t});
        opacities.insert(opacities.end(), {1, 1 - 0.5f * t, 1});
    }
    Parameters list;
    list.add(kQColor, colors);
    list.add(kQOpacity, opacities);
    return list;
}

Parameters coloredPoints(unsigned short name, const std::vector<float>& points, std::size_t corners)
{
    Parameters list = colored(corners);
    list.add(name, points);
    return list;
}

// A sheet of nu x nv points that bends over the picture; of homogeneous ones with unlike weights.
std::vector<float> sheet(int nu, int nv, bool weights = false)
{
    std::vector<float> points;
    for (int j = 0; j < nv; ++j) {
        for (int i = 0; i < nu; ++i) {
            const float u = static_cast<float>(i) / static_cast<float>(nu - 1);
            const float v = static_cast<float>(j) / static_cast<float>(nv - 1);
            const float w = weights ? 1 + u * v : 1;
            const float p[4] = {4 + 20 * u + 10 * v * v, 3 + 8 * u * u + 24 * v, 0.3f + 0.3f * u,
                                1};
            for (int k = 0; k < (weights ? 4 : 3); ++k) points.push_back(p[k] * w);
        }
    }
    return points;
}

// The record that an operation belongs to.
template <class Result, class... Args>
Scene& owner(Result (Scene::*)(Args...))
{
    return *gScene;
}
template <class Result, class... Args>
Attrib& owner(Result (Attrib::*)(Args...))
{
    return *gAttrib;
}

class Forms : public zebtest::RasterTest
{
protected:
    std::vector<std::uint32_t> render(const std::function<void()>& act)
    {
        zebReset();
        raster(40, 40);
        zebSceneBegin();
        zebShadingModel(ZEB_SMOOTH);
        zebSurface(ball ? kQDiffuse : kQConstant, 0);
        if (aslant) {
            zebTranslate(20, 20, 0.5f);
            zebScale(1, 1, 0.02f);
            zebRotate(50, 1, 0.7f, 0);
        }
        if (ball) zebLightSource(kQAmbient, 0);
        act();
        if (ball) zebSphere(15, -15, 15, 360, 0);
        zebSceneEnd();
        return picture.words();
    }

    // The operation shows something, and each form, with the arguments that lead and the list that
    // ends them, shows the same.
    template <class Operation, class Plain, class Array, class... Lead>
    void expectSame(Operation operation, Plain plain, Array array, const Parameters& list,
                    Lead... lead)
    {
        const auto& t = list.tokens;
        const auto& v = list.values;
        const auto expected =
            render([&] { (owner(operation).*operation)(lead..., list.n(), t.data(), v.data()); });
        EXPECT_GT(picture.sum(3), 10);
        EXPECT_EQ(render([&] { array(lead..., list.n(), t.data(), v.data()); }), expected)
            << "V form";
        EXPECT_EQ(render([&] {
                      if (list.n() == 2) {
                          plain(lead..., int{t[0]}, v[0], int{t[1]}, v[1], 0);
                      } else {
                          plain(lead..., int{t[0]}, v[0], int{t[1]}, v[1], int{t[2]}, v[2], 0);
                      }
                  }),
                  expected)
            << "plain form";
        EXPECT_TRUE(reports.empty());
    }

    bool aslant = false;
    bool ball = false;  // under a light
};

}  // namespace

TEST_F(Forms, Polygons)
{
    const std::vector<float> corners{5, 4,  .5f, 30, 6,  .4f, 36, 20, .3f, 24, 35, .5f,
                                     6, 30, .6f, 14, 12, .5f, 12, 20, .5f, 20, 18, .5f};
    expectSame(&Scene::polygon, zebPolygon, zebPolygonV, coloredPoints(kQPoint, corners, 5), 5L);
    static const long loops[2] = {5, 3};
    expectSame(&Scene::generalPolygon, zebGeneralPolygon, zebGeneralPolygonV,
               coloredPoints(kQPoint, corners, 8), 2L, loops);
}

TEST_F(Forms, PolygonMeshes)
{
    // Each array would do for any other.
    static const long sizes[13] = {3, 4, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
    static const long faces[13] = {0, 1, 4, 1, 2, 5, 4, 3, 4, 7, 4, 5, 8};
    expectSame(&Scene::polygonMesh, zebPolygonMesh, zebPolygonMeshV,
               coloredPoints(kQPoint, sheet(3, 3), 9), 4L, sizes, faces);
    static const long loops[2] = {2, 1}, corners[10] = {0, 2, 8, 6, 1, 5, 4, 3, 7, 4};
    static const long counts[3] = {4, 3, 3};
    expectSame(&Scene::generalPolygonMesh, zebGeneralPolygonMesh, zebGeneralPolygonMeshV,
               coloredPoints(kQPoint, sheet(3, 3), 9), 2L, loops, counts, corners);
}

TEST_F(Forms, Patches)
{
    expectSame(&Scene::patch, zebPatch, zebPatchV, coloredPoints(kQPoint, sheet(2, 2), 4),
               short{ZEB_BILINEAR});
    expectSame(&Scene::patch, zebPatch, zebPatchV, coloredPoints(kQPoint, sheet(4, 4), 4),
               short{ZEB_BICUBIC});
    const Parameters mesh = coloredPoints(kQPoint, sheet(4, 7), 4);
    expectSame(&Scene::patchMesh, zebPatchMesh, zebPatchMeshV, mesh, short{ZEB_BILINEAR}, 4L,
               short{ZEB_NONPERIODIC}, 7L, short{ZEB_PERIODIC});
}

// The knots of each direction would do for the other.
TEST_F(Forms, Nurbs)
{
    static const float u[9] = {0, 0, 0, 0.4f, 1, 1, 1, 2, 3}, v[9] = {0, 0, 0, 0.7f, 1, 1, 1, 4, 5};
    expectSame(&Scene::nurb, zebNurb, zebNurbV, coloredPoints(kQPointw, sheet(3, 4, true), 4), 3L,
               u, 0.1f, 0.4f, 4L, v, 0.75f, 0.9f);
    expectSame(&Scene::nurbMesh, zebNurbMesh, zebNurbMeshV,
               coloredPoints(kQPointw, sheet(4, 5, true), 4), 4L, 3L, u, 0.1f, 0.8f, 5L, 2L, v,
               0.2f, 0.9f);
}

TEST_F(Forms, Quadrics)
{
    aslant = true;
    const Parameters list = colored(4);
    static const float from[3] = {11, 2, -6}, to[3] = {5, -3, 9};
    expectSame(&Scene::sphere, zebSphere, zebSphereV, list, 14.0f, -5.0f, 9.0f, 230.0f);
    expectSame(&Scene::cone, zebCone, zebConeV, list, 10.0f, 15.0f, 8.0f, 230.0f);
    expectSame(&Scene::cylinder, zebCylinder, zebCylinderV, list, 10.0f, -5.0f, 9.0f, 230.0f);
    expectSame(&Scene::hyperboloid, zebHyperboloid, zebHyperboloidV, list, from, to, 230.0f);
    expectSame(&Scene::paraboloid, zebParaboloid, zebParaboloidV, list, 9.0f, 3.0f, 14.0f, 230.0f);
    expectSame(&Scene::disk, zebDisk, zebDiskV, list, 4.0f, 14.0f, 230.0f);
    expectSame(&Scene::torus, zebTorus, zebTorusV, list, 12.0f, 4.0f, 20.0f, 190.0f, 230.0f);
}

TEST_F(Forms, Shaders)
{
    aslant = ball = true;
    Parameters light, surface, fog;
    light.add(kQIntensity, {2});
    light.add(kQColor, {0.3f, 0.6f, 0.9f});
    light.add(kQTo, {0.5f, 0.25f, 1});
    expectSame(&Attrib::lightSource, zebLightSource, zebLightSourceV, light, kQDistant);
    surface.add(kQKa, {0.25f});
    surface.add(kQKd, {0.75f});
    surface.add(kQSpecularColor, {0.3f, 0.6f, 0.9f});
    expectSame(&Attrib::surface, zebSurface, zebSurfaceV, surface, kQPlastic);
    fog.add(kQDistance, {0.5f});
    fog.add(kQColor, {0.3f, 0.6f, 0.9f});
    expectSame(&Attrib::atmosphere, zebAtmosphere, zebAtmosphereV, fog, kQFog);
}

// Off again by its handle, a light leaves no trace.
TEST_F(Forms, LightsAnswerTheirHandles)
{
    aslant = ball = true;
    const auto without = render([] {});
    EXPECT_NE(render([] { zebLightSource(kQDistant, 0); }), without);
    EXPECT_EQ(render([] { zebLightSwitch(zebLightSource(kQDistant, 0), 0); }), without);
    EXPECT_EQ(render([] { zebLightSwitch(zebLightSourceV(kQDistant, 0, nullptr, nullptr), 0); }),
              without);
}
