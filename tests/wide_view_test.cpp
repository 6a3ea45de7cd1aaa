// Views of almost half a circle: pieces at the edge of the picture are thousands of times longer
// than wide, and all the same every ordinary surface is drawn whole.

#include <random>

#include "support/families.h"
#include "support/picture.h"
#include "support/reports.h"

namespace zebtest
{

namespace
{

class WideView : public testing::Test
{
protected:
    WideView() { zebReset(); }
    ~WideView() override { zebReset(); }

    void begin()
    {
        zebReset();
        zebRasterViewport(0, kWidth, 0, kHeight);
        zebViewPerspective(179);
        zebOutputSamples(ZEB_SAMPLES_ALPHA);
        picture.attachFloat();
    }
    static void turn(unsigned seed)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> axis(-1, 1), angle(0, 360);
        const float a = angle(random), x = axis(random), y = axis(random), z = axis(random);
        zebRotate(a, x, y, z);
    }
    // At less than 2 units from the eye along each axis.
    static void move(unsigned seed)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> aside(-2, 2);
        const float x = aside(random), y = aside(random), z = aside(random);
        zebTranslate(x, y, z);
    }
    static void show(const std::function<void(float)>& add)
    {
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        add(1);
        zebSceneEnd();
    }

    static constexpr long kWidth = 128, kHeight = 96;
    Picture picture{1};
    Reports reports;
};

}  // namespace

// The surfaces lie at random round the eye.
TEST_F(WideView, NoFamilyRunsOutOfSplits)
{
    for (const Family& family : families()) {
        for (const unsigned seed : {88u}) {
            begin();
            move(seed);
            turn(seed);
            show(family.add);
            EXPECT_TRUE(reports.empty()) << family.name << ' ' << seed;
            reports.clear();
        }
    }
}

// Whatever way it looks, a ray from within a closed surface meets it. Rounding may lose a sample
// between slivers.
TEST_F(WideView, FromWithinAClosedSurfaceFillsThePicture)
{
    for (const Family& family : families()) {
        const bool ring = family.name == "torus" || family.name == "NURBS";
        if (!ring && family.name != "sphere" && family.name != "polygon mesh") continue;
        begin();
        turn(1);
        // Into the ring, whose middle runs 0.7 from its axis.
        zebTranslate(ring ? -0.7f : 0.2f, 0, 0);
        show(family.add);
        EXPECT_TRUE(reports.empty()) << family.name;
        reports.clear();
        EXPECT_GE(picture.sum(0), kWidth * kHeight - 1) << family.name;
    }
}

}  // namespace zebtest
