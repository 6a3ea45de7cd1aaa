// Pictures on a screen that shows 256 colours at once, from a palette.

#include <png.h>

#include <cstdio>
#include <set>

#include "window_test.h"

namespace zebtest
{

namespace
{

class PaletteScreen : public WindowTest
{
protected:
    // The ball in the colours that a file with a palette has.
    Shot ballOfIndexedFile()
    {
        const std::string name = testing::TempDir() + "zeb-palette.png";
        zebOutputFile(ZEB_FILE_PNG_INDEXED, name.c_str());
        beginBall();
        zebSceneEnd();
        zebLoadIdentity();
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        Shot shot;
        if (!png_image_begin_read_from_file(&image, name.c_str())) return shot;
        image.format = PNG_FORMAT_RGB;
        std::vector<png_byte> bytes(PNG_IMAGE_SIZE(image));
        png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr);
        shot.width = static_cast<int>(image.width);
        shot.height = static_cast<int>(image.height);
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            shot.colors.push_back(
                static_cast<std::uint32_t>(bytes[i] << 16 | bytes[i + 1] << 8 | bytes[i + 2]));
        }
        std::remove(name.c_str());
        return shot;
    }
};

TEST_F(PaletteScreen, ShowsAPictureInItsBestColors)
{
    const Shot picture = ballOfIndexedFile();
    ASSERT_EQ(picture.width, kWidth);
    EXPECT_GT(std::set<std::uint32_t>(picture.colors.begin(), picture.colors.end()).size(), 50u);
    showBall();
    EXPECT_TRUE(shows(only("ball"), picture));
}

TEST_F(PaletteScreen, RepaintsInThoseColors)
{
    const Shot picture = ballOfIndexedFile();
    showBall();
    const auto window = only("ball");
    ASSERT_TRUE(shows(window, picture));
    desktop->cover(window);
    EXPECT_EQ(desktop->shoot(window) == picture, false);
    desktop->uncover();
    EXPECT_TRUE(shows(window, picture));
}

TEST_F(PaletteScreen, EveryWindowHasAPaletteOfItsOwn)
{
    const Shot picture = ballOfIndexedFile();
    showBall();
    zebColorGain(0.5f);
    const Shot darker = ballOfIndexedFile();
    showBall("second");
    ASSERT_FALSE(darker == picture);
    desktop->move(only("second"), 400, 300);
    EXPECT_TRUE(shows(only("second"), darker));
    EXPECT_TRUE(shows(only("ball"), picture));
}

}  // namespace
}  // namespace zebtest
