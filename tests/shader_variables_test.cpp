// Primitives with variables of their own for the surface that they share.

#include "support/scene.h"

namespace zebtest
{

namespace
{

constexpr float kHalf = 0.5f, kQuarter = 0.25f, kNone = 0;

// Three squares beside each other, twelve pixels wide: without a variable, with one, and without.
class ShaderVariables : public RasterTest
{
protected:
    void begin()
    {
        raster(36, 12);
        zebSceneBegin();
        zebLightSource(zebQuark("ambient"), 0);
    }
    void squares(const char* name, const float* value)
    {
        for (int k = 0; k < 3; ++k) {
            const auto x = static_cast<float>(12 * k);
            const std::vector<Vec> points = {
                {x, 0, 0.5f}, {x + 12, 0, 0.5f}, {x + 12, 12, 0.5f}, {x, 12, 0.5f}};
            if (k == 1) {
                zebPolygon(4, zebQuark("point"), points.data(), zebQuark(name), value, 0);
            } else {
                polygon(points);
            }
        }
        zebSceneEnd();
        EXPECT_TRUE(reports.empty());
    }
};

}  // namespace

TEST_F(ShaderVariables, OfMetalCountForTheirPrimitiveAlone)
{
    begin();
    zebSurface(zebQuark("metal"), zebQuark("ka"), &kQuarter, 0);
    squares("ka", &kHalf);
    // White under ambient light of 1: what is reflected of it.
    EXPECT_NEAR(red(6, 6), 0.25f, 1e-5f);
    EXPECT_NEAR(red(18, 6), 0.5f, 1e-5f);
    EXPECT_NEAR(red(30, 6), 0.25f, 1e-5f);
}

TEST_F(ShaderVariables, OfMetalLeaveItsOtherParametersAsTheyAre)
{
    begin();
    zebSurface(zebQuark("metal"), zebQuark("ka"), &kQuarter, 0);
    squares("ks", &kNone);
    for (const long x : {6, 18, 30}) EXPECT_NEAR(red(x, 6), 0.25f, 1e-5f);
}

// It has no parameters: what the primitive brings is for other surfaces.
TEST_F(ShaderVariables, OfConstantChangeNothing)
{
    begin();
    zebSurface(zebQuark("constant"), 0);
    color(0.75f, 0, 0);
    squares("ka", &kHalf);
    for (const long x : {6, 18, 30}) EXPECT_NEAR(red(x, 6), 0.75f, 1e-5f);
}

}  // namespace zebtest
