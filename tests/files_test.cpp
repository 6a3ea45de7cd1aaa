// Picture files: what is read back with other means equals the words that were sent.

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/png_image.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

namespace fs = std::filesystem;

class Files : public RasterTest
{
protected:
    Files() : folder(testing::TempDir() + "zeb-files-" + std::to_string(getpid()))
    {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~Files() override
    {
        chmod(folder.c_str(), 0755);
        fs::remove_all(folder);
    }
    std::string path(const char* name) const { return folder + "/" + name; }
    long filesLeft() const
    {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }

    // The same picture to a device and to a file.
    void render(const std::string& file, short kind, short samples, bool quantized, long one = 255)
    {
        for (const bool toFile : {false, true}) {
            zebReset();
            raster(30, 20);
            zebOutputSamples(samples);
            // Bits of the number stand for colour, alpha and depth.
            picture.setChannels((samples & 1) * 3 + (samples >> 1 & 1) + (samples >> 2 & 1));
            if (quantized) {
                zebColorQuantize(one, 0, one);
                zebDepthQuantize(one, 0, one);
            }
            if (toFile) zebOutputFile(kind, file.c_str());
            beginFlat();
            color(0.9f, 0.5f, 0.1f);
            polygon({{2.3f, 2.1f, 0.2f}, {27.2f, 6.7f, 0.5f}, {11.9f, 18.4f, 0.8f}});
            opacity(0.5f, 0.5f, 0.5f);
            color(0.1f, 0.4f, 0.8f);
            rectangle(8, 3, 29, 12, 0.1f);
            zebSceneEnd();
        }
    }

    std::string folder;
};

}  // namespace

TEST_F(Files, AnEightBitPngHoldsTheWords)
{
    render(path("a.png"), ZEB_FILE_AUTO, ZEB_SAMPLES_RGB, true);
    const PngImage image = readPng(path("a.png"));
    ASSERT_EQ(image.width, 30);
    ASSERT_EQ(image.height, 20);
    EXPECT_EQ(image.depth, 8);
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_RGB);
    Picture words(3);
    zebReset();
    raster(30, 20);
    zebOutputSamples(ZEB_SAMPLES_RGB);
    words.attach();
    zebColorQuantize(255, 0, 255);
    beginFlat();
    color(0.9f, 0.5f, 0.1f);
    polygon({{2.3f, 2.1f, 0.2f}, {27.2f, 6.7f, 0.5f}, {11.9f, 18.4f, 0.8f}});
    opacity(0.5f, 0.5f, 0.5f);
    color(0.1f, 0.4f, 0.8f);
    rectangle(8, 3, 29, 12, 0.1f);
    zebSceneEnd();
    for (long y = 0; y < 20; ++y) {
        for (long x = 0; x < 30; ++x) {
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(image.at(x, y, c), words.word(x, y, c)) << x << ' ' << y;
        }
    }
    EXPECT_EQ(filesLeft(), 1) << "no temporary file stays";
}

TEST_F(Files, APngsColourIsDividedByItsAlpha)
{
    zebReset();
    raster(8, 8);
    zebOutputSamples(ZEB_SAMPLES_RGBA);
    zebColorQuantize(255, 0, 255);
    zebColorJitter(0);
    zebOutputFile(ZEB_FILE_PNG, path("a.png").c_str());
    beginFlat();
    opacity(0.5f, 0.5f, 0.5f);
    color(1, 0.5f, 0);
    rectangle(-2, -2, 4, 10, 0.5f);
    zebSceneEnd();
    const PngImage image = readPng(path("a.png"));
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_RGB_ALPHA);
    // Words are 128, 64, 0 and 128.
    EXPECT_EQ(image.at(1, 4, 3), 128u);
    EXPECT_EQ(image.at(1, 4, 0), 255u);
    EXPECT_EQ(image.at(1, 4, 1), 128u) << "255 * 64 / 128, rounded";
    EXPECT_EQ(image.at(1, 4, 2), 0u);
    EXPECT_EQ(image.at(7, 4, 3), 0u);
    EXPECT_EQ(image.at(7, 4, 0), 0u);
}

