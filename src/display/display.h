// The device that finished rows of the picture go to.
#pragma once

#include <cstdint>
#include <memory>

#include "state/option.h"

namespace zeb
{

// What the words of a pixel mean, in the order red, green, blue, alpha, depth. Colours have been
// multiplied by alpha first, and raised to a power then.
struct PixelFormat {
    bool rgb, alpha, depth;
    Quantizer color, depthQuantizer;
    float inverseGamma;
    bool quirks;

    explicit PixelFormat(const Option& option)
        : rgb(option.rgb),
          alpha(option.alpha),
          depth(option.depth),
          color(option.colorQuantizer),
          depthQuantizer(option.depthQuantizer),
          inverseGamma(option.inverseGamma),
          quirks(option.quirks)
    {
    }
    int channels() const { return (rgb ? 3 : 0) + alpha + depth; }
};

class TDisplayWindow;

// The base drops the picture.
class Display
{
public:
    virtual ~Display() = default;

    // The resolution of a picture that asks for none.
    virtual long xDim() const { return fXres; }
    virtual long yDim() const { return fYres; }
    virtual float aspectRatio() const { return 1; }
    virtual void open(const char* name, long xres, long yres, long xorigin, long yorigin);
    // Whether a message of the severity shall be printed.
    virtual bool error(long) { return true; }
    // Whether it takes light as it is: gamma is not applied then. Asked once it is open.
    virtual bool isLinear() const { return false; }
    // Whether it hands the picture to the host while it is made.
    virtual bool callsHost() const { return false; }
    // The pixels x0 ... x1 of row y.
    virtual void span(long, long, long, const std::uint32_t*) {}
    // Rows y0 ... y1 are final.
    virtual void flush(long, long) {}
    // The picture is whole, or given up: whole if every row was announced as final.
    virtual void close() {}

    // The user has closed a window: it is not to be used any more.
    virtual void destroy(const TDisplayWindow*) {}

    // A line of a message, where there is a screen and the picture goes to it: to the message
    // console; otherwise to standard error.
    static void print(const char* line);

private:
    long fXres = 640, fYres = 480;
    long fXorigin = 0, fYorigin = 0;
};

// Null outside a world block.
extern std::unique_ptr<Display> gDisplay;

// The device that the options choose.
std::unique_ptr<Display> makeDisplay(const Option& option);

}  // namespace zeb
