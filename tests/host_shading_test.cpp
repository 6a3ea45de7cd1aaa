// Surfaces, atmospheres and lights that are functions of the host's.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <limits>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/plain.h"
#include "support/reports.h"
#include "support/row.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

using Words = std::vector<std::uint32_t>;
using Scene = std::function<void()>;

class HostShading : public testing::Test
{
protected:
    HostShading() { zebReset(); }
    ~HostShading() override { zebReset(); }

    // Float words of a picture of what scene() puts into the world.
    static Words render(const Scene& scene, long threads = 1, bool quirks = true)
    {
        Picture picture(5);
        zebFrameBegin();
        zebRasterViewport(0, 96, 0, 72);
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        picture.attachFloat();
        zebClip(1, 100);
        zebThreads(threads);
        zebQuirks(quirks);
        zebTune(8, 16, 16);
        zebViewPerspective(40);
        zebTranslate(0, 0, 5);
        zebSceneBegin();
        scene();
        zebSceneEnd();
        zebFrameEnd();
        return picture.words();
    }
    static void addLights()
    {
        const float from[3] = {2, 3, -4}, to[3] = {0, 0, 0}, warm[3] = {1, 0.8f, 0.5f};
        const float near[3] = {-2, 1, -3};
        const float strength = 0.2f, strong = 9;
        zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &strength, 0);
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), to, 0);
        zebLightSource(zebQuark("omni"), zebQuark("from"), near, zebQuark("color"), warm,
                       zebQuark("intensity"), &strong, 0);
        zebLightSource(zebQuark("spot"), zebQuark("from"), from, zebQuark("to"), to,
                       zebQuark("intensity"), &strong, 0);
    }
    // Spheres in front of each other, a torus and a polygon, in many colours.
    static void addShapes()
    {
        const unsigned short color = zebQuark("color"), point = zebQuark("point");
        const float colors[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 0};
        zebSphere(1, -1, 1, 360, color, colors, 0);
        zebAttributePush();
        zebTranslate(0.7f, 0.3f, -0.5f);
        zebRotate(50, 1, 1, 0);
        zebSphere(0.6f, -0.4f, 0.6f, 300, color, colors, 0);
        zebTranslate(-1.5f, -0.5f, 0);
        zebTorus(0.6f, 0.2f, 0, 360, 360, 0);
        zebAttributePop();
        const float corners[12] = {-2, -1.2f, 1, 2, -1.2f, 1, 2, 1.5f, 2, -2, 1.5f, 2};
        zebPolygon(4, point, corners, 0);
    }
    static void addScene()
    {
        addLights();
        addShapes();
    }

    // What "plastic" does, with the services.
    static void plastic(ZebRow* row)
    {
        const float ka = 1, kd = 0.5f, ks = 0.5f, roughness = 0.1f;
        const Planes N(row), V(row), ambient(row), diffuse(row), specular(row);
        zebRowFacing(row, row->N, N);
        each(row, [&](long k, int c) { V[c][k] = -row->I[c][k]; });
        zebRowAmbient(row, ambient);
        zebRowDiffuse(row, N, diffuse);
        zebRowSpecular(row, N, V, roughness, specular);
        each(row, [&](long k, int c) {
            const float shine = ks * specular[c][k];
            const float light = ambient[c][k] * ka + diffuse[c][k] * kd;
            row->Ci[c][k] = row->Os[c][k] * (row->Cs[c][k] * light + shine);
        });
    }

    Reports reports;
};

// How far float words are from each other at most.
double farthest(const Words& a, const Words& b)
{
    double most = 0;
    EXPECT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); ++k) {
        float x, y;
        std::memcpy(&x, &a[k], sizeof x);
        std::memcpy(&y, &b[k], sizeof y);
        most = std::max(most, std::fabs(double{x} - double{y}));
    }
    return most;
}

bool isBlank(const Words& words)
{
    return std::all_of(words.begin(), words.end(), [&](auto word) { return word == words[0]; });
}

TEST_F(HostShading, AFunctionThatDoesWhatConstantDoesGivesItsPicture)
{
    for (const short model : {ZEB_CONSTANT, ZEB_SMOOTH}) {
        const auto with = [model](const Scene& set) {
            return render([&] {
                zebShadingModel(model);
                set();
                addShapes();
            });
        };
        const Words builtIn = with([] { zebSurface(zebQuark("constant"), 0); });
        EXPECT_FALSE(isBlank(builtIn));
        EXPECT_EQ(with([] { surface(shine); }), builtIn);
    }
}

