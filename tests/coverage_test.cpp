// Coverage against areas and filter integrals.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Coverage : public RasterTest
{
};

struct FilterCase {
    short id;
    const char* name;
    float width;
};

const FilterCase kFilters[] = {{ZEB_FILTER_BOX, "box", 1},
                               {ZEB_FILTER_TRIANGLE, "triangle", 2},
                               {ZEB_FILTER_GAUSSIAN, "gaussian", 2},
                               {ZEB_FILTER_CATMULL_ROM, "catmull-rom", 4},
                               {ZEB_FILTER_SINC, "sinc", 3}};

// The filters again, from their formulas.
double weight(short id, double x, double y, double width)
{
    if (std::fabs(x) > width / 2 || std::fabs(y) > width / 2) return 0;
    const double r = std::hypot(x, y);
    switch (id) {
        case ZEB_FILTER_TRIANGLE:
            return std::min(1 - 2 * std::fabs(x) / width, 1 - 2 * std::fabs(y) / width);
        case ZEB_FILTER_GAUSSIAN: {
            const double s = std::sqrt(width * width * 0.5) / 2;
            return std::exp(-r * r / (2 * s * s));
        }
        case ZEB_FILTER_CATMULL_ROM: {
            // The spline through 0 1 0 0 0 at r / 2: two spans of length 1, 1 at 0 and 0 from 2 on.
            if (r >= 2) return 0;
            if (r < 1) return ((3 * r - 5) * r * r + 2) / 2;
            const double f = r - 1;
            return ((-f + 2) * f - 1) * f / 2;
        }
        case ZEB_FILTER_SINC:
            return r < 1e-9 ? 1 : std::sin(M_PI * r) / (M_PI * r);
        default:
            return 1;
    }
}

// The part of the filter's integral that lies on the inner side of a x + b y < c.
double halfPlane(short id, double width, double a, double b, double c)
{
    const int n = 400;
    double inside = 0, all = 0;
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const double x = ((i + 0.5) / n - 0.5) * width, y = ((j + 0.5) / n - 0.5) * width;
            const double w = weight(id, x, y, width);
            all += w;
            if (a * x + b * y < c) inside += w;
        }
    }
    return inside / all;
}

double triangleArea(const Vec& a, const Vec& b, const Vec& c)
{
    return 0.5 *
           std::fabs(double{b[0] - a[0]} * (c[1] - a[1]) - double{c[0] - a[0]} * (b[1] - a[1]));
}

}  // namespace

TEST_F(Coverage, OfAHalfPlaneIsTheFiltersIntegralOnEveryPixel)
{
    for (const FilterCase& filter : kFilters) {
        for (const double angle : {0.0, 0.3, 0.7854, 1.4}) {
            SCOPED_TRACE(std::string(filter.name) + " at " + std::to_string(angle));
            zebReset();
            raster(32, 32);
            zebFilter(filter.id);
            zebFilterWidth(filter.width, filter.width);
            zebSampleUniform(24, 24);
            zebSampleJitter(1);
            beginFlat();
            // The half-plane nx (x - 16.2) + ny (y - 15.9) < 0, as a rectangle much larger than
            // the picture.
            const double nx = std::cos(angle), ny = std::sin(angle);
            const auto point = [&](double across, double along) {
                return Vec{static_cast<float>(16.2 + nx * across - ny * along),
                           static_cast<float>(15.9 + ny * across + nx * along), 0.5f};
            };
            zebShadingRate(16);
            polygon({point(0, -100), point(0, 100), point(-100, 100), point(-100, -100)});
            zebSceneEnd();
            for (long k = 8; k < 24; ++k) {
                const double x = static_cast<double>(k) + 0.5, y = 16.5;
                const double c = -(nx * (x - 16.2) + ny * (y - 15.9));
                const double expected = halfPlane(filter.id, filter.width, nx, ny, c);
                // An edge may lie anywhere between two columns of samples, a 24th of a pixel apart.
                EXPECT_NEAR(alpha(k, 16), expected, 0.5 / 24) << "pixel " << k;
            }
        }
    }
}

