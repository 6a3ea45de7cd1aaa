// Concave polygons, holes and meshes, as pictures.

#include <random>

#include "support/scene.h"

namespace zebtest
{

namespace
{

using Loop = std::vector<Vec>;

class Polygons : public RasterTest
{
protected:
    // One sample in the middle of every pixel.
    void pointSampled(long width, long height)
    {
        raster(width, height);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleUniform(1, 1);
        zebSampleJitter(0);
    }

    // How many pixels differ from the even-odd rule at their centres.
    long misses(const std::vector<Loop>& loops) const
    {
        long wrong = 0;
        for (long y = 0; y < picture.height; ++y) {
            for (long x = 0; x < picture.width; ++x) {
                bool inside = false;
                for (const Loop& loop : loops) {
                    inside ^=
                        contains(loop, static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5);
                }
                wrong += alpha(x, y) != (inside ? 1.0f : 0.0f);
            }
        }
        return wrong;
    }

    static bool contains(const Loop& loop, double px, double py)
    {
        bool inside = false;
        for (std::size_t i = 0, j = loop.size() - 1; i < loop.size(); j = i++) {
            const double xi = loop[i][0], yi = loop[i][1], xj = loop[j][0], yj = loop[j][1];
            if ((yi > py) != (yj > py) && px < (xj - xi) * (py - yi) / (yj - yi) + xi)
                inside = !inside;
        }
        return inside;
    }
};

void generalPolygon(const std::vector<Loop>& loops)
{
    std::vector<long> sizes;
    std::vector<Vec> points;
    for (const Loop& loop : loops) {
        sizes.push_back(static_cast<long>(loop.size()));
        points.insert(points.end(), loop.begin(), loop.end());
    }
    zebGeneralPolygon(static_cast<long>(sizes.size()), sizes.data(), zebQuark("point"),
                      points.data(), 0);
}

// A star-shaped outline about a centre, its radii between r0 and r1.
Loop star(std::mt19937& random, double cx, double cy, double r0, double r1, int corners,
          bool clockwise)
{
    std::uniform_real_distribution<double> radius(r0, r1);
    Loop loop;
    for (int k = 0; k < corners; ++k) {
        const double angle = (clockwise ? -1 : 1) * 2 * M_PI * (k + 0.13) / corners;
        const double r = radius(random);
        loop.push_back({static_cast<float>(cx + r * std::cos(angle)),
                        static_cast<float>(cy + r * std::sin(angle)), 0.5f});
    }
    return loop;
}

}  // namespace

TEST_F(Polygons, ConcaveOutlinesCoverWhatTheyEnclose)
{
    std::mt19937 random(11);
    for (int k = 0; k < 60; ++k) {
        const Loop loop = star(random, 32, 32, 6, 30, 5 + k % 23, k % 2);
        zebReset();
        pointSampled(64, 64);
        beginFlat();
        generalPolygon({loop});
        zebSceneEnd();
        EXPECT_LE(misses({loop}), 1) << k;
    }
}

TEST_F(Polygons, HolesStayOpenWhicheverWayTheyRun)
{
    std::mt19937 random(5);
    for (int k = 0; k < 40; ++k) {
        std::vector<Loop> loops = {star(random, 40, 40, 34, 39, 12 + k % 9, k % 2)};
        const int holes = 1 + k % 5;
        for (int h = 0; h < holes; ++h) {
            const double angle = 2 * M_PI * h / holes + 0.2;
            loops.push_back(star(random, 40 + 20 * std::cos(angle), 40 + 20 * std::sin(angle), 3, 8,
                                 3 + (k + h) % 7, (k + h) % 3 == 0));
        }
        zebReset();
        pointSampled(80, 80);
        beginFlat();
        generalPolygon(loops);
        zebSceneEnd();
        EXPECT_LE(misses(loops), 2) << k;
        EXPECT_TRUE(reports.empty());
    }
}

TEST_F(Polygons, CombsAndSpiralsAreCutRight)
{
    Loop comb = {{2, 60, 0.5f}, {2, 50, 0.5f}};
    for (int k = 0; k < 14; ++k) {
        const float x = 4.013f + 4 * static_cast<float>(k);
        comb.push_back({x, 4, 0.5f});
        comb.push_back({x + 2, 50, 0.5f});
    }
    comb.push_back({62, 60, 0.5f});
    Loop spiral;
    for (int k = 0; k <= 40; ++k) {
        const double a = 0.35 * k, r = 4 + 0.6 * k;
        spiral.push_back({static_cast<float>(32 + r * std::cos(a)),
                          static_cast<float>(32 + r * std::sin(a)), 0.5f});
    }
    for (int k = 40; k >= 0; --k) {
        const double a = 0.35 * k, r = 2 + 0.6 * k;
        spiral.push_back({static_cast<float>(32 + r * std::cos(a)),
                          static_cast<float>(32 + r * std::sin(a)), 0.5f});
    }
    for (const Loop& loop : {comb, spiral}) {
        zebReset();
        pointSampled(64, 64);
        beginFlat();
        generalPolygon({loop});
        zebSceneEnd();
        EXPECT_LE(misses({loop}), 2);
    }
}

TEST_F(Polygons, AThousandCornersAreNoTrouble)
{
    std::mt19937 random(3);
    const Loop loop = star(random, 64, 64, 30, 62, 1000, false);
    pointSampled(128, 128);
    beginFlat();
    generalPolygon({loop});
    zebSceneEnd();
    EXPECT_LE(misses({loop}), 8);
}

TEST_F(Polygons, PlanesTiltedInSpaceAreCutInTheirOwnPlane)
{
    // The same outline seen along its own plane's normal and tilted: the picture of a polygon is
    // that of its projection.
    std::mt19937 random(23);
    for (int k = 0; k < 20; ++k) {
        Loop loop = star(random, 32, 32, 6, 30, 15, false);
        for (Vec& p : loop) p[2] = 0.2f + 0.004f * p[0] + 0.005f * p[1];
        zebReset();
        pointSampled(64, 64);
        beginFlat();
        generalPolygon({loop});
        zebSceneEnd();
        EXPECT_LE(misses({loop}), 1) << k;
    }
}

TEST_F(Polygons, AConvexPolygonOfManySidesIsWhole)
{
    for (const int sides : {3, 4, 5, 6, 7, 31, 100, 999}) {
        Loop loop;
        for (int k = 0; k < sides; ++k) {
            const double a = 2 * M_PI * k / sides + 0.01;
            loop.push_back({static_cast<float>(32 + 29 * std::cos(a)),
                            static_cast<float>(32 + 29 * std::sin(a)), 0.5f});
        }
        zebReset();
        pointSampled(64, 64);
        beginFlat();
        polygon(loop);
        zebSceneEnd();
        EXPECT_LE(misses({loop}), 1) << sides;
    }
}

TEST_F(Polygons, ACollinearPolygonEndsWithoutAPictureOrAReport)
{
    raster(16, 16);
    beginFlat();
    polygon({{1, 1, 0.5f}, {3, 3, 0.5f}, {5, 5, 0.5f}, {9, 9, 0.5f}, {7, 7, 0.5f}});
    generalPolygon({{{1, 1, 0.5f}, {3, 3, 0.5f}, {5, 5, 0.5f}, {9, 9, 0.5f}}});
    polygon({{4, 4, 0.5f}, {4, 4, 0.5f}, {4, 4, 0.5f}, {4, 4, 0.5f}});
    zebSceneEnd();
    EXPECT_EQ(picture.sum(3), 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Polygons, EveryFaceOfAMeshHasItsOwnUniformAndVertexValues)
{
    // Two quadrilaterals and a triangle over seven vertices; colours belong to vertices.
    const Vec points[] = {{0, 0, 0.5f},  {8, 0, 0.5f},  {8, 8, 0.5f}, {0, 8, 0.5f},
                          {16, 0, 0.5f}, {16, 8, 0.5f}, {24, 8, 0.5f}};
    const long sizes[] = {4, 4, 3}, indices[] = {0, 1, 2, 3, 1, 4, 5, 2, 4, 6, 5};
    Vec colors[7];
    for (int k = 0; k < 7; ++k) colors[k] = {points[k][0] / 24, points[k][1] / 8, 0};
    raster(24, 8);
    zebSampleJitter(0);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    zebShadingModel(ZEB_SMOOTH);
    zebPolygonMesh(3, sizes, indices, zebQuark("point"), points, zebQuark("color"), colors, 0);
    zebSceneEnd();
    // Colours are linear in position, so interpolation reproduces them wherever the cuts run.
    for (long y = 1; y < 7; ++y) {
        for (long x = 1; x < 15; ++x) {
            EXPECT_NEAR(red(x, y), (static_cast<double>(x) + 0.5) / 24, 2e-3) << x << ' ' << y;
            EXPECT_NEAR(green(x, y), (static_cast<double>(y) + 0.5) / 8, 5e-3) << x << ' ' << y;
        }
    }
    EXPECT_NEAR(red(18, 5), 18.5 / 24, 2e-3) << "the triangle takes its own vertices' values";

    // Ambient light through "ka", one value a face.
    float ka[3] = {0.25f, 0.5f, 1};
    zebReset();
    raster(24, 8);
    zebSceneBegin();
    zebSurface(zebQuark("diffuse"), 0);
    zebLightSource(zebQuark("ambient"), 0);
    zebPolygonMesh(3, sizes, indices, zebQuark("point"), points, zebQuark("ka"), ka, 0);
    zebSceneEnd();
    EXPECT_FLOAT_EQ(red(3, 4), 0.25f);
    EXPECT_FLOAT_EQ(red(12, 4), 0.5f);
    EXPECT_FLOAT_EQ(red(18, 5), 1.0f);
}

TEST_F(Polygons, GeneralMeshesHoldFacesWithHoles)
{
    const Vec points[] = {{0, 0, 0.5f},      {12, 0, 0.5f}, {12, 12, 0.5f}, {0, 12, 0.5f},
                          {4, 4, 0.5f},      {4, 8, 0.5f},  {8, 8, 0.5f},   {8, 4, 0.5f},
                          {24.02f, 0, 0.5f}, {24, 12, 0.5f}};
    const long loops[] = {2, 1, 1}, sizes[] = {4, 4, 3, 4};
    const long indices[] = {0, 1, 2, 3, 4, 5, 6, 7, 1, 8, 2, 4, 5, 6, 7};
    pointSampled(24, 12);
    beginFlat();
    zebGeneralPolygonMesh(2, loops, sizes, indices, zebQuark("point"), points, 0);
    zebSceneEnd();
    EXPECT_EQ(alpha(1, 1), 1);
    EXPECT_EQ(alpha(6, 6), 0) << "the hole";
    EXPECT_EQ(alpha(13, 1), 1) << "the triangle";
    EXPECT_EQ(alpha(22, 10), 0);
    EXPECT_EQ(picture.sum(3), 144 - 16 + 78) << "pixel centres just inside the long side count";
}

}  // namespace zebtest
