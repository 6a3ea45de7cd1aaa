// A scene looks the same whatever unit its lengths are given in, and however near the eye is.

#include "support/families.h"

namespace zebtest
{

namespace
{

constexpr long kSize = 64;
const float kUnits[] = {1e-7f, 1e-5f, 1e-3f, 1e3f, 1e6f, 1e9f};

class Units : public testing::Test
{
protected:
    ~Units() override { zebReset(); }

    // A lit view of what build adds, all lengths times the unit.
    template <class Build>
    void render(Picture& picture, float unit, const char* surface, short model, const Build& build)
    {
        zebReset();
        zebQuirks(0);
        zebRasterViewport(0, kSize, 0, kSize);
        zebViewPerspective(40);
        zebOutputSamples(0x303);
        picture.attachFloat();
        zebTranslate(0, 0, 3.5f * unit);
        zebRotate(35, 1, 0.4f, 0.2f);
        zebSceneBegin();
        light(unit);
        zebSurface(zebQuark(surface), 0);
        zebShadingModel(model);
        color(0.9f, 0.6f, 0.3f);
        build(unit);
        zebSceneEnd();
    }

    static void light(float unit)
    {
        const Vec from{0, 0, 0}, to{-0.4f * unit, 0.5f * unit, unit};
        const float little = 0.1f, much = 0.8f;
        zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &little, 0);
        zebLightSource(zebQuark("distant"), zebQuark("intensity"), &much, zebQuark("from"),
                       from.data(), zebQuark("to"), to.data(), 0);
    }

    void expectSame(const Picture& a, const Picture& b)
    {
        EXPECT_GT(b.sum(3), 200);
        EXPECT_NEAR(a.sum(3), b.sum(3), 0.001 * b.sum(3));
        long differing = 0;
        for (long y = 0; y < kSize; ++y) {
            for (long x = 0; x < kSize; ++x) {
                if (a.value(x, y, 3) < 1 || b.value(x, y, 3) < 1) continue;
                for (int c = 0; c < 3; ++c) {
                    differing += std::fabs(a.value(x, y, c) - b.value(x, y, c)) > 0.5f / 255;
                }
            }
        }
        EXPECT_EQ(differing, 0);
    }

    Picture one{4}, other{4};
    Reports reports;
};

}  // namespace

TEST_F(Units, EveryFamilyIsLitTheSameInAnyUnit)
{
    for (const Family& family : families()) {
        for (const char* surface : {"plastic", "diffuse", "metal"}) {
            const short model = *surface == 'm' ? ZEB_CONSTANT : ZEB_SMOOTH;
            render(one, 1, surface, model, family.add);
            for (const float unit : kUnits) {
                SCOPED_TRACE(family.name + ", " + surface + ", unit " + std::to_string(unit));
                render(other, unit, surface, model, family.add);
                expectSame(other, one);
            }
        }
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Units, GivenNormalsTurnTheSameUnderAnyScale)
{
    // The polygon and its normals are of unit size; the scale comes from the transformation.
    const auto add = [](float unit) {
        zebScale(unit, unit, unit);
        addCube(1);
    };
    render(one, 1, "diffuse", ZEB_SMOOTH, add);
    for (const float unit : {1e-7f, 1e-6f, 1e6f, 1e10f}) {
        SCOPED_TRACE(unit);
        render(other, unit, "diffuse", ZEB_SMOOTH, add);
        expectSame(other, one);
    }
}

TEST_F(Units, SurfacesCloseToTheEyeAreLitAsFarOnesAre)
{
    // Looking straight at what lies across the line of sight: the light comes from behind the eye.
    const auto sphere = [] {
        zebRotate(90, 1, 0.2f, 0);
        zebSphere(1, -1, 1, 360, 0);
    };
    const auto patch = [] {
        const Vec p[4] = {{-1, -1, -1}, {1, -1, -1}, {-1, 1, -1}, {1, 1, -1}};
        zebPatch(ZEB_BILINEAR, zebQuark("point"), p, 0);
    };
    const auto square = [] { polygon({{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}}); };
    for (const std::function<void()>& add : {std::function<void()>(sphere), {patch}, {square}}) {
        for (const float distance : {1e-2f, 1e-3f, 1e-4f, 1e-5f}) {
            zebReset();
            zebRasterViewport(0, 16, 0, 16);
            zebViewPerspective(20);
            zebOutputSamples(0x303);
            one.attachFloat();
            zebTranslate(0, 0, 1 + distance);
            zebSceneBegin();
            zebLightSource(zebQuark("distant"), 0);
            zebSurface(zebQuark("diffuse"), 0);
            zebShadingModel(ZEB_SMOOTH);
            add();
            zebSceneEnd();
            for (long y = 0; y < 16; ++y) {
                for (long x = 0; x < 16; ++x) {
                    ASSERT_NEAR(one.value(x, y, 0), 1, 0.001) << distance << ": " << x << ' ' << y;
                }
            }
        }
    }
}

TEST_F(Units, ConcaveOutlinesStayConcaveInAnyUnit)
{
    // A crescent of 198 corners: a half circle of radius 1 less an arc that reaches 0.6.
    std::vector<Vec> crescent;
    const int n = 99;
    for (int k = 0; k < n; ++k) {
        const double a = M_PI * k / (n - 1);
        crescent.push_back({static_cast<float>(std::cos(a)), static_cast<float>(std::sin(a)), 0});
    }
    for (int k = n - 1; k-- > 1;) {
        const double a = M_PI * k / (n - 1);
        crescent.push_back(
            {static_cast<float>(std::cos(a)), static_cast<float>(0.6 * std::sin(a)), 0});
    }
    crescent.push_back({0.999f, 0.01f, 0});
    const auto add = [&](float unit) {
        const std::vector<Vec> points = times(crescent, unit);
        const auto size = static_cast<long>(points.size());
        zebGeneralPolygon(1, &size, zebQuark("point"), points.data(), 0);
    };
    for (const float unit : {1e-7f, 1e-3f, 1.0f, 1e6f}) {
        zebReset();
        zebRasterViewport(0, 128, 0, 128);
        zebOutputSamples(0x303);
        zebViewOrthographic();
        zebImageWindow(-unit, unit, -unit, unit);
        one.attachFloat();
        zebTranslate(0, 0, unit);
        zebSceneBegin();
        add(unit);
        zebSceneEnd();
        // Half of pi (1 - 0.6), in pixels 64 of which are the unit.
        EXPECT_NEAR(one.sum(3), 64 * 64 * M_PI * 0.2, 15) << unit;
    }
}

}  // namespace zebtest