TEST_F(Coverage, OfATriangleSumsUpToItsArea)
{
    const Vec triangles[][3] = {{{5.3f, 4.1f, 0.5f}, {58.2f, 11.7f, 0.5f}, {20.9f, 57.4f, 0.5f}},
                                {{8, 8, 0.5f}, {8, 56, 0.5f}, {56, 8, 0.5f}},
                                {{4.5f, 30.2f, 0.5f}, {60.1f, 31.9f, 0.5f}, {30, 33, 0.5f}}};
    for (const FilterCase& filter : kFilters) {
        for (const auto& t : triangles) {
            // The sinc's weights at the pixels around a sample don't sum up to the same everywhere,
            // which shows on a sliver.
            if (filter.id == ZEB_FILTER_SINC && triangleArea(t[0], t[1], t[2]) < 100) continue;
            zebReset();
            raster(64, 64);
            zebFilter(filter.id);
            zebFilterWidth(filter.width, filter.width);
            zebSampleUniform(8, 8);
            // Integers have room for what lobes leave outside 0 ... 1.
            zebColorQuantize(100000, -200000, 200000);
            zebColorJitter(0);
            beginFlat();
            polygon({t[0], t[1], t[2]});
            zebSceneEnd();
            const double area = triangleArea(t[0], t[1], t[2]);
            double sum = 0;
            for (long k = 0; k < 64 * 64; ++k) {
                sum += static_cast<std::int32_t>(picture.word(k % 64, k / 64, 3)) / 100000.0;
            }
            EXPECT_NEAR(sum, area, 0.006 * area + 0.5) << filter.name;
        }
    }
}

TEST_F(Coverage, OfManyRandomTrianglesSumsUpToTheirAreas)
{
    unsigned state = 7;
    const auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(state >> 8) / 16777216.0f;
    };
    for (int k = 0; k < 60; ++k) {
        Vec t[3];
        for (Vec& p : t) p = {2 + 44 * next(), 2 + 44 * next(), 0.1f + 0.8f * next()};
        zebReset();
        raster(48, 48);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleUniform(8, 8);
        beginFlat();
        polygon({t[0], t[1], t[2]});
        zebSceneEnd();
        const double area = triangleArea(t[0], t[1], t[2]);
        EXPECT_NEAR(picture.sum(3), area, 0.01 * area + 0.3) << k;
        // Without lobes, nothing falls outside 0 ... 1 and the inside is whole.
        for (long y = 0; y < 48; ++y) {
            for (long x = 0; x < 48; ++x) {
                ASSERT_GE(alpha(x, y), 0);
                ASSERT_LE(alpha(x, y), 1);
            }
        }
    }
}

TEST_F(Coverage, OfAnAlignedRectangleIsExactOnEveryPixel)
{
    raster(16, 16);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    beginFlat();
    rectangle(3, 4, 11, 13, 0.5f);
    zebSceneEnd();
    for (long y = 0; y < 16; ++y) {
        for (long x = 0; x < 16; ++x) {
            const bool inside = x >= 3 && x < 11 && y >= 4 && y < 13;
            EXPECT_EQ(alpha(x, y), inside ? 1 : 0) << x << ' ' << y;
            EXPECT_EQ(red(x, y), inside ? 1 : 0);
        }
    }
}

