#include "geom/primitive.h"

#include <gtest/gtest.h>

#include <functional>

#include "geom/grid.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

// A surface made of three functions.
class Probe : public Primitive
{
public:
    using Function = std::function<Pointw(float, float)>;
    Function P = [](float, float) { return Pointw(); };
    Function dPdu = [](float, float) { return Pointw(1, 0, 0, 1); };
    Function dPdv = [](float, float) { return Pointw(0, 1, 0, 1); };
    bool homogeneous = false;

    bool rational() const override { return homogeneous; }
    Pointw evalP(float u, float v) const override { return P(u, v); }
    Pointw evaldPdu(float u, float v) const override { return dPdu(u, v); }
    Pointw evaldPdv(float u, float v) const override { return dPdv(u, v); }
};

class PrimitiveTest : public testing::Test
{
protected:
    PrimitiveTest()
    {
        zebReset();
        zebShadingRate(1);
    }
    ~PrimitiveTest() override { zebReset(); }

    struct Answer {
        bool diceable;
        int u, v;
        bool operator==(const Answer&) const = default;
    };
    Answer test(const Probe& probe, float maxSize = -1)
    {
        const RenderFrame frame(option, toRaster);
        Dicing dicing{frame};
        const bool ok = probe.diceable(dicing, maxSize);
        return {ok, dicing.fUSteps, dicing.fVSteps};
    }
    bool diceable(const Probe& probe, float maxSize = -1) { return test(probe, maxSize).diceable; }
    // Derivatives of a constant length each.
    static void span(Probe& probe, float du, float dv)
    {
        probe.dPdu = [=](float, float) { return Pointw(du, 0, 0, 1); };
        probe.dPdv = [=](float, float) { return Pointw(0, dv, 0, 1); };
    }
    static void skewedSpan(Probe& probe, float most, float least, float dv)
    {
        probe.dPdu = [=](float u, float) { return Pointw(u < 0.5f ? least : most, 0, 0, 1); };
        probe.dPdv = [=](float, float) { return Pointw(0, dv, 0, 1); };
    }

    Option option;
    Matrix toRaster;
    zebtest::Reports reports;
};

bool operator==(const Boundw& a, const Boundw& b)
{
    return static_cast<const Bound&>(a) == b && a.wmin == b.wmin && a.wmax == b.wmax;
}

}  // namespace

TEST_F(PrimitiveTest, TheBaseIsAnEmptyPointOfNoKind)
{
    Primitive primitive;
    EXPECT_EQ(primitive.type(), 0);
    EXPECT_TRUE(primitive.bound() == Boundw::empty());
    EXPECT_TRUE(primitive.canSplit());
    EXPECT_FALSE(primitive.rational());
    EXPECT_EQ(primitive.evalP(0.3f, 0.7f), Pointw(0, 0, 0, 1));
    EXPECT_EQ(primitive.evaldPdu(0.3f, 0.7f), Pointw(0, 0, 0, 1));
    EXPECT_EQ(primitive.evaldPdv(0.3f, 0.7f), Pointw(0, 0, 0, 1));
    EXPECT_TRUE(primitive.args().empty());
}

TEST_F(PrimitiveTest, TypeCodes)
{
    EXPECT_EQ(kConvexPolygon, 1);
    EXPECT_EQ(kGeneralPolygon, 2);
    EXPECT_EQ(kConvexPolygonMesh, 3);
    EXPECT_EQ(kGeneralPolygonMesh, 4);
    EXPECT_EQ(kPatch, 5);
    EXPECT_EQ(kPatchMesh, 6);
    EXPECT_EQ(kNuPatchMesh, 7);
    EXPECT_EQ(kSphere, 8);
    EXPECT_EQ(kTorus, 14);
    EXPECT_EQ(kObject, 15);
    EXPECT_EQ(kProcedural, 16);
}

TEST_F(PrimitiveTest, EachTakesTheNextSequenceNumber)
{
    const std::uint32_t next = PrimitiveCommon::fCurSeq;
    Primitive a, b;
    EXPECT_EQ(a.common().fSeq, next);
    EXPECT_EQ(b.common().fSeq, next + 1);
    EXPECT_EQ(PrimitiveCommon::fCurSeq, next + 2);
}

