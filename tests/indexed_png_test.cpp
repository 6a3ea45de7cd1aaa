// PNG files of 256 colours, held against the same pictures in true colour.

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "support/png_image.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

namespace fs = std::filesystem;

using Rgb = std::array<int, 3>;

struct Image {
    long width = 0, height = 0;
    int depth = 0, type = -1;
    std::vector<Rgb> palette;
    std::vector<std::size_t> indices;
    std::vector<Rgb> pixels;

    const Rgb& at(long x, long y) const
    {
        return pixels.at(static_cast<std::size_t>(y * width + x));
    }
};

// Of palette pictures and those of 8 bits in colour.
Image readImage(const std::string& name)
{
    const PngImage file = readPng(name);
    Image image{file.width, file.height, file.depth, file.type, file.palette, {}, {}};
    const auto sample = [&file](std::size_t i) { return static_cast<int>(file.samples[i]); };
    for (std::size_t i = 0; file.depth == 8 && i < file.samples.size(); ++i) {
        if (file.type == PNG_COLOR_TYPE_PALETTE) {
            image.indices.push_back(file.samples[i]);
            image.pixels.push_back(image.palette.at(file.samples[i]));
        } else if (file.type == PNG_COLOR_TYPE_RGB && i % 3 == 0) {
            image.pixels.push_back({sample(i), sample(i + 1), sample(i + 2)});
        }
    }
    return image;
}

// The lowest value of a channel's bin.
int binned(int value) { return value / 8 * 8; }
Rgb binned(const Rgb& pixel) { return {binned(pixel[0]), binned(pixel[1]), binned(pixel[2])}; }

// Cells of colour space are 64 to a side.
bool sameCell(const Rgb& a, const Rgb& b)
{
    return a[0] / 64 == b[0] / 64 && a[1] / 64 == b[1] / 64 && a[2] / 64 == b[2] / 64;
}

