// The picture in the host's own hands.
#pragma once

#include "display/display.h"

namespace zeb
{

class HostDisplay : public Display
{
public:
    explicit HostDisplay(const ZebDisplay& device) : fDevice(device) {}
    void open(const char* name, long xres, long yres, long xorigin, long yorigin) override;
    bool callsHost() const override { return fDevice.span || fDevice.flush; }
    void span(long x0, long x1, long y, const std::uint32_t* words) override;
    void flush(long y0, long y1) override;
    void close() override;

private:
    ZebDisplay fDevice;
    bool fOpen = false;
};

}  // namespace zeb