// To rounding: the compiler of the test may take other steps between.
TEST_F(HostShading, AFunctionThatDoesWhatPlasticDoesGivesItsPicture)
{
    for (const short model : {ZEB_CONSTANT, ZEB_SMOOTH}) {
        const auto with = [model](const Scene& set) {
            return render([&] {
                zebShadingModel(model);
                set();
                addScene();
            });
        };
        const Words builtIn = with([] { zebSurface(zebQuark("plastic"), 0); });
        EXPECT_FALSE(isBlank(builtIn));
        EXPECT_LT(farthest(with([] { surface(plastic); }), builtIn), 1e-5);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(HostShading, ServicesAreTheSameByLanesAndOneByOne)
{
    const Scene scene = [] {
        light([](ZebRow* row) {
            each(row, [row](long k, int c) {
                row->L[c][k] = row->P[c][k] - (c == 1 ? 3.0f : 0);
                row->Cl[c][k] = 0.3f;
            });
        });
        surface([](ZebRow* row) {
            plastic(row);
            const Planes N(row), V(row), mirrored(row), L(row), Cl(row);
            zebRowFacing(row, row->Ng, N);
            each(row, [&](long k, int c) { V[c][k] = -row->I[c][k]; });
            zebRowPhong(row, N, V, 20, mirrored);
            each(row, [&](long k, int c) { row->Ci[c][k] += mirrored[c][k]; });
            for (long n = 0; n < zebRowLights(row); ++n) {
                EXPECT_TRUE(zebRowLight(row, n, L, Cl, nullptr));
                each(row, [&](long k, int c) { row->Ci[c][k] += 0.1f * L[c][k] * Cl[c][k]; });
            }
        });
        addScene();
    };
    const Words byLanes = render(scene);
    renderPlainly(true);
    const Words oneByOne = render(scene);
    renderPlainly(false);
    EXPECT_FALSE(isBlank(byLanes));
    EXPECT_EQ(byLanes, oneByOne);
}

TEST_F(HostShading, PicturesAndReportsAreTheSameWithAnyNumberOfThreads)
{
    for (const long flags :
         {0, ZEB_SHADE_ANYWHERE, ZEB_SHADE_OPACITY, ZEB_SHADE_OPACITY + ZEB_SHADE_ANYWHERE}) {
        const Scene scene = [flags] {
            surface(
                [](ZebRow* row) {
                    plastic(row);
                    each(row, [&](long k, int c) {
                        row->Oi[c][k] = row->P[0][k] > 0 ? 0.5f : 1;
                        if (row->P[1][k] > 0.9f) row->Ci[c][k] = std::nanf("");
                    });
                    zebSphere(1, -1, 1, 360, 0);
                },
                flags);
            light(
                [](ZebRow* row) {
                    each(row, [row](long k, int c) {
                        row->L[c][k] = row->P[c][k];
                        row->Cl[c][k] = 0.5f;
                    });
                },
                flags & ZEB_SHADE_ANYWHERE);
            addScene();
        };
        const Words one = render(scene, 1);
        std::vector<Report> told;
        for (std::size_t k = 0; k < reports.size(); ++k) told.push_back(reports[k]);
        EXPECT_GT(told.size(), 20u);
        for (const long threads : {2, 3, 7, 16}) {
            reports.clear();
            EXPECT_EQ(render(scene, threads), one) << threads << " threads, flags " << flags;
            ASSERT_EQ(reports.size(), told.size());
            for (std::size_t k = 0; k < told.size(); ++k) EXPECT_EQ(reports[k], told[k]);
        }
        reports.clear();
    }
}

TEST_F(HostShading, WithoutLeaveTheCallersThreadAloneIsCalledRowByRowInOneOrder)
{
    std::vector<std::vector<float>> orders;
    for (const long threads : {1, 4}) {
        std::vector<float> order;
        const auto caller = std::this_thread::get_id();
        render(
            [&] {
                surface([&](ZebRow* row) {
                    EXPECT_EQ(std::this_thread::get_id(), caller);
                    order.push_back(row->P[0][0]);
                    shine(row);
                });
                addShapes();
            },
            threads);
        orders.push_back(order);
    }
    EXPECT_GT(orders[0].size(), 20u);
    EXPECT_EQ(orders[0], orders[1]);
}

TEST_F(HostShading, CallsInOrderComeBetweenThoseOfProceduralsAsWithOneThread)
{
    static std::vector<std::string> heard;
    std::vector<std::vector<std::string>> orders;
    // Nobody hears anything else: neither reports nor rows of the picture.
    zebErrorHandler(static_cast<short>(0xB0E), ZEB_ERROR_PRINT);
    const ZebDisplay nowhere{};
    for (const long threads : {1, 4}) {
        heard.clear();
        zebReset();
        zebRasterViewport(0, 96, 0, 72);
        zebCustomDisplay(&nowhere);
        zebThreads(threads);
        zebTune(8, 16, 16);
        zebViewPerspective(40);
        zebTranslate(0, 0, 5);
        zebSceneBegin();
        surface([](ZebRow* row) {
            heard.push_back("row at " + std::to_string(row->P[0][0]));
            shine(row);
        });
        addShapes();
        for (const float x : {-1.4f, -0.7f, 0.0f, 0.7f, 1.4f}) {
            zebAttributePush();
            zebTranslate(x, x / 2, -1);
            const float bound[6] = {-0.2f, 0.2f, -0.2f, 0.2f, -0.2f, 0.2f};
            zebProcedural(
                nullptr, bound,
                [](void*, float) {
                    heard.push_back("procedural");
                    zebSphere(0.2f, -0.2f, 0.2f, 360, 0);
                },
                nullptr);
            zebAttributePop();
        }
        zebSceneEnd();
        orders.push_back(heard);
    }
    EXPECT_EQ(std::count(orders[0].begin(), orders[0].end(), "procedural"), 5);
    EXPECT_EQ(orders[0], orders[1]);
}

TEST_F(HostShading, WithLeaveOtherThreadsAreCalledToo)
{
    std::mutex mutex;
    std::set<std::thread::id> threads;
    for (int attempt = 0; attempt < 100 && threads.size() < 2; ++attempt) {
        render(
            [&] {
                surface(
                    [&](ZebRow* row) {
                        const std::lock_guard lock(mutex);
                        threads.insert(std::this_thread::get_id());
                        shine(row);
                    },
                    ZEB_SHADE_ANYWHERE);
                addShapes();
            },
            4);
    }
    EXPECT_GT(threads.size(), 1u);
}

TEST_F(HostShading, PlanesAreAlignedApartAndRepeatTheLastPoint)
{
    long rows = 0;
    render([&] {
        surface([&](ZebRow* row) {
            ++rows;
            ASSERT_GT(row->count, 0);
            const long size = (row->count + 15) / 16 * 16;
            std::vector<float*> planes = {row->u,  row->v,  row->s,          row->t,
                                          row->du, row->dv, zebRowPlane(row)};
            for (auto* triple : {row->P, row->N, row->Ng, row->I, row->dPdu, row->dPdv, row->Cs,
                                 row->Os, row->Ci, row->Oi}) {
                planes.insert(planes.end(), triple, triple + 3);
            }
            for (float* plane : planes) {
                ASSERT_NE(plane, nullptr);
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plane) % 64, 0u);
                for (long k = row->count; k < size; ++k) EXPECT_EQ(plane[k], plane[row->count - 1]);
            }
            // Nobody shares what another writes.
            for (std::size_t n = 0; n < planes.size(); ++n) {
                std::fill_n(planes[n], size, static_cast<float>(n));
            }
            for (std::size_t n = 0; n < planes.size(); ++n) {
                for (long k = 0; k < size; ++k) EXPECT_EQ(planes[n][k], static_cast<float>(n));
            }
            EXPECT_EQ(row->L[0], nullptr);
            EXPECT_EQ(row->Cl[0], nullptr);
            EXPECT_EQ(row->Ol[0], nullptr);
        });
        addShapes();
    });
    EXPECT_GT(rows, 10);
}

