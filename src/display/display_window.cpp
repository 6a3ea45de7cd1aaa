#include "display/display_window.h"

#include <algorithm>
#include <limits>

namespace zeb
{

namespace
{

constexpr long kFar = std::numeric_limits<long>::max();

}  // namespace

TDisplayWindow::TDisplayWindow(long width, long height, const PixelFormat& format)
    : fFormat(format), fImage(std::make_unique<ColorImage>(width, height)), fNew{kFar, kFar, -1, -1}
{
}

void TDisplayWindow::span(long x0, long x1, long y, const std::uint32_t* data)
{
    if (!fImage) return;
    const int channels = fFormat.channels();
    ScreenColor* row = fImage->row(y);
    for (long x = x0; x <= x1; ++x, data += channels) row[x] = screenColor(fFormat, data);
    fNew = {std::min(fNew.x0, x0), std::min(fNew.y0, y), std::max(fNew.x1, x1),
            std::max(fNew.y1, y)};
    fHighestRow = std::max(fHighestRow, y);
}

void TDisplayWindow::update()
{
    if (!fImage || fNew.x0 > fNew.x1 || !isOpen()) return;
    draw(*fImage, fNew);
    fNew = {kFar, kFar, -1, -1};
}

void TDisplayWindow::quantize()
{
    if (!fImage || !isOpen()) return;
    update();
    if (paletteScreen()) quant(*fImage, makePalette(*fImage));
    fImage.reset();
}

}  // namespace zeb
