// The cells of rows by lanes, against one cell at a time.

#include "hider/cell_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "hider/micropolygon.h"
#include "support/grids.h"

using namespace zeb;

namespace
{

class CellKernels : public testing::Test
{
protected:
    float within(float a, float b) { return std::uniform_real_distribution<float>(a, b)(random); }

    // A row of cells, and its vertices.
    struct Row : CellRow {
        float above[3][kMost + kMultiple] = {}, below[3][kMost + kMultiple] = {};

        Row() { point(); }
        Row(const Row& other) : CellRow(other)
        {
            std::memcpy(above, other.above, sizeof above);
            std::memcpy(below, other.below, sizeof below);
            point();
        }

    private:
        void point()
        {
            for (int axis = 0; axis < 3; ++axis) {
                upper[axis] = above[axis];
                lower[axis] = below[axis];
            }
        }
    };

    // About the size of a pixel, somewhere by the bucket; some without an extent.
    std::unique_ptr<Row> row(int count)
    {
        auto made = std::make_unique<Row>();
        made->count = count;
        made->isFlipped = random() % 2 != 0;
        const float x = within(-20, 20), y = within(-10, 20), step = within(-2, 2);
        const float scale = random() % 10 == 0 ? 1e20f : 1;
        for (auto* planes : {&made->above, &made->below}) {
            for (int k = 0; k <= count; ++k) {
                const bool again = k > 0 && random() % 12 == 0;
                const auto set = [&](int axis, float value) {
                    (*planes)[axis][k] = again ? (*planes)[axis][k - 1] : value;
                };
                set(0, (x + static_cast<float>(k) * step + within(-1, 1)) * scale);
                set(1, (y + within(0, 2)) * scale);
                set(2, within(-0.1f, 1.2f));
            }
        }
        return made;
    }
    static Point vertex(const float* const (&planes)[3], int k)
    {
        return {planes[0][k], planes[1][k], planes[2][k]};
    }

    const Lattice lattice{-1.5f, 17.5f, -1, 17, 2, 3, 0.25f, 38, 54, 0.9f};
    std::mt19937 random{5};
};

}  // namespace

TEST_F(CellKernels, GiveTheSameAtEveryWidth)
{
    for (int round = 0; round < 500; ++round) {
        const auto one = row(1 + static_cast<int>(random() % CellRow::kMost));
        const auto many = std::make_unique<Row>(*one);
        cellKernel(1)(lattice, *one);
        for (const int lanes : {4, 8, 16}) {
            const CellKernel kernel = cellKernel(lanes);
            if (!kernel) continue;
            kernel(lattice, *many);
            for (int k = 0; k < one->count; ++k) {
                const auto values = [k](const CellRow& r) {
                    return std::vector<double>{r.xmin[k], r.xmax[k], r.ymin[k],  r.ymax[k],
                                               r.zmin[k], r.zmax[k], r.facing[k]};
                };
                const auto indices = [k](const CellRow& r) {
                    return std::vector<std::int32_t>{r.i0[k], r.i1[k], r.j0[k], r.j1[k]};
                };
                ASSERT_EQ(values(*one), values(*many)) << lanes << " lanes";
                ASSERT_EQ(indices(*one), indices(*many)) << lanes << " lanes";
            }
        }
    }
}

TEST_F(CellKernels, FindWhatASingleCellIs)
{
    const auto attrib = std::make_shared<Attrib>();
    int seen = 0, edgeOn = 0;
    for (int round = 0; round < 150; ++round) {
        const auto cells = row(CellRow::kMost);
        cellKernel()(lattice, *cells);
        for (int k = 0; k < cells->count; ++k) {
            const Point corners[4] = {vertex(cells->upper, k), vertex(cells->upper, k + 1),
                                      vertex(cells->lower, k), vertex(cells->lower, k + 1)};
            Grid grid(1, 1, attrib, Transform(), 1, cells->isFlipped, false, {});
            for (int n = 0; n < 4; ++n) grid.vertex(n % 2, n / 2).P = corners[n];
            zebtest::projectAsTheyAre(grid);
            const MicroPolygon cell(grid);
            const Bound box = cell.bound();
            ASSERT_EQ(cells->xmin[k], box.xmin);
            ASSERT_EQ(cells->xmax[k], box.xmax);
            ASSERT_EQ(cells->ymin[k], box.ymin);
            ASSERT_EQ(cells->ymax[k], box.ymax);
            ASSERT_EQ(cells->zmin[k], box.zmin);
            ASSERT_EQ(cells->zmax[k], box.zmax);
            const double facing = cell.znormal();
            const bool isEdgeOn = facing > -1e-10 && facing < 1e-10;
            ASSERT_EQ(cells->facing[k], isEdgeOn ? 0 : static_cast<float>(facing));
            edgeOn += isEdgeOn;

            const bool outside = box.xmin > lattice.xmax || box.xmax < lattice.xmin ||
                                 box.ymin > lattice.ymax || box.ymax < lattice.ymin ||
                                 box.zmax < 0 || box.zmin > lattice.far;
            // Every sample that may lie in the box, wherever it strays to.
            for (int j = 0; j < lattice.rows; ++j) {
                for (int i = 0; i < lattice.columns; ++i) {
                    const float x = (static_cast<float>(i) + 0.5f) / lattice.xrate + lattice.xmin;
                    const float y = (static_cast<float>(j) + 0.5f) / lattice.yrate + lattice.ymin;
                    const float stray = lattice.jitter * 0.999f;
                    const bool inside = x + stray >= box.xmin && x - stray <= box.xmax &&
                                        y + stray >= box.ymin && y - stray <= box.ymax;
                    const bool found = i >= cells->i0[k] && i <= cells->i1[k] &&
                                       j >= cells->j0[k] && j <= cells->j1[k];
                    if (outside) {
                        ASSERT_FALSE(found);
                    } else if (inside) {
                        ASSERT_TRUE(found)
                            << i << ", " << j << " in " << box.xmin << " ... " << box.xmax;
                    }
                    seen += found;
                }
            }
            ASSERT_LE(cells->i1[k], lattice.columns - 1);
            ASSERT_LE(cells->j1[k], lattice.rows - 1);
            ASSERT_GE(cells->i0[k], 0);
            ASSERT_GE(cells->j0[k], 0);
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(seen, 1000);
    EXPECT_GT(edgeOn, 30);
}

// A cell much smaller than the distance of samples is not looked for all over the bucket.
TEST_F(CellKernels, LookNoFartherThanSamplesStray)
{
    Row cells;
    cells.count = 1;
    const float x[2] = {5.1f, 5.2f}, y[2] = {7.1f, 7.2f};
    for (int k = 0; k < 2; ++k) {
        cells.above[0][k] = cells.below[0][k] = x[k];
        cells.above[1][k] = y[0];
        cells.below[1][k] = y[1];
        cells.above[2][k] = cells.below[2][k] = 0.5f;
    }
    cellKernel()(lattice, cells);
    EXPECT_LE(cells.i1[0] - cells.i0[0], 1);
    EXPECT_LE(cells.j1[0] - cells.j0[0], 2);
}
