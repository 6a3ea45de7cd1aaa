#include "display/display_window.h"

#include <gtest/gtest.h>

#include <vector>

namespace zeb
{

namespace
{

// A window on a screen of memory.
class TestWindow : public TDisplayWindow
{
public:
    TestWindow(long width, long height, const PixelFormat& format, bool palette = false)
        : TDisplayWindow(width, height, format), fHasPalette(palette)
    {
    }

    using TDisplayWindow::closed;

    std::vector<Area> drawn;
    std::vector<ScreenColor> lastRow;
    int quantized = 0;
    std::size_t colors = 0;

private:
    bool paletteScreen() const override { return fHasPalette; }
    void draw(const ColorImage& image, const Area& area) override
    {
        drawn.push_back(area);
        lastRow.assign(image.row(area.y1), image.row(area.y1) + image.width);
    }
    void quant(const ColorImage&, const Palette& palette) override
    {
        ++quantized;
        colors = palette.map.size();
    }

    bool fHasPalette;
};

constexpr std::uint32_t kRed[] = {255, 0, 0, 255, 0, 0, 255, 0, 0};

}  // namespace

TEST(Display, IsOf640By480SquarePixelsBeforeItIsOpened)
{
    const Display display;
    EXPECT_EQ(display.xDim(), 640);
    EXPECT_EQ(display.yDim(), 480);
    EXPECT_EQ(display.aspectRatio(), 1.0f);
}

TEST(Display, AnswersWithTheResolutionItWasOpenedWith)
{
    Display display;
    display.open("title", 20, 10, 3, 4);
    EXPECT_EQ(display.xDim(), 20);
    EXPECT_EQ(display.yDim(), 10);
    EXPECT_EQ(display.aspectRatio(), 1.0f);
}

TEST(Display, LetsEveryMessageBePrinted)
{
    Display display;
    EXPECT_TRUE(display.error(0xB02));
    EXPECT_TRUE(display.error(0xB08));
}

TEST(DisplayWindow, IsBlackUntilRowsCome)
{
    TestWindow window(3, 2, PixelFormat{Option()});
    EXPECT_EQ(window.highestRow(), -1);
    window.update();
    EXPECT_TRUE(window.drawn.empty()) << "there is nothing new";
    window.span(1, 1, 1, kRed);
    window.update();
    EXPECT_EQ(window.lastRow, (std::vector<ScreenColor>{0, 255, 0}));
}

TEST(DisplayWindow, DrawsTheAreaThatIsNewOnce)
{
    TestWindow window(8, 8, PixelFormat{Option()});
    window.span(2, 4, 3, kRed);
    window.span(1, 1, 5, kRed);
    window.update();
    window.update();
    ASSERT_EQ(window.drawn.size(), 1u);
    EXPECT_EQ(window.drawn[0].x0, 1);
    EXPECT_EQ(window.drawn[0].x1, 4);
    EXPECT_EQ(window.drawn[0].y0, 3);
    EXPECT_EQ(window.drawn[0].y1, 5);
}

TEST(DisplayWindow, RemembersTheHighestRow)
{
    TestWindow window(3, 9, PixelFormat{Option()});
    window.span(0, 2, 5, kRed);
    window.span(0, 2, 3, kRed);
    EXPECT_EQ(window.highestRow(), 5);
}

TEST(DisplayWindow, StepsOverAllChannelsOfAPixel)
{
    Option option;
    option.alpha = option.depth = true;
    TestWindow window(2, 1, PixelFormat{option});
    const std::uint32_t words[] = {1, 2, 3, 99, 98, 4, 5, 6, 97, 96};
    window.span(0, 1, 0, words);
    window.update();
    EXPECT_EQ(window.lastRow, (std::vector<ScreenColor>{0x030201, 0x060504}));
}

TEST(DisplayWindow, DropsWhatComesAfterThePictureIsComplete)
{
    TestWindow window(3, 2, PixelFormat{Option()});
    window.span(0, 2, 0, kRed);
    window.quantize();
    EXPECT_EQ(window.drawn.size(), 1u) << "what was new is drawn before";
    EXPECT_EQ(window.quantized, 0) << "nothing is quantized where there is no palette";
    window.span(0, 2, 1, kRed);
    window.update();
    window.quantize();
    EXPECT_EQ(window.drawn.size(), 1u);
    EXPECT_EQ(window.highestRow(), 0);
}

TEST(DisplayWindow, QuantizesOnceOnAPaletteScreen)
{
    TestWindow window(3, 2, PixelFormat{Option()}, true);
    window.span(0, 2, 0, kRed);
    window.quantize();
    window.quantize();
    EXPECT_EQ(window.quantized, 1);
    EXPECT_EQ(window.colors, 2u) << "red and black";
}

TEST(DisplayWindow, IsOpenUntilItsUserClosesIt)
{
    TestWindow window(1, 1, PixelFormat{Option()});
    EXPECT_TRUE(window.isOpen());
    window.closed();
    EXPECT_FALSE(window.isOpen());
}

}  // namespace zeb
