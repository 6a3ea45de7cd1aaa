#include "math/transform.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "math/spaces.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

void expectNear(const Matrix& m, const Matrix& expected, float tolerance = 1e-5f)
{
    for (int i = 0; i < 16; ++i) {
        EXPECT_NEAR(m.m[i / 4][i % 4], expected.m[i / 4][i % 4], tolerance) << i / 4 << i % 4;
    }
}

const float kSome[4][4] = {{1, 2, 3, 0}, {0, 1, 4, 0}, {5, 6, 0, 0}, {7, 8, 9, 1}};

// A world block whose camera stands 5 away.
class TransformTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }
    void openWorld()
    {
        zebHider(0);
        zebTranslate(0, 0, 5);
        zebSceneBegin();
    }
    zebtest::Reports reports;
};

struct Operation {
    const char* name;
    std::function<void(Transform&)> act;
};

const Operation kChanging[] = {
    {"loadIdentity", [](Transform& t) { t.loadIdentity(); }},
    {"loadMatrix", [](Transform& t) { t.loadMatrix(kSome); }},
    {"multMatrix", [](Transform& t) { t.multMatrix(kSome); }},
    {"perspective", [](Transform& t) { t.perspective(50); }},
    {"translate", [](Transform& t) { t.translate(1, 2, 3); }},
    {"rotate", [](Transform& t) { t.rotate(30, 1, 2, 3); }},
    {"scale", [](Transform& t) { t.scale(2, 3, 4); }},
    {"skew", [](Transform& t) { t.skew(30, 0, 1, 0, 1, 0, 0); }},
    {"init", [](Transform& t) { t.init(); }},
};

}  // namespace

TEST(Transform, StartsAsTheUnchangedIdentity)
{
    const Transform t;
    EXPECT_EQ(t.matrix(), gIdentity);
    EXPECT_FALSE(t.changed());
}

TEST_F(TransformTest, InitIsTheChangedIdentity)
{
    Transform t(Matrix{kSome});
    t.init();
    EXPECT_EQ(t.matrix(), gIdentity);
    EXPECT_TRUE(t.changed());
}

TEST_F(TransformTest, EveryOperationMarksTheChange)
{
    for (const Operation& operation : kChanging) {
        Transform t;
        operation.act(t);
        EXPECT_TRUE(t.changed()) << operation.name;
    }
}

TEST_F(TransformTest, ACopyTakesTheMatrixAndTheChangedFlag)
{
    Transform t;
    EXPECT_FALSE(Transform(t).changed());
    t.translate(1, 2, 3);
    const Transform copy(t);
    EXPECT_TRUE(copy.changed());
    EXPECT_EQ(copy.matrix(), t.matrix());
}

TEST_F(TransformTest, HandednessIsOfTheDeterminant)
{
    Transform t;
    t.setHandedness();
    EXPECT_EQ(t.handedness(), 1536);
    t.scale(-1, 1, 1);
    t.setHandedness();
    EXPECT_EQ(t.handedness(), 1537);
    t.scale(1, 0, 1);  // a determinant of 0 is not negative
    t.setHandedness();
    EXPECT_EQ(t.handedness(), 1536);
}

TEST_F(TransformTest, SetHandednessIsNoChange)
{
    Transform t;
    t.setHandedness();
    EXPECT_FALSE(t.changed());
}

TEST_F(TransformTest, LoadIdentityDropsTheCameraToo)
{
    openWorld();
    gTransform->loadIdentity();
    EXPECT_EQ(gTransform->matrix(), gIdentity);
}

TEST_F(TransformTest, LoadMatrixTakesTheMatrixToWorldSpace)
{
    openWorld();
    gTransform->scale(9, 9, 9);
    gTransform->loadMatrix(kSome);
    EXPECT_EQ(gTransform->matrix(), Matrix(kSome) * gWorldToCamera);
    EXPECT_EQ(gTransform->matrix().m[3][2], 14);
}

TEST_F(TransformTest, MultMatrixActsFirst)
{
    Transform t;
    t.translate(1, 2, 3);
    t.multMatrix(kSome);
    Matrix expected;
    expected.translate(1, 2, 3);
    EXPECT_EQ(t.matrix(), Matrix(kSome) * expected);
}

TEST_F(TransformTest, BuildsAsTheMatrixDoes)
{
    Transform t(Matrix{kSome});
    Matrix m(kSome);
    t.translate(1, 2, 3);
    m.translate(1, 2, 3);
    EXPECT_EQ(t.matrix(), m);
    t.rotate(30, 1, 2, 3);
    m.rotate(30, 1, 2, 3);
    EXPECT_EQ(t.matrix(), m);
    t.scale(2, 3, 4);
    m.scale(2, 3, 4);
    EXPECT_EQ(t.matrix(), m);
    t.skew(30, 0, 1, 0, 1, 0, 0);
    m.skew(30, 0, 1, 0, 1, 0, 0);
    EXPECT_EQ(t.matrix(), m);
    t.perspective(50);
    m.perspective(50);
    expectNear(t.matrix(), m);
}