TEST_F(PrimitiveTest, EachTakesTheRecordsInForce)
{
    zebTranslate(1, 2, 3);
    const float red[3] = {1, 0, 0};
    zebColor(red);
    Primitive primitive;
    zebTranslate(10, 10, 10);
    zebReset();
    EXPECT_EQ(primitive.attrib().surfaceColor, Color(1, 0, 0));
    EXPECT_EQ(Point(0, 0, 0) * primitive.matrix(), Point(1, 2, 3));
}

TEST_F(PrimitiveTest, ACopySharesTheCommonRecordAndStartsWithoutVariables)
{
    Primitive a;
    const std::uint32_t next = PrimitiveCommon::fCurSeq;
    Primitive b(a);
    EXPECT_EQ(&a.common(), &b.common());
    EXPECT_TRUE(b.args().empty());
    EXPECT_EQ(PrimitiveCommon::fCurSeq, next);
}

TEST_F(PrimitiveTest, InheritTakesTheRecordsOfNowAndTheNumberGiven)
{
    Primitive primitive;
    zebTranslate(4, 0, 0);
    const std::uint32_t next = PrimitiveCommon::fCurSeq;
    primitive.common().inherit(77);
    EXPECT_EQ(primitive.common().fSeq, 77u);
    EXPECT_EQ(Point(0, 0, 0) * primitive.matrix(), Point(4, 0, 0));
    EXPECT_EQ(PrimitiveCommon::fCurSeq, next);
}

TEST_F(PrimitiveTest, WhatIsSmallerThanAMicropolygonGetsAGridOfOne)
{
    Probe probe;
    span(probe, 0.01f, 0.02f);
    EXPECT_EQ(test(probe), (Answer{true, 1, 1}));
    span(probe, 0, 0);
    EXPECT_EQ(test(probe), (Answer{true, 1, 1}));
}

TEST_F(PrimitiveTest, StepsAreLengthsInMicropolygonsRoundedUp)
{
    Probe probe;
    span(probe, 2.5f, 6);
    EXPECT_EQ(test(probe), (Answer{true, 3, 6}));
    zebShadingRate(4);  // micropolygons of side 2
    Probe coarser;
    span(coarser, 2.5f, 6);
    EXPECT_EQ(test(coarser), (Answer{true, 2, 3}));
}

TEST_F(PrimitiveTest, ADerivativeOfMoreThan32PixelsSplits)
{
    Probe probe;
    span(probe, 32, 32);
    EXPECT_EQ(test(probe), (Answer{true, 32, 32}));
    span(probe, 32.01f, 1);
    EXPECT_FALSE(diceable(probe));
    span(probe, 1, 32.01f);
    EXPECT_FALSE(diceable(probe));
}

TEST_F(PrimitiveTest, TheLimitIsTheTuningTimesTheMicropolygonSide)
{
    zebShadingRate(4);
    option.tuning[0] = 8;
    Probe probe;
    span(probe, 16, 1);
    EXPECT_EQ(test(probe), (Answer{true, 8, 1}));
    span(probe, 16.01f, 1);
    EXPECT_FALSE(diceable(probe));
}

TEST_F(PrimitiveTest, ALimitCanBeGiven)
{
    Probe probe;
    span(probe, 10, 1);
    EXPECT_TRUE(diceable(probe, 10));
    EXPECT_FALSE(diceable(probe, 9.9f));
}

TEST_F(PrimitiveTest, LengthsAreMeasuredOnTheScreen)
{
    Probe probe;
    probe.dPdu = [](float, float) { return Pointw(3, 0, 1000, 1); };
    EXPECT_EQ(test(probe), (Answer{true, 3, 1}));
}

TEST_F(PrimitiveTest, LengthsAreMeasuredAfterTransformationAndCamera)
{
    zebScale(2, 1, 1);
    toRaster.scale(3, 5, 1);
    Probe probe;
    EXPECT_EQ(test(probe), (Answer{true, 6, 5}));
}

TEST_F(PrimitiveTest, TheLongestSampledDerivativeCounts)
{
    Probe probe;
    skewedSpan(probe, 7, 5, 1);
    EXPECT_EQ(test(probe), (Answer{true, 7, 1}));
}

