// Numbers of things that are large for a counter of 16 bits. The benchmarks time them.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Scale : public RasterTest
{
};

}  // namespace

TEST_F(Scale, AMeshOfMoreThan65535VerticesIsWhole)
{
    // 400 x 400 squares of two triangles, each a 4 x 4 block of a colour, over 64 x 64 pixels.
    const int n = 400;
    std::vector<Vec> points, colors;
    std::vector<long> sizes, indices;
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            const float x = static_cast<float>(i) / n, y = static_cast<float>(j) / n;
            points.push_back({64 * x, 64 * y, 0.5f});
            colors.push_back({x, y, 0});
        }
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const long a = j * (n + 1) + i;
            for (const long k : {a, a + 1, a + n + 2, a, a + n + 2, a + n + 1})
                indices.push_back(k);
            sizes.insert(sizes.end(), {3, 3});
        }
    }
    raster(64, 64);
    beginFlat();
    zebShadingModel(ZEB_SMOOTH);
    zebPolygonMesh(static_cast<long>(sizes.size()), sizes.data(), indices.data(), zebQuark("point"),
                   points.data(), zebQuark("color"), colors.data(), 0);
    zebSceneEnd();
    for (long y = 2; y < 62; ++y) {
        for (long x = 2; x < 62; ++x) {
            ASSERT_EQ(alpha(x, y), 1) << x << ' ' << y;
            ASSERT_NEAR(red(x, y), (static_cast<double>(x) + 0.5) / 64, 0.006);
            ASSERT_NEAR(green(x, y), (static_cast<double>(y) + 0.5) / 64, 0.006);
        }
    }
}

TEST_F(Scale, SeventyThousandPrimitivesShareOneRecord)
{
    // More than 15 or 16 bits of references could count.
    raster(280, 250);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebSampleUniform(1, 1);
    beginFlat();
    color(0, 1, 0);
    for (int k = 0; k < 70000; ++k) {
        const auto x = static_cast<float>(k % 280), y = static_cast<float>(k / 280);
        rectangle(x, y, x + 1, y + 1, 0.5f);
    }
    zebSceneEnd();
    EXPECT_EQ(picture.sum(3), 70000);
    EXPECT_EQ(picture.sum(1), 70000);
}

TEST_F(Scale, ACropOfAWidePictureIsPartOfIt)
{
    zebRasterViewport(0, 16384, 0, 16384);
    zebImageWindow(0, 16384, 0, 16384);
    zebImageCrop(0, 1, 0.5f, 0.5f + 4.0f / 16384);
    zebViewIdentity();
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebOutputSamples(ZEB_SAMPLES_ALPHA);
    ZebDisplay device{};
    static long covered, rows, flushed;
    covered = rows = flushed = 0;
    device.span = [](void*, long x0, long x1, long, const unsigned int* words) {
        for (long x = x0; x <= x1; ++x) covered += words[x - x0] == 255;
        rows += x0 == 0;
    };
    device.flush = [](void*, long y0, long y1) { flushed += y1 - y0 + 1; };
    zebCustomDisplay(&device);
    beginFlat();
    zebShadingRate(100);
    rectangle(100, 100, 16284, 16284, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(rows, 4);
    EXPECT_EQ(covered, 4 * (16284 - 100));
    EXPECT_EQ(flushed, 16384) << "every row once";
}

}  // namespace zebtest