TEST_F(Files, WideWordsAndFloatsMakeSixteenBitPngs)
{
    render(path("a.png"), ZEB_FILE_PNG, ZEB_SAMPLES_RGB, true, 65535);
    EXPECT_EQ(readPng(path("a.png")).depth, 16);
    render(path("b.png"), ZEB_FILE_PNG, ZEB_SAMPLES_RGBAZ, false);
    const PngImage image = readPng(path("b.png"));
    EXPECT_EQ(image.depth, 16);
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_RGB_ALPHA);
    ASSERT_FALSE(reports.empty()) << "depth is left out";
    EXPECT_EQ(reports.last().severity, ZEB_WARNING);
    for (long y = 0; y < 20; ++y) {
        for (long x = 0; x < 30; ++x) {
            ASSERT_EQ(image.at(x, y, 3),
                      static_cast<std::uint32_t>(std::floor(alpha(x, y) * 65535.0 + 0.5)));
        }
    }
}

TEST_F(Files, DepthAloneIsGrey)
{
    render(path("a.png"), ZEB_FILE_PNG, ZEB_SAMPLES_DEPTH, false);
    const PngImage image = readPng(path("a.png"));
    EXPECT_EQ(image.type, PNG_COLOR_TYPE_GRAY);
    EXPECT_EQ(image.depth, 16);
    EXPECT_EQ(image.at(0, 19, 0), 65535u) << "nothing is hit there";
    EXPECT_EQ(image.at(26, 4, 0), static_cast<std::uint32_t>(std::floor(0.1f * 65535.0 + 0.5)));
    render(path("b.png"), ZEB_FILE_PNG, ZEB_SAMPLES_ALPHA, true);
    EXPECT_EQ(readPng(path("b.png")).type, PNG_COLOR_TYPE_GRAY);
    render(path("c.png"), ZEB_FILE_PNG, 0x306, false);
    EXPECT_EQ(readPng(path("c.png")).type, PNG_COLOR_TYPE_GRAY_ALPHA);
}

TEST_F(Files, AnOpenExrHoldsTheFloats)
{
    render(path("a.exr"), ZEB_FILE_AUTO, ZEB_SAMPLES_RGBAZ, false);
    Imf::InputFile input(path("a.exr").c_str());
    const Imath::Box2i box = input.header().dataWindow();
    ASSERT_EQ(box.max.x - box.min.x + 1, 30);
    ASSERT_EQ(box.max.y - box.min.y + 1, 20);
    const char* names[] = {"R", "G", "B", "A", "Z"};
    std::vector<float> pixels(30 * 20 * 5);
    Imf::FrameBuffer buffer;
    for (std::size_t c = 0; c < 5; ++c) {
        ASSERT_NE(input.header().channels().findChannel(names[c]), nullptr);
        buffer.insert(names[c], Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(&pixels[c]),
                                           5 * sizeof(float), 30 * 5 * sizeof(float)));
    }
    input.setFrameBuffer(buffer);
    input.readPixels(box.min.y, box.max.y);
    for (long y = 0; y < 20; ++y) {
        for (long x = 0; x < 30; ++x) {
            for (int c = 0; c < 5; ++c) {
                ASSERT_EQ(pixels[static_cast<std::size_t>((y * 30 + x) * 5 + c)],
                          picture.value(x, y, c));
            }
        }
    }
    EXPECT_EQ(filesLeft(), 1);
}

TEST_F(Files, WhatCantBeWrittenIsReportedAndLeavesNothing)
{
    const std::string longName(300, 'x');
    const std::string names[] = {path("missing/folder/a.png"), path((longName + ".png").c_str())};
    for (const std::string& name : names) {
        reports.clear();
        render(name, ZEB_FILE_AUTO, ZEB_SAMPLES_RGB, true);
        ASSERT_EQ(reports.size(), 1u) << name;
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].message.rfind("zebSceneBegin: cannot write (", 0), 0u)
            << reports[0].message;
        EXPECT_EQ(filesLeft(), 0);
    }
}

