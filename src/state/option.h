// What is fixed for a whole frame.
#pragma once

#include <limits>
#include <string>

#include "math/color.h"
#include "math/matrix.h"
#include "util/string.h"
#include "zebcore/zebcore.h"

namespace zeb
{

using FilterFunction = float (*)(float dx, float dy, float xwidth, float ywidth);
using ProgressFunction = short (*)(void* data, long percent);

enum : unsigned short { kHiderNull = 0, kHiderHidden = 0x400, kHiderSequence = 0x401 };
enum OutputKind : unsigned short {
    kOutputWindow = 0,
    kOutputHost = 1,
    kOutputAuto = 0x200,
    kOutputPng = 0x201,
    kOutputExr = 0x202,
    kOutputIndexed = 0x203
};

struct Quantizer {
    long one, min, max;
    float dither;
};

// The setters are those of the interface: each asks whether it is legal now. They report last,
// when the record needs nothing any more: a handler may end the frame that holds it.
class Option
{
public:
    long xres = 0, yres = 0;  // 0: the display's
    float pixelAspect = 0;    // 0: the display's
    float cropXmin = 0, cropXmax = 1, cropYmin = 0, cropYmax = 1;
    float frameAspect = 0;                           // 0: from the resolution
    float left = 0, right = 0, bottom = 0, top = 0;  // empty: from the frame aspect
    bool projection = true;
    Matrix cameraToScreenBefore;  // the block that these options are of
    bool perspective = false;
    float nearClip = 1e-10f, farClip = 1e38f;
    float fstop = 1e38f, focalLength = 0, focalDistance = 0;
    float shutterOpen = 0, shutterClose = 0;
    float adaptiveThreshold = -1;
    float xsamples = 2, ysamples = 2;
    FilterFunction pixelFilter;
    float filterXwidth = 2, filterYwidth = 2;
    float gain = 1;
    float inverseGamma = 1;
    Quantizer colorQuantizer{255, 0, 255, 0.5f};
    Quantizer depthQuantizer{0, 0, 0, 0};
    unsigned short outputKind = kOutputWindow;
    String displayName{"Zebrix"};
    ZebDisplay hostDisplay{};
    unsigned short samples = 0x301;
    unsigned short sampleCount = 3;
    bool rgb = true, alpha = false, depth = false;
    long xorigin = 0, yorigin = 0;
    unsigned short hiderType = kHiderHidden;
    float jitter = 0.5f;
    ColorSpace colorSpace;
    float detail = 1;
    long tuning[3] = {32, 12, 12};  // grid size; bucket width and height
    bool quirks = true;
    bool depthNearest = false;
    ProgressFunction progress = nullptr;
    void* progressData = nullptr;
    long threads = 1;        // 0: one a core
    bool closeSeams = true;  // tests look at what pictures are without

    Option();

    void rasterViewport(long x, long xres, long y, long yres);
    void rasterAspect(float aspect);
    void imageWindow(float left, float right, float bottom, float top);
    void imageAspect(float aspect);
    void imageCrop(float xmin, float xmax, float ymin, float ymax);
    void viewOrthographic();
    void viewPerspective(float fov);
    void viewIdentity();
    void clip(float nearz, float farz);
    void depthOfField(float fstop, float length, float distance);
    void shutter(float open, float close);
    void sampleAdaptive(float threshold);
    void sampleUniform(float x, float y);
    void sampleJitter(float amount);
    void filter(short id);
    void customFilter(FilterFunction function);
    void filterWidth(float x, float y);
    void colorGain(float value);
    void colorGamma(float gamma);
    void colorQuantize(long one, long min, long max);
    void colorJitter(float amplitude);
    void depthQuantize(long one, long min, long max);
    void depthJitter(float amplitude);
    void outputDisplay(const char* name);
    void outputFile(short kind, const char* name);
    void customDisplay(const ZebDisplay* device);
    void outputSamples(short samples);
    void hider(short type);
    void setColorSpace(long n, const float* toRgb, const float* fromRgb);
    void relativeDetail(float value);
    void tune(long gridSize, long width, long height);
    void imager(unsigned short name, long n, const unsigned short* tokens, void* const* values);
    void setQuirks(short on);
    void setDepthNearest(short on);
    void progressCallback(ProgressFunction function, void* data);
    void setThreads(long n);

    // How many render: one a core is resolved, which may change from call to call.
    long threadCount() const;
};

// The record in force.
extern Option* gOption;

}  // namespace zeb
