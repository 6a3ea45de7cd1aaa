// zebSpheres against as many calls of zebSphere.

#include <random>

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Spheres : public RasterTest
{
protected:
    Spheres()
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<float> unit(0, 1);
        for (int k = 0; k < kCount; ++k) {
            for (float size : {60.0f, 40.0f}) centers.push_back(size * unit(random));
            centers.push_back(0.2f + 0.6f * unit(random));
            radii.push_back(0.05f + 8 * unit(random) * unit(random));
            for (int c = 0; c < 3; ++c) colors.push_back(unit(random));
            for (int c = 0; c < 3; ++c) opacities.push_back(0.3f + 0.7f * unit(random));
        }
    }
    void begin(short quirks = 0)
    {
        zebReset();
        raster(60, 40);
        zebQuirks(quirks);
        beginFlat();
        zebScale(1, 1, 0.05f);  // flat, so that they stay between the clipping planes
    }
    void addAll()
    {
        const std::vector<float> c = raised();
        zebSpheres(kCount, c.data(), radii.data(), zebQuark("color"), colors.data(),
                   zebQuark("opacity"), opacities.data(), 0);
    }
    void addEach()
    {
        const std::vector<float> c = raised();
        for (std::size_t k = 0; k < kCount; ++k) {
            zebAttributePush();
            zebTranslate(c[3 * k], c[3 * k + 1], c[3 * k + 2]);
            std::vector<float> color, opacity;
            for (int corner = 0; corner < 4; ++corner) {
                color.insert(color.end(), &colors[3 * k], &colors[3 * k] + 3);
                opacity.insert(opacity.end(), &opacities[3 * k], &opacities[3 * k] + 3);
            }
            zebSphere(radii[k], -radii[k], radii[k], 360, zebQuark("color"), color.data(),
                      zebQuark("opacity"), opacity.data(), 0);
            zebAttributePop();
        }
    }
    void expectSame(const std::vector<float>& a) const
    {
        const std::vector<float> b = values();
        ASSERT_EQ(a.size(), b.size());
        double sum = 0;
        for (std::size_t k = 0; k < a.size(); ++k) {
            ASSERT_NEAR(a[k], b[k], 1e-4) << k;
            sum += a[k];
        }
        EXPECT_GT(sum, 1000);
    }
    std::vector<float> values() const
    {
        std::vector<float> list;
        for (long y = 0; y < 40; ++y) {
            for (long x = 0; x < 60; ++x) {
                for (int c = 0; c < 5; ++c) list.push_back(picture.value(x, y, c));
            }
        }
        return list;
    }

    static constexpr long kCount = 60;
    std::vector<float> centers, radii, colors, opacities;

private:
    // In space before it is made flat.
    std::vector<float> raised() const
    {
        std::vector<float> c = centers;
        for (std::size_t k = 2; k < c.size(); k += 3) c[k] *= 20;
        return c;
    }
};

}  // namespace

TEST_F(Spheres, LookLikeAsManyOfThem)
{
    begin();
    addEach();
    zebSceneEnd();
    const std::vector<float> each = values();
    begin();
    addAll();
    zebSceneEnd();
    expectSame(each);
    // The arrays are copied.
    begin();
    addAll();
    colors.assign(colors.size(), 0);
    zebSceneEnd();
    expectSame(each);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Spheres, CanBeKeptInAnObject)
{
    for (const short quirks : {0, 1}) {
        begin(quirks);
        addAll();
        zebSceneEnd();
        const std::vector<float> direct = values();
        begin(quirks);
        const void* object = zebObjectBegin();
        addAll();
        zebObjectEnd();
        zebObjectCall(object);
        zebSceneEnd();
        // By default all have one sequence number, which decides nothing but draws here.
        const std::vector<float> instance = values();
        double apart = 0;
        for (std::size_t k = 0; k < direct.size(); ++k) {
            apart += std::fabs(double{direct[k]} - double{instance[k]});
        }
        EXPECT_LT(apart / static_cast<double>(direct.size()), 2e-3) << quirks;
    }
    EXPECT_TRUE(reports.empty());
}

// The second sphere's surface takes no light.
TEST_F(Spheres, EachTakesItsOwnUniformValue)
{
    const float places[6] = {10, 10, 10, 30, 10, 10}, sizes[2] = {5, 5}, ka[2] = {1, 0};
    zebReset();
    raster(60, 40);
    zebSceneBegin();
    zebLightSource(zebQuark("ambient"), 0);
    zebSurface(zebQuark("matte"), 0);
    zebScale(1, 1, 0.05f);
    zebSpheres(2, places, sizes, zebQuark("ka"), ka, 0);
    zebSceneEnd();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(alpha(10, 10), 1);
    EXPECT_EQ(alpha(30, 10), 1);
    EXPECT_EQ(red(10, 10), 1);
    EXPECT_EQ(red(30, 10), 0);
}

TEST_F(Spheres, RefuseWhatCannotBeRead)
{
    const float nan = std::nanf("");
    const float place[3] = {10, 10, 0.5f}, far[3] = {10, nan, 0.5f}, size[1] = {5},
                infinite[1] = {HUGE_VALF};
    begin();
    const struct {
        long n;
        const float *centers, *radii;
        const char* message;
    } cases[] = {
        {-1, place, size, "zebSpheres: number of spheres -1 out of range"},
        {(1L << 27) + 1, place, size, "zebSpheres: number of spheres 134217729 out of range"},
        {1, nullptr, size, "zebSpheres: centers are null"},
        {1, place, nullptr, "zebSpheres: radii are null"},
        {1, far, size, "zebSpheres: centers or radii are not finite"},
        {1, place, infinite, "zebSpheres: centers or radii are not finite"},
    };
    for (const auto& c : cases) {
        reports.clear();
        zebSpheres(c.n, c.centers, c.radii, 0);
        ASSERT_EQ(reports.size(), 1u) << c.message;
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].message, c.message);
    }
    reports.clear();
    zebSpheres(1, place, size, zebQuark("color"), nullptr, 0);
    EXPECT_EQ(reports.size(), 1u);
    reports.clear();
    zebSpheres(0, nullptr, nullptr, 0);
    EXPECT_TRUE(reports.empty()) << "none is fine";
    zebSceneEnd();
    EXPECT_EQ(picture.sum(3), 0);
}

}  // namespace zebtest