TEST_F(TransformTest, OperationsAreRefusedInAnObjectBlock)
{
    gTransform->translate(1, 2, 3);
    gState->objectBegin();
    const Matrix before = gTransform->matrix();
    for (const Operation& operation : kChanging) {
        if (std::string(operation.name) == "init") continue;
        reports.clear();
        operation.act(*gTransform);
        EXPECT_EQ(gTransform->matrix(), before) << operation.name;
        ASSERT_EQ(reports.size(), 1u) << operation.name;
        EXPECT_EQ(reports[0].code, 6);
        EXPECT_EQ(reports[0].severity, 0xB04);
    }
}

TEST_F(TransformTest, DeformationOnlyAsksWhetherItIsLegal)
{
    const std::shared_ptr<const Transform> before = gTransform->snapshot();
    gTransform->deformation(0, 0, nullptr, nullptr);
    EXPECT_FALSE(gTransform->changed());
    EXPECT_EQ(gTransform->matrix(), before->matrix());
    EXPECT_TRUE(reports.empty());
    gState->objectBegin();
    gTransform->deformation(0, 0, nullptr, nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 6);
}

TEST_F(TransformTest, NumbersThatAreNoneAreRefused)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    for (float bad : {nan, infinite, -infinite}) {
        float matrix[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
        matrix[2][1] = bad;
        const Operation operations[] = {
            {"zebTranslate", [bad](Transform& t) { t.translate(0, bad, 0); }},
            {"zebScale", [bad](Transform& t) { t.scale(1, 1, bad); }},
            {"zebRotate", [bad](Transform& t) { t.rotate(bad, 0, 0, 1); }},
            {"zebRotate axis", [bad](Transform& t) { t.rotate(30, bad, 0, 1); }},
            {"zebSkew", [bad](Transform& t) { t.skew(bad, 0, 1, 0, 1, 0, 0); }},
            {"zebSkew axis", [bad](Transform& t) { t.skew(30, 0, 1, 0, 1, 0, bad); }},
            {"zebPerspective", [bad](Transform& t) { t.perspective(bad); }},
            {"zebLoadMatrix", [&matrix](Transform& t) { t.loadMatrix(matrix); }},
            {"zebMultMatrix", [&matrix](Transform& t) { t.multMatrix(matrix); }},
        };
        for (const Operation& operation : operations) {
            reports.clear();
            Transform t(Matrix{kSome});
            operation.act(t);
            EXPECT_EQ(t.matrix(), Matrix(kSome)) << operation.name;
            ASSERT_EQ(reports.size(), 1u) << operation.name;
            EXPECT_TRUE(reports[0].code == 10 || reports[0].code == 11) << operation.name;
            EXPECT_EQ(reports[0].severity, 0xB04) << operation.name;
        }
    }
}

TEST_F(TransformTest, NullMatricesAreRefused)
{
    Transform t(Matrix{kSome});
    t.loadMatrix(nullptr);
    t.multMatrix(nullptr);
    EXPECT_EQ(t.matrix(), Matrix(kSome));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_TRUE(reports[0].code == 10 || reports[0].code == 11);
}

TEST_F(TransformTest, RefusedRotationAndSkewLeaveTheMatrix)
{
    Transform t(Matrix{kSome});
    t.rotate(30, 0, 0, 0);
    t.skew(30, 0, 0, 0, 1, 0, 0);
    t.skew(95, 0, 1, 0, 1, 0, 0);
    EXPECT_EQ(t.matrix(), Matrix(kSome));
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0], (zebtest::Report{15, 2820, "rotation basis vector must be non-zero"}));
    EXPECT_EQ(reports[1], (zebtest::Report{15, 2820, "skew basis vectors must be non-zero"}));
    EXPECT_EQ(reports[2], (zebtest::Report{10, 2820, "invalid skew angle"}));
}

TEST_F(TransformTest, SnapshotsAreSharedUntilTheRecordChanges)
{
    Transform t;
    t.translate(1, 2, 3);
    const auto first = t.snapshot();
    EXPECT_FALSE(t.changed());
    EXPECT_EQ(t.snapshot(), first);
    t.translate(1, 0, 0);
    const auto second = t.snapshot();
    EXPECT_NE(second, first);
    EXPECT_EQ(first->matrix().m[3][0], 1);
    EXPECT_EQ(second->matrix().m[3][0], 2);
}

TEST_F(TransformTest, SnapshotsKnowTheirHandedness)
{
    Transform t;
    t.scale(-1, 1, 1);
    EXPECT_EQ(t.snapshot()->handedness(), 1537);
    t.scale(-1, 1, 1);
    EXPECT_EQ(t.snapshot()->handedness(), 1536);
}
