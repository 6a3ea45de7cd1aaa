#include "geom/grid.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "hider/micropolygon.h"
#include "state/quark.h"
#include "support/grids.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

class GridTest : public testing::Test
{
protected:
    GridTest() { zebReset(); }
    ~GridTest() override { zebReset(); }

    Grid& make(int u, int v, bool triangular = false, const Matrix& m = gIdentity)
    {
        grids.push_back(std::make_unique<Grid>(
            static_cast<unsigned short>(u), static_cast<unsigned short>(v),
            std::make_shared<const Attrib>(), Transform(m), 5, false, triangular, args));
        Grid& grid = *grids.back();
        zebtest::projectAsTheyAre(grid);
        return grid;
    }
    static int walk(const Grid& grid)
    {
        GridIterator cells(grid);
        int count = 0;
        while (cells++) ++count;
        EXPECT_EQ(cells++, nullptr);
        return count;
    }
    static Grid& number(Grid& grid)
    {
        for (int j = 0; j <= grid.fVSize; ++j) {
            for (int i = 0; i < grid.vertexCount(j); ++i)
                grid.vertex(i, j).P = Point(static_cast<float>(i), static_cast<float>(j), 0.5f);
        }
        zebtest::projectAsTheyAre(grid);
        return grid;
    }
    // The lower left corner of a cell whose vertices are numbered.
    static std::pair<int, int> corner(const MicroPolygon& cell)
    {
        return {static_cast<int>(cell.bound().xmin), static_cast<int>(cell.bound().ymin)};
    }

    ArgList args;
    std::vector<std::unique_ptr<Grid>> grids;
    zebtest::Reports reports;
};

}  // namespace

TEST_F(GridTest, AGridOfOneYieldsOneMicropolygon)
{
    const Grid& grid = make(1, 1);
    EXPECT_EQ(grid.vertexCount(0) + grid.vertexCount(1), 4);
    EXPECT_EQ(walk(grid), 1);
}

TEST_F(GridTest, NewVerticesAreAtTheOrigin)
{
    const Grid& grid = make(2, 1);
    EXPECT_EQ(grid.vertex(2, 1).P, Point(0, 0, 0));
    EXPECT_EQ(grid.vertex(2, 1).dPdu, Point(0, 0, 0));
    EXPECT_EQ(grid.vertex(2, 1).dPdv, Point(0, 0, 0));
}

TEST_F(GridTest, ARectangularGridHasEqualRows)
{
    const Grid& grid = make(3, 2);
    for (int j = 0; j <= 2; ++j) EXPECT_EQ(grid.vertexCount(j), 4);
    EXPECT_EQ(walk(grid), 6);
}

TEST_F(GridTest, ATriangularGridLosesOneCellARow)
{
    const Grid& grid = make(4, 4, true);
    for (int j = 0; j < 4; ++j) EXPECT_EQ(grid.cellCount(j), 4 - j);
    EXPECT_EQ(walk(grid), 4 + 3 + 2 + 1);
    EXPECT_EQ(grid.vertexCount(0), 5);
    EXPECT_EQ(grid.vertexCount(1), 5);
    EXPECT_EQ(grid.vertexCount(2), 4);
    EXPECT_EQ(grid.vertexCount(4), 2);
}

TEST_F(GridTest, ATriangularGridOfUnequalStepsShortensByIntegerDivision)
{
    const Grid& wide = make(4, 2, true);
    EXPECT_EQ(wide.cellCount(0), 4);
    EXPECT_EQ(wide.cellCount(1), 2);
    EXPECT_EQ(wide.vertexCount(0), 5);
    EXPECT_EQ(wide.vertexCount(1), 5);
    EXPECT_EQ(wide.vertexCount(2), 3);
    EXPECT_EQ(walk(wide), 6);
    const Grid& high = make(2, 4, true);
    EXPECT_EQ(high.cellCount(0), 2);
    EXPECT_EQ(high.cellCount(1), 2);
    EXPECT_EQ(high.cellCount(2), 1);
    EXPECT_EQ(high.cellCount(3), 1);
    EXPECT_EQ(high.vertexCount(3), 2);
    EXPECT_EQ(walk(high), 6);
}

TEST_F(GridTest, CellsAreVisitedRowByRow)
{
    Grid& grid = make(2, 2);
    GridIterator cells(number(grid));
    std::vector<std::pair<int, int>> seen;
    while (const MicroPolygon* cell = cells++) seen.push_back(corner(*cell));
    EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{{0, 0}, {1, 0}, {0, 1}, {1, 1}}));
}

TEST_F(GridTest, CellsOfATriangularGridAreVisitedInTheirRows)
{
    Grid& grid = make(3, 3, true);
    GridIterator cells(number(grid));
    std::vector<std::pair<int, int>> seen;
    while (const MicroPolygon* cell = cells++) seen.push_back(corner(*cell));
    EXPECT_EQ(seen,
              (std::vector<std::pair<int, int>>{{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1}, {0, 2}}));
}

TEST_F(GridTest, PreIncrementAdvancesFirst)
{
    Grid& grid = make(2, 2);
    GridIterator cells(number(grid));
    std::vector<std::pair<int, int>> seen;
    while (const MicroPolygon* cell = ++cells) seen.push_back(corner(*cell));
    EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{{1, 0}, {0, 1}, {1, 1}}));
    EXPECT_EQ(cells++, nullptr);
}

