// Pictures on a screen that shows 256 colours at once, from a palette.

#if defined(_WIN32)
#include <windows.h>
#endif

#include <set>

#include "display/quantizer.h"
#include "window_test.h"

namespace zebtest
{

namespace
{

class PaletteScreen : public WindowTest
{
protected:
    // The ball in the colours of its palette.
    Shot ballInPalette()
    {
        Shot shot = ballOfTheHost();
        zeb::ColorImage image(shot.width, shot.height);
        for (std::size_t i = 0; i < shot.colors.size(); ++i) {
            const std::uint32_t color = shot.colors[i];
            image.pixels[i] = color >> 16 | (color & 0xFF00) | (color & 0xFF) << 16;
        }
        const zeb::Palette palette = zeb::makePalette(image);
        for (std::size_t i = 0; i < shot.colors.size(); ++i) {
            const zeb::PaletteEntry& entry = palette.map[palette.index(image.pixels[i])];
            shot.colors[i] =
                static_cast<std::uint32_t>(entry.red << 16 | entry.green << 8 | entry.blue);
        }
        return shot;
    }
};

TEST_F(PaletteScreen, ShowsAPictureInItsBestColors)
{
    const Shot picture = ballInPalette();
    EXPECT_GT(std::set<std::uint32_t>(picture.colors.begin(), picture.colors.end()).size(), 50u);
    showBall();
    EXPECT_TRUE(shows(only("ball"), picture));
}

#if ZEB_PNG
TEST_F(PaletteScreen, ShowsThePictureThatAnIndexedFileHas)
{
    const Shot picture = ballInAFile(ZEB_FILE_PNG_INDEXED);
    showBall();
    EXPECT_TRUE(shows(only("ball"), picture));
}
#endif

TEST_F(PaletteScreen, RepaintsInThoseColors)
{
    const Shot picture = ballInPalette();
    showBall();
    const auto window = only("ball");
    ASSERT_TRUE(shows(window, picture));
    desktop->cover(window);
    EXPECT_TRUE(until([&] { return !(desktop->shoot(window) == picture); }));
    desktop->uncover();
    EXPECT_TRUE(shows(window, picture));
}

#if defined(_WIN32)
// Another window's palette takes colours away; that of the window itself does not.
TEST_F(PaletteScreen, IsRealizedAgainWhenTheSystemAsks)
{
    showBall();
    const auto window = reinterpret_cast<HWND>(only("ball"));
    const auto mustRepaint = [window](UINT message, WPARAM other, LRESULT answer) {
        UpdateWindow(window);
        EXPECT_FALSE(GetUpdateRect(window, nullptr, FALSE));
        EXPECT_EQ(SendMessageW(window, message, other, 0), answer);
        return GetUpdateRect(window, nullptr, FALSE) != 0;
    };
    EXPECT_TRUE(mustRepaint(WM_QUERYNEWPALETTE, 0, 1));
    EXPECT_TRUE(mustRepaint(WM_PALETTECHANGED, 0, 0));
    EXPECT_FALSE(mustRepaint(WM_PALETTECHANGED, reinterpret_cast<WPARAM>(window), 0));
}
#else
// On Windows there is one palette for all windows, and the active one has the first choice.
TEST_F(PaletteScreen, EveryWindowHasAPaletteOfItsOwn)
{
    const Shot picture = ballInPalette();
    showBall();
    zebColorGain(0.5f);
    const Shot darker = ballInPalette();
    showBall("second");
    ASSERT_FALSE(darker == picture);
    desktop->move(only("second"), 400, 300);
    EXPECT_TRUE(shows(only("second"), darker));
    EXPECT_TRUE(shows(only("ball"), picture));
}
#endif

}  // namespace
}  // namespace zebtest
