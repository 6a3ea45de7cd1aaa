#include "display/window_display.h"

#include "util/report.h"

namespace zeb
{

void WindowDisplay::open(const char* name, long xres, long yres, long xorigin, long yorigin)
{
    Display::open(name, xres, yres, xorigin, yorigin);
    zeb::error(kUnsupported, kWarning, "this build opens no windows, the picture is dropped");
}

}  // namespace zeb