TEST_F(GridTest, RestartBeginsAgain)
{
    Grid& grid = make(2, 1);
    GridIterator cells(number(grid));
    while (cells++) {
    }
    cells.restart();
    const MicroPolygon* cell = cells++;
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(corner(*cell), std::pair(0, 0));
}

TEST_F(GridTest, VariablesAreDistributedByTheirToken)
{
    const float values[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (unsigned short token = kQPoint; token <= kQOpacity; ++token)
        args.add(ArgAssoc(token, values, {}));
    const unsigned short own = zebDeclare("grid test: own", 0xD01, 0xE01);
    args.add(ArgAssoc(own, values, {}));
    args.add(ArgAssoc(kQKa, values, {}));
    const Grid& grid = make(1, 1);
    for (unsigned short token = kQPoint; token <= kQPointw; ++token) {
        EXPECT_EQ(grid.fVertexArgs.find(token), nullptr) << token;
        EXPECT_EQ(grid.fOtherArgs.find(token), nullptr) << token;
    }
    for (unsigned short token = kQNormal; token <= kQOpacity; ++token) {
        EXPECT_NE(grid.fVertexArgs.find(token), nullptr) << token;
        EXPECT_EQ(grid.fOtherArgs.find(token), nullptr) << token;
    }
    for (unsigned short token : {own, static_cast<unsigned short>(kQKa)}) {
        EXPECT_EQ(grid.fVertexArgs.find(token), nullptr) << token;
        EXPECT_NE(grid.fOtherArgs.find(token), nullptr) << token;
    }
}

TEST_F(GridTest, VariablesAreBroughtToCameraSpace)
{
    Matrix m;
    m.translate(10, 0, 0);
    const float values[3] = {1, 2, 3};
    const unsigned short own = zebDeclare("grid test: place", 0xD01, 0xE05);
    args.add(ArgAssoc(own, values, {}));
    const Grid& grid = make(1, 1, false, m);
    ASSERT_NE(grid.fOtherArgs.find(own), nullptr);
    EXPECT_EQ(grid.fOtherArgs.find(own)->point(0), Point(11, 2, 3));
}

TEST_F(GridTest, UnderTheIdentityProjectionDepthIsCameraZ)
{
    Option option;
    option.projection = false;
    Matrix toRaster;
    toRaster.scale(2, 3, 100);
    Grid& grid = make(1, 1);
    grid.vertex(1, 1).P = Point(1, 1, 0.625f);
    grid.project(RenderFrame(option, toRaster));
    EXPECT_EQ(grid.raster(1, 1), Point(2, 3, 0.625f));
    EXPECT_EQ(grid.vertex(1, 1).P, Point(1, 1, 0.625f)) << "stays in camera space";
}

TEST_F(GridTest, UnderAProjectionDepthIsTheShareOfTheClippingRange)
{
    Option option;
    option.nearClip = 2;
    option.farClip = 10;
    const RenderFrame frame(option, Matrix());
    Grid& grid = make(1, 1);
    grid.vertex(0, 0).P = Point(0, 0, 2);
    grid.vertex(1, 0).P = Point(0, 0, 4);
    grid.vertex(0, 1).P = Point(0, 0, 10);
    grid.project(frame);
    EXPECT_EQ(grid.raster(0, 0).z / frame.depthScale, 0);
    EXPECT_EQ(grid.raster(1, 0).z / frame.depthScale, 0.25f);
    EXPECT_EQ(grid.raster(0, 1).z / frame.depthScale, 1);
}

TEST_F(GridTest, ProjectionDividesByWAndLeavesTheDerivatives)
{
    Option option;
    option.projection = false;
    Matrix toRaster;
    toRaster.m[2][3] = 1;
    toRaster.m[3][3] = 0;  // w = z
    Grid& grid = make(1, 1);
    grid.vertex(1, 0).P = Point(8, 12, 4);
    grid.vertex(1, 0).dPdu = Point(1, 2, 3);
    grid.vertex(1, 0).dPdv = Point(4, 5, 6);
    grid.setColor(1, 0, Color(0.1f, 0.2f, 0.3f));
    for (auto [i, j] : {std::pair(0, 0), {0, 1}, {1, 1}}) grid.vertex(i, j).P = Point(0, 0, 1);
    grid.project(RenderFrame(option, toRaster));
    EXPECT_EQ(grid.raster(1, 0), Point(2, 3, 4));
    EXPECT_EQ(grid.vertex(1, 0).dPdu, Point(1, 2, 3));
    EXPECT_EQ(grid.vertex(1, 0).dPdv, Point(4, 5, 6));
    EXPECT_EQ(grid.color(1, 0), Color(0.1f, 0.2f, 0.3f));
}

TEST_F(GridTest, RowBoundsHoldTheVerticesOfTheirRow)
{
    Option option;
    option.projection = false;
    Grid& grid = make(3, 3, true);
    number(grid).project(RenderFrame(option, Matrix()));
    EXPECT_EQ(grid.rowBound(0), Bound(0, 3, 0, 0, 0.5f, 0.5f));
    EXPECT_EQ(grid.rowBound(3), Bound(0, 1, 3, 3, 0.5f, 0.5f));
}
