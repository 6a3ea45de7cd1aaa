#include "display/display.h"

#include <cstdio>

#include "display/file_display.h"
#include "display/host_display.h"
#include "display/screen.h"
#include "display/window_display.h"
#include "state/error.h"
#include "state/upcalls.h"

namespace zeb
{

std::unique_ptr<Display> gDisplay;

void Display::open(const char*, long xres, long yres, long xorigin, long yorigin)
{
    fXres = xres;
    fYres = yres;
    fXorigin = xorigin;
    fYorigin = yorigin;
}

void Display::print(const char* line)
{
    // A console goes with its process: last words are for standard error.
    const bool toWindow = gOption && gOption->outputKind == kOutputWindow && !Error::fEnding;
    if (toWindow && printOnConsole(line)) return;
    std::fputs(line, stderr);
    std::fputc('\n', stderr);
}

std::unique_ptr<Display> makeDisplay(const Option& option)
{
    if (option.outputKind == kOutputHost) return std::make_unique<HostDisplay>(option.hostDisplay);
    if (option.outputKind == kOutputWindow)
        return std::make_unique<WindowDisplay>(PixelFormat(option));
    return std::make_unique<FileDisplay>(option.outputKind, PixelFormat(option));
}

namespace upcall
{

void printMessage(const char* line) { Display::print(line); }

bool displayPrints(long severity) { return !gDisplay || gDisplay->error(severity); }

DeviceDefaults createDisplay()
{
    gDisplay.reset();
    gDisplay = makeDisplay(*gOption);
    return {gDisplay->xDim(), gDisplay->yDim(), gDisplay->aspectRatio()};
}

void openDisplay()
{
    const Option& option = *gOption;
    gDisplay->open(option.displayName.text(), option.xres, option.yres, option.xorigin,
                   option.yorigin);
}

// Forgotten first: a host's device may call in from its close function.
void closeDisplay()
{
    const std::unique_ptr<Display> display = std::move(gDisplay);
    if (display) display->close();
}

}  // namespace upcall
}  // namespace zeb