// A sphere's place follows from its parameters.
TEST_F(HostShading, ParametersAreThoseOfTheWholeSurface)
{
    for (const short model : {ZEB_CONSTANT, ZEB_SMOOTH}) {
        float least = 1, most = 0;
        render([&] {
            zebShadingModel(model);
            zebShadingRate(4);
            surface([&](ZebRow* row) {
                for (long k = 0; k < row->count; ++k) {
                    least = std::min(least, row->u[k]);
                    most = std::max(most, row->u[k]);
                    const double angle = 2 * M_PI * row->u[k];
                    const double height = M_PI * (row->v[k] - 0.5);
                    const double x = std::cos(height) * std::cos(angle);
                    const double y = std::cos(height) * std::sin(angle);
                    // The middle of a micropolygon lies a little below the surface.
                    const double room = model == ZEB_SMOOTH ? 1e-5 : 0.05;
                    EXPECT_NEAR(row->P[0][k], x, room);
                    EXPECT_NEAR(row->P[1][k], y, room);
                    EXPECT_NEAR(row->P[2][k], 5 + std::sin(height), room);
                    EXPECT_EQ(row->s[k], row->u[k]);
                    EXPECT_EQ(row->t[k], row->v[k]);
                    if (model != ZEB_SMOOTH || std::fabs(height) > 1.5) continue;
                    const double du = 2 * M_PI;
                    EXPECT_NEAR(row->dPdu[0][k], -y * du, 1e-3);
                    EXPECT_NEAR(row->dPdu[1][k], x * du, 1e-3);
                    EXPECT_NEAR(row->dPdu[2][k], 0, 1e-3);
                    EXPECT_NEAR(row->dPdv[2][k], std::cos(height) * M_PI, 1e-3);
                }
                for (long k = 1; k < row->count; ++k) {
                    // A point's neighbour in the row has the same u or the same v.
                    const float u = std::fabs(row->u[k] - row->u[k - 1]);
                    const float v = std::fabs(row->v[k] - row->v[k - 1]);
                    const bool next = u < 1e-6f ? std::fabs(v - row->dv[k]) < 1e-6f
                                                : std::fabs(u - row->du[k]) < 1e-6f;
                    EXPECT_TRUE(next || (u > 1e-6f && v > 1e-6f)) << u << ' ' << v;
                }
            });
            zebSphere(1, -1, 1, 360, 0);
        });
        EXPECT_LT(least, 0.1f);
        EXPECT_GT(most, 0.9f);
    }
}

TEST_F(HostShading, ParametersOfPolygonsArePlacesInObjectSpace)
{
    long points = 0;
    render([&] {
        zebTranslate(0.1f, 0.2f, 0);
        zebScale(2, 2, 2);
        zebTextureCoordinates(10, 0, 20, 0, 10, 4, 20, 4);
        zebShadingModel(ZEB_SMOOTH);
        surface([&](ZebRow* row) {
            for (long k = 0; k < row->count; ++k, ++points) {
                EXPECT_NEAR(row->P[0][k], 0.1 + 2 * row->u[k], 1e-5);
                EXPECT_NEAR(row->P[1][k], 0.2 + 2 * row->v[k], 1e-5);
                EXPECT_NEAR(row->s[k], 10 + 10 * row->u[k], 1e-5);
                EXPECT_NEAR(row->t[k], 4 * row->v[k], 1e-5);
                EXPECT_GT(row->du[k], 0);
                EXPECT_GT(row->dv[k], 0);
            }
        });
        const float corners[9] = {-0.5f, -0.5f, 0, 0.5f, -0.5f, 0, 0.2f, 0.5f, 0};
        zebPolygon(3, zebQuark("point"), corners, 0);
    });
    EXPECT_GT(points, 100);
}

