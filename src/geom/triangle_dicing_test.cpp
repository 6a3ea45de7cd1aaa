// What the dicing test of triangles measures, against the same measured from its draws.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "geom/convex_polygon.h"
#include "geom/triangle.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

constexpr std::uint32_t kDicingDraws = 1;  // what the stream of the dicing test is seeded with

// Of the derivatives at the places drawn, on the screen.
struct Measured {
    double most = 0;  // length
    double mostU = 0, mostV = 0;
    double maxArea = 0, minArea = 1e38;

    bool uneven() const { return maxArea > 2 * minArea; }
};

// A right-angled triangle 10 away, its sides along x and y, which come nearer by `nearer`. The
// camera divides by z.
class TriangleDicing : public testing::Test
{
protected:
    TriangleDicing()
    {
        zebReset();
        toRaster.m[2][3] = 1;
        toRaster.m[3][3] = 0;
    }
    ~TriangleDicing() override { zebReset(); }

    static Triangle make(float width, float height, float nearer)
    {
        const float points[9] = {0, 0, 10, width, 0, 10 - nearer, 0, height, 10 - nearer};
        const unsigned short token = kQPoint;
        void* const value = const_cast<float*>(points);
        const ConvexPolygon parent(3, 1, &token, &value);
        const long indices[3] = {0, 1, 2};
        return Triangle(parent, 0, indices);
    }
    static Measured measure(const Triangle& t, bool reflected = true)
    {
        const Pointd A = t.vertex(0), B = t.vertex(1), C = t.vertex(2);
        const auto at = [&](double u, double v) {
            const Pointd p = A + (B - A) * u + (C - A) * v;
            return Pointd(p.x / p.z, p.y / p.z, 0);
        };
        Random draws = t.random(kDicingDraws);
        Measured m;
        for (int cell = 0; cell < 16; ++cell) {
            float u = (static_cast<float>(cell % 4) + draws.unit()) * 0.25f;
            float v = (static_cast<float>(cell / 4) + draws.unit()) * 0.25f;
            if (reflected && u + v > 1) {
                u = 1 - u;
                v = 1 - v;
            }
            const double du = distance(at(u + 1.0, v), at(u, v));
            const double dv = distance(at(u, v + 1.0), at(u, v));
            m.mostU = std::max(m.mostU, du);
            m.mostV = std::max(m.mostV, dv);
            m.maxArea = std::max(m.maxArea, du * dv);
            m.minArea = std::min(m.minArea, du * dv);
        }
        m.most = std::max(m.mostU, m.mostV);
        return m;
    }
    static double distance(const Pointd& a, const Pointd& b)
    {
        return std::hypot(b.x - a.x, b.y - a.y);
    }
    bool diceable(const Triangle& t, double maxSize = -1)
    {
        const RenderFrame frame(Option(), toRaster);
        Dicing dicing{frame};
        return t.diceable(dicing, static_cast<float>(maxSize));
    }
    // In micropolygons of side 1.
    static int micropolygons(const Measured& m)
    {
        auto u = static_cast<unsigned short>(std::ceil(m.mostU));
        auto v = static_cast<unsigned short>(std::ceil(m.mostV));
        balanceSteps(u, v, 32);
        return u * v;
    }

    Matrix toRaster;
    zebtest::Reports reports;
};

}  // namespace

// Beyond the long side it would come nearer still, and derivatives would be longer.
TEST_F(TriangleDicing, PlacesBeyondTheLongSideAreReflected)
{
    zebShadingRate(400);  // too coarse to be uneven
    for (int k = 0; k < 20; ++k) {
        const Triangle t = make(60, 60, 1);
        const double most = measure(t).most;
        ASSERT_GT(measure(t, false).most, 1.05 * most);
        EXPECT_TRUE(diceable(t, most * (1 + 1e-6)));
        EXPECT_FALSE(diceable(t, most * (1 - 1e-6)));
    }
}

TEST_F(TriangleDicing, AnAreaThatMoreThanDoublesSplits)
{
    zebShadingRate(1);
    double below = 0, above = 1e38;  // the ratios nearest to 2
    for (int k = 0; k < 500; ++k) {
        const Triangle t = make(60, 60, 0.005f * static_cast<float>(k));
        const Measured m = measure(t);
        ASSERT_GT(micropolygons(m), 16);
        EXPECT_EQ(diceable(t), !m.uneven()) << m.maxArea / m.minArea;
        const double ratio = m.maxArea / m.minArea;
        (m.uneven() ? above : below) = m.uneven() ? std::min(above, ratio) : std::max(below, ratio);
    }
    EXPECT_GT(below, 1.98);
    EXPECT_LT(above, 2.02);
}

TEST_F(TriangleDicing, AnUnevenOneMayHave16Micropolygons)
{
    zebShadingRate(1);
    int sixteen = 0, eighteen = 0;  // no number between the two divides into rows
    for (int k = 0; k < 2000; ++k) {
        const float width = 5 + 0.4f * static_cast<float>(k % 40);
        const float height = 5 + 0.4f * static_cast<float>(k / 40);
        const Triangle t = make(width, height, 3);
        const Measured m = measure(t);
        const int count = micropolygons(m);
        if (!m.uneven() || (count != 16 && count != 18)) continue;
        (count == 16 ? sixteen : eighteen)++;
        EXPECT_EQ(diceable(t), count == 16) << m.mostU << ' ' << m.mostV;
    }
    EXPECT_GT(sixteen, 10);
    EXPECT_GT(eighteen, 10);
}
