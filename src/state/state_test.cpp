#include "state/state.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "math/spaces.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;

class StateTest : public testing::Test
{
protected:
    void SetUp() override
    {
        zebReset();
        zebHider(0);
    }
    void TearDown() override { zebReset(); }

    void expectCode(long code)
    {
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (Report{code, 0xB04, "(null)"}));
        reports.clear();
    }
    // Opens a block of the kind, within what it needs.
    static void enter(unsigned short block)
    {
        zebReset();
        zebHider(0);
        if (block == kFrameBlock) gState->frameBegin();
        if (block >= kWorldBlock) gState->sceneBegin();
        if (block == kAttributeBlock) gState->attributePush();
        if (block == kMatrixBlock) gState->matrixPush();
        if (block == kSolidBlock) gState->solidBegin();
        if (block == kObjectBlock) gState->objectBegin();
        if (block == kMotionBlock) gState->motionBegin(2);
    }

    zebtest::Reports reports;
};

const unsigned short kBlocks[] = {1, 2, 4, 8, 16, 32, 64, 128};

struct Step {
    const char* name;
    std::function<short()> act;
    unsigned short mask;
    long code;
};

const Step kSteps[] = {
    {"frameBegin", [] { return gState->frameBegin(); }, 1, 8},
    {"frameEnd", [] { return gState->frameEnd(); }, 2, 4},
    {"sceneBegin", [] { return gState->sceneBegin(); }, 3, 8},
    {"sceneEnd", [] { return gState->sceneEnd(); }, 4, 4},
    {"attributePush", [] { return gState->attributePush(); }, 63, 8},
    {"attributePop", [] { return gState->attributePop(); }, 8, 4},
    {"matrixPush", [] { return gState->matrixPush(); }, 63, 8},
    {"matrixPop", [] { return gState->matrixPop(); }, 16, 4},
    {"solidBegin", [] { return gState->solidBegin(); }, 60, 8},
    {"solidEnd", [] { return gState->solidEnd(); }, 32, 4},
    {"objectBegin", [] { return static_cast<short>(gState->objectBegin() != nullptr); }, 63, 8},
    {"objectEnd", [] { return gState->objectEnd(); }, 64, 4},
    {"motionBegin", [] { return gState->motionBegin(2); }, 63, 8},
    {"motionEnd", [] { return gState->motionEnd(); }, 128, 4},
};

}  // namespace

TEST_F(StateTest, EachBlockIsABitOfItsOwn)
{
    for (unsigned short block : kBlocks) {
        enter(block);
        EXPECT_EQ(gState->block(), block);
    }
}

TEST_F(StateTest, VerifyAsksForACommonBit)
{
    for (unsigned short block : kBlocks) {
        for (unsigned short mask : {1, 3, 60, 63, 124, 191, 252, 128}) {
            enter(block);
            reports.clear();
            EXPECT_EQ(gState->verify(mask, 8), (block & mask) != 0) << block << " in " << mask;
            EXPECT_EQ(reports.size(), block & mask ? 0u : 1u);
            if (!reports.empty()) expectCode(8);
        }
    }
}

TEST_F(StateTest, BeginsAndEndsAreLegalInTheirBlocksOnly)
{
    for (unsigned short block : kBlocks) {
        for (const Step& step : kSteps) {
            enter(block);
            reports.clear();
            const bool legal = block & step.mask;
            EXPECT_EQ(step.act(), legal) << step.name << " in " << block;
            if (legal) {
                EXPECT_TRUE(reports.empty()) << step.name << " in " << block;
            } else {
                expectCode(step.code);
                EXPECT_EQ(gState->block(), block) << step.name;
            }
        }
    }
}

TEST_F(StateTest, RefusedCallsAreReportedByTheirNameAlone)
{
    zebSceneEnd();
    zebAttributePop();
    zebFrameBegin();
    zebFrameBegin();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0], (Report{4, 0xB04, "zebSceneEnd"}));
    EXPECT_EQ(reports[1], (Report{4, 0xB04, "zebAttributePop"}));
    EXPECT_EQ(reports[2], (Report{8, 0xB04, "zebFrameBegin"}));
}

