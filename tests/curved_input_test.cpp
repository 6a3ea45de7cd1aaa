// Curved surfaces through the interface: what is drawn, what is refused, and in which words.

#include <limits>

#include "support/curved.h"

namespace zebtest
{

namespace
{

class CurvedInput : public CurvedTest
{
};

}  // namespace

TEST_F(CurvedInput, EveryCallDrawsItsSurface)
{
    for (const bool array : {false, true}) {
        SCOPED_TRACE(array);
        const auto expect = [&](double pixels, const std::function<void()>& call) {
            EXPECT_NEAR(area(call), pixels, 0.03 * pixels);
        };
        expect(900, [=] { patch(array, ZEB_BILINEAR, gCorners); });
        expect(900, [=] { patch(array, ZEB_BICUBIC, gNet.data()); });
        expect(900, [=] {
            mesh(array, ZEB_BILINEAR, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, gNet.data());
        });
        expect(900, [=] {
            mesh(array, ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, gNet.data());
        });
        expect(900, [=] { nurb(array, gGoodLine, gGoodLine, gCorners); });
        expect(900, [=] { nurbMesh(array, gGoodCubic, gGoodCubic, gNet.data()); });
        const double areas[] = {225 * kCircle, 225 * kCircle,        0, 0, 225 * kCircle,
                                225 * kCircle, (400 - 100) * kCircle};
        const double sides[] = {225 * kCircle, 225, 600, 600, 200, 0, 0};
        for (std::size_t i = 0; i < 7; ++i) {
            const Quadric& q = quadrics()[i];
            SCOPED_TRACE(q.name);
            const auto call = [&] { (array ? q.array : q.plain)(q.good.data()); };
            if (areas[i] > 0) expect(areas[i], call);
            if (sides[i] > 0) {
                expect(sides[i], [&] {
                    zebRotate(90, 1, 0, 0);
                    call();
                });
            }
        }
    }
    EXPECT_TRUE(reports.empty()) << reports.last().message;
}

TEST_F(CurvedInput, NumbersOfQuadricsMustBeNumbers)
{
    for (const Quadric& q : quadrics()) {
        for (std::size_t i = 0; i < q.good.size(); ++i) {
            for (const float bad : {kNan, kInf, -kInf}) {
                SCOPED_TRACE("argument " + std::to_string(i));
                std::vector<float> numbers = q.good;
                numbers[i] = bad;
                expectRefused(q.name,
                              [&](bool array) { (array ? q.array : q.plain)(numbers.data()); });
            }
        }
    }
    expectRefused("zebHyperboloid", [](bool array) {
        array ? zebHyperboloidV(nullptr, gP2, 360, 0, nullptr, nullptr)
              : zebHyperboloid(nullptr, gP2, 360, 0);
    });
    expectRefused("zebHyperboloid", [](bool array) {
        array ? zebHyperboloidV(gP1, nullptr, 360, 0, nullptr, nullptr)
              : zebHyperboloid(gP1, nullptr, 360, 0);
    });
    expectRefused("zebHyperboloid", [](bool array) {
        array ? zebHyperboloidV(gP1, gBadPoint, 360, 0, nullptr, nullptr)
              : zebHyperboloid(gP1, gBadPoint, 360, 0);
    });
}

TEST_F(CurvedInput, VariablesOfQuadricsMustBeReadable)
{
    static const unsigned short heat = zebDeclare("curved test: heat", ZEB_VARYING, ZEB_FLOAT);
    static const float bad[4] = {0, 1, kNan, 3};
    void* const values[] = {const_cast<float*>(bad)};
    void* const null[] = {nullptr};
    expectRefused("zebSphere", [&](bool array) {
        array ? zebSphereV(15, -15, 15, 360, 1, &heat, values)
              : zebSphere(15, -15, 15, 360, int{heat}, bad, 0);
    });
    expectRefused("zebTorus", [&](bool array) {
        array ? zebTorusV(15, 5, 0, 360, 360, 1, &heat, null)
              : zebTorus(15, 5, 0, 360, 360, int{heat}, static_cast<void*>(nullptr), 0);
    });
    const std::pair<std::string, std::function<void()>> calls[] = {
        {"zebSphereV", [&] { zebSphereV(15, -15, 15, 360, 1, nullptr, values); }},
        {"zebConeV", [&] { zebConeV(15, 15, 15, 360, 1, &heat, nullptr); }},
        {"zebCylinderV", [&] { zebCylinderV(15, -15, 15, 360, -1, &heat, values); }},
        {"zebHyperboloidV", [&] { zebHyperboloidV(gP1, gP2, 360, kMost, &heat, values); }},
        {"zebParaboloidV", [&] { zebParaboloidV(15, 0, 10, 360, 1, nullptr, nullptr); }},
        {"zebDiskV", [&] { zebDiskV(0, 15, 360, 1, nullptr, nullptr); }},
        {"zebTorusV", [&] { zebTorusV(15, 5, 0, 360, 360, 1, nullptr, nullptr); }},
        {"zebPatchV", [&] { zebPatchV(ZEB_BILINEAR, 1, nullptr, nullptr); }},
        {"zebPatchMeshV",
         [&] {
             zebPatchMeshV(ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, -2, &heat, values);
         }},
        {"zebNurbV", [&] { zebNurbV(2, gLine, 0, 1, 2, gLine, 0, 1, 1, nullptr, nullptr); }},
        {"zebNurbMeshV",
         [&] { zebNurbMeshV(2, 2, gLine, 0, 1, 2, 2, gLine, 0, 1, 1, &heat, nullptr); }},
    };
    for (const auto& [name, call] : calls) {
        SCOPED_TRACE(name);
        reports.clear();
        EXPECT_EQ(area(call), 0);
        ASSERT_GE(reports.size(), 1u);
        // A list without positions may be found out first.
        EXPECT_EQ(reports[0].code, 10) << reports[0].message;
        EXPECT_TRUE(reports[0].message.starts_with(name + ": ")) << reports[0].message;
    }
}

TEST_F(CurvedInput, ParaboloidsStayOnOneSideOfTheirTip)
{
    const auto call = [](float zmin, float zmax) {
        return [=](bool array) {
            array ? zebParaboloidV(15, zmin, zmax, 360, 0, nullptr, nullptr)
                  : zebParaboloid(15, zmin, zmax, 360, 0);
        };
    };
    for (const auto& [zmin, zmax] : {std::pair(0.0f, 0.0f), std::pair(-1.0f, 0.0f),
                                     std::pair(1.0f, 5e-11f), std::pair(-1.0f, -5e-11f)}) {
        expectRefused("zebParaboloid", call(zmin, zmax), "zmax may not equal 0");
    }
    for (const auto& [zmin, zmax] : {std::pair(-1.0f, 1.0f), std::pair(1.0f, -1.0f),
                                     std::pair(-1e-20f, 10.0f), std::pair(3.0f, -1e-6f),
                                     // The product is below the smallest float.
                                     std::pair(-1e-37f, 1e-9f), std::pair(1e-37f, -1e-9f)}) {
        expectRefused("zebParaboloid", call(zmin, zmax),
                      "paraboloid may not cross z plane, use two");
    }
    // Upside down, from the rim inwards, and beyond it.
    reports.clear();
    for (const auto& z :
         {std::pair(0.0f, -10.0f), std::pair(10.0f, 5.0f), std::pair(-10.0f, -5.0f)}) {
        EXPECT_GT(area([&] { call(z.first, z.second)(false); }), 100);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(CurvedInput, PatchesAreBilinearOrBicubic)
{
    for (const short type : {0, 1, 0x6FF, 0x702, -1}) {
        expectRefused(
            "zebPatch", [=](bool array) { patch(array, type, gNet.data()); },
            "type must be bilinear or bicubic");
        expectRefused(
            "zebPatchMesh",
            [=](bool array) {
                mesh(array, type, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, gNet.data());
            },
            "unknown patch type " + std::to_string(type));
    }
}

TEST_F(CurvedInput, WrapsArePeriodicOrNot)
{
    const auto call = [](short uwrap, short vwrap) {
        return [=](bool array) { mesh(array, ZEB_BICUBIC, 4, uwrap, 4, vwrap, gNet.data()); };
    };
    expectRefused("zebPatchMesh", call(3, ZEB_PERIODIC), "unknown wrap treatment 3");
    expectRefused("zebPatchMesh", call(ZEB_PERIODIC, 0xA02), "unknown wrap treatment 2562");
    expectRefused("zebPatchMesh", call(0x9FF, 0xA02), "unknown wrap treatment 2559");
    expectRefused("zebPatchMesh", call(-7, -8), "unknown wrap treatment -7");
}

TEST_F(CurvedInput, ExtraControlPointsAreReported)
{
    // One point more than the patches take, in either direction.
    std::vector<float> wide, high;
    for (int i = 0; i < 20; ++i) {
        const float a[] = {-15 + 10 * static_cast<float>(i % 5),
                           -15 + 10 * static_cast<float>(i / 5)};
        wide.insert(wide.end(), {a[0], a[1], 0});
        const float b[] = {-15 + 10 * static_cast<float>(i % 4),
                           -15 + 10 * static_cast<float>(i / 4)};
        high.insert(high.end(), {b[0], b[1], 0});
    }
    expectWarned("zebPatchMesh",
                 [&](bool array) {
                     mesh(array, ZEB_BICUBIC, 5, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, wide.data());
                 },
                 {"extra control points in u will be ignored"});
    expectWarned("zebPatchMesh",
                 [&](bool array) {
                     mesh(array, ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 5, ZEB_NONPERIODIC, high.data());
                 },
                 {"extra control points in v will be ignored"});
}

TEST_F(CurvedInput, PositionsComeOnceAndAreNumbers)
{
    const int p = pointToken(), h = zebQuark("height");
    const struct {
        std::string name;
        std::function<void()> none, twice;
    } calls[] = {
        {"zebPatch", [] { zebPatch(ZEB_BILINEAR, 0); },
         [=] { zebPatch(ZEB_BILINEAR, p, gCorners, h, gCorners, 0); }},
        {"zebPatchMesh",
         [] { zebPatchMesh(ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, 0); },
         [=] {
             zebPatchMesh(ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, p, gNet.data(), p,
                          gNet.data(), 0);
         }},
        {"zebNurb", [] { zebNurb(2, gLine, 0, 1, 2, gLine, 0, 1, 0); },
         [=] {
             zebNurb(2, gLine, 0, 1, 2, gLine, 0, 1, p, gCorners, int{zebQuark("pointw")},
                     gNet.data(), 0);
         }},
        {"zebNurbMesh", [] { zebNurbMesh(2, 2, gLine, 0, 1, 2, 2, gLine, 0, 1, 0); },
         [=] { zebNurbMesh(2, 2, gLine, 0, 1, 2, 2, gLine, 0, 1, h, gCorners, p, gCorners, 0); }},
    };
    for (const auto& call : calls) {
        SCOPED_TRACE(call.name);
        reports.clear();
        EXPECT_EQ(area(call.none), 0);
        expectReport(call.name, "required argument missing", 13);
        reports.clear();
        EXPECT_EQ(area(call.twice), 0);
        expectReport(call.name, "required argument specified 2 times", 11);
    }
    for (const float* bad : {gBadNet.data(), static_cast<const float*>(nullptr)}) {
        const float* corners = bad ? gBadCorners : nullptr;
        expectRefused("zebPatch", [=](bool array) { patch(array, ZEB_BICUBIC, bad); });
        expectRefused("zebPatch", [=](bool array) { patch(array, ZEB_BILINEAR, corners); });
        expectRefused("zebPatchMesh", [=](bool array) {
            mesh(array, ZEB_BILINEAR, 4, ZEB_PERIODIC, 4, ZEB_NONPERIODIC, bad);
        });
        expectRefused("zebNurb", [=](bool array) { nurb(array, gGoodLine, gGoodLine, corners); });
        expectRefused("zebNurbMesh",
                      [=](bool array) { nurbMesh(array, gGoodCubic, gGoodCubic, bad); });
    }
}

TEST_F(CurvedInput, MeshesNeedPointsForAPatch)
{
    const long few[][2] = {{3, 4}, {4, 3}, {0, 4}, {4, 0}, {-4, 4}, {4, -4}};
    // The products of some are 0 in as many bits as a long has.
    const int half = std::numeric_limits<unsigned long>::digits / 2;
    const long absurd[][2] = {{kAbsurd, 4},
                              {4, kAbsurd},
                              {kMost, kMost},
                              {1L << 20, 1L << 20},
                              {1L << (half - 1), 1L << (half + 1)},
                              {kMost, 1}};
    for (const auto& sizes : {few, absurd}) {
        for (int i = 0; i < 6; ++i) {
            const long nu = sizes[i][0], nv = sizes[i][1];
            SCOPED_TRACE(std::to_string(nu) + " x " + std::to_string(nv));
            expectRefused("zebPatchMesh", [=](bool array) {
                mesh(array, ZEB_BICUBIC, nu, ZEB_NONPERIODIC, nv, ZEB_NONPERIODIC, gNet.data());
            });
        }
    }
    for (const long n : {1L, 0L, -1L, kAbsurd}) {
        expectRefused("zebPatchMesh", [=](bool array) {
            mesh(array, ZEB_BILINEAR, n, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, gNet.data());
        });
    }
    expectRefused("zebPatchMesh", [](bool array) {
        mesh(array, ZEB_BICUBIC, 2, ZEB_PERIODIC, 4, ZEB_NONPERIODIC, gNet.data());
    });
}

TEST_F(CurvedInput, WhatNurbsAreRefusedFor)
{
    const auto both = [this](const Axis& bad, const std::string& message = "") {
        for (const bool swap : {false, true}) {
            const Axis u = swap ? gGoodCubic : bad, v = swap ? bad : gGoodCubic;
            expectRefused(
                "zebNurbMesh", [&](bool array) { nurbMesh(array, u, v, gNet.data()); }, message);
            if (bad.n != bad.order) continue;
            expectRefused(
                "zebNurb", [&](bool array) { nurb(array, u, v, gNet.data()); }, message);
        }
    };
    both({3, 4, gCubic, 0, 1}, "number of control points may not be less than the order");
    both({-5, 4, gCubic, 0, 1});
    both({4, kMost, gCubic, 0, 1});
    both({4, 4, gCubic, 1, 1}, "parametric limit min must be less than max");
    both({4, 4, gCubic, 1, 0}, "parametric limit min must be less than max");
    both({4, 4, nullptr, 0, 1});
    both({4, 4, gBadKnots, 0, 1});
    both({4, 0, gCubic, 0, 1});
    both({4, -3, gCubic, 0, 1});
    both({0, 0, gCubic, 0, 1});
    both({-1, -1, gCubic, 0, 1});
    both({kAbsurd, 4, gCubic, 0, 1});
    both({kMost, 4, gCubic, 0, 1});
    both({kAbsurd, kAbsurd, gCubic, 0, 1});
    both({kMost, kMost, gCubic, 0, 1});
    for (const float bad : {kNan, kInf, -kInf}) {
        both({4, 4, gCubic, bad, 1});
        both({4, 4, gCubic, 0, bad});
    }
}

TEST_F(CurvedInput, WhatNurbsAreBuiltInSpiteOf)
{
    const std::string falling = "knot values must appear in non-decreasing order";
    const std::string outside = "parametric limits must lie between knot[order-1] and knot[n]";
    const Axis wide = {4, 4, gCubic, -1, 2}, fallen = {4, 4, gFalling, 0, 1};
    const Axis both = {4, 4, gFalling, 0, 2};
    using Call = std::function<void(bool)>;
    const auto mesh = [](const Axis& u, const Axis& v) -> Call {
        return [=](bool array) { nurbMesh(array, u, v, gNet.data()); };
    };
    const auto single = [](const Axis& u, const Axis& v) -> Call {
        return [=](bool array) { nurb(array, u, v, gNet.data()); };
    };
    for (const bool one : {false, true}) {
        const std::string name = one ? "zebNurb" : "zebNurbMesh";
        const auto call = [&](const Axis& u, const Axis& v) {
            return one ? single(u, v) : mesh(u, v);
        };
        expectWarned(name, call(wide, gGoodCubic), {outside});
        expectWarned(name, call(gGoodCubic, wide), {outside});
        expectWarned(name, call(wide, wide), {outside});
        expectWarned(name, call(fallen, gGoodCubic), {falling});
        expectWarned(name, call(fallen, fallen), {falling});
        expectWarned(name, call(gGoodCubic, both), {falling, outside});
    }
}

TEST_F(CurvedInput, TooFewPointsForTheOrderSayTheSameHoweverFewTheyAre)
{
    const std::string message = "number of control points may not be less than the order";
    for (const Axis& bad :
         {Axis{-5, 4, gCubic, 0, 1}, Axis{0, 4, gCubic, 0, 1}, Axis{4, kMost, gCubic, 0, 1}}) {
        expectRefused(
            "zebNurbMesh", [&](bool array) { nurbMesh(array, bad, gGoodCubic, gNet.data()); },
            message);
    }
}

TEST_F(CurvedInput, NurbsOfWhichNothingLiesWithinTheLimitsDrawNothing)
{
    static const float same[8] = {2, 2, 2, 2, 2, 2, 2, 2};
    const std::string outside = "parametric limits must lie between knot[order-1] and knot[n]";
    const Axis beyond = {4, 4, gCubic, 2, 3}, before = {4, 4, gCubic, -3, 0};
    const Axis empty = {4, 4, same, 1, 3};
    for (const Axis& axis : {beyond, before, empty}) {
        for (const bool swap : {false, true}) {
            const Axis& u = swap ? gGoodCubic : axis;
            const Axis& v = swap ? axis : gGoodCubic;
            expectRefused(
                "zebNurb", [&](bool array) { nurb(array, u, v, gNet.data()); }, outside);
            expectRefused(
                "zebNurbMesh", [&](bool array) { nurbMesh(array, u, v, gNet.data()); }, outside);
            for (const bool quirks : {true, false}) {
                EXPECT_EQ(area(
                              [&] {
                                  const void* object = zebObjectBegin();
                                  nurb(false, u, v, gNet.data());
                                  nurbMesh(false, u, v, gNet.data());
                                  zebObjectEnd();
                                  zebObjectCall(object);
                              },
                              quirks),
                          0);
            }
        }
    }
}

TEST_F(CurvedInput, ExtremeNumbersComeToAnEnd)
{
    // Weights of zero and less, sizes next to the largest and smallest floats.
    std::vector<float> weighted[3];
    for (int k = 0; k < 3; ++k) {
        for (int i = 0; i < 16; ++i) {
            const float w = k == 0 ? 0.0f : k == 1 ? static_cast<float>(i % 3) - 1 : -1.0f;
            const auto at = static_cast<std::size_t>(3 * i);
            weighted[k].insert(weighted[k].end(), {gNet[at], gNet[at + 1], gNet[at + 2], w});
        }
    }
    const int pointw = zebQuark("pointw");
    for (const auto& points : weighted) {
        area([&] {
            zebNurbMesh(4, 4, gCubic, 0, 1, 4, 4, gCubic, 0, 1, pointw, points.data(), 0);
            zebNurb(4, gCubic, 0, 1, 4, gCubic, 0, 1, pointw, points.data(), 0);
        });
        EXPECT_TRUE(std::isfinite(picture.sum(3)));
    }
#ifdef ZEB_SANITIZED
    const std::vector<float> sizes = {3e38f, 1e-44f};  // each takes tens of seconds
#else
    const std::vector<float> sizes = {1e10f, 1e25f, 3e38f, 1e-30f, 1e-44f};
#endif
    for (const float huge : sizes) {
        SCOPED_TRACE(huge);
        std::vector<float> net = gNet;
        for (float& x : net) x *= huge / 16;
        for (const Quadric& q : quadrics()) {
            std::vector<float> numbers = q.good;
            for (float& x : numbers) x = x == 360 ? x : x / 16 * huge;
            area([&] { q.plain(numbers.data()); });
            EXPECT_TRUE(std::isfinite(picture.sum(3))) << q.name;
        }
        area([&] {
            patch(false, ZEB_BICUBIC, net.data());
            patch(false, ZEB_BILINEAR, net.data());
            mesh(false, ZEB_BILINEAR, 4, ZEB_PERIODIC, 4, ZEB_PERIODIC, net.data());
            nurbMesh(false, gGoodCubic, gGoodCubic, net.data());
        });
        EXPECT_TRUE(std::isfinite(picture.sum(3)));
    }
}

}  // namespace zebtest