TEST_F(PrimitiveTest, AnAreaThatMoreThanDoublesSplitsFrom17MicropolygonsOn)
{
    Probe probe;
    skewedSpan(probe, 4, 1.9f, 4);
    EXPECT_EQ(test(probe), (Answer{true, 4, 4}));
    skewedSpan(probe, 17, 8, 1);
    EXPECT_FALSE(diceable(probe));
    skewedSpan(probe, 16, 7.9f, 1);
    EXPECT_EQ(test(probe), (Answer{true, 16, 1}));
}

TEST_F(PrimitiveTest, AnAreaThatJustDoublesDoesNotSplit)
{
    Probe probe;
    skewedSpan(probe, 16, 8, 8);
    EXPECT_EQ(test(probe), (Answer{true, 16, 8}));
    skewedSpan(probe, 16, 7.9f, 8);
    EXPECT_FALSE(diceable(probe));
}

TEST_F(PrimitiveTest, HomogeneousSumsComeBeforeTheDivision)
{
    Probe probe;
    probe.homogeneous = true;
    probe.P = [](float, float) { return Pointw(0, 0, 0, 2); };
    probe.dPdu = [](float, float) { return Pointw(8, 0, 0, 0); };
    probe.dPdv = [](float, float) { return Pointw(0, 12, 0, 1); };
    EXPECT_EQ(test(probe), (Answer{true, 4, 4}));
}

TEST_F(PrimitiveTest, OrdinarySumsComeAfterTheDivision)
{
    Probe probe;
    probe.P = [](float, float) { return Pointw(0, 0, 0, 2); };
    probe.dPdu = [](float, float) { return Pointw(8, 0, 0, 2); };
    probe.dPdv = [](float, float) { return Pointw(0, 12, 0, 1); };
    EXPECT_EQ(test(probe), (Answer{true, 4, 12}));
}

// The chord over 2 h of 32 u^2 strays by 32 h^2 from the curve: 8 / n^2 with n steps.
TEST_F(PrimitiveTest, FlatnessRaisesTheStepsAlongU)
{
    zebFlatness(0.51f);
    Probe probe;
    probe.P = [](float u, float) { return Pointw(32 * u * u, 0, 0, 1); };
    EXPECT_EQ(test(probe), (Answer{true, 4, 1}));
    zebFlatness(0.33f);
    Probe flatter;
    flatter.P = probe.P;
    EXPECT_EQ(test(flatter), (Answer{true, 5, 1}));
}

TEST_F(PrimitiveTest, FlatnessRaisesTheStepsAlongV)
{
    zebFlatness(0.51f);
    Probe probe;
    probe.P = [](float, float v) { return Pointw(0, 32 * v * v, 0, 1); };
    EXPECT_EQ(test(probe), (Answer{true, 1, 4}));
}

TEST_F(PrimitiveTest, FlatnessLooksAtTheScreenOnly)
{
    Probe probe;
    probe.P = [](float u, float) { return Pointw(0, 0, 1000 * u * u, 1); };
    EXPECT_EQ(test(probe), (Answer{true, 1, 1}));
}

TEST_F(PrimitiveTest, WhatIsNotFlatWithinTheTunedStepsSplits)
{
    zebFlatness(0.51f);
    Probe probe;
    probe.P = [](float u, float) { return Pointw(32 * u * u, 0, 0, 1); };
    option.tuning[0] = 4;
    EXPECT_EQ(test(probe), (Answer{true, 4, 1}));
    option.tuning[0] = 3;
    EXPECT_FALSE(diceable(probe));
    probe.P = [](float, float v) { return Pointw(32 * v * v, 0, 0, 1); };
    EXPECT_FALSE(diceable(probe));
}

TEST_F(PrimitiveTest, ASurfaceThatIsNeverFlatSplits)
{
    Probe probe;
    bool up = false;
    probe.P = [&up](float, float) { return Pointw((up = !up) ? 1000.0f : -1000.0f, 0, 0, 1); };
    EXPECT_FALSE(diceable(probe));
}

