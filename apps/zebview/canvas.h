// A picture in memory, as a PNG file holds it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

#include "color.h"
#include "settings.h"
#include "zebcore/zebcore.h"

namespace zebview
{

// Pixels are 8 bits a channel, colours as they are shown and not multiplied by alpha; depth is 16
// bits.
class Canvas
{
public:
    // Empty: nothing but background. Throws a Failure if no PNG file can be as large.
    Canvas(long width, long height, Channels channels, const std::optional<Color>& background);

    // Draws the words of pixels that the renderer has sent: floats, light.
    void draw(long x, long y, long count, const unsigned int* words);

    // False, and errno says why, if the file does not take all of it.
    bool write(std::FILE* file) const;

private:
    void drawColor(const float* light, bool hasAlpha, std::uint8_t* pixel) const;

    long fWidth, fHeight;
    Channels fChannels;
    std::size_t fPixelBytes;
    std::vector<std::uint8_t> fBytes;
};

// Where in a canvas a picture goes that is being rendered.
class CanvasCell
{
public:
    CanvasCell(Canvas& canvas, long x, long y) : fCanvas(canvas), fX(x), fY(y) {}
    // Good as long as the cell is.
    ZebDisplay device();

private:
    Canvas& fCanvas;
    long fX, fY;
};

}  // namespace zebview