TEST_F(StateTest, AMismatchedEndLeavesBothBlocksOpen)
{
    gState->attributePush();
    gState->matrixPush();
    EXPECT_EQ(gState->attributePop(), 0);
    expectCode(4);
    EXPECT_EQ(gState->matrixPop(), 1);
    EXPECT_EQ(gState->attributePop(), 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateTest, BlocksRestoreAttributesAndTransformation)
{
    const Step pairs[][2] = {{kSteps[0], kSteps[1]},
                             {kSteps[4], kSteps[5]},
                             {kSteps[8], kSteps[9]},
                             {kSteps[10], kSteps[11]},
                             {kSteps[2], kSteps[3]}};
    for (const auto& [begin, end] : pairs) {
        enter(begin.mask == 60 ? kWorldBlock : kOutsideBlocks);
        gTransform->translate(1, 0, 0);
        gAttrib->flatness(0.25f);
        const Matrix before = gTransform->matrix();
        ASSERT_EQ(begin.act(), 1) << begin.name;
        EXPECT_EQ(gTransform->matrix(), before) << begin.name;
        EXPECT_EQ(gAttrib->flatnessLimit, 0.25f) << begin.name;
        if (gState->block() != kObjectBlock) {
            gTransform->translate(0, 5, 0);
            gAttrib->flatness(0.75f);
        }
        ASSERT_EQ(end.act(), 1) << end.name;
        EXPECT_EQ(gTransform->matrix(), before) << begin.name;
        EXPECT_EQ(gAttrib->flatnessLimit, 0.25f) << begin.name;
    }
}

TEST_F(StateTest, AMatrixBlockRestoresTheTransformationAlone)
{
    gTransform->translate(1, 0, 0);
    gState->matrixPush();
    gTransform->translate(0, 5, 0);
    gAttrib->flatness(0.75f);
    gState->matrixPop();
    EXPECT_EQ(gTransform->matrix().m[3][1], 0);
    EXPECT_EQ(gAttrib->flatnessLimit, 0.75f);
}

TEST_F(StateTest, OnlyAFrameRestoresTheOptions)
{
    gOption->colorGain(2);
    gState->frameBegin();
    EXPECT_EQ(gOption->gain, 2);
    gOption->colorGain(3);
    gState->sceneBegin();
    EXPECT_EQ(gOption->gain, 3);
    gState->sceneEnd();
    EXPECT_EQ(gOption->gain, 3);
    gState->frameEnd();
    EXPECT_EQ(gOption->gain, 2);
}

TEST_F(StateTest, WorldsMayFollowOneAnotherWithoutAFrame)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(gState->sceneBegin(), 1);
        EXPECT_EQ(gState->sceneEnd(), 1);
    }
    EXPECT_EQ(gState->block(), kOutsideBlocks);
}