TEST_F(PrimitiveTest, DicingEvaluatesTheSurfaceOnALattice)
{
    zebTranslate(0, 0, 7);
    zebScale(2, 1, 1);
    Probe probe;
    probe.P = [](float u, float v) { return Pointw(u * 4, v * 8, 0, 2); };
    probe.dPdu = [](float, float v) { return Pointw(1 + v, 0, 0, 1); };
    probe.dPdv = [](float, float) { return Pointw(0, 6, 0, 2); };
    const RenderFrame frame(option, toRaster);
    const Dicing dicing{frame, 2, 4};
    const auto grid = probe.dice(dicing);
    EXPECT_EQ(grid->fUSize, 2);
    EXPECT_EQ(grid->fVSize, 4);
    EXPECT_FALSE(grid->fTriangular);
    EXPECT_FALSE(grid->fFlip);
    EXPECT_EQ(grid->fSeq, probe.common().fSeq);
    EXPECT_EQ(grid->fAttrib.get(), &probe.attrib());
    for (int j = 0; j <= 4; ++j) {
        for (int i = 0; i <= 2; ++i) {
            const float u = static_cast<float>(i) / 2, v = static_cast<float>(j) / 4;
            EXPECT_EQ(grid->vertex(i, j).P, Point(u * 4, v * 4, 7));
            EXPECT_EQ(grid->vertex(i, j).dPdu, Point(2 * (1 + v), 0, 0));
            EXPECT_EQ(grid->vertex(i, j).dPdv, Point(0, 3, 0));
        }
    }
}

TEST_F(PrimitiveTest, HomogeneousDerivativesAreDifferencesOfDividedSums)
{
    Probe probe;
    probe.homogeneous = true;
    probe.P = [](float, float) { return Pointw(4, 0, 0, 2); };
    probe.dPdu = [](float, float) { return Pointw(8, 0, 0, 2); };
    probe.dPdv = [](float, float) { return Pointw(0, 6, 0, 0); };
    const RenderFrame frame(option, toRaster);
    const auto grid = probe.dice(Dicing{frame, 1, 1});
    EXPECT_EQ(grid->vertex(0, 0).P, Point(2, 0, 0));
    EXPECT_EQ(grid->vertex(0, 0).dPdu, Point(1, 0, 0));
    EXPECT_EQ(grid->vertex(0, 0).dPdv, Point(0, 3, 0));
}

TEST_F(PrimitiveTest, AGridIsFlippedWhereTransformationAndOrientationDisagree)
{
    const RenderFrame frame(option, toRaster);
    EXPECT_FALSE(Probe().dice(Dicing{frame})->fFlip);
    zebOrientation(ZEB_INSIDE);
    EXPECT_TRUE(Probe().dice(Dicing{frame})->fFlip);
    zebOrientation(ZEB_REVERSE);
    EXPECT_FALSE(Probe().dice(Dicing{frame})->fFlip);
}

// Of a face 256, and of the surface 8192 and 16 for every micropolygon's room of the picture: here,
// in a picture without pixels, none.
TEST_F(PrimitiveTest, SplitsAheadAreForSureUntilTheSurfaceHasTakenAll)
{
    const RenderFrame frame(option, toRaster);
    constexpr long kMost = 256 + 8192;
    Probe probe;
    std::vector<SplitsAhead> made;
    for (long k = 0; k < kMost; ++k) ASSERT_TRUE(probe.maySplitAhead(frame, 0, made)) << k;
    EXPECT_FALSE(probe.maySplitAhead(frame, 0, made));
    EXPECT_FALSE(probe.maySplitAhead(frame, 0, made));
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].made, kMost);
    // In its turn nothing is counted yet.
    EXPECT_TRUE(probe.mayStillSplit(frame, 0));
}

TEST_F(PrimitiveTest, SplitsAheadAreCountedInTheirTurnAndGivenBack)
{
    const RenderFrame frame(option, toRaster);
    Probe probe;
    std::vector<SplitsAhead> made;
    for (long k = 0; k < 300; ++k) ASSERT_TRUE(probe.maySplitAhead(frame, 0, made));
    EXPECT_TRUE(made[0].take());
    for (long k = 300; k < 256 + 8192; ++k) ASSERT_TRUE(probe.mayStillSplit(frame, 0)) << k;
    EXPECT_FALSE(probe.mayStillSplit(frame, 0));

    made[0].giveBack();
    EXPECT_TRUE(probe.mayStillSplit(frame, 0)) << "there is room for 299";
    EXPECT_FALSE(made[0].take()) << "but not for 300";
    for (long k = 1; k < 299; ++k) ASSERT_TRUE(probe.mayStillSplit(frame, 0)) << k;
    EXPECT_FALSE(probe.mayStillSplit(frame, 0));
}