TEST_F(HostShading, VariablesOfPrimitivesComeAsPlanesNumbersAndTexts)
{
    const unsigned short heat = zebDeclare("a row's heat", ZEB_VARYING, ZEB_FLOAT);
    const unsigned short way = zebDeclare("a row's way", ZEB_UNIFORM, ZEB_POINT);
    const unsigned short pair = zebDeclare("a row's pair", ZEB_VARYING, ZEB_PAIR);
    const unsigned short number = zebDeclare("a row's number", ZEB_UNIFORM, ZEB_INTEGER);
    const unsigned short text = zebDeclare("a row's text", ZEB_UNIFORM, ZEB_STRING);
    const float heats[4] = {0, 1, 10, 11}, ways[3] = {0.5f, 0, 0};
    const float pairs[8] = {0, 5, 1, 5, 0, 6, 1, 6};
    const unsigned short many = zebDeclare("a row's integers", ZEB_VARYING, ZEB_INTEGER);
    const int numbers[1] = {-70000}, four[4] = {1, 2, 3, 4};
    long rows = 0;
    render([&] {
        surface([&](ZebRow* row) {
            ++rows;
            const float* const heatPlane = zebRowVariable(row, heat, 0);
            const float* const first = zebRowVariable(row, pair, 0);
            const float* const second = zebRowVariable(row, pair, 1);
            const float* const x = zebRowVariable(row, way, 0);
            const float* const z = zebRowVariable(row, way, 2);
            ASSERT_TRUE(heatPlane && first && second && x && z);
            for (long k = 0; k < row->count; ++k) {
                EXPECT_NEAR(heatPlane[k], row->u[k] + 10 * row->v[k], 1e-4);
                EXPECT_NEAR(first[k], row->u[k], 1e-5);
                EXPECT_NEAR(second[k], 5 + row->v[k], 1e-5);
                EXPECT_NEAR(x[k], 0.5, 1e-6) << "in camera space";
                EXPECT_NEAR(z[k], 5, 1e-6);
            }
            EXPECT_EQ(zebRowVariable(row, heat, 1), nullptr);
            EXPECT_EQ(zebRowVariable(row, heat, -1), nullptr);
            EXPECT_EQ(zebRowVariable(row, number, 0), nullptr);
            EXPECT_EQ(zebRowVariable(row, 9999, 0), nullptr);
            ASSERT_NE(zebRowInteger(row, number), nullptr);
            EXPECT_EQ(*zebRowInteger(row, number), -70000);
            EXPECT_EQ(zebRowInteger(row, heat), nullptr);
            EXPECT_EQ(zebRowInteger(row, many), nullptr) << "who knows which of them";
            EXPECT_STREQ(zebRowString(row, text), "oak");
            EXPECT_EQ(zebRowString(row, number), nullptr);
        });
        zebSphere(1, -1, 1, 360, heat, heats, way, ways, pair, pairs, number, numbers, text, "oak",
                  many, four, 0);
    });
    EXPECT_GT(rows, 4);
    EXPECT_TRUE(reports.empty());
}