TEST_F(StateTest, OfAMotionBlockOnlyTheFirstCallTakesEffect)
{
    zebMotionBegin(2, 0.0, 1.0);
    zebTranslate(1, 0, 0);
    zebTranslate(0, 1, 0);
    zebColor(nullptr);
    zebMotionEnd();
    EXPECT_EQ(gTransform->matrix().m[3][0], 1);
    EXPECT_EQ(gTransform->matrix().m[3][1], 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateTest, ACallThatIsIllegalInAMotionBlockDoesNotCount)
{
    gState->motionBegin(2);
    EXPECT_EQ(gState->attributePush(), 0);
    expectCode(8);
    gTransform->translate(1, 0, 0);
    EXPECT_EQ(gTransform->matrix().m[3][0], 1);
}

TEST_F(StateTest, AMotionBlockCanAlwaysBeClosed)
{
    gState->motionBegin(2);
    EXPECT_EQ(gState->motionEnd(), 1);
    gState->motionBegin(2);
    gTransform->translate(1, 0, 0);
    gTransform->translate(1, 0, 0);
    EXPECT_EQ(gState->motionEnd(), 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateTest, CallsAfterAMotionBlockTakeEffectAgain)
{
    gState->motionBegin(2);
    gTransform->translate(1, 0, 0);
    gState->motionEnd();
    gTransform->translate(1, 0, 0);
    gTransform->translate(1, 0, 0);
    EXPECT_EQ(gTransform->matrix().m[3][0], 3);
}

TEST_F(StateTest, TheTimesOfAMotionBlockAreNotUsed)
{
    float times[] = {0, 1, 2};
    for (bool array : {true, false}) {
        zebReset();
        if (array) {
            zebMotionBeginV(3, times);
        } else {
            zebMotionBegin(3, 0.0, 1.0, 2.0);
        }
        zebTranslate(1, 0, 0);
        zebTranslate(1, 0, 0);
        zebMotionEnd();
        EXPECT_EQ(gTransform->matrix().m[3][0], 1);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateTest, PrimitivesOfUnchangedStateShareTheirSnapshots)
{
    const auto attrib = gState->getAttrib();
    const auto transform = gState->getTransform();
    EXPECT_EQ(gState->getAttrib(), attrib);
    EXPECT_EQ(gState->getTransform(), transform);
    gTransform->translate(1, 0, 0);
    EXPECT_EQ(gState->getAttrib(), attrib);
    EXPECT_NE(gState->getTransform(), transform);
}

TEST_F(StateTest, ASnapshotBelongsToItsRecord)
{
    gAttrib->flatness(0.25f);
    gTransform->translate(1, 0, 0);
    gState->attributePush();
    gAttrib->flatness(0.75f);
    gTransform->translate(5, 0, 0);
    EXPECT_EQ(gState->getAttrib()->flatnessLimit, 0.75f);
    EXPECT_EQ(gState->getTransform()->matrix().m[3][0], 6);
    gState->attributePop();
    EXPECT_EQ(gState->getAttrib()->flatnessLimit, 0.25f);
    EXPECT_EQ(gState->getTransform()->matrix().m[3][0], 1);
}

TEST_F(StateTest, ASnapshotOfTheUncoveredRecordServesAgain)
{
    const auto attrib = gState->getAttrib();
    const auto transform = gState->getTransform();
    gState->attributePush();
    gAttrib->flatness(0.75f);
    gTransform->translate(5, 0, 0);
    gState->getAttrib();
    gState->getTransform();
    gState->attributePop();
    EXPECT_EQ(gState->getAttrib()->flatnessLimit, 0.5f);
    EXPECT_EQ(gState->getTransform()->matrix(), gIdentity);
    EXPECT_EQ(attrib->flatnessLimit, 0.5f);
    EXPECT_EQ(transform->matrix(), gIdentity);
}

TEST_F(StateTest, AMatrixBlockDoesNotLeakItsSnapshot)
{
    gTransform->translate(1, 0, 0);
    gState->matrixPush();
    gTransform->translate(5, 0, 0);
    EXPECT_EQ(gState->getTransform()->matrix().m[3][0], 6);
    gState->matrixPop();
    EXPECT_EQ(gState->getTransform()->matrix().m[3][0], 1);
}

TEST_F(StateTest, ManySnapshotsShareOneRecord)
{
    std::vector<std::shared_ptr<const Attrib>> kept;
    for (int i = 0; i < 100'000; ++i) kept.push_back(gState->getAttrib());
    EXPECT_EQ(kept.front(), kept.back());
    gAttrib->flatness(0.25f);
    EXPECT_NE(gState->getAttrib(), kept.back());
    EXPECT_EQ(kept.back()->flatnessLimit, 0.5f);
}

TEST_F(StateTest, ALightOutlivesTheAttributeBlockItWasMadeIn)
{
    gState->sceneBegin();
    gState->attributePush();
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    gState->attributePop();
    EXPECT_TRUE(gAttrib->lights.empty());
    gAttrib->lightSwitch(light, 1);
    EXPECT_FALSE(gAttrib->lights.empty());
    EXPECT_TRUE(reports.empty());
    gState->sceneEnd();
    gAttrib->lightSwitch(light, 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_TRUE(gAttrib->lights.empty());
}

TEST_F(StateTest, ALightOfTheFrameOutlivesItsWorlds)
{
    gState->frameBegin();
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    gState->sceneBegin();
    gState->sceneEnd();
    gAttrib->lightSwitch(light, 0);
    EXPECT_TRUE(reports.empty());
    gState->frameEnd();
    EXPECT_EQ(gState->liveLight(light), nullptr);
}

TEST_F(StateTest, AnObjectLivesUntilItsWorldEnds)
{
    gState->sceneBegin();
    const void* object = gState->objectBegin();
    EXPECT_NE(object, nullptr);
    gState->objectEnd();
    EXPECT_NE(gState->liveObject(object), nullptr);
    gState->sceneEnd();
    EXPECT_EQ(gState->liveObject(object), nullptr);
    gState->sceneBegin();
    zebObjectCall(object);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
}

TEST_F(StateTest, HandlesOfOneKindAreNoneOfTheOther)
{
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    const void* object = gState->objectBegin();
    EXPECT_EQ(gState->liveObject(light), nullptr);
    EXPECT_EQ(gState->liveLight(object), nullptr);
    EXPECT_EQ(gState->liveLight(nullptr), nullptr);
    EXPECT_EQ(gState->liveObject(nullptr), nullptr);
}

TEST_F(StateTest, ObjectsMayBeDefinedOutsideTheWorld)
{
    const void* object = zebObjectBegin();
    zebObjectEnd();
    EXPECT_NE(object, nullptr);
    EXPECT_NE(gState->liveObject(object), nullptr);
    EXPECT_TRUE(reports.empty());
}
