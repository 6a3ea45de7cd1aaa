#include <gtest/gtest.h>

#include <memory>

#include "shade/surface.h"

using namespace zeb;

namespace
{

// Answers a fixed factor, and remembers what it was asked.
class ProbeLight : public Light
{
public:
    ProbeLight(float factor, const Color& color, bool ambient = false)
        : fFactor(factor), fColor(color), fAmbient(ambient)
    {
    }
    bool isambient() const override { return fAmbient; }
    float illuminates(const Point& P, const Point& N, float angle, long n,
                      LightSample& sample) const override
    {
        ++asked;
        point = P;
        axis = N;
        coneAngle = angle;
        samples = n;
        sample.L = Point(1, 2, 3);
        return fFactor;
    }
    void evaluate(LightSample& sample) const override
    {
        ++evaluated;
        before = sample.Cl;
        beforeOpacity = sample.Ol;
        sample.Cl = fColor;
        sample.Ol = Color(0.25f, 0.5f, 0.75f);
    }

    mutable int asked = 0, evaluated = 0;
    mutable Point point, axis;
    mutable float coneAngle = 0;
    mutable long samples = 0;
    mutable Color before{9, 9, 9}, beforeOpacity{9, 9, 9};

private:
    float fFactor;
    Color fColor;
    bool fAmbient;
};

class IlluminanceTest : public testing::Test
{
protected:
    IlluminanceTest() { point.lights = &lights; }

    std::shared_ptr<ProbeLight> light(float factor, const Color& color, bool ambient = false)
    {
        auto made = std::make_shared<ProbeLight>(factor, color, ambient);
        lights.add(made);
        return made;
    }

    List<std::shared_ptr<Light>> lights;
    SurfacePoint point;
};

}  // namespace

TEST_F(IlluminanceTest, WithoutLightsThereIsNoStep)
{
    Illuminance walk(point, {0, 0, 0});
    EXPECT_FALSE(++walk);
}

TEST_F(IlluminanceTest, VisitsEveryLightOnceFromTheHeadOfTheList)
{
    light(1, {1, 0, 0});
    light(1, {0, 1, 0});
    Illuminance walk(point, {0, 0, 0});
    ASSERT_TRUE(++walk);
    EXPECT_EQ(point.Cl, Color(0, 1, 0));
    ASSERT_TRUE(++walk);
    EXPECT_EQ(point.Cl, Color(1, 0, 0));
    EXPECT_FALSE(++walk);
}

TEST_F(IlluminanceTest, PassesOverAmbientLights)
{
    const auto ambient = light(1, gWhite, true);
    Illuminance walk(point, {0, 0, 0});
    EXPECT_FALSE(++walk);
    EXPECT_EQ(ambient->evaluated, 0);
}

TEST_F(IlluminanceTest, PassesOverLightsThatDoNotReachThePoint)
{
    const auto none = light(0, gWhite);
    const auto hardly = light(1e-10f, gWhite);
    const auto little = light(1e-9f, gWhite);
    Illuminance walk(point, {0, 0, 0});
    EXPECT_TRUE(++walk);
    EXPECT_FALSE(++walk);
    EXPECT_EQ(none->evaluated, 0);
    EXPECT_EQ(hardly->evaluated, 0);
    EXPECT_EQ(little->evaluated, 1);
    EXPECT_EQ(none->asked, 1);
}

TEST_F(IlluminanceTest, PassesPointConeAndCountThrough)
{
    const auto probe = light(1, gWhite);
    Illuminance walk(point, {1, 2, 3}, {4, 5, 6}, 0.75f, 16);
    ++walk;
    EXPECT_EQ(probe->point, Point(1, 2, 3));
    EXPECT_EQ(probe->axis, Point(4, 5, 6));
    EXPECT_EQ(probe->coneAngle, 0.75f);
    EXPECT_EQ(probe->samples, 16);
}

TEST_F(IlluminanceTest, WithoutAConeLightComesFromEverywhere)
{
    const auto probe = light(1, gWhite);
    Illuminance walk(point, {1, 2, 3});
    ++walk;
    EXPECT_EQ(probe->axis, Point(0, 0, 0));
    EXPECT_EQ(probe->coneAngle, 3.1415927f);
}

TEST_F(IlluminanceTest, ScalesTheLightByTheFactorAndTurnsLRound)
{
    light(0.5f, {1, 2, 4});
    Illuminance walk(point, {0, 0, 0});
    ASSERT_TRUE(++walk);
    EXPECT_EQ(point.Cl, Color(0.5f, 1, 2));
    EXPECT_EQ(point.L, Point(-1, -2, -3));
    EXPECT_EQ(point.Ol, Color(0.25f, 0.5f, 0.75f));
}

TEST_F(IlluminanceTest, EveryLightStartsBlackAndOpaque)
{
    const auto first = light(1, {1, 2, 3});
    const auto second = light(1, {1, 2, 3});
    Illuminance walk(point, {0, 0, 0});
    ++walk;
    ++walk;
    for (const auto& probe : {first, second}) {
        EXPECT_EQ(probe->before, gBlack);
        EXPECT_EQ(probe->beforeOpacity, gWhite);
    }
}
