// zebLookAt against what a camera is.

#include <random>

#include "support/scene.h"

namespace zebtest
{

namespace
{

class LookAt : public RasterTest
{
protected:
    // Where points given after the camera lie in its space.
    static Vec seen(const Vec& eye, const Vec& at, const Vec& up, Vec point)
    {
        zebReset();
        zebFrameBegin();
        zebMarkSpace(zebQuark("seen"));
        zebLookAt(eye.data(), at.data(), up.data());
        zebMarkSpace(zebQuark("scene"));
        EXPECT_NE(zebProjectPoints(zebQuark("scene"), zebQuark("seen"), 1,
                                   reinterpret_cast<ZebPoint*>(point.data())),
                  nullptr);
        zebFrameEnd();
        return point;
    }
    static void expectNear(const Vec& a, const Vec& b, double room)
    {
        for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(a[k], b[k], room) << k;
    }
};

}  // namespace

// From 5 in front of the origin: world x runs to the right, y up, and z away.
TEST_F(LookAt, AlongZIsATranslation)
{
    expectNear(seen({0, 0, -5}, {0, 0, 0}, {0, 1, 0}, {1, 2, 3}), {1, 2, 8}, 1e-6);
}

// From the right, looking to the left, what is far along z lies to the right; from above, with z
// up, x does.
TEST_F(LookAt, SpaceIsLeftHanded)
{
    expectNear(seen({5, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}), {1, 0, 5}, 1e-6);
    expectNear(seen({0, 5, 0}, {0, 0, 0}, {0, 0, 1}, {1, 0, 0}), {1, 0, 5}, 1e-6);
}

TEST_F(LookAt, ThePlaceIsStraightAheadAndUpIsUp)
{
    std::mt19937 random(4);
    std::uniform_real_distribution<float> number(-3, 3);
    const auto vec = [&] {
        const float x = number(random), y = number(random), z = number(random);
        return Vec{x, y, z};
    };
    for (int k = 0; k < 200; ++k) {
        const Vec eye = vec(), at = vec(), up = vec(), point = vec();
        const Vec way = at - eye;
        expectNear(seen(eye, at, up, eye), {0, 0, 0}, 1e-5);
        expectNear(seen(eye, at, up, at), {0, 0, static_cast<float>(std::sqrt(dot(way, way)))},
                   1e-5);
        const Vec above{eye[0] + up[0], eye[1] + up[1], eye[2] + up[2]};
        const Vec high = seen(eye, at, up, above);
        EXPECT_NEAR(high[0], 0, 1e-5);
        EXPECT_GT(high[1], 0);
        // Nothing is stretched.
        const Vec p = seen(eye, at, up, point), d = point - eye;
        EXPECT_NEAR(dot(p, p), dot(d, d), 1e-4);
    }
}

TEST_F(LookAt, OnlyTheDirectionOfUpCounts)
{
    const Vec eye{1, 2, 3}, at{-1, 0, 2}, point{0.5f, 0.25f, 4};
    const Vec one = seen(eye, at, {0, 1, 0}, point);
    expectNear(seen(eye, at, {0, 1e-20f, 0}, point), one, 1e-6);
    expectNear(seen(eye, at, {0, 1e20f, 0}, point), one, 1e-6);
    // Leaning forwards changes nothing either.
    expectNear(seen(eye, at, {-2e-3f, 1 - 2e-3f, -1e-3f}, point), one, 1e-5);
}

TEST_F(LookAt, IsAppliedBeforeWhatCameEarlier)
{
    zebFrameBegin();
    zebMarkSpace(zebQuark("outside"));
    zebScale(2, 2, 2);
    const Vec eye{0, 0, -5}, at{0, 0, 0}, up{0, 1, 0};
    zebLookAt(eye.data(), at.data(), up.data());
    zebMarkSpace(zebQuark("inside"));
    Vec point{1, 2, 3};
    zebProjectPoints(zebQuark("inside"), zebQuark("outside"), 1,
                     reinterpret_cast<ZebPoint*>(point.data()));
    expectNear(point, {2, 4, 16}, 1e-6);
    zebFrameEnd();
}

TEST_F(LookAt, RefusesWhatIsNoCamera)
{
    const float inf = HUGE_VALF;
    const Vec eye{0, 0, -5}, at{0, 0, 0}, up{0, 1, 0}, none{0, 0, 0}, along{0, 0, 2},
        back{0, 0, -1}, infinite{0, inf, 0};
    const struct {
        const float *eye, *at, *up;
        long code;
        const char* message;
    } cases[] = {
        {nullptr, at.data(), up.data(), 10, "zebLookAt: eye is null"},
        {eye.data(), nullptr, up.data(), 10, "zebLookAt: place is null"},
        {eye.data(), at.data(), nullptr, 10, "zebLookAt: up direction is null"},
        {eye.data(), at.data(), infinite.data(), 10,
         "zebLookAt: transformation value inf is not finite"},
        {eye.data(), eye.data(), up.data(), 15,
         "zebLookAt: the eye is at the place that it looks at"},
        {eye.data(), at.data(), none.data(), 15, "zebLookAt: no way up across the line of sight"},
        {eye.data(), at.data(), along.data(), 15, "zebLookAt: no way up across the line of sight"},
        {eye.data(), at.data(), back.data(), 15, "zebLookAt: no way up across the line of sight"},
    };
    zebFrameBegin();
    zebMarkSpace(zebQuark("before"));
    for (const auto& c : cases) {
        reports.clear();
        zebLookAt(c.eye, c.at, c.up);
        ASSERT_EQ(reports.size(), 1u) << c.message;
        EXPECT_EQ(reports[0].code, c.code);
        EXPECT_EQ(reports[0].message, c.message);
        zebMarkSpace(zebQuark("after"));
        Vec point{1, 2, 3};
        zebProjectPoints(zebQuark("after"), zebQuark("before"), 1,
                         reinterpret_cast<ZebPoint*>(point.data()));
        EXPECT_EQ(point, (Vec{1, 2, 3})) << "the transformation stays";
    }
    zebFrameEnd();
}

}  // namespace zebtest
