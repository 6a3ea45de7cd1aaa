// What functions that shade find for patterns and pictures on surfaces.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

#include "support/row.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

// Shades a square of x and y from -1 to 1 in object space, at z = 3, which fills the picture.
class RowServices : public RasterTest
{
protected:
    static void shadeSquare(const std::function<void(ZebRow*)>& function, long size = 32,
                            float rate = 1)
    {
        Picture nowhere(3);
        zebFrameBegin();
        zebRasterViewport(0, size, 0, size);
        nowhere.attachFloat();
        zebViewOrthographic();
        zebSceneBegin();
        zebShadingModel(ZEB_SMOOTH);
        zebShadingRate(rate);
        zebTranslate(0, 0, 3);
        surface(function);
        const float corners[12] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
        zebPolygon(4, zebQuark("point"), corners, 0);
        zebSceneEnd();
        zebFrameEnd();
    }
    // The values of one plane that make(row, plane) sets, over all points.
    static std::vector<float> values(const std::function<void(ZebRow*, float*)>& make,
                                     long size = 32, float rate = 1)
    {
        std::vector<float> all;
        shadeSquare(
            [&](ZebRow* row) {
                float* const plane = zebRowPlane(row);
                make(row, plane);
                all.insert(all.end(), plane, plane + row->count);
            },
            size, rate);
        EXPECT_GT(all.size(), 50u);
        return all;
    }
    void expectReport(long code, const std::string& message)
    {
        ASSERT_FALSE(reports.empty());
        EXPECT_EQ(reports.last().code, code);
        EXPECT_EQ(reports.last().message, message);
        reports.clear();
    }
};