// Variables whose values are the control points' own places are where the surface is.
TEST_F(HostShading, VariablesOfControlPointsAreInterpolatedAsTheseAre)
{
    const unsigned short place = zebDeclare("a control point's place", ZEB_VERTEX, ZEB_POINT);
    const unsigned short across = zebDeclare("a control point's x", ZEB_VERTEX, ZEB_FLOAT);
    const unsigned short pair = zebDeclare("a control point's z and y", ZEB_VERTEX, ZEB_PAIR);
    const unsigned short eye = zebQuark("eye"), model = zebQuark("model");
    const unsigned short point = zebQuark("point"), pointw = zebQuark("pointw");
    std::vector<float> places, weighed, xs, pairs;
    for (int j = 0; j < 5; ++j) {
        for (int i = 0; i < 4; ++i) {
            const auto u = static_cast<float>(i), v = static_cast<float>(j);
            const float p[3] = {u - 1.5f, 0.8f * v - 1.3f, 0.3f * u * u - 0.2f * v * u};
            const float w = 1 + 0.25f * u + 0.1f * v;
            places.insert(places.end(), p, p + 3);
            weighed.insert(weighed.end(), {p[0] * w, p[1] * w, p[2] * w, w});
            xs.push_back(p[0]);
            pairs.insert(pairs.end(), {p[2], p[1]});
        }
    }
    const long corners[] = {4, 4}, indices[] = {0, 1, 5, 4, 4, 5, 9, 8};
    const float* const p = places.data();
    const std::vector<std::pair<const char*, std::function<void()>>> families = {
        {"bilinear patch",
         [&] {
             zebPatch(ZEB_BILINEAR, point, p, place, p, across, xs.data(), pair, pairs.data(), 0);
         }},
        {"bicubic patch",
         [&] {
             zebPatch(ZEB_BICUBIC, point, p, place, p, across, xs.data(), pair, pairs.data(), 0);
         }},
        {"mesh of bilinear patches",
         [&] {
             zebPatchMesh(ZEB_BILINEAR, 4, ZEB_NONPERIODIC, 5, ZEB_NONPERIODIC, point, p, place, p,
                          across, xs.data(), pair, pairs.data(), 0);
         }},
        {"mesh of bicubic patches",
         [&] {
             zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
             zebPatchMesh(ZEB_BICUBIC, 4, ZEB_PERIODIC, 5, ZEB_NONPERIODIC, point, p, place, p,
                          across, xs.data(), pair, pairs.data(), 0);
         }},
        {"NURBS of weights",
         [&] {
             zebNurbMesh(4, 2, std::vector<float>{0, 0, 0.4f, 0.6f, 1, 1}.data(), 0, 1, 5, 4,
                         std::vector<float>{0, 0, 0, 0, 0.5f, 1, 1, 1, 1}.data(), 0, 1, pointw,
                         weighed.data(), place, p, across, xs.data(), pair, pairs.data(), 0);
         }},
        {"polygons",
         [&] {
             zebPolygonMesh(2, corners, indices, point, p, place, p, across, xs.data(), pair,
                            pairs.data(), 0);
         }},
    };
    for (const auto& [name, add] : families) {
        long rows = 0;
        double farthest = 0;
        render([&] {
            zebShadingModel(ZEB_SMOOTH);
            zebRotate(20, 1, 1, 0);
            surface([&](ZebRow* row) {
                ++rows;
                const Planes local(row);
                zebRowTransform(row, eye, model, ZEB_TRANSFORM_POINT, row->P, local);
                const float* const found[6] = {
                    zebRowVariable(row, place, 0), zebRowVariable(row, place, 1),
                    zebRowVariable(row, place, 2), zebRowVariable(row, across, 0),
                    zebRowVariable(row, pair, 0),  zebRowVariable(row, pair, 1)};
                const float* const there[6] = {row->P[0], row->P[1], row->P[2],
                                               local[0],  local[2],  local[1]};
                for (int n = 0; n < 6; ++n) {
                    ASSERT_NE(found[n], nullptr) << name << ' ' << n;
                    for (long k = 0; k < row->count; ++k) {
                        const double apart = double{found[n][k]} - double{there[n][k]};
                        farthest = std::max(farthest, std::fabs(apart));
                    }
                }
                EXPECT_EQ(zebRowVariable(row, place, 3), nullptr);
                EXPECT_EQ(zebRowVariable(row, across, 1), nullptr);
                EXPECT_EQ(zebRowVariable(row, pair, -1), nullptr);
            });
            add();
        });
        EXPECT_GT(rows, 0) << name;
        EXPECT_LT(farthest, 1e-5) << name;
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(HostShading, VariablesNamedSAndTAreTheTextureCoordinates)
{
    const float ss[4] = {0, 2, 0, 2}, ts[4] = {5, 5, 6, 6};
    long rows = 0;
    render([&] {
        surface([&](ZebRow* row) {
            ++rows;
            for (long k = 0; k < row->count; ++k) {
                EXPECT_NEAR(row->s[k], 2 * row->u[k], 1e-5);
                EXPECT_NEAR(row->t[k], 5 + row->v[k], 1e-5);
            }
        });
        zebSphere(1, -1, 1, 360, zebQuark("s"), ss, zebQuark("t"), ts, 0);
    });
    EXPECT_GT(rows, 4);
}

TEST_F(HostShading, DifferencesAreThoseOfNeighboursAndExactForWhatIsLinear)
{
    long points = 0;
    render([&] {
        zebShadingModel(ZEB_SMOOTH);
        surface([&](ZebRow* row) {
            float* const sum = zebRowPlane(row);
            float* const along1 = zebRowPlane(row);
            float* const along2 = zebRowPlane(row);
            for (long k = 0; k < row->count; ++k) sum[k] = 3 * row->u[k] + 7 * row->v[k];
            zebRowDifferences(row, sum, along1, along2);
            for (long k = 0; k < row->count; ++k, ++points) {
                // One way is u, the other v.
                const float u = 3 * row->du[k], v = 7 * row->dv[k];
                const float a = std::fabs(along1[k]), b = std::fabs(along2[k]);
                const bool straight = std::fabs(a - u) < 1e-5f && std::fabs(b - v) < 1e-5f;
                const bool turned = std::fabs(a - v) < 1e-5f && std::fabs(b - u) < 1e-5f;
                EXPECT_TRUE(straight || turned) << a << ' ' << b << ' ' << u << ' ' << v;
            }
        });
        zebSphere(1, -1, 1, 360, 0);
    });
    EXPECT_GT(points, 1000);
}

// On flat and round surfaces, turned inside out or not, of whatever family.
TEST_F(HostShading, NormalsOfThePositionsThemselvesAreTheGeometricOnes)
{
    long points = 0;
    for (const short model : {ZEB_CONSTANT, ZEB_SMOOTH}) {
        for (const short side : {ZEB_OUTSIDE, ZEB_INSIDE}) {
            render([&] {
                zebShadingModel(model);
                zebOrientation(side);
                zebShadingRate(0.25f);
                surface([&](ZebRow* row) {
                    const Planes N(row);
                    zebRowNormals(row, row->P, N);
                    for (long k = 0; k < row->count; ++k, ++points) {
                        double product = 0, one = 0, other = 0;
                        for (int axis = 0; axis < 3; ++axis) {
                            const double a = N[axis][k], b = row->Ng[axis][k];
                            product += a * b;
                            one += a * a;
                            other += b * b;
                        }
                        EXPECT_GT(product, 0.9 * std::sqrt(one * other)) << row->v[k];
                    }
                });
                addShapes();
                const float patch[48] = {-1, -1,   0, -.3f, -1,   1, .3f, -1,   1, 1, -1,   0,
                                         -1, -.3f, 1, -.3f, -.3f, 1, .3f, -.3f, 1, 1, -.3f, 1,
                                         -1, .3f,  1, -.3f, .3f,  1, .3f, .3f,  1, 1, .3f,  1,
                                         -1, 1,    0, -.3f, 1,    1, .3f, 1,    1, 1, 1,    0};
                zebTranslate(0, 0, -1);
                zebPatch(ZEB_BICUBIC, zebQuark("point"), patch, 0);
            });
        }
    }
    EXPECT_GT(points, 10000);
}

TEST_F(HostShading, ColorsThatAreNoNumbersAreBlackAndReportedOnce)
{
    const auto with = [](float value) {
        return render([value] {
            surface([value](ZebRow* row) {
                each(row, [&](long k, int c) { row->Ci[c][k] = row->P[0][k] < 0 ? value : 1; });
            });
            addShapes();
        });
    };
    const Words black = with(0);
    EXPECT_TRUE(reports.empty());
    for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(with(bad), black);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 15);
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        EXPECT_EQ(reports[0].message,
                  "zebCustomSurface: a function of the host's gave what is not a number");
        reports.clear();
    }
}

TEST_F(HostShading, OpacitiesThatAreNoNumbersAreOneAndOthersEndAtZeroAndOne)
{
    const auto with = [](float opacity) {
        return render(
            [opacity] {
                surface(
                    [opacity](ZebRow* row) {
                        shine(row);
                        each(row, [&](long k, int c) {
                            row->Oi[c][k] = row->P[0][k] < 0 ? opacity : 1;
                        });
                    },
                    ZEB_SHADE_OPACITY);
                addShapes();
            },
            1, false);
    };
    const Words opaque = with(1);
    EXPECT_EQ(with(7), opaque);
    EXPECT_EQ(with(-3), with(0));
    EXPECT_NE(with(0), opaque);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(with(std::nanf("")), opaque);
    EXPECT_EQ(reports.size(), 1u);
}

TEST_F(HostShading, ColorsAndOpacitiesThatAreNoNumbersAreMendedBoth)
{
    const auto with = [](float color, float opacity) {
        return render([=] {
            surface(
                [=](ZebRow* row) {
                    each(row, [&](long k, int c) {
                        row->Ci[c][k] = color;
                        row->Oi[c][k] = opacity;
                    });
                },
                ZEB_SHADE_OPACITY);
            addShapes();
        });
    };
    const Words mended = with(0, 1);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(with(std::nanf(""), std::nanf("")), mended);
    EXPECT_EQ(reports.size(), 1u);
}

