// The dicing test's places by lanes, against one place at a time.

#include "geom/sweep_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>

#include "support/plain.h"
#include "support/quadrics.h"
#include "support/reports.h"

using namespace zeb;
using namespace zebtest;

namespace
{

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr int kCount = SweepPlaces::kCount;

// What is no number has no sign that counts.
bool same(double x, double y)
{
    return (std::isnan(x) && std::isnan(y)) || std::memcmp(&x, &y, sizeof x) == 0;
}

class SweepKernels : public testing::Test
{
protected:
    SweepKernels() { zebReset(); }
    ~SweepKernels() override { zebReset(); }

    // A quadric of some family, now and then without extent, or a piece of a piece of one.
    Sample surface()
    {
        zebLoadIdentity();
        if (n.integer(0, 1)) applyRandomTransformation(n);
        Sample s = n.integer(0, 5) ? gFamilies[n.integer(0, 6)](n) : degenerate();
        for (long depth = n.integer(0, 8); depth > 0; --depth) {
            Pieces pieces = split(*s.surface);
            s.surface = std::move(pieces.list[static_cast<std::size_t>(n.integer(0, 3))]);
        }
        return s;
    }
    Sample degenerate()
    {
        switch (n.integer(0, 8)) {
            case 0:
                return sphere(0, 0, 0, sweep(n));
            case 1:
                return sphere(2, 3, 4, sweep(n));
            case 2:
                return cone(2, 0, 0, sweep(n));
            case 3:
                return cylinder(1e30f, -1e30f, 1e30f, 0);
            case 4:
                return hyperboloid({0, 0, 1}, {0, 0, 1}, sweep(n));
            case 5:
                return paraboloid(1, 0, 1e-30f, sweep(n));
            case 6:
                return paraboloid(1, -0.5f, 1, sweep(n));
            case 7:
                return disk(1, 1, sweep(n));
            default:
                return torus(0, 0, 10, 10, sweep(n));
        }
    }
    // To the screen: affine or in perspective, where much is behind the eye; sometimes with
    // something in it that no picture should have.
    Matrix toRaster()
    {
        Matrix m;
        const double scale = std::exp2(static_cast<double>(n.uniform(-4, 9)));
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) m.m[i][j] += scale * double{n.uniform(-1, 1)};
        }
        for (int i = 0; i < 4; ++i) m.m[i][3] = i == 3 ? 1 : 0;
        if (n.integer(0, 1)) {
            m.m[2][3] = 1;
            m.m[3][3] = double{n.uniform(-3, 20)};
        }
        if (n.integer(0, 9) == 0) {
            const double odd[] = {0, kInf, -kInf, kNan, 1e300, 1e-300, -1e38};
            m.m[n.integer(0, 3)][n.integer(0, 3)] = odd[n.integer(0, 6)];
        }
        if (n.integer(0, 9) == 0) {
            // Of the plane through the eye, 0 / 0.
            m.m[2][3] = 1;
            for (int i = 0; i < 4; ++i) m.m[i][0] = 0;
            m.m[3][3] = 0;
        }
        if (n.integer(0, 40) == 0) {
            m = Matrix(Point(), Point(), Point(), 1);
            m.m[3][3] = static_cast<double>(n.integer(0, 1));
        }
        return m;
    }
    static double alongScreen(const Differential& at, const Pointwd& derivative, const Matrix& m)
    {
        const Pointd P = homogenized(at.P);
        const Pointd way = (P + homogenized(derivative)) * m - P * m;
        return std::sqrt(way.x * way.x + way.y * way.y);
    }

    Numbers n{1};
    Reports reports;
};

}  // namespace

