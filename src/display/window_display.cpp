#include "display/window_display.h"

#include <utility>

#include "display/screen.h"

namespace zeb
{

void WindowDisplay::open(const char* name, long xres, long yres, long xorigin, long yorigin)
{
    Display::open(name, xres, yres, xorigin, yorigin);
    fWindow = openWindow(name, xres, yres, fFormat);
}

void WindowDisplay::span(long x0, long x1, long y, const std::uint32_t* words)
{
    if (fWindow) fWindow->span(x0, x1, y, words);
}

void WindowDisplay::close()
{
    if (fWindow) completeWindow(std::exchange(fWindow, nullptr));
}

void WindowDisplay::destroy(const TDisplayWindow* window)
{
    if (window == fWindow) fWindow = nullptr;
}

}  // namespace zeb