TEST_F(HostShading, OpacityIsHeardWithLeaveAlone)
{
    const auto with = [](long flags) {
        return render(
            [flags] {
                surface(
                    [](ZebRow* row) {
                        shine(row);
                        each(row, [&](long k, int c) { row->Oi[c][k] = 0.25f; });
                    },
                    flags);
                addShapes();
            },
            1, false);
    };
    const Words plain = render(
        [] {
            surface(shine);
            addShapes();
        },
        1, false);
    EXPECT_EQ(with(0), plain);
    EXPECT_NE(with(ZEB_SHADE_OPACITY), plain);
}

TEST_F(HostShading, OpacityOfAFunctionIsThatOfTheAttribute)
{
    for (const bool quirks : {false, true}) {
        const Words built = render(
            [] {
                zebSurface(zebQuark("constant"), 0);
                opacity(0.5f, 0.25f, 0.75f);
                addShapes();
            },
            1, quirks);
        const Words own = render(
            [] {
                surface(
                    [](ZebRow* row) {
                        const float Oi[3] = {0.5f, 0.25f, 0.75f};
                        each(row, [&](long k, int c) {
                            EXPECT_EQ(row->Oi[c][k], 1) << "Os before";
                            row->Oi[c][k] = Oi[c];
                            row->Ci[c][k] = Oi[c] * row->Cs[c][k];
                        });
                    },
                    ZEB_SHADE_OPACITY);
                addShapes();
            },
            1, quirks);
        EXPECT_EQ(own, built);
        EXPECT_FALSE(isBlank(own));
    }
}

TEST_F(HostShading, AnAtmosphereChangesWhatTheSurfaceGives)
{
    const auto with = [](const Scene& surfaces, const Scene& airs) {
        return render([&] {
            surfaces();
            airs();
            addScene();
        });
    };
    const float distance = 6;
    const Scene fog = [&] { zebAtmosphere(zebQuark("fog"), zebQuark("distance"), &distance, 0); };
    const Scene ownFog = [] {
        atmosphere([](ZebRow* row) {
            for (long k = 0; k < row->count; ++k) {
                double squares = 0;
                for (int c = 0; c < 3; ++c) squares += double{row->I[c][k]} * row->I[c][k];
                const auto left = static_cast<float>(std::exp(-std::sqrt(squares) / 6));
                for (int c = 0; c < 3; ++c) row->Ci[c][k] *= left;
            }
        });
    };
    const Scene builtIn = [] { zebSurface(zebQuark("plastic"), 0); };
    const Scene own = [] { surface(plastic); };
    const Words foggy = with(builtIn, fog);
    EXPECT_LT(farthest(with(builtIn, ownFog), foggy), 1e-5);
    EXPECT_LT(farthest(with(own, fog), foggy), 1e-5);
    EXPECT_LT(farthest(with(own, ownFog), foggy), 1e-5);
    const Words clear = with(builtIn, [] {});
    EXPECT_GT(farthest(foggy, clear), 0.1);
    EXPECT_EQ(with(builtIn,
                   [&] {
                       ownFog();
                       zebCustomAtmosphere(nullptr);
                   }),
              clear);
}

TEST_F(HostShading, ALightShinesAsABuiltInOneDoes)
{
    const auto with = [](const Scene& lights) {
        return render([&] {
            lights();
            zebShadingModel(ZEB_SMOOTH);
            addShapes();
        });
    };
    const float from[3] = {-2, 1, -3}, strong = 9, dim = 0.25f;
    const Words builtIn = with([&] {
        zebLightSource(zebQuark("omni"), zebQuark("from"), from, zebQuark("intensity"), &strong, 0);
        zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &dim, 0);
    });
    const auto own = [&](long flags) {
        // The world's origin lies at 5 in camera space.
        light(
            [from, strong](ZebRow* row) {
                EXPECT_EQ(row->Ci[0], nullptr);
                EXPECT_EQ(row->Oi[0], nullptr);
                for (long k = 0; k < row->count; ++k) {
                    float squares = 0;
                    for (int c = 0; c < 3; ++c) {
                        const float L = row->P[c][k] - from[c] - (c == 2 ? 5.0f : 0);
                        row->L[c][k] = L;
                        squares += L * L;
                    }
                    for (int c = 0; c < 3; ++c) row->Cl[c][k] = strong / squares;
                }
            },
            flags);
        light([dim](ZebRow* row) { each(row, [&](long k, int c) { row->Cl[c][k] = dim; }); },
              flags | ZEB_SHADE_AMBIENT);
    };
    EXPECT_LT(farthest(with([&] { own(0); }), builtIn), 1e-5);
    EXPECT_LT(farthest(with([&] { own(ZEB_SHADE_ANYWHERE); }), builtIn), 1e-5);
    EXPECT_LT(farthest(with([&] {
                           own(0);
                           surface(plastic);
                       }),
                       builtIn),
              1e-5);
}

TEST_F(HostShading, LightsAreSwitchedByTheirHandles)
{
    const auto with = [](bool on) {
        return render([on] {
            const void* const handle = light([](ZebRow* row) {
                each(row, [&](long k, int c) {
                    row->L[c][k] = c == 2 ? 1.0f : 0;
                    row->Cl[c][k] = 1;
                });
            });
            EXPECT_NE(handle, nullptr);
            if (!on) zebLightSwitch(handle, 0);
            addShapes();
        });
    };
    EXPECT_NE(with(true), with(false));
    EXPECT_TRUE(reports.empty());
}