int squared(const Rgb& a, const Rgb& b)
{
    int sum = 0;
    for (std::size_t c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
    return sum;
}

std::size_t binsOf(const Image& image)
{
    std::set<Rgb> bins;
    for (const Rgb& pixel : image.pixels) bins.insert(binned(pixel));
    return bins.size();
}

class IndexedPng : public RasterTest
{
protected:
    IndexedPng() : folder(testing::TempDir() + "zeb-indexed-" + std::to_string(getpid()))
    {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~IndexedPng() override { fs::remove_all(folder); }

    std::string path(const char* name) const { return folder + "/" + name; }

    // Starts a picture of bytes in a file, without dither.
    void begin(long width, long height, short kind, const std::string& file,
               short samples = ZEB_SAMPLES_RGB, long one = 255)
    {
        zebReset();
        raster(width, height);
        zebOutputSamples(samples);
        zebColorQuantize(one, 0, one);
        zebDepthQuantize(one, 0, one);
        zebColorJitter(0);
        zebDepthJitter(0);
        zebOutputFile(kind, file.c_str());
        beginFlat();
    }
    // Two surfaces, one of them seen through the other, and what is beside them.
    static void fewColors()
    {
        color(0.9f, 0.5f, 0.1f);
        polygon({{2.3f, 2.1f, 0.2f}, {27.2f, 6.7f, 0.5f}, {11.9f, 18.4f, 0.8f}});
        opacity(0.5f, 0.5f, 0.5f);
        color(0.1f, 0.4f, 0.8f);
        rectangle(8, 3, 29, 12, 0.1f);
    }
    // A field of 128 x 128 whose red runs from left to right and whose green from top to bottom.
    static void manyColors()
    {
        const Vec corners[4] = {{0, 0, 0.5f}, {128, 0, 0.5f}, {128, 128, 0.5f}, {0, 128, 0.5f}};
        const Vec colors[4] = {{0, 0, 0.5f}, {1, 0, 0.5f}, {1, 1, 0.5f}, {0, 1, 0.5f}};
        zebPolygon(4, zebQuark("point"), corners, zebQuark("color"), colors, 0);
    }
    Image draw(short kind, const char* name, long width, long height, void (*scene)(),
               short samples = ZEB_SAMPLES_RGB, long one = 255)
    {
        begin(width, height, kind, path(name), samples, one);
        scene();
        zebSceneEnd();
        return readImage(path(name));
    }
    // A picture of one surface that fills it.
    Image filled(float r, float g, float b, long one = 255)
    {
        begin(6, 4, ZEB_FILE_PNG_INDEXED, path("filled.png"), ZEB_SAMPLES_RGB, one);
        color(r, g, b);
        rectangle(-9, -9, 19, 19, 0.5f);
        zebSceneEnd();
        return readImage(path("filled.png"));
    }
    // What a picture of such samples reports, in order, without the name of the file.
    std::vector<std::string> warnings(short samples)
    {
        begin(30, 20, ZEB_FILE_PNG_INDEXED, path("a.png"), samples);
        fewColors();
        zebSceneEnd();
        std::vector<std::string> messages;
        for (std::size_t n = 0; n < reports.size(); ++n) {
            EXPECT_EQ(reports[n].code, 2);
            EXPECT_EQ(reports[n].severity, ZEB_WARNING);
            messages.push_back(reports[n].message.substr(0, reports[n].message.find('"')));
        }
        reports.clear();
        EXPECT_EQ(readImage(path("a.png")).type, PNG_COLOR_TYPE_PALETTE) << "it is written anyway";
        return messages;
    }

    std::string folder;
    const std::string alphaLost = "zebSceneBegin: alpha is left out of ";
    const std::string depthLost = "zebSceneBegin: depth is left out of ";
};

}  // namespace

TEST_F(IndexedPng, IsAPaletteOfEightBits)
{
    const Image image = draw(ZEB_FILE_PNG_INDEXED, "a.png", 30, 20, fewColors);
    EXPECT_EQ(image.width, 30);
    EXPECT_EQ(image.height, 20);
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_PALETTE);
    EXPECT_EQ(image.depth, 8);
    EXPECT_TRUE(reports.empty());
}

TEST_F(IndexedPng, OfTwoColorsIsEightBitsToo)
{
    const Image image =
        draw(ZEB_FILE_PNG_INDEXED, "a.png", 8, 8, [] { rectangle(-2, -2, 4, 10, 0.5f); });
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_PALETTE);
    EXPECT_EQ(image.depth, 8);
    EXPECT_EQ(image.at(1, 4), (Rgb{248, 248, 248}));
    EXPECT_EQ(image.at(7, 4), (Rgb{0, 0, 0}));
}

TEST_F(IndexedPng, OfFewColorsDiffersFromTrueColorByTheLowThreeBitsAlone)
{
    const Image exact = draw(ZEB_FILE_PNG, "true.png", 30, 20, fewColors);
    const Image image = draw(ZEB_FILE_PNG_INDEXED, "indexed.png", 30, 20, fewColors);
    ASSERT_LE(binsOf(exact), 256u);
    ASSERT_GE(binsOf(exact), 10u);
    EXPECT_EQ(image.palette.size(), binsOf(exact)) << "one entry for each";
    for (long y = 0; y < 20; ++y) {
        for (long x = 0; x < 30; ++x)
            ASSERT_EQ(image.at(x, y), binned(exact.at(x, y))) << x << ' ' << y;
    }
}

TEST_F(IndexedPng, OfManyColorsHas256Entries)
{
    const Image exact = draw(ZEB_FILE_PNG, "true.png", 128, 128, manyColors);
    ASSERT_GT(binsOf(exact), 900u);
    const Image image = draw(ZEB_FILE_PNG_INDEXED, "indexed.png", 128, 128, manyColors);
    EXPECT_EQ(image.palette.size(), 256u);
    for (const std::size_t index : image.indices) ASSERT_LT(index, 256u);
    EXPECT_EQ(std::set<std::size_t>(image.indices.begin(), image.indices.end()).size(), 256u)
        << "each of them is used";
}

