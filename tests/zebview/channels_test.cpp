// What --channels puts into files, and -o - onto standard output.

#include <cmath>

#include "exr.h"
#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::cubeObj;
using zebtest::ExrImage;
using zebtest::Image;
using zebtest::Outcome;
using zebtest::Pixel;

using Words = std::vector<std::string>;

const char* const kSphere = "/usr/share/assimp/models/STL/sphereWithHole.stl";

// The values of a grey PNG file of 16 bits.
std::vector<png_uint_16> readGray16(const std::string& name, bool& isGray16)
{
    std::FILE* file = std::fopen(name.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    isGray16 =
        png_get_color_type(png, info) == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) == 16;
    std::vector<png_uint_16> values;
    for (unsigned y = 0; isGray16 && y < png_get_image_height(png, info); ++y) {
        const auto* row = reinterpret_cast<png_uint_16p>(png_get_rows(png, info)[y]);
        values.insert(values.end(), row, row + png_get_image_width(png, info));
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return values;
}

class ChannelsOf : public zebtest::Zebview
{
protected:
    std::string shot(const std::string& channels, const std::string& name = "picture.png") const
    {
        return render(kSphere, {"--channels", channels}, name);
    }
};

TEST_F(ChannelsOf, RgbaIsTheDefault)
{
    EXPECT_EQ(read(shot("rgba", "a.png")), read(render(kSphere, {}, "b.png")));
}

TEST_F(ChannelsOf, RgbLiesOnBlack)
{
    const Image rgba(shot("rgba", "rgba.png")), rgb(shot("rgb", "rgb.png"));
    EXPECT_TRUE(rgba.hasAlpha);
    EXPECT_FALSE(rgb.hasAlpha);
    for (int y = 0; y < rgb.height; ++y) {
        for (int x = 0; x < rgb.width; ++x) {
            const Pixel p = rgba.at(x, y), q = rgb.at(x, y);
            if (p[3] == 0) {
                ASSERT_EQ(q, (Pixel{0, 0, 0, 255}));
            }
            if (p[3] == 255) {
                ASSERT_EQ(q, p);
            }
        }
    }
}

TEST_F(ChannelsOf, AlphaIsThatOfRgba)
{
    const Image rgba(shot("rgba", "rgba.png")), alpha(shot("alpha", "alpha.png"));
    for (int y = 0; y < rgba.height; ++y) {
        for (int x = 0; x < rgba.width; ++x) {
            const int a = rgba.alpha(x, y);
            ASSERT_EQ(alpha.at(x, y), (Pixel{a, a, a, 255})) << x << ", " << y;
        }
    }
}

// The sphere around a cube has sqrt(3) times the radius of the one in it. Depth runs from the front
// of the outer one to its back, so the cube's front is seen at (1 - 1 / sqrt(3)) / 2.
TEST_F(ChannelsOf, DepthRunsFromTheNearestPointToTheFarthest)
{
    const std::string cube = write("cube.obj", cubeObj());
    const Words options{"--channels", "depth", "--fit", "sphere", "--view", "0,0"};
    bool isGray16 = false;
    const auto depth = readGray16(render(cube, options), isGray16);
    ASSERT_TRUE(isGray16);
    ASSERT_EQ(depth.size(), 160U * 120U);
    const double front = (1 - 1 / std::sqrt(3.0)) / 2;
    // A thousandth of the radius is left free at both ends.
    EXPECT_NEAR(depth[60 * 160 + 80] / 65535.0, front, 0.0005);
    EXPECT_NEAR(depth[40 * 160 + 70] / 65535.0, front, 0.0005) << "it is flat";
    EXPECT_EQ(depth[0], 65535) << "nothing is as far as can be";
}

TEST_F(ChannelsOf, RgbazAddsDepthToOpenExr)
{
    const std::string cube = write("cube.obj", cubeObj());
    const Words view{"--fit", "sphere", "--view", "0,0", "--channels"};
    const auto shot = [&](const char* channels) {
        Words options = view;
        options.emplace_back(channels);
        return ExrImage(render(cube, options, "picture.exr"));
    };
    const ExrImage all = shot("rgbaz");
    EXPECT_EQ(all.names, "ABGRZ");
    EXPECT_NEAR(all.at("Z", 80, 60), (1 - 1 / std::sqrt(3.0)) / 2, 0.0005);
    EXPECT_EQ(all.at("A", 80, 60), 1);
    EXPECT_EQ(shot("rgba").names, "ABGR");
    EXPECT_EQ(shot("rgb").names, "BGR");
    EXPECT_EQ(shot("alpha").names, "A");
    EXPECT_EQ(shot("depth").names, "Z");
}

TEST_F(ChannelsOf, BackgroundsAreOpaque)
{
    const Image plain(render(kSphere, {"--background", "0.2,0.4,1"}));
    EXPECT_FALSE(plain.hasAlpha);
    const Image image(render(kSphere, {"--background", "0.2,0.4,1", "--channels", "rgba"}));
    EXPECT_TRUE(image.hasAlpha);
    EXPECT_EQ(image.at(0, 0), (Pixel{51, 102, 255, 255}));
    EXPECT_TRUE(difference(plain, image) == 0);
}

class StandardOutput : public zebtest::Zebview
{
protected:
    const Words kSmall{"--size", "40x30", "--samples", "2"};
};

TEST_F(StandardOutput, GetsTheFile)
{
    const std::string file = read(render(kSphere, kSmall));
    Words words{kSphere, "-o", "-"};
    words.insert(words.end(), kSmall.begin(), kSmall.end());
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    ASSERT_GT(file.size(), 100U);
    EXPECT_TRUE(outcome.out == file);
    EXPECT_EQ(files(), Words{"picture.png"});
}

TEST_F(StandardOutput, StaysEmptyIfThereIsNoPicture)
{
    const Outcome outcome = run({"missing.obj", "-o", "-"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "zebview: missing.obj: cannot read it: No such file or directory\n");
}

}  // namespace
