// Colours in files: straight in PNG, light multiplied by alpha in OpenEXR.

#include <cmath>
#include <string>

#include "support/folder.h"
#include "support/png_image.h"
#include "support/scene.h"
#include "zebview/exr.h"

namespace zebtest
{

namespace
{

constexpr int kSide = 32;
constexpr float kGamma = 2.2f;

class FileColor : public RasterTest
{
protected:
    std::string path(const char* name) const { return (folder / name).string(); }

    // A sphere of one colour, with a rim a pixel wide before nothing.
    void begin(short samples = ZEB_SAMPLES_RGBA)
    {
        zebReset();
        raster(kSide, kSide);
        zebOutputSamples(samples);
        picture.setChannels(samples == ZEB_SAMPLES_RGBA ? 4 : 5);
        zebSampleUniform(8, 8);
        zebColorGamma(kGamma);
    }
    static void renderSphere(float r = 0.2f, float g = 0.2f, float b = 0.2f)
    {
        beginFlat();
        color(r, g, b);
        zebTranslate(kSide / 2, kSide / 2, 0.5f);
        zebScale(kSide / 3, kSide / 3, 0.4f);
        zebSphere(1, -1, 1, 360, 0);
        zebSceneEnd();
    }

    Folder folder;
};

// What is stored of a colour, of 0 to full.
double stored(double light, double full) { return std::pow(light, 1 / double{kGamma}) * full; }

}  // namespace

// 16 bits of floats: nothing but the last step is rounded, and 1e-4 of alpha is far above what
// floats lack.
TEST_F(FileColor, APngHasOneStraightColorFromInsideToRim)
{
    begin();
    zebColorGain(2);
    zebOutputFile(ZEB_FILE_PNG, path("a.png").c_str());
    renderSphere(0.1f, 0.25f, 0.5f);
    const PngImage image = readPng(path("a.png"));
    ASSERT_EQ(image.depth, 16);
    int rim = 0;
    for (long y = 0; y < kSide; ++y) {
        for (long x = 0; x < kSide; ++x) {
            const double alpha = image.at(x, y, 3) / 65535.0;
            if (alpha < 1e-4) continue;
            rim += alpha < 0.99;
            ASSERT_NEAR(image.at(x, y, 0), stored(0.2, 65535), 1) << alpha;
            ASSERT_NEAR(image.at(x, y, 1), stored(0.5, 65535), 1) << alpha;
            ASSERT_NEAR(image.at(x, y, 2), 65535, 1) << alpha;
        }
    }
    EXPECT_GT(rim, 60) << "about two pixels for each of the circumference";
}

// In 8 bits the word of a colour is off by half a step, which the division makes
// 0.5 / alpha^(1 / gamma), and that of alpha too, which makes 123 / gamma * 0.5 / (255 alpha): 0.9
// together where alpha is a half. Half a step more comes of rounding the quotient.
TEST_F(FileColor, APngOfBytesHasItAsFarAsTheyAllow)
{
    begin();
    zebColorQuantize(255, 0, 255);
    zebColorJitter(0);
    zebOutputFile(ZEB_FILE_PNG, path("a.png").c_str());
    renderSphere();
    const PngImage image = readPng(path("a.png"));
    ASSERT_EQ(image.depth, 8);
    EXPECT_EQ(image.at(kSide / 2, kSide / 2, 0), 123u) << "255 times 0.2^(1 / 2.2)";
    int rim = 0;
    for (long y = 0; y < kSide; ++y) {
        for (long x = 0; x < kSide; ++x) {
            if (image.at(x, y, 3) < 128) continue;
            rim += image.at(x, y, 3) < 250;
            ASSERT_NEAR(image.at(x, y, 0), stored(0.2, 255), 1.4) << image.at(x, y, 3);
        }
    }
    EXPECT_GT(rim, 20);
}

TEST_F(FileColor, AnOpenExrHoldsLightWhateverTheGamma)
{
    begin(ZEB_SAMPLES_RGBAZ);
    zebColorGamma(1);
    renderSphere();
    for (const short kind : {ZEB_FILE_EXR, ZEB_FILE_AUTO}) {
        begin(ZEB_SAMPLES_RGBAZ);
        zebOutputFile(kind, path("a.exr").c_str());
        renderSphere();
        const ExrImage image(path("a.exr"));
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                ASSERT_EQ(image.at("R", x, y), red(x, y));
                ASSERT_EQ(image.at("A", x, y), alpha(x, y));
                ASSERT_EQ(image.at("Z", x, y), depth(x, y));
            }
        }
        EXPECT_NEAR(image.at("R", kSide / 2, kSide / 2), 0.2, 1e-6);
    }
}

TEST_F(FileColor, AnOpenExrThatLeavesGammaOutSaysSoOnce)
{
    begin();
    const std::string name = path("a.exr");
    zebOutputFile(ZEB_FILE_EXR, name.c_str());
    renderSphere();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0],
              (Report{2, ZEB_WARNING, "zebSceneBegin: gamma is left out of \"" + name + "\""}));
}

TEST_F(FileColor, NothingIsSaidWhereGammaIsNotLeftOut)
{
    begin();
    zebOutputFile(ZEB_FILE_PNG, path("a.png").c_str());
    renderSphere();
    begin();
    zebColorGamma(1);
    zebOutputFile(ZEB_FILE_EXR, path("a.exr").c_str());
    renderSphere();
    begin();
    zebOutputSamples(ZEB_SAMPLES_ALPHA);
    zebOutputFile(ZEB_FILE_EXR, path("b.exr").c_str());
    renderSphere();
    EXPECT_TRUE(reports.empty()) << reports[0].message;
}

// Three times as bright as white, and beyond it on both sides of the rim.
TEST_F(FileColor, AnOpenExrHoldsWhatWasComputed)
{
    const auto prepare = [this] {
        begin(ZEB_SAMPLES_RGBAZ);
        zebColorGamma(1);
        zebColorGain(3);
        zebFilter(ZEB_FILTER_SINC);
        zebFilterWidth(4, 4);
    };
    prepare();
    renderSphere(1, 1, 1);
    prepare();
    zebOutputFile(ZEB_FILE_EXR, path("a.exr").c_str());
    renderSphere(1, 1, 1);
    const ExrImage image(path("a.exr"));
    float least = 1, most = 0;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            ASSERT_EQ(image.at("R", x, y), red(x, y));
            ASSERT_EQ(image.at("A", x, y), alpha(x, y));
            least = std::min(least, image.at("R", x, y));
            most = std::max(most, image.at("R", x, y));
        }
    }
    EXPECT_LT(least, 0);
    EXPECT_GT(most, 3);
}

}  // namespace zebtest