TEST_F(IndexedPng, OfManyColorsIsNearTrueColor)
{
    const Image exact = draw(ZEB_FILE_PNG, "true.png", 128, 128, manyColors);
    const Image image = draw(ZEB_FILE_PNG_INDEXED, "indexed.png", 128, 128, manyColors);
    // 1024 bins of red and green in 256 boxes are 4 bins a box. One of 4 to a side has its centre
    // within 12 of the lower end of any bin, and a colour lies up to 7 above that; some colours
    // take the entry of a box nearby.
    double sum = 0;
    for (std::size_t n = 0; n < exact.pixels.size(); ++n) {
        for (std::size_t c = 0; c < 3; ++c) {
            const int error = std::abs(image.pixels[n][c] - exact.pixels[n][c]);
            ASSERT_LT(error, 32) << n;
            sum += error;
        }
    }
    EXPECT_LT(sum / (3.0 * 128 * 128), 8) << "one bin";
}

TEST_F(IndexedPng, NoEntryInAColorsOwnCellIsNearerThanTheOneItTakes)
{
    const Image exact = draw(ZEB_FILE_PNG, "true.png", 128, 128, manyColors);
    const Image image = draw(ZEB_FILE_PNG_INDEXED, "indexed.png", 128, 128, manyColors);
    for (std::size_t n = 0; n < exact.pixels.size(); ++n) {
        const Rgb bin = binned(exact.pixels[n]);
        for (const Rgb& entry : image.palette) {
            if (!sameCell(entry, bin)) continue;
            ASSERT_LE(squared(image.pixels[n], bin), squared(entry, bin)) << n;
        }
    }
}

TEST_F(IndexedPng, OfOneColorHasOneEntry)
{
    const Image image = filled(1, 0.6f, 0.2f);
    // 255, 153, 51.
    EXPECT_EQ(image.palette, (std::vector<Rgb>{{248, 152, 48}}));
    EXPECT_EQ(image.indices, std::vector<std::size_t>(24, 0));
}

TEST_F(IndexedPng, OfNothingIsBlack)
{
    const Image image = draw(ZEB_FILE_PNG_INDEXED, "a.png", 6, 4, [] {});
    EXPECT_EQ(image.palette, (std::vector<Rgb>{{0, 0, 0}}));
    EXPECT_EQ(image.indices, std::vector<std::size_t>(24, 0));
}

TEST_F(IndexedPng, OfFloatsAndWideWordsIsThatOfBytes)
{
    const std::vector<Rgb> bytes = filled(0.2f, 0.4f, 0.6f).palette;
    // 51, 102, 153.
    EXPECT_EQ(bytes, (std::vector<Rgb>{{48, 96, 152}}));
    EXPECT_EQ(filled(0.2f, 0.4f, 0.6f, 0).palette, bytes);
    EXPECT_EQ(filled(0.2f, 0.4f, 0.6f, 65535).palette, bytes);
}

TEST_F(IndexedPng, OfAlphaOrDepthAloneIsGreyAndReportsNothing)
{
    EXPECT_EQ(warnings(ZEB_SAMPLES_ALPHA), std::vector<std::string>{});
    EXPECT_EQ(warnings(ZEB_SAMPLES_DEPTH), std::vector<std::string>{});
    for (const short samples : {ZEB_SAMPLES_ALPHA, ZEB_SAMPLES_DEPTH}) {
        const Image image = draw(
            ZEB_FILE_PNG_INDEXED, "a.png", 8, 8, [] { rectangle(-2, -2, 4, 10, 0.6f); }, samples);
        // Alpha is 1 there and depth 0.6, which is 153; beside it alpha is 0 and depth endless.
        const int hit = samples == ZEB_SAMPLES_ALPHA ? 248 : 152;
        EXPECT_EQ(image.at(1, 4), (Rgb{hit, hit, hit}));
        EXPECT_EQ(image.at(7, 4),
                  (samples == ZEB_SAMPLES_ALPHA ? Rgb{0, 0, 0} : Rgb{248, 248, 248}));
    }
}

