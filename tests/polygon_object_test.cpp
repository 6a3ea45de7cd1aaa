// Objects of polygons and of their meshes: an instance is what the object would be if it were drawn
// in its place.

#include <functional>

#include "support/scene.h"

namespace zebtest
{

namespace
{

// Two squares that share an edge, from (2, 2) to (10, 6). Red grows from left to right, 0 ... 1.
const Vec kPoints[6] = {{2, 2, 0.5f}, {6, 2, 0.5f}, {10, 2, 0.5f},
                        {2, 6, 0.5f}, {6, 6, 0.5f}, {10, 6, 0.5f}};
const Vec kColors[6] = {{0, 0, 0}, {0.5f, 0, 0}, {1, 0, 0}, {0, 0, 0}, {0.5f, 0, 0}, {1, 0, 0}};
const long kSizes[2] = {4, 4};
const long kIndices[8] = {0, 1, 4, 3, 1, 2, 5, 4};
const long kLoops[2] = {1, 1};

class PolygonObject : public RasterTest
{
protected:
    // Draws an object twice, in different places.
    void expectInstances(const std::function<void()>& build)
    {
        raster(24, 12);
        beginFlat();
        const void* object = zebObjectBegin();
        build();
        zebObjectEnd();
        zebObjectCall(object);
        zebTranslate(12, 4, 0);
        zebObjectCall(object);
        zebSceneEnd();
        expectSquares(0, 0);
        expectSquares(12, 4);
        // Two rectangles, and filters that keep the sum but for the rims of buckets.
        EXPECT_NEAR(picture.sum(3), 2 * 8 * 4, 0.5);
        EXPECT_TRUE(reports.empty());
    }
    void expectSquares(long x0, long y0) const
    {
        for (long y = y0 + 3; y < y0 + 5; ++y) {
            for (long x = x0 + 3; x < x0 + 9; ++x) {
                EXPECT_NEAR(alpha(x, y), 1, 1e-3f) << x << ' ' << y;
                const float expected = (static_cast<float>(x - x0) + 0.5f - 2) / 8;
                // Half a micropolygon is a quarter of a pixel.
                EXPECT_NEAR(red(x, y), expected, 0.1f) << x << ' ' << y;
            }
        }
    }
};

}  // namespace

TEST_F(PolygonObject, InstancesOfMeshesHaveAllFacesAndTheirVariables)
{
    expectInstances([] {
        zebPolygonMesh(2, kSizes, kIndices, zebQuark("point"), kPoints, zebQuark("color"), kColors,
                       0);
    });
}

TEST_F(PolygonObject, InstancesOfGeneralMeshesHaveAllFacesAndTheirVariables)
{
    expectInstances([] {
        zebGeneralPolygonMesh(2, kLoops, kSizes, kIndices, zebQuark("point"), kPoints,
                              zebQuark("color"), kColors, 0);
    });
}

TEST_F(PolygonObject, InstancesOfGeneralPolygonsHaveTheirHoles)
{
    raster(24, 12);
    beginFlat();
    const void* object = zebObjectBegin();
    const Vec points[8] = {{1, 1, 0.5f}, {11, 1, 0.5f}, {11, 11, 0.5f}, {1, 11, 0.5f},
                           {4, 4, 0.5f}, {4, 8, 0.5f},  {8, 8, 0.5f},   {8, 4, 0.5f}};
    zebGeneralPolygon(2, kSizes, zebQuark("point"), points, 0);
    zebObjectEnd();
    zebObjectCall(object);
    zebTranslate(12, 0, 0);
    zebObjectCall(object);
    zebSceneEnd();
    for (const long x : {0, 12}) {
        EXPECT_EQ(alpha(x + 5, 5), 0) << "in the hole";
        EXPECT_EQ(alpha(x + 2, 5), 1);
    }
    EXPECT_NEAR(picture.sum(3), 2 * (100 - 16), 0.5);
}

}  // namespace zebtest
