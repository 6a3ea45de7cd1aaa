#include "display/host_display.h"

#include "state/callback.h"

namespace zeb
{

void HostDisplay::open(const char* name, long xres, long yres, long xorigin, long yorigin)
{
    Display::open(name, xres, yres, xorigin, yorigin);
    fOpen = true;
    CallbackScope scope;
    if (fDevice.open) fDevice.open(fDevice.data, name, xres, yres, xorigin, yorigin);
}

void HostDisplay::span(long x0, long x1, long y, const std::uint32_t* words)
{
    CallbackScope scope;
    if (fDevice.span) fDevice.span(fDevice.data, x0, x1, y, words);
}

void HostDisplay::flush(long y0, long y1)
{
    CallbackScope scope;
    if (fDevice.flush) fDevice.flush(fDevice.data, y0, y1);
}

void HostDisplay::close()
{
    if (!fOpen) return;
    fOpen = false;
    CallbackScope scope;
    if (fDevice.close) fDevice.close(fDevice.data);
}

}  // namespace zeb