// At once: the picture may take long.
TEST_F(Files, AnEndingThatNamesNoFormatIsRefused)
{
    const std::string names[] = {path("a.xyz"), path("noending"), folder + ".png/", path("png"),
                                 path("a.png ")};
    for (const std::string& name : names) {
        reports.clear();
        zebReset();
        raster(30, 20);
        zebOutputFile(ZEB_FILE_AUTO, name.c_str());
        ASSERT_EQ(reports.size(), 1u) << name;
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].message.rfind("zebOutputFile: the ending names no format: \"", 0), 0u)
            << reports[0].message;
        const int before = picture.opened;
        beginFlat();
        zebSceneEnd();
        EXPECT_EQ(picture.opened, before + 1) << "it goes where it went before";
        EXPECT_EQ(filesLeft(), 0);
    }
    // A kind needs no ending.
    reports.clear();
    render(path("noending"), ZEB_FILE_PNG, ZEB_SAMPLES_RGB, true);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(filesLeft(), 1);
}

TEST_F(Files, AFolderInTheNamesPlaceIsReported)
{
    fs::create_directories(path("a.png"));
    render(path("a.png"), ZEB_FILE_PNG, ZEB_SAMPLES_RGB, true);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(fs::is_directory(path("a.png")));
    EXPECT_EQ(filesLeft(), 1);
}

TEST_F(Files, AReadOnlyFolderIsReported)
{
    if (geteuid() == 0) {
        // The superuser writes anywhere but into the kernel's own folders.
        render("/proc/a.png", ZEB_FILE_PNG, ZEB_SAMPLES_RGB, true);
    } else {
        chmod(folder.c_str(), 0555);
        render(path("a.png"), ZEB_FILE_PNG, ZEB_SAMPLES_RGB, true);
    }
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_EQ(filesLeft(), 0);
}

TEST_F(Files, AFullDiskIsReportedWhenThePictureIsWhole)
{
    for (const short kind : {ZEB_FILE_PNG, ZEB_FILE_EXR}) {
        reports.clear();
        render("/dev/full", kind, ZEB_SAMPLES_RGB, true);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].message,
                  "zebSceneEnd: cannot write (No space left on device): \"/dev/full\"");
        EXPECT_TRUE(fs::is_character_file("/dev/full"));
    }
}

TEST_F(Files, AnEarlierPictureStaysUntilTheNewOneIsWhole)
{
    render(path("a.png"), ZEB_FILE_PNG, ZEB_SAMPLES_RGB, true);
    const auto size = fs::file_size(path("a.png"));
    raster(30, 20);
    zebOutputFile(ZEB_FILE_PNG, path("a.png").c_str());
    beginFlat();
    zebRenderInit();
    zebRenderBucket();
    EXPECT_EQ(fs::file_size(path("a.png")), size);
    zebReset();
    EXPECT_EQ(fs::file_size(path("a.png")), size);
    EXPECT_EQ(filesLeft(), 1) << "a picture given up leaves nothing";
}

TEST_F(Files, ACroppedPictureIsWrittenAtFullSize)
{
    zebReset();
    raster(40, 40);
    zebImageCrop(0.25f, 0.5f, 0.25f, 0.5f);
    zebOutputSamples(ZEB_SAMPLES_ALPHA);
    zebColorQuantize(255, 0, 255);
    zebColorJitter(0);
    zebOutputFile(ZEB_FILE_PNG, path("a.png").c_str());
    beginFlat();
    rectangle(0, 0, 40, 40, 0.5f);
    zebSceneEnd();
    const PngImage image = readPng(path("a.png"));
    ASSERT_EQ(image.width, 40);
    EXPECT_EQ(image.at(15, 15, 0), 255u);
    EXPECT_EQ(image.at(5, 15, 0), 0u);
    EXPECT_EQ(image.at(25, 15, 0), 0u);
}

TEST_F(Files, WithoutWindowsThePictureIsDroppedWithOneWarning)
{
    zebRasterViewport(0, 8, 0, 8);
    zebSceneBegin();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 2);
    EXPECT_EQ(reports[0].severity, ZEB_WARNING);
}

}  // namespace zebtest
