// The vertices of grids by lanes, against one vertex at a time.

#include "geom/vertex_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "math/matrix.h"

using namespace zeb;

namespace
{

constexpr int kWidths[] = {4, 8, 16};

class VertexKernels : public testing::Test
{
protected:
    double within(double a, double b) { return std::uniform_real_distribution(a, b)(random); }
    bool oneIn(int n) { return std::uniform_int_distribution(1, n)(random) == 1; }

    Matrix matrix()
    {
        Matrix m;
        m.rotate(static_cast<float>(within(0, 360)), 1, static_cast<float>(within(-1, 1)), 0.5f);
        m.translate(static_cast<float>(within(-5, 5)), 2, static_cast<float>(within(-9, 9)));
        if (oneIn(2)) m.perspective(static_cast<float>(within(10, 100)));
        return m;
    }
    // Some vertices repeat others, have a derivative that vanishes, or two that are parallel; some
    // lie where w is 0, or are no numbers.
    std::unique_ptr<VertexBlock> block()
    {
        auto made = std::make_unique<VertexBlock>();
        made->count = std::uniform_int_distribution(1, VertexBlock::kMost)(random);
        const double size = oneIn(5) ? 1e22 : oneIn(5) ? 1e-22 : 1;
        const bool regular = oneIn(2);
        for (int k = 0; k < made->count; ++k) {
            for (int axis = 0; axis < 3; ++axis) {
                made->P[axis][k] = regular || !oneIn(40) ? within(-3, 3) * size : 0;
                made->dPdu[axis][k] = axis == 0 ? size : within(-0.1, 0.1) * size;
                made->dPdv[axis][k] = axis == 1 ? size : within(-0.1, 0.1) * size;
            }
            if (regular) continue;
            const double factor = oneIn(20) ? 0 : oneIn(20) ? 1e-7 : 1;
            const double noNumber = std::numeric_limits<double>::quiet_NaN();
            for (int axis = 0; axis < 3; ++axis) {
                made->dPdu[axis][k] *= factor;
                if (oneIn(30)) made->dPdv[axis][k] = made->dPdu[axis][k];
                if (oneIn(100)) made->P[axis][k] = noNumber;
            }
            if (!oneIn(10)) continue;
            const double bend = within(0, 1) < 0.5 ? 1e-6 : 1e-4;
            for (int axis = 0; axis < 3; ++axis) {
                made->dPdv[axis][k] = made->dPdu[axis][k] * 2 + (axis == 1 ? bend * size : 0);
            }
        }
        for (auto* planes : {&made->P, &made->dPdu, &made->dPdv}) {
            for (double* plane : *planes) {
                std::fill(plane + made->count, plane + VertexBlock::kMost, plane[made->count - 1]);
            }
        }
        return made;
    }
    template <class T>
    static Pointd at(const T (&planes)[3][VertexBlock::kMost], int k)
    {
        return {double{planes[0][k]}, double{planes[1][k]}, double{planes[2][k]}};
    }

    std::mt19937 random{11};
};

bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b); }

void expectSame(const Point& expected, const Pointd& found)
{
    const Point p = rounded(found);
    ASSERT_TRUE(sameBits(expected.x, p.x)) << expected << p;
    ASSERT_TRUE(sameBits(expected.y, p.y)) << expected << p;
    ASSERT_TRUE(sameBits(expected.z, p.z)) << expected << p;
}

}  // namespace

TEST_F(VertexKernels, PlaceAsMatricesDo)
{
    for (int round = 0; round < 2000; ++round) {
        const auto b = block();
        const Matrix m = matrix();
        vertexKernel(1).place(m.m, *b);
        for (int k = 0; k < b->count; ++k) {
            Pointd u = at(b->dPdu, k), v = at(b->dPdv, k);
            vtransform(u, m);
            vtransform(v, m);
            expectSame(rounded(at(b->P, k) * m), at(b->camera.P, k));
            expectSame(rounded(u), at(b->camera.dPdu, k));
            expectSame(rounded(v), at(b->camera.dPdv, k));
        }
    }
}

