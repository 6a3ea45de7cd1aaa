#include "display/window_display.h"

#include "display/screen.h"

namespace zeb
{

void WindowDisplay::open(const char* name, long xres, long yres, long xorigin, long yorigin)
{
    Display::open(name, xres, yres, xorigin, yorigin);
    fWindow = openWindow(name, xres, yres, fFormat);
    if (fWindow) windowEvents(false);
}

void WindowDisplay::span(long x0, long x1, long y, const std::uint32_t* words)
{
    if (!fWindow) return;
    fWindow->span(x0, x1, y, words);
    updateWindows();
}

void WindowDisplay::close()
{
    if (!fWindow) return;
    fWindow->quantize();
    fWindow = nullptr;
    windowEvents(false);
}

void WindowDisplay::destroy(const TDisplayWindow* window)
{
    if (window == fWindow) fWindow = nullptr;
}

}  // namespace zeb
