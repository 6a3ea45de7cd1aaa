// A picture in memory, as the renderer computed it: light, multiplied by alpha.
#pragma once

#include <cstdint>
#include <vector>

#include "canvas.h"
#include "color.h"

namespace zebview
{

class Raster
{
public:
    // Empty from then on.
    void resize(long width, long height);
    long width() const { return fWidth; }
    long height() const { return fHeight; }

    // Takes the words of pixels that the renderer has sent: red, green, blue and alpha.
    void set(long x0, long x1, long y, const unsigned int* words);

    // Makes bytes of it as they are shown, red, green and blue, over a backdrop: in the size given,
    // to which smaller pictures are stretched.
    void show(const Color& backdrop, long width, long height,
              std::vector<std::uint8_t>& bytes) const;
    // Makes such bytes of a few of its pixels; there are as many bytes as for all of it.
    void showSpan(const Color& backdrop, long x0, long x1, long y,
                  std::vector<std::uint8_t>& bytes) const;

    // Draws all of it; over a backdrop or, without one, with its alpha.
    void drawOn(Canvas& canvas, const Color* backdrop) const;

private:
    const float* pixel(long x, long y) const;

    long fWidth = 0, fHeight = 0;
    std::vector<float> fValues;  // four a pixel
};

}  // namespace zebview