// Derivatives are mended where the square of the sine between them is 1e-10 or less, in terms of
// the longest of the grid.
TEST_F(VertexKernels, CallSpreadOnlyWhatNeedsNoMending)
{
    int spread = 0, others = 0;
    for (int round = 0; round < 4000; ++round) {
        const auto b = block();
        vertexKernel(1).place(matrix().m, *b);
        const auto squared = [](const Pointd& p) { return dot(p, p); };
        double shortest = 1e300, longest = 0;
        bool parallel = false;
        for (int k = 0; k < b->count; ++k) {
            const Pointd u = at(b->camera.dPdu, k), v = at(b->camera.dPdv, k);
            const double longer = std::max(squared(u), squared(v));
            shortest = std::min(shortest, longer);
            longest = std::max(longest, longer);
            parallel = parallel || !(squared(u ^ v) > 1e-9 * longer * longer);
        }
        if (b->spread) {
            EXPECT_FALSE(parallel);
            EXPECT_NEAR(double{b->shortest} / shortest, 1, 1e-5);
            EXPECT_NEAR(double{b->longest} / longest, 1, 1e-5);
        }
        (b->spread ? spread : others) += 1;
    }
    EXPECT_GT(spread, 1000);
    EXPECT_GT(others, 1000);
}

TEST_F(VertexKernels, GiveTheSameAtEveryWidth)
{
    for (int round = 0; round < 2000; ++round) {
        const auto b = block();
        const Matrix m = matrix();
        const auto placed = std::make_unique<VertexBlock>(*b);
        vertexKernel(1).place(m.m, *placed);
        for (const int lanes : kWidths) {
            const VertexKernel kernel = vertexKernel(lanes);
            if (!kernel.place) continue;
            const auto wide = std::make_unique<VertexBlock>(*b);
            kernel.place(m.m, *wide);
            for (int k = 0; k < b->count; ++k) {
                expectSame(rounded(at(placed->camera.P, k)), at(wide->camera.P, k));
                expectSame(rounded(at(placed->camera.dPdu, k)), at(wide->camera.dPdu, k));
                expectSame(rounded(at(placed->camera.dPdv, k)), at(wide->camera.dPdv, k));
            }
            ASSERT_EQ(wide->spread, placed->spread) << lanes << " lanes";
            ASSERT_TRUE(sameBits(wide->shortest, placed->shortest)) << lanes << " lanes";
            ASSERT_TRUE(sameBits(wide->longest, placed->longest)) << lanes << " lanes";
        }
    }
}

TEST_F(VertexKernels, ProjectAsMatricesDo)
{
    for (int round = 0; round < 2000; ++round) {
        const Matrix m = matrix();
        Projection projection;
        std::memcpy(projection.toRaster, m.m, sizeof m.m);
        projection.isScaled = oneIn(2);
        projection.near = static_cast<float>(within(0, 1));
        projection.range = static_cast<float>(within(1, 100));
        PointBlock block;
        block.count = std::uniform_int_distribution(1, PointBlock::kMost)(random);
        for (int k = 0; k < PointBlock::kMost; ++k) {
            block.x[k] = static_cast<float>(within(-9, 9));
            block.y[k] = static_cast<float>(within(-9, 9));
            block.z[k] = oneIn(20) ? 0 : static_cast<float>(within(-9, 9));
        }
        for (const int lanes : {1, 4, 8, 16}) {
            const VertexKernel kernel = vertexKernel(lanes);
            if (!kernel.project) continue;
            PointBlock made = block;
            kernel.project(projection, made);
            for (int k = 0; k < block.count; ++k) {
                const float z = block.z[k];
                const Point P = Point(block.x[k], block.y[k], z) * m;
                const float depth = (z - projection.near) / projection.range;
                expectSame({P.x, P.y, projection.isScaled ? depth : z},
                           Point(made.x[k], made.y[k], made.z[k]));
            }
        }
    }
}
