// Where the dicing test looks at a surface, and what it makes of it.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "geom/primitive.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

constexpr std::uint32_t kDicingDraws = 1;  // what the stream of the dicing test is seeded with

struct Place {
    float u, v;
    auto operator<=>(const Place&) const = default;
};

// A surface made of a function, that keeps the places where it is asked for derivatives, which the
// first pass does, and those of the points that the flatness pass asks for after it.
class Probe : public Primitive
{
public:
    std::function<Pointw(float, float)> P = [](float, float) { return Pointw(); };
    mutable std::vector<Place> first, flatness;

    Pointw evalP(float u, float v) const override
    {
        flatness.push_back({u, v});
        return P(u, v);
    }
    Pointw evaldPdu(float u, float v) const override
    {
        first.push_back({u, v});
        flatness.clear();
        return {0.5f, 0, 0, 1};
    }
    Pointw evaldPdv(float, float) const override
    {
        flatness.clear();
        return {0, 0.5f, 0, 1};
    }
};

class DicingTest : public testing::Test
{
protected:
    DicingTest()
    {
        zebReset();
        zebShadingRate(1);
    }
    ~DicingTest() override { zebReset(); }

    // Whether a grid of one micropolygon is fine enough.
    bool isOneMicropolygon(const Probe& probe)
    {
        const RenderFrame frame(Option(), toRaster);
        Dicing dicing{frame};
        return probe.diceable(dicing) && dicing.fUSteps == 1 && dicing.fVSteps == 1;
    }
    // Drawn cell by cell, u before v.
    static std::vector<Place> jittered(Random& random)
    {
        std::vector<Place> places;
        for (int j = 0; j < 4; ++j) {
            for (int i = 0; i < 4; ++i) {
                const float u = (static_cast<float>(i) + random.unit()) * 0.25f;
                const float v = (static_cast<float>(j) + random.unit()) * 0.25f;
                places.push_back({u, v});
            }
        }
        return places;
    }
    // The two places from the k-th on that the flatness pass asked for, in whichever order.
    using Ends = std::pair<Place, Place>;
    static Ends ends(const Probe& probe, std::size_t k)
    {
        return std::minmax(probe.flatness[k], probe.flatness[k + 1]);
    }

    Matrix toRaster;
    zebtest::Reports reports;
};

}  // namespace

TEST_F(DicingTest, DrawsUBeforeVInEachOf4By4Cells)
{
    const Probe probe;
    ASSERT_TRUE(isOneMicropolygon(probe));
    Random draws = probe.random(kDicingDraws);
    EXPECT_EQ(probe.first, jittered(draws));
}

// A flat surface is asked five times a cell: for the place, and for both ends of either chord.
TEST_F(DicingTest, DrawsAnewForFlatness)
{
    const Probe probe;
    ASSERT_TRUE(isOneMicropolygon(probe));
    Random draws = probe.random(kDicingDraws);
    jittered(draws);
    const std::vector<Place> expected = jittered(draws);
    ASSERT_EQ(probe.flatness.size(), 5 * expected.size());
    for (std::size_t k = 0; k < expected.size(); ++k)
        EXPECT_EQ(probe.flatness[5 * k], expected[k]) << k;
}

// Half a micropolygon either way, or as far as the surface goes.
TEST_F(DicingTest, AChordIsAMicropolygonLongAndEndsWhereTheSurfaceDoes)
{
    for (const float side : {1.0f, 0.25f}) {  // derivatives are 1/2: one step, then two
        zebShadingRate(side * side);
        const Probe probe;
        isOneMicropolygon(probe);
        const float most = side < 0.5f ? 0.25f : 0.5f;
        ASSERT_EQ(probe.flatness.size(), 5u * 16u);
        for (std::size_t k = 0; k < probe.flatness.size(); k += 5) {
            const auto [u, v] = probe.flatness[k];
            const float hu = std::min({u, 1 - u, most}), hv = std::min({v, 1 - v, most});
            EXPECT_EQ(ends(probe, k + 1), (Ends{Place{u - hu, v}, Place{u + hu, v}}));
            EXPECT_EQ(ends(probe, k + 3), (Ends{Place{u, v - hv}, Place{u, v + hv}}));
        }
    }
}

// Straight in space, but foreshortened: 20 long, twice as far at its end, it covers 10 pixels with
// its middle at 20 / 3.
TEST_F(DicingTest, TheMiddleOfAChordIsTakenBeforeTheCamera)
{
    toRaster.m[2][3] = 1;
    toRaster.m[3][3] = 0;  // w = z
    zebFlatness(0.01f);
    Probe alongU, alongV;
    alongU.P = [](float u, float) { return Pointw(20 * u, 0, 1 + u, 1); };
    alongV.P = [](float, float v) { return Pointw(0, 20 * v, 1 + v, 1); };
    EXPECT_TRUE(isOneMicropolygon(alongU));
    EXPECT_TRUE(isOneMicropolygon(alongV));
}

// One end of each chord is on the border, which stands out by 1: the chord's middle by 1/2.
TEST_F(DicingTest, AChordAsFarOffAsTheFlatnessIsFlat)
{
    const auto border = [](float t) { return t == 0 || t == 1 ? 1.0f : 0.0f; };
    Probe alongU, alongV;
    alongU.P = [=](float u, float) { return Pointw(border(u), 0, 0, 1); };
    alongV.P = [=](float, float v) { return Pointw(0, border(v), 0, 1); };
    zebFlatness(0.5f);
    EXPECT_TRUE(isOneMicropolygon(alongU));
    EXPECT_TRUE(isOneMicropolygon(alongV));
}
