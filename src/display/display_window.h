// The framebuffer window: a picture on the screen while it renders, and until the user closes it.
#pragma once

#include <memory>

#include "display/color_image.h"
#include "display/quantizer.h"

namespace zeb
{

// What the window systems have in common: the stored image, which rows are new, the palette. A
// window of fixed size, without a means to maximize it.
class TDisplayWindow
{
public:
    TDisplayWindow(long width, long height, const PixelFormat& format);
    virtual ~TDisplayWindow() = default;
    TDisplayWindow(const TDisplayWindow&) = delete;
    TDisplayWindow& operator=(const TDisplayWindow&) = delete;

    // Takes the pixels x0 ... x1 of row y; the screen shows them at the next update.
    void span(long x0, long x1, long y, const std::uint32_t* data);
    // Draws what has come since the last time.
    void update();
    // The picture is complete: shows all of it, on a palette screen in its 256 best colours. The
    // stored image is freed, and the backing bitmap stays; later spans are dropped.
    void quantize();

    // Neither closed by its user nor hidden by the host, as one of the same window system can.
    bool isOpen() const { return fOpen && isShown(); }
    long highestRow() const { return fHighestRow; }  // -1: none

protected:
    // The part of the picture from column x0 to x1 and row y0 to y1.
    struct Area {
        long x0, y0, x1, y1;
    };

    // The user has closed the window.
    void closed() { fOpen = false; }

private:
    virtual bool isShown() const { return true; }
    // Whether the screen shows at most 256 colours at once, from a palette.
    virtual bool paletteScreen() const = 0;
    // Sets the pixels of an area on the backing bitmap and on the screen.
    virtual void draw(const ColorImage& image, const Area& area) = 0;
    // Replaces the palette, and redraws the backing bitmap and the screen by palette indices.
    virtual void quant(const ColorImage& image, const Palette& palette) = 0;

    const PixelFormat fFormat;
    std::unique_ptr<ColorImage> fImage;  // null once the picture is complete
    Area fNew;                           // empty: x0 > x1
    long fHighestRow = -1;
    bool fOpen = true;
};

}  // namespace zeb