TEST_F(SweepKernels, FindWhatASinglePlaceIs)
{
    for (int round = 0; round < 6000; ++round) {
        const Sample s = surface();
        SCOPED_TRACE(s.what);
        const Matrix m = toRaster();
        Sweep sweep;
        ASSERT_TRUE(s.surface->describe(sweep));
        std::copy_n(&m.m[0][0], 16, &sweep.toRaster[0][0]);
        SweepPlaces places;
        double alongU[kCount], alongV[kCount];
        for (int k = 0; k < kCount; ++k) {
            const float u = k ? n.unit() : 0, v = k > 1 ? n.unit() : static_cast<float>(k);
            places.u[k] = double{u};
            places.v[k] = double{v};
            const Differential at = s.surface->evaluate(u, v);
            alongU[k] = alongScreen(at, at.dPdu, m);
            alongV[k] = alongScreen(at, at.dPdv, m);
        }
        for (const int lanes : {1, 4, 8, 16}) {
            const SweepKernel kernel = sweepKernel(lanes);
            if (!kernel) continue;
            kernel(sweep, kInf, places);
            for (int k = 0; k < kCount; ++k) {
                ASSERT_TRUE(same(places.alongU[k], alongU[k]))
                    << lanes << " lanes: " << places.alongU[k] << ", not " << alongU[k];
                ASSERT_TRUE(same(places.alongV[k], alongV[k]))
                    << lanes << " lanes: " << places.alongV[k] << ", not " << alongV[k];
            }
        }
    }
}

// The first place that is too long decides, and is there whatever the width.
TEST_F(SweepKernels, FindThePlacesUpToOneThatIsTooLong)
{
    int cut = 0;
    for (int round = 0; round < 3000; ++round) {
        const Sample s = surface();
        const Matrix m = toRaster();
        Sweep sweep;
        ASSERT_TRUE(s.surface->describe(sweep));
        std::copy_n(&m.m[0][0], 16, &sweep.toRaster[0][0]);
        SweepPlaces all, some;
        for (int k = 0; k < kCount; ++k) {
            all.u[k] = some.u[k] = double{n.unit()};
            all.v[k] = some.v[k] = double{n.unit()};
        }
        sweepKernel()(sweep, kInf, all);
        const double limit = double{n.uniform(0, 100)};
        for (const int lanes : {1, 4, 8, 16}) {
            const SweepKernel kernel = sweepKernel(lanes);
            if (!kernel) continue;
            std::fill_n(some.alongU, kCount, -1);
            kernel(sweep, limit, some);
            for (int k = 0; k < kCount; ++k) {
                ASSERT_TRUE(same(some.alongU[k], all.alongU[k])) << lanes << " lanes, " << k;
                ASSERT_TRUE(same(some.alongV[k], all.alongV[k])) << lanes << " lanes, " << k;
                if (all.alongU[k] > limit || all.alongV[k] > limit) break;
            }
            cut += some.alongU[kCount - 1] == -1;
        }
    }
    EXPECT_GT(cut, 1000);
}

// Neither answers nor steps depend on it. Those of the flatness test, which draws after it, would
// show if it left the stream of draws elsewhere.
TEST_F(SweepKernels, DiceAsThePlainWayDoes)
{
    int diced = 0, refused = 0, flattened = 0;
    for (int round = 0; round < 20000; ++round) {
        zebFlatness(n.integer(0, 1) ? 1e-3f : 100.0f);
        zebShadingRate(n.uniform(0.1f, 4));
        const Sample s = surface();
        SCOPED_TRACE(s.what);
        const Matrix m = toRaster();
        const float maxSize = n.integer(0, 3) ? -1 : n.uniform(0, 200);
        renderPlainly(true);
        const RenderFrame plainFrame(Option(), m);
        renderPlainly(false);
        const RenderFrame frame(Option(), m);
        ASSERT_TRUE(plainFrame.plain && !frame.plain);
        Dicing plain{plainFrame}, fast{frame};
        plain.even = fast.even = n.integer(0, 1) != 0;
        const bool expected = s.surface->diceable(plain, maxSize);
        ASSERT_EQ(s.surface->diceable(fast, maxSize), expected);
        ASSERT_EQ(fast.fUSteps, plain.fUSteps);
        ASSERT_EQ(fast.fVSteps, plain.fVSteps);
        diced += expected;
        refused += !expected;
        flattened += expected && plain.fUSteps > 1;
    }
    EXPECT_GT(diced, 4000);
    EXPECT_GT(refused, 4000);
    EXPECT_GT(flattened, 2000);
}