TEST_F(HostShading, SurfacesAskLightsOneByOne)
{
    long rows = 0;
    render([&] {
        addLights();
        light([](ZebRow* row) {
            each(row, [&](long k, int c) {
                row->L[c][k] = c == 2 ? 2.0f : 0;
                row->Cl[c][k] = 0.5f;
                row->Ol[c][k] = 0.75f;
            });
        });
        surface([&](ZebRow* row) {
            ++rows;
            ASSERT_EQ(zebRowLights(row), 4) << "all but the ambient one";
            const Planes L(row), Cl(row), Ol(row);
            bool found = false;
            for (long n = 0; n < 4; ++n) {
                ASSERT_TRUE(zebRowLight(row, n, L, Cl, Ol));
                for (long k = 0; k < row->count; ++k) {
                    EXPECT_NEAR(std::hypot(L[0][k], L[1][k], L[2][k]), 1, 1e-5);
                }
                if (Ol[0][0] == 1) continue;
                found = true;
                each(row, [&](long k, int c) {
                    EXPECT_EQ(L[c][k], c == 2 ? -1 : 0);
                    EXPECT_EQ(Cl[c][k], 0.5f);
                    EXPECT_EQ(Ol[c][k], 0.75f);
                });
            }
            EXPECT_TRUE(found);
            EXPECT_FALSE(zebRowLight(row, 4, L, Cl, Ol));
            EXPECT_FALSE(zebRowLight(row, -1, L, Cl, Ol));
        });
        addShapes();
    });
    EXPECT_GT(rows, 10);
    EXPECT_TRUE(reports.empty());
}

TEST_F(HostShading, LightThatIsNoNumberIsNone)
{
    const auto with = [](float color, float way) {
        return render([=] {
            light([=](ZebRow* row) {
                each(row, [&](long k, int c) {
                    row->L[c][k] = c == 2 ? way : 0;
                    row->Cl[c][k] = color;
                });
            });
            addShapes();
        });
    };
    const Words dark = with(0, 1);
    EXPECT_EQ(with(std::nanf(""), 1), dark);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 15);
    EXPECT_EQ(reports[0].message.rfind("zebCustomLight: ", 0), 0u);
    EXPECT_EQ(with(1, std::nanf("")), dark);
    EXPECT_EQ(reports.size(), 2u);
}

TEST_F(HostShading, LightFromNowhereIsNone)
{
    const auto with = [](float way) {
        return render([=] {
            zebSurface(zebQuark("metal"), 0);
            light([=](ZebRow* row) {
                each(row, [&](long k, int c) {
                    row->L[c][k] = c == 2 ? way : 0;
                    row->Cl[c][k] = 1;
                });
            });
            addShapes();
        });
    };
    const Words dark = with(0);
    EXPECT_NE(with(1), dark);
    const Words none = render([] {
        zebSurface(zebQuark("metal"), 0);
        addShapes();
    });
    EXPECT_EQ(dark, none);
    EXPECT_TRUE(reports.empty());
}

TEST_F(HostShading, LightsCannotAskForLight)
{
    bool asked = false;
    render([&] {
        light([&](ZebRow* row) {
            const Planes found(row);
            asked = true;
            const std::size_t before = reports.size();
            zebRowDiffuse(row, row->N, found);
            ASSERT_EQ(reports.size(), before + 1);
            EXPECT_EQ(reports.last().code, 8);
            EXPECT_EQ(reports.last().message, "zebRowDiffuse: a light cannot ask for light");
        });
        addShapes();
    });
    EXPECT_TRUE(asked);
}

TEST_F(HostShading, ServicesAreForTheRowUnderWayAlone)
{
    ZebRow* kept = nullptr;
    ZebRow copy{};
    bool called = false;
    render([&] {
        surface([&](ZebRow* row) {
            kept = row;
            copy = *row;
            const std::size_t before = reports.size();
            EXPECT_EQ(zebRowPlane(&copy), nullptr);
            EXPECT_EQ(zebRowPlane(nullptr), nullptr);
            ASSERT_EQ(reports.size(), before + 2);
            EXPECT_EQ(reports.last().code, 8);
            EXPECT_EQ(reports.last().message, "zebRowPlane");
            reports.clear();
            called = true;
        });
        zebSphere(1, -1, 1, 360, 0);
    });
    ASSERT_TRUE(called);
    EXPECT_EQ(zebRowPlane(kept), nullptr);
    EXPECT_EQ(reports.last().code, 8);
}

TEST_F(HostShading, PlanesThatAreNotTheRowsAreRefused)
{
    bool called = false;
    render([&] {
        surface([&](ZebRow* row) {
            if (std::exchange(called, true)) return;
            const Planes good(row);
            std::vector<float> own(static_cast<std::size_t>(row->count));
            float* const bad[3] = {good[0], good[1], own.data()};
            float* const within[3] = {good[0], good[1], good[2] + 1};
            float* const null[3] = {good[0], good[1], nullptr};
            std::size_t expected = reports.size();
            for (float* const* planes : {bad, within, null, static_cast<float* const*>(nullptr)}) {
                zebRowDiffuse(row, planes, good);
                zebRowDiffuse(row, good, planes);
                zebRowAmbient(row, planes);
                zebRowFacing(row, planes, good);
                zebRowNormals(row, good, planes);
                EXPECT_FALSE(zebRowLight(row, 0, planes, good, nullptr));
                expected += 6;
            }
            zebRowDifferences(row, own.data(), good[0], good[1]);
            ASSERT_EQ(reports.size(), expected + 1);
            EXPECT_EQ(reports.last().code, 10);
            EXPECT_EQ(reports.last().message, "zebRowDifferences: not a plane of the row");
        });
        addScene();
    });
    EXPECT_TRUE(called);
}