TEST_F(IndexedPng, AlphaBesideColorIsLeftOutWithAWarning)
{
    EXPECT_EQ(warnings(ZEB_SAMPLES_RGBA), std::vector<std::string>{alphaLost});
}

TEST_F(IndexedPng, DepthBesideColorIsLeftOutWithAWarning)
{
    EXPECT_EQ(warnings(0x305), std::vector<std::string>{depthLost});
}

TEST_F(IndexedPng, AlphaAndDepthBesideColorAreTwoWarnings)
{
    EXPECT_EQ(warnings(ZEB_SAMPLES_RGBAZ), (std::vector<std::string>{alphaLost, depthLost}));
}

TEST_F(IndexedPng, DepthBesideAlphaIsLeftOutWithAWarning)
{
    EXPECT_EQ(warnings(0x306), std::vector<std::string>{depthLost});
}

TEST_F(IndexedPng, WhatIsLeftOutDoesNotChangeColor)
{
    const Image plain = draw(ZEB_FILE_PNG_INDEXED, "a.png", 30, 20, fewColors);
    for (const short samples : {ZEB_SAMPLES_RGBA, 0x305, ZEB_SAMPLES_RGBAZ}) {
        const Image image = draw(ZEB_FILE_PNG_INDEXED, "b.png", 30, 20, fewColors, samples);
        EXPECT_EQ(image.pixels, plain.pixels) << samples;
    }
}

TEST_F(IndexedPng, IsNotWhatTheEndingChooses)
{
    const Image image = draw(ZEB_FILE_AUTO, "a.png", 30, 20, fewColors);
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_RGB);
    EXPECT_EQ(image.depth, 8);
    EXPECT_TRUE(reports.empty());
}

TEST_F(IndexedPng, NeedsNoEndingOfItsOwn)
{
    EXPECT_EQ(draw(ZEB_FILE_PNG_INDEXED, "a.xyz", 30, 20, fewColors).type, PNG_COLOR_TYPE_PALETTE);
    EXPECT_TRUE(reports.empty());
}

TEST_F(IndexedPng, IsBlackBesideTheCrop)
{
    zebReset();
    raster(40, 40);
    zebImageCrop(0.25f, 0.5f, 0.25f, 0.5f);
    zebOutputSamples(ZEB_SAMPLES_RGB);
    zebColorQuantize(255, 0, 255);
    zebColorJitter(0);
    zebOutputFile(ZEB_FILE_PNG_INDEXED, path("a.png").c_str());
    beginFlat();
    color(1, 0.6f, 0.2f);
    rectangle(-9, -9, 49, 49, 0.5f);
    zebSceneEnd();
    const Image image = readImage(path("a.png"));
    ASSERT_EQ(image.width, 40);
    ASSERT_EQ(image.height, 40);
    EXPECT_EQ(image.at(15, 15), (Rgb{248, 152, 48}));
    EXPECT_EQ(image.at(5, 15), (Rgb{0, 0, 0}));
    EXPECT_EQ(image.at(25, 15), (Rgb{0, 0, 0}));
    EXPECT_EQ(image.at(15, 35), (Rgb{0, 0, 0}));
}

TEST_F(IndexedPng, LeavesNoTemporaryFile)
{
    draw(ZEB_FILE_PNG_INDEXED, "a.png", 30, 20, fewColors);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST_F(IndexedPng, OnAFullDiskIsReported)
{
    begin(30, 20, ZEB_FILE_PNG_INDEXED, "/dev/full");
    fewColors();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_EQ(reports[0].message,
              "zebSceneEnd: cannot write (No space left on device): \"/dev/full\"");
}

}  // namespace zebtest
