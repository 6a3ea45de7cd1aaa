// The picture in a window.
#pragma once

#include "display/display_window.h"

namespace zeb
{

// Opens a window for the picture and hands it the rows. The window stays when the device goes.
// Without a screen it says so once a picture and drops it.
class WindowDisplay : public Display
{
public:
    explicit WindowDisplay(const PixelFormat& format) : fFormat(format) {}
    void open(const char* name, long xres, long yres, long xorigin, long yorigin) override;
    void span(long x0, long x1, long y, const std::uint32_t* words) override;
    void close() override;
    void destroy(const TDisplayWindow* window) override;

private:
    const PixelFormat fFormat;
    TDisplayWindow* fWindow = nullptr;
};

}  // namespace zeb
