// Where samples lie in cells by lanes, against one sample at a time.

#include "hider/locate_kernel.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

#include "hider/micropolygon.h"
#include "support/grids.h"

using namespace zeb;

namespace
{

class LocateKernels : public testing::Test
{
protected:
    // Where a coarse lattice is all there is, cells are parallelograms, crossed or without an area,
    // and samples lie on their edges and corners.
    float place()
    {
        switch (fKind) {
            case 0:
                return static_cast<float>(random() % 4);
            case 1:
                return static_cast<float>(random() % 9) * 0.125f + 100;
            case 2:
                return std::uniform_real_distribution<float>(0, 2)(random);
            case 3:  // so small that roots next to each other count as one
                return std::uniform_real_distribution<float>(0, 4e-3f)(random);
            default:
                return std::uniform_real_distribution<float>(-1, 2)(random) * 1e19f;
        }
    }
    std::unique_ptr<LocateBlock> block(int count)
    {
        auto made = std::make_unique<LocateBlock>();
        made->count = count;
        for (int k = 0; k < count; ++k) {
            fKind = static_cast<int>(random() % 5);
            for (float* plane : {made->x, made->y, made->x00, made->x10, made->x01, made->x11,
                                 made->y00, made->y10, made->y01, made->y11}) {
                plane[k] = place();
            }
            if (random() % 2) {
                made->x11[k] = made->x10[k] + made->x01[k] - made->x00[k];
                made->y11[k] = made->y10[k] + made->y01[k] - made->y00[k];
            }
        }
        return made;
    }

    std::mt19937 random{7};

private:
    int fKind = 0;
};

}  // namespace

TEST_F(LocateKernels, GiveTheSameAtEveryWidth)
{
    for (int round = 0; round < 500; ++round) {
        const auto one = block(1 + static_cast<int>(random() % LocateBlock::kMost));
        const auto many = std::make_unique<LocateBlock>(*one);
        locateKernel(1)(*one);
        for (const int lanes : {4, 8, 16}) {
            const LocateKernel kernel = locateKernel(lanes);
            if (!kernel) continue;
            kernel(*many);
            for (int k = 0; k < one->count; ++k) {
                ASSERT_EQ(one->s[k], many->s[k]) << lanes << " lanes";
                if (one->s[k] < 0) continue;
                ASSERT_EQ(one->t[k], many->t[k]) << lanes << " lanes";
            }
        }
    }
}

TEST_F(LocateKernels, FindWhatASingleCellFinds)
{
    const auto attrib = std::make_shared<Attrib>();
    int inside = 0, outside = 0;
    for (int round = 0; round < 300; ++round) {
        const auto many = block(LocateBlock::kMost);
        locateKernel()(*many);
        const LocateBlock& b = *many;
        for (int k = 0; k < b.count; ++k) {
            Grid grid(1, 1, attrib, Transform(), 1, false, false, {});
            grid.vertex(0, 0).P = Point(b.x00[k], b.y00[k], 1);
            grid.vertex(1, 0).P = Point(b.x10[k], b.y10[k], 1);
            grid.vertex(0, 1).P = Point(b.x01[k], b.y01[k], 1);
            grid.vertex(1, 1).P = Point(b.x11[k], b.y11[k], 1);
            zebtest::projectAsTheyAre(grid);
            float s, t;
            const bool found = MicroPolygon(grid).locate(b.x[k], b.y[k], s, t);
            ASSERT_EQ(b.s[k] >= 0, found) << b.x[k] << ", " << b.y[k];
            ++(found ? inside : outside);
            if (!found) continue;
            ASSERT_EQ(static_cast<float>(b.s[k]), s);
            ASSERT_EQ(static_cast<float>(b.t[k]), t);
        }
    }
    EXPECT_GT(inside, 3000);
    EXPECT_GT(outside, 3000);
}