TEST_F(RowServices, TransformKnowsTheSpacesOfTheSceneAndOfTheShader)
{
    const unsigned short eye = zebQuark("eye"), world = zebQuark("world"),
                         model = zebQuark("model"), marked = zebQuark("a marked space");
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    picture.attachFloat();
    zebRasterViewport(0, 32, 0, 32);
    zebViewOrthographic();
    zebTranslate(0, 0, 10);
    zebSceneBegin();
    zebMatrixPush();
    zebTranslate(0, 5, 0);
    zebMarkSpace(marked);
    zebMatrixPop();
    zebTranslate(1, 0, 0);
    zebScale(2, 2, 2);
    long rows = 0;
    surface([&](ZebRow* row) {
        ++rows;
        const Planes to(row), back(row);
        const auto expect = [&](unsigned short space, float scale, Vec origin) {
            zebRowTransform(row, eye, space, ZEB_TRANSFORM_POINT, row->P, to);
            zebRowTransform(row, space, eye, ZEB_TRANSFORM_POINT, to, back);
            each(row, [&](long k, int c) {
                EXPECT_NEAR(to[c][k], (row->P[c][k] - origin[c]) / scale, 1e-5);
                EXPECT_NEAR(back[c][k], row->P[c][k], 1e-5);
            });
            zebRowTransform(row, eye, space, ZEB_TRANSFORM_VECTOR, row->P, to);
            each(row, [&](long k, int c) { EXPECT_NEAR(to[c][k], row->P[c][k] / scale, 1e-5); });
        };
        expect(world, 1, {0, 0, 10});
        expect(0, 2, {1, 0, 10});
        expect(model, 2, {1, 0.5f, 10});
        expect(marked, 1, {0, 5, 10});
        expect(eye, 1, {0, 0, 0});
    });
    // What is marked later does not show.
    zebMarkSpace(marked);
    zebTranslate(0, 0.25f, 0);
    zebSphere(0.2f, -0.2f, 0.2f, 360, 0);
    zebSceneEnd();
    EXPECT_GT(rows, 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(RowServices, NormalsStayAcrossSurfacesThroughSkewedAndMirroredSpaces)
{
    const unsigned short eye = zebQuark("eye"), skewed = zebQuark("a skewed space");
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    picture.attachFloat();
    zebRasterViewport(0, 32, 0, 32);
    zebViewOrthographic();
    zebSceneBegin();
    zebMatrixPush();
    zebTranslate(0, 0, 4);
    zebRotate(30, 1, 2, 3);
    zebScale(-1, 2, 5);
    zebMarkSpace(skewed);
    zebMatrixPop();
    zebTranslate(0, 0, 4);
    long points = 0;
    surface([&](ZebRow* row) {
        const Planes N(row), u(row), v(row), P(row), shifted(row), out(row);
        zebRowTransform(row, eye, skewed, ZEB_TRANSFORM_NORMAL, row->Ng, N);
        zebRowTransform(row, eye, skewed, ZEB_TRANSFORM_VECTOR, row->dPdu, u);
        zebRowTransform(row, eye, skewed, ZEB_TRANSFORM_VECTOR, row->dPdv, v);
        zebRowTransform(row, eye, skewed, ZEB_TRANSFORM_VECTOR, row->Ng, out);
        for (long k = 0; k < row->count; ++k, ++points) {
            const auto at = [k](const Planes& p) { return Vec{p[0][k], p[1][k], p[2][k]}; };
            const double size = std::sqrt(dot(at(N), at(N)));
            EXPECT_NEAR(dot(at(N), at(u)) / size, 0, 1e-4);
            EXPECT_NEAR(dot(at(N), at(v)) / size, 0, 1e-4);
            EXPECT_GT(dot(at(N), at(out)), 0) << "on the same side";
        }
    });
    zebSphere(0.8f, -0.8f, 0.8f, 360, 0);
    zebSceneEnd();
    EXPECT_GT(points, 100);
}

TEST_F(RowServices, TransformRefusesWhatItCannotDo)
{
    const unsigned short eye = zebQuark("eye"), raster = zebQuark("raster"),
                         flat = zebQuark("a flat space");
    zebFrameBegin();
    zebMatrixPush();
    zebScale(1, 1, 0);
    zebMarkSpace(flat);
    zebMatrixPop();
    bool done = false;
    shadeSquare([&](ZebRow* row) {
        if (std::exchange(done, true)) return;
        const Planes to(row);
        to[0][0] = 77;
        zebRowTransform(row, raster, eye, ZEB_TRANSFORM_POINT, row->P, to);
        expectReport(10, "zebRowTransform: no space to shade in: 32");
        zebRowTransform(row, eye, 60000, ZEB_TRANSFORM_POINT, row->P, to);
        expectReport(10, "zebRowTransform: no space to shade in: 60000");
        zebRowTransform(row, eye, eye, 7, row->P, to);
        expectReport(10, "zebRowTransform: unknown kind 7");
        zebRowTransform(row, eye, flat, ZEB_TRANSFORM_POINT, row->P, to);
        ASSERT_FALSE(reports.empty());
        EXPECT_EQ(reports.last().code, 15);
        EXPECT_EQ(to[0][0], 77);
        reports.clear();
    });
    EXPECT_TRUE(done);
    zebFrameEnd();
}

TEST_F(RowServices, NoiseIsZeroOnTheLatticeBoundedAndSmoothBetween)
{
    for (long dimensions = 1; dimensions <= 4; ++dimensions) {
        double least = 1, most = -1;
        shadeSquare([&](ZebRow* row) {
            float* planes[4];
            for (float*& plane : planes) plane = zebRowPlane(row);
            float* const here = zebRowPlane(row);
            float* const aside = zebRowPlane(row);
            for (long k = 0; k < row->count; ++k) {
                for (int d = 0; d < 4; ++d) {
                    planes[d][k] = std::floor(row->u[k] * 20 + static_cast<float>(d) * 7 - 3);
                }
            }
            zebRowNoise(row, dimensions, planes, nullptr, here);
            for (long k = 0; k < row->count; ++k) EXPECT_EQ(here[k], 0);
            for (long k = 0; k < row->count; ++k) {
                planes[0][k] = row->u[k] * 9.3f - 40;
                planes[1][k] = row->v[k] * 7.1f;
                planes[2][k] = row->v[k] - row->u[k] * 3.3f;
                planes[3][k] = 0.37f;
            }
            zebRowNoise(row, dimensions, planes, nullptr, here);
            for (long k = 0; k < row->count; ++k) planes[dimensions - 1][k] += 1e-3f;
            zebRowNoise(row, dimensions, planes, nullptr, aside);
            for (long k = 0; k < row->count; ++k) {
                EXPECT_NEAR(here[k], aside[k], 5e-3);
                least = std::min(least, double{here[k]});
                most = std::max(most, double{here[k]});
            }
        });
        EXPECT_LT(least, -0.3) << dimensions;
        EXPECT_GE(least, -1) << dimensions;
        EXPECT_GT(most, 0.3) << dimensions;
        EXPECT_LE(most, 1) << dimensions;
    }
}

TEST_F(RowServices, NoiseRepeatsWithItsPeriods)
{
    const long periods[3] = {4, 0, 3};
    shadeSquare([&](ZebRow* row) {
        const Planes place(row);
        float* const here = zebRowPlane(row);
        float* const there = zebRowPlane(row);
        each(row, [&](long k, int c) { place[c][k] = row->P[c][k] * 3 + 0.25f; });
        zebRowNoise(row, 3, place, periods, here);
        for (long k = 0; k < row->count; ++k) place[0][k] += 8;
        for (long k = 0; k < row->count; ++k) place[2][k] -= 3;
        zebRowNoise(row, 3, place, periods, there);
        for (long k = 0; k < row->count; ++k) EXPECT_NEAR(here[k], there[k], 1e-5);
        double most = 0;
        for (long k = 0; k < row->count; ++k) place[1][k] += 3;
        zebRowNoise(row, 3, place, periods, there);
        for (long k = 0; k < row->count; ++k) {
            most = std::max(most, std::fabs(double{here[k]} - double{there[k]}));
        }
        EXPECT_GT(most, 0.01) << "no period along the second";
    });
}

TEST_F(RowServices, NoiseOfFarAndMissingPlacesIsFinite)
{
    shadeSquare([&](ZebRow* row) {
        float* const place = zebRowPlane(row);
        float* const result = zebRowPlane(row);
        for (const float x : {1e9f, -1e30f, 3e38f, INFINITY, -INFINITY, NAN}) {
            std::fill_n(place, row->count, x);
            for (const long period : {0L, 5L}) {
                zebRowNoise(row, 1, &place, &period, result);
                for (long k = 0; k < row->count; ++k) EXPECT_EQ(result[k], 0);
            }
        }
    });
    EXPECT_TRUE(reports.empty());
}

TEST_F(RowServices, CountsOutOfRangeAreRefused)
{
    bool done = false;
    shadeSquare([&](ZebRow* row) {
        if (std::exchange(done, true)) return;
        float* const result = zebRowPlane(row);
        for (const long dimensions : {0L, 5L, -1L}) {
            zebRowNoise(row, dimensions, row->P, nullptr, result);
            expectReport(
                10, "zebRowNoise: dimensions must be 1 to 4, not " + std::to_string(dimensions));
        }
        for (const long octaves : {0L, 33L}) {
            zebRowTurbulence(row, 3, row->P, octaves, 0.5f, 0, result);
            expectReport(
                10, "zebRowTurbulence: octaves must be 1 to 32, not " + std::to_string(octaves));
        }
    });
    EXPECT_TRUE(done);
}

// Where points are near each other all octaves count; where they are far apart none does.
TEST_F(RowServices, TurbulenceIsTheSumOfItsOctavesUntilTheyWouldFlicker)
{
    for (const short absolute : {0, 1}) {
        shadeSquare([&](ZebRow* row) {
            const Planes near(row), octave(row);
            float* const sum = zebRowPlane(row);
            float* const one = zebRowPlane(row);
            std::vector<float> expected(static_cast<std::size_t>(row->count));
            each(row, [&](long k, int c) { near[c][k] = row->P[c][k] * 0.01f + 0.3f; });
            zebRowTurbulence(row, 3, near, 3, 0.5f, absolute, sum);
            for (int n = 0; n < 3; ++n) {
                each(row, [&](long k, int c) { octave[c][k] = near[c][k] * std::exp2f(n); });
                zebRowNoise(row, 3, octave, nullptr, one);
                for (long k = 0; k < row->count; ++k) {
                    const float value = absolute ? std::fabs(one[k]) : one[k];
                    expected[k] += value * std::exp2f(-n);
                }
            }
            for (long k = 0; k < row->count; ++k) EXPECT_NEAR(sum[k], expected[k], 1e-6);
            each(row, [&](long k, int c) { near[c][k] = row->P[c][k] * 1000; });
            zebRowTurbulence(row, 3, near, 3, 0.5f, absolute, sum);
            if (row->count < 4) return;
            for (long k = 0; k < row->count; ++k) EXPECT_EQ(sum[k], 0);
        });
    }
}

TEST_F(RowServices, StepsHaveTheMeanThatTheyShould)
{
    // The edge at x = 0.25 leaves 0.375 of the square above it.
    const auto above = values([](ZebRow* row, float* plane) {
        std::copy_n(row->u, row->count, plane);
        zebRowStep(row, 0.25f, plane, plane);
    });
    const double mean =
        std::accumulate(above.begin(), above.end(), 0.0) / static_cast<double>(above.size());
    EXPECT_NEAR(mean, 0.375, 0.03);
    EXPECT_TRUE(std::all_of(above.begin(), above.end(), [](float x) { return x >= 0 && x <= 1; }));
    const auto flat = values([](ZebRow* row, float* plane) {
        std::fill_n(plane, row->count, 0.5f);
        zebRowStep(row, 0.5f, plane, plane);
    });
    EXPECT_TRUE(std::all_of(flat.begin(), flat.end(), [](float x) { return x == 1; }));
}

TEST_F(RowServices, ChecksAreBlackAndWhiteNearAndGrayFarAway)
{
    long plain = 0, points = 0;
    shadeSquare([&](ZebRow* row) {
        float* const fields = zebRowPlane(row);
        float* const s = zebRowPlane(row);
        float* const t = zebRowPlane(row);
        for (long k = 0; k < row->count; ++k) s[k] = row->u[k] * 2;
        for (long k = 0; k < row->count; ++k) t[k] = row->v[k] * 2;
        zebRowChecks(row, s, t, fields);
        for (long k = 0; k < row->count; ++k, ++points) {
            const auto toEdge = [](float x) { return std::fabs(x - std::round(x)); };
            if (toEdge(s[k]) < 0.2f || toEdge(t[k]) < 0.2f) continue;
            ++plain;
            const int odd = static_cast<int>(std::floor(s[k]) + std::floor(t[k])) & 1;
            EXPECT_NEAR(fields[k], odd ? 0 : 1, 1e-5);
        }
    });
    EXPECT_GT(plain, points / 8);
    const auto far = values([](ZebRow* row, float* plane) {
        float* const s = zebRowPlane(row);
        float* const t = zebRowPlane(row);
        for (long k = 0; k < row->count; ++k) s[k] = row->u[k] * 1234;
        for (long k = 0; k < row->count; ++k) t[k] = row->v[k] * 1234;
        zebRowChecks(row, s, t, plane);
    });
    for (const float gray : far) EXPECT_NEAR(gray, 0.5, 0.02);
}

class Images : public RowServices
{
protected:
    // Of 4 x 2 pixels with two channels: the column, and the row.
    const void* ramp(short wrap)
    {
        float pixels[16];
        for (int j = 0; j < 2; ++j) {
            for (int i = 0; i < 4; ++i) {
                pixels[2 * (4 * j + i)] = static_cast<float>(i);
                pixels[2 * (4 * j + i) + 1] = static_cast<float>(j);
            }
        }
        return zebImage(4, 2, 2, pixels, wrap);
    }
    // Both channels at (s, t).
    Vec at(const void* image, float s, float t)
    {
        Vec found{};
        shadeSquare([&](ZebRow* row) {
            float* const results[2] = {zebRowPlane(row), zebRowPlane(row)};
            float* const places[2] = {zebRowPlane(row), zebRowPlane(row)};
            std::fill_n(places[0], row->count, s);
            std::fill_n(places[1], row->count, t);
            zebRowImage(row, image, places[0], places[1], 0, results);
            found = {results[0][0], results[1][0], 0};
        });
        return found;
    }
};

TEST_F(Images, AreBilinearBetweenTheMiddlesOfPixels)
{
    const void* const image = ramp(ZEB_IMAGE_CLAMP);
    ASSERT_NE(image, nullptr);
    for (const float s : {0.125f, 0.3f, 0.5f, 0.8f}) {
        EXPECT_NEAR(at(image, s, 0.5f)[0], 4 * s - 0.5f, 1e-6);
    }
    EXPECT_NEAR(at(image, 0.5f, 0.25f)[1], 0, 1e-6);
    EXPECT_NEAR(at(image, 0.5f, 0.6f)[1], 2 * 0.6f - 0.5f, 1e-6);
    zebImageFree(image);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Images, EndAsTheyAreTold)
{
    const struct {
        short wrap;
        float before, after;
    } expected[] = {{ZEB_IMAGE_CLAMP, 0, 3},
                    {ZEB_IMAGE_REPEAT, 3, 0},
                    {ZEB_IMAGE_MIRROR, 0, 3},
                    {ZEB_IMAGE_BLACK, 0, 0}};
    for (const auto& [wrap, before, after] : expected) {
        const void* const image = ramp(wrap);
        EXPECT_EQ(at(image, -0.125f, 0.5f)[0], before) << wrap;
        EXPECT_EQ(at(image, 1.125f, 0.5f)[0], after) << wrap;
        EXPECT_EQ(at(image, 1e30f, 0.5f)[0], 0) << wrap;
        EXPECT_EQ(at(image, NAN, 0.5f)[0], 0) << wrap;
        const float far = at(image, 1.375f, 0.5f)[0];
        EXPECT_EQ(far, wrap == ZEB_IMAGE_MIRROR ? 2 : wrap == ZEB_IMAGE_REPEAT ? 1 : after) << wrap;
        zebImageFree(image);
    }
}

// A finely checkered image, seen from far away, is gray, of whatever size it is.
TEST_F(Images, AreAveragedWhereTheyAreMadeSmaller)
{
    for (const long size : {64L, 100L, 37L}) {
        std::vector<float> pixels;
        for (long k = 0; k < size * size; ++k) {
            pixels.push_back(static_cast<float>((k % size + k / size) % 2));
        }
        const void* const image = zebImage(size, size, 1, pixels.data(), ZEB_IMAGE_REPEAT);
        double least = 1, most = 0;
        shadeSquare(
            [&](ZebRow* row) {
                float* const result = zebRowPlane(row);
                float* const s = zebRowPlane(row);
                float* const t = zebRowPlane(row);
                for (long k = 0; k < row->count; ++k) s[k] = row->u[k] * 2;
                for (long k = 0; k < row->count; ++k) t[k] = row->v[k] * 2;
                zebRowImage(row, image, s, t, 0, &result);
                for (long k = 0; k < row->count; ++k) {
                    least = std::min(least, double{result[k]});
                    most = std::max(most, double{result[k]});
                }
            },
            32, 4);
        EXPECT_GT(least, 0.4) << size;
        EXPECT_LT(most, 0.6) << size;
        zebImageFree(image);
    }
}

// A point and the next may be whole images apart.
TEST_F(Images, ThatRepeatManyTimesBetweenPointsAreTheirMean)
{
    std::vector<float> pixels(4096);
    for (std::size_t k = 0; k < pixels.size(); ++k) pixels[k] = k % 2048 < 1024 ? 1.0f : 0.0f;
    const void* const image = zebImage(1, 4096, 1, pixels.data(), ZEB_IMAGE_REPEAT);
    shadeSquare([&](ZebRow* row) {
        if (row->count < 4) return;
        float* const result = zebRowPlane(row);
        float* const t = zebRowPlane(row);
        for (long k = 0; k < row->count; ++k) t[k] = row->v[k] * 1003;
        zebRowImage(row, image, row->u, t, 0, &result);
        for (long k = 0; k < row->count; ++k) EXPECT_NEAR(result[k], 0.5, 0.01);
    });
    zebImageFree(image);
}

// Where s jumps from 1 back to 0, an image that repeats is as sharp as elsewhere.
TEST_F(Images, HaveNoSeamWhereTheyRepeat)
{
    std::vector<float> pixels(256 * 256);
    for (std::size_t k = 0; k < pixels.size(); ++k) pixels[k] = k % 256 / 64 % 3 ? 1.0f : 0.0f;
    const void* const image = zebImage(256, 256, 1, pixels.data(), ZEB_IMAGE_REPEAT);
    shadeSquare([&](ZebRow* row) {
        float* const result = zebRowPlane(row);
        float* const s = zebRowPlane(row);
        for (long k = 0; k < row->count; ++k) {
            const float x = row->u[k] + 1;
            s[k] = x - std::floor(x);
        }
        zebRowImage(row, image, s, row->v, 0, &result);
        for (long k = 0; k < row->count; ++k) {
            const float toEdge = std::fabs(std::fabs(s[k] - 0.5f) - 0.25f);
            if (toEdge < 0.1f) continue;
            EXPECT_NEAR(result[k], s[k] > 0.25f && s[k] < 0.75f, 1e-4) << s[k];
        }
    });
    zebImageFree(image);
}

TEST_F(Images, ThatAreNoneAreRefused)
{
    const float pixels[4] = {1, 2, NAN, 4};
    EXPECT_EQ(zebImage(0, 1, 1, pixels, ZEB_IMAGE_CLAMP), nullptr);
    expectReport(10, "zebImage: an image of 0 x 1 pixels with 1 channels");
    EXPECT_EQ(zebImage(1, 1, 65, pixels, ZEB_IMAGE_CLAMP), nullptr);
    expectReport(10, "zebImage: an image of 1 x 1 pixels with 65 channels");
    EXPECT_EQ(zebImage(1 << 20, 1 << 20, 1, pixels, ZEB_IMAGE_CLAMP), nullptr);
    reports.clear();
    EXPECT_EQ(zebImage(2, 1, 1, pixels, 3), nullptr);
    expectReport(10, "zebImage: unknown wrap 3");
    EXPECT_EQ(zebImage(2, 2, 1, pixels, ZEB_IMAGE_CLAMP), nullptr);
    expectReport(10, "zebImage: a pixel is not finite");
    EXPECT_EQ(zebImage(2, 2, 1, nullptr, ZEB_IMAGE_CLAMP), nullptr);
    expectReport(10, "zebImage: pixels are null");
    zebArray(pixels, 2, 0);
    EXPECT_EQ(zebImage(2, 2, 1, pixels, ZEB_IMAGE_CLAMP), nullptr);
    expectReport(11, "zebImage: \"pixels\": 2 elements where 4 are read");
}

TEST_F(Images, ThatAreGoneAreRefused)
{
    const void* const image = ramp(ZEB_IMAGE_CLAMP);
    zebImageFree(image);
    EXPECT_TRUE(reports.empty());
    zebImageFree(image);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports.last().code, 10);
    reports.clear();
    zebImageFree(nullptr);
    EXPECT_EQ(reports.size(), 1u);
    reports.clear();
    at(image, 0.5f, 0.5f);
    ASSERT_FALSE(reports.empty());
    EXPECT_EQ(reports.last().code, 10);
}

}  // namespace

}  // namespace zebtest
