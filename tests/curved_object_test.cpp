// Curved surfaces in objects: of one kind, and drawn once more for every call.

#include "support/curved.h"

namespace zebtest
{

namespace
{

class CurvedObject : public CurvedTest
{
};

}  // namespace

TEST_F(CurvedObject, AnObjectHoldsOneKind)
{
    const std::string mixed = "all object primitives must be of the same type";
    const auto disk = [] { zebDisk(0, 15, 360, 0); };
    const auto sphere = [] { zebSphere(15, -15, 15, 360, 0); };
    const auto bilinear = [] { patch(false, ZEB_BILINEAR, gCorners); };
    const auto cubic = [] { patch(false, ZEB_BICUBIC, gNet.data()); };
    const auto rational = [] { nurb(false, gGoodLine, gGoodLine, gCorners); };
    const auto meshed = [] {
        mesh(false, ZEB_BILINEAR, 2, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, gCorners);
    };
    const auto rationalMesh = [] { nurbMesh(false, gGoodLine, gGoodLine, gCorners); };
    const struct {
        std::function<void()> first, second;
        std::string refused;  // the name of the second
    } pairs[] = {{disk, disk, ""},
                 {sphere, sphere, ""},
                 {disk, sphere, "zebSphere"},
                 {sphere, disk, "zebDisk"},
                 {bilinear, cubic, ""},
                 {cubic, rational, ""},
                 {rational, bilinear, ""},
                 {cubic, meshed, "zebPatchMesh"},
                 {meshed, bilinear, "zebPatch"},
                 {meshed, rationalMesh, "zebNurbMesh"},
                 {rationalMesh, rational, "zebNurb"},
                 {rational, disk, "zebDisk"}};
    int number = 0;
    for (const auto& p : pairs) {
        SCOPED_TRACE(number++);
        reports.clear();
        area([&] {
            zebObjectBegin();
            p.first();
            p.second();
            zebObjectEnd();
        });
        if (p.refused.empty()) {
            EXPECT_TRUE(reports.empty());
        } else {
            expectReport(p.refused, mixed, 11);
        }
    }
}

TEST_F(CurvedObject, WhatIsRefusedDoesNotDecideTheKindOfAnObject)
{
    EXPECT_NEAR(area([] {
                    const void* object = zebObjectBegin();
                    zebSphere(kNan, -15, 15, 360, 0);
                    patch(false, 5, gCorners);
                    zebParaboloid(15, -1, 1, 360, 0);
                    zebDisk(0, 15, 360, 0);
                    zebObjectEnd();
                    zebObjectCall(object);
                }),
                225 * kCircle, 0.03 * 225 * kCircle);
    EXPECT_EQ(reports.size(), 3u);
}

TEST_F(CurvedObject, InstancesOfSinglePatchesAreEmptyUnlessMended)
{
    const std::function<void()> patches[] = {
        [] { patch(false, ZEB_BILINEAR, gCorners); },
        [] { patch(false, ZEB_BICUBIC, gNet.data()); },
        [] { nurb(false, gGoodLine, gGoodLine, gCorners); },
    };
    const std::function<void()> whole[] = {
        [] { mesh(false, ZEB_BILINEAR, 2, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, gCorners); },
        [] { mesh(false, ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, gNet.data()); },
        [] { nurbMesh(false, gGoodCubic, gGoodCubic, gNet.data()); },
    };
    const auto instance = [](const std::function<void()>& build) {
        const void* object = zebObjectBegin();
        build();
        zebObjectEnd();
        zebObjectCall(object);
    };
    for (const auto& build : patches) {
        EXPECT_EQ(area([&] { instance(build); }, true), 0);
        EXPECT_NEAR(area([&] { instance(build); }, false), 900, 30);
    }
    for (const auto& build : whole) {
        EXPECT_NEAR(area([&] { instance(build); }, true), 900, 30);
        EXPECT_NEAR(area([&] { instance(build); }, false), 900, 30);
    }
    for (const Quadric& q : quadrics()) {
        const auto turned = [&] {
            zebRotate(30, 1, 0, 0);
            instance([&] { q.plain(q.good.data()); });
        };
        const double bare = area(turned, true);
        EXPECT_GT(bare, 100) << q.name;
        EXPECT_NEAR(area(turned, false), bare, 0.03 * bare) << q.name;
    }
    EXPECT_TRUE(reports.empty()) << reports.last().message;
}

TEST_F(CurvedObject, AnInstanceTakesTheBasisOfItsCall)
{
    const auto build = [] {
        mesh(false, ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, gNet.data());
    };
    const double direct = area([&] {
        zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
        build();
    });
    EXPECT_NEAR(direct, 100, 4);  // the middle ninth of the net
    for (const bool quirks : {true, false}) {
        const double instance = area(
            [&] {
                const void* object = zebObjectBegin();
                build();
                zebObjectEnd();
                zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
                zebObjectCall(object);
            },
            quirks);
        EXPECT_NEAR(instance, direct, 4);
    }
}

}  // namespace zebtest