TEST_F(HostShading, CallsOfOthersAreRefused)
{
    long refused = 0;
    const float white[3] = {1, 1, 1};
    const Words words = render([&] {
        surface([&](ZebRow* row) {
            shine(row);
            if (refused) return;
            const std::vector<std::pair<const char*, Scene>> calls = {
                {"zebColor", [&] { zebColor(white); }},
                {"zebSphere", [] { zebSphere(1, -1, 1, 360, 0); }},
                {"zebQuark", [] { EXPECT_EQ(zebQuark("color"), 0); }},
                {"zebDeclare", [] { zebDeclare("x", ZEB_UNIFORM, ZEB_FLOAT); }},
                {"zebArray", [&] { zebArray(white, 3, 0); }},
                {"zebSceneEnd", [] { zebSceneEnd(); }},
                {"zebLastError", [] { EXPECT_EQ(zebLastError(), 0); }},
                {"zebErrorHandler", [] { zebErrorHandler(ZEB_ALL, ZEB_ERROR_IGNORE); }},
                {"zebWindowEvents", [] { EXPECT_EQ(zebWindowEvents(0), 0); }},
                {"zebCustomSurface", [] { surface(shine); }},
                {"zebThreads", [] { zebThreads(1); }},
                {"zebTranslate", [] { zebTranslate(1, 1, 1); }},
            };
            for (const auto& [name, call] : calls) {
                const std::size_t before = reports.size();
                call();
                ASSERT_EQ(reports.size(), before + 1) << name;
                EXPECT_EQ(reports.last().code, 8) << name;
                EXPECT_EQ(reports.last().message, name);
                ++refused;
            }
            EXPECT_GT(zebVersion(), 0);
            reports.clear();
        });
        addShapes();
    });
    EXPECT_EQ(refused, 12);
    EXPECT_EQ(words, render([] {
                  surface(shine);
                  addShapes();
              }));
}

// It is a callback of its own: what it calls is legal, and it may call often.
TEST_F(HostShading, AHandlerThatHearsOfWhatShadingReportsMayCallIn)
{
    static int heard;
    heard = 0;
    zebCustomErrorHandler(ZEB_ERROR, [](long code, long, const char*) {
        EXPECT_EQ(code, 8);
        EXPECT_NE(zebQuark("color"), 0);
        zebLastError();
        zebShadingRate(1);
        ++heard;
    });
    render([] {
        surface([](ZebRow* row) {
            shine(row);
            if (heard == 0) zebSphere(1, -1, 1, 360, 0);
        });
        addShapes();
    });
    EXPECT_EQ(heard, 1);
}

TEST_F(HostShading, CancellingEndsThePicture)
{
    long rows = 0;
    render([&] {
        surface([&](ZebRow*) {
            if (++rows == 3) zebCancel();
        });
        addShapes();
    });
    EXPECT_LT(rows, 20);
    zebReset();
}

class Freed : public HostShading
{
protected:
    ZebShader counted(void (*shade)(void*, ZebRow*) = nothing)
    {
        ZebShader made{};
        made.data = &frees;
        made.shade = shade;
        made.free = [](void* data) { ++*static_cast<int*>(data); };
        return made;
    }
    static void nothing(void*, ZebRow*) {}

    int frees = 0;
};

TEST_F(Freed, WhenNothingUsesItAnyMore)
{
    const ZebShader shader = counted();
    zebAttributePush();
    zebCustomSurface(&shader);
    zebAttributePush();
    zebAttributePop();
    EXPECT_EQ(frees, 0);
    zebAttributePop();
    EXPECT_EQ(frees, 1);
    zebCustomSurface(&shader);
    zebCustomAtmosphere(&shader);
    zebCustomAtmosphere(nullptr);
    EXPECT_EQ(frees, 2);
    zebReset();
    EXPECT_EQ(frees, 3);
}

TEST_F(Freed, AfterThePicturesThatItIsIn)
{
    for (const long threads : {1, 4}) {
        frees = 0;
        render(
            [&] {
                const ZebShader shader = counted();
                zebAttributePush();
                zebCustomSurface(&shader);
                zebSphere(1, -1, 1, 360, 0);
                zebAttributePop();
                zebCustomLight(&shader);
                EXPECT_EQ(frees, 0);
            },
            threads);
        EXPECT_EQ(frees, 2);
    }
}

TEST_F(Freed, OnTheCallersThreadAndMayCallIn)
{
    static std::thread::id thread;
    static bool inSurface;
    ZebShader shader = counted();
    shader.flags = ZEB_SHADE_ANYWHERE;
    shader.free = [](void* data) {
        ++*static_cast<int*>(data);
        thread = std::this_thread::get_id();
        inSurface = true;
        zebSurface(zebQuark("metal"), 0);
    };
    render([&] { zebCustomSurface(&shader), addShapes(); }, 4);
    EXPECT_EQ(frees, 1);
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_TRUE(inSurface);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Freed, WhenItsCallIsRefused)
{
    ZebShader shader = counted();
    shader.flags = 1024;
    zebCustomSurface(&shader);
    EXPECT_EQ(frees, 1);
    EXPECT_EQ(reports.last().code, 10);
    EXPECT_EQ(reports.last().message, "zebCustomSurface: unknown flags 1024");
    shader = counted(nullptr);
    EXPECT_EQ(zebCustomLight(&shader), nullptr);
    EXPECT_EQ(frees, 2);
    EXPECT_EQ(reports.last().message, "zebCustomLight: shader has no function");
    zebSceneBegin();
    zebObjectBegin();
    shader = counted();
    zebCustomAtmosphere(&shader);
    EXPECT_EQ(frees, 3);
    EXPECT_EQ(reports.last().code, 6);
    zebReset();
    zebCustomSurface(nullptr);
    EXPECT_EQ(reports.last().code, 10);
    EXPECT_EQ(reports.last().message, "zebCustomSurface: shader is null");
    EXPECT_EQ(zebCustomLight(nullptr), nullptr);
    EXPECT_EQ(reports.last().message, "zebCustomLight: shader is null");
}

}  // namespace

}  // namespace zebtest