TEST_F(Coverage, OfAPictureIsTheSameInEveryCropWindowOfWholeBuckets)
{
    const auto scene = [this] {
        zebSampleUniform(3, 3);
        beginFlat();
        color(0.3f, 0.7f, 0.9f);
        polygon({{5.3f, 4.1f, 0.5f}, {58.2f, 11.7f, 0.3f}, {20.9f, 45.4f, 0.8f}});
        color(1, 0.2f, 0.1f);
        rectangle(20.4f, 10.7f, 50.1f, 44.9f, 0.45f);
        zebSceneEnd();
    };
    raster(64, 48);
    scene();
    const std::vector<std::uint32_t> whole = picture.words();
    // 24 x 12 pixels from (24, 12): whole buckets of 12 x 12.
    zebReset();
    raster(64, 48);
    zebImageCrop(24.0f / 64, 48.0f / 64, 12.0f / 48, 24.0f / 48);
    scene();
    for (long y = 12; y < 24; ++y) {
        for (long x = 24; x < 48; ++x) {
            for (int c = 0; c < 5; ++c) {
                ASSERT_EQ(picture.word(x, y, c),
                          whole[static_cast<std::size_t>((y * 64 + x) * 5 + c)])
                    << x << ' ' << y;
            }
        }
    }
    EXPECT_EQ(alpha(23, 15), 0) << "nothing is sent outside the window";
    EXPECT_EQ(alpha(48, 15), 0);
    EXPECT_EQ(picture.spans, 24) << "two buckets of twelve rows";
    const std::vector<std::pair<long, long>> flushes = {{0, 11}, {12, 23}, {24, 47}};
    EXPECT_EQ(picture.flushes, flushes);
}

TEST_F(Coverage, DoesNotDependOnTheBucketSize)
{
    std::vector<std::uint32_t> first;
    for (const long size : {12L, 5L, 64L, 1L, 7L}) {
        zebReset();
        raster(40, 30);
        zebTune(32, size, size);
        zebClip(1, 2);
        beginFlat();
        color(0.3f, 0.7f, 0.9f);
        polygon({{5.3f, 4.1f, 0.5f}, {38.2f, 11.7f, 0.3f}, {20.9f, 28.4f, 0.8f}});
        zebSceneEnd();
        if (first.empty()) first = picture.words();
        EXPECT_EQ(picture.words(), first) << size;
    }
}

TEST_F(Coverage, WideFiltersShowNoSeamsOnceTheQuirksAreOff)
{
    // A rectangle whose left and top edges lie on bucket borders, under a filter 6 pixels wide.
    std::vector<std::uint32_t> pictures[2];
    for (const long size : {12L, 48L}) {
        zebReset();
        raster(48, 48);
        zebTune(32, size, size);
        zebFilterWidth(6, 6);
        beginFlat();
        rectangle(13.5f, 13.5f, 40, 40, 0.5f);
        zebSceneEnd();
        pictures[size == 48] = picture.words();
    }
    EXPECT_EQ(pictures[0], pictures[1]);

    zebReset();
    raster(48, 48);
    zebQuirks(1);
    zebFilterWidth(6, 6);
    beginFlat();
    rectangle(13.5f, 13.5f, 40, 40, 0.5f);
    zebSceneEnd();
    EXPECT_NE(picture.words(), pictures[1]) << "the default files too late for wide filters";
    EXPECT_EQ(alpha(11, 20), 0) << "the bucket on the left never saw the surface";
}

TEST_F(Coverage, PixelAspectStretchesTheScreen)
{
    // Without a screen window the picture shows -a ... a across for a = width x aspect / height.
    zebRasterViewport(0, 40, 0, 20);
    zebRasterAspect(0.5f);
    zebViewOrthographic();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    picture.attachFloat();
    beginFlat();
    // The frame aspect is 1: a unit square about the centre covers half of each axis.
    rectangle(-0.5f, -0.5f, 0.5f, 0.5f, 1);
    zebSceneEnd();
    EXPECT_EQ(picture.sum(3), 20 * 10);
    EXPECT_EQ(alpha(10, 5), 1);
    EXPECT_EQ(alpha(29, 14), 1);
    EXPECT_EQ(alpha(9, 10), 0);
}

TEST_F(Coverage, PerspectiveDividesByTheTangentOfHalfTheFieldOfView)
{
    zebRasterViewport(0, 100, 0, 100);
    zebViewPerspective(60);
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebSampleUniform(8, 8);
    picture.attachFloat();
    beginFlat();
    // A unit square at z = 4: its side on screen is 1 / (4 tan 30), in pixels times 50.
    rectangle(-0.5f, -0.5f, 0.5f, 0.5f, 4);
    zebSceneEnd();
    const double side = 50 / (4 * std::tan(M_PI / 6));
    EXPECT_NEAR(picture.sum(3), side * side, 0.01 * side * side);
}

}  // namespace zebtest
