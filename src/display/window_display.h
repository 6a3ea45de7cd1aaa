// The picture in a window.
#pragma once

#include "display/display.h"

namespace zeb
{

// This build has no windows: it says so once a picture and drops it.
class WindowDisplay : public Display
{
public:
    void open(const char* name, long xres, long yres, long xorigin, long yorigin) override;
};

}  // namespace zeb
