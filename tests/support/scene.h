// Short ways to say what picture tests need over and over.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "support/picture.h"
#include "support/reports.h"

namespace zebtest
{

using Vec = std::array<float, 3>;

inline Vec operator-(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline double dot(const Vec& a, const Vec& b)
{
    return double{a[0]} * b[0] + double{a[1]} * b[1] + double{a[2]} * b[2];
}

// Starts anew with a picture whose raster coordinates are those of object space: a point (x, y, z)
// lands on pixel (x, y) at depth z. Words are floats: red, green, blue, alpha, depth.
class RasterTest : public testing::Test
{
protected:
    RasterTest() { zebReset(); }
    ~RasterTest() override { zebReset(); }

    void raster(long width, long height)
    {
        zebRasterViewport(0, width, 0, height);
        zebImageWindow(0, static_cast<float>(width), 0, static_cast<float>(height));
        // Screen y runs upwards, raster y downwards.
        zebTranslate(0, static_cast<float>(height), 0);
        zebScale(1, -1, 1);
        zebViewIdentity();
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        picture.attachFloat();
        zebQuirks(0);
    }
    // A world whose surfaces show their colour unlit.
    static void beginFlat()
    {
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
    }

    float red(long x, long y) const { return picture.value(x, y, 0); }
    float green(long x, long y) const { return picture.value(x, y, 1); }
    float blue(long x, long y) const { return picture.value(x, y, 2); }
    float alpha(long x, long y) const { return picture.value(x, y, 3); }
    float depth(long x, long y) const { return picture.value(x, y, 4); }

    Picture picture{5};
    Reports reports;
};

inline void color(float r, float g, float b)
{
    const float c[3] = {r, g, b};
    zebColor(c);
}

inline void opacity(float r, float g, float b)
{
    const float c[3] = {r, g, b};
    zebOpacity(c);
}

inline void polygon(const std::vector<Vec>& points)
{
    zebPolygon(static_cast<long>(points.size()), zebQuark("point"), points.data(), 0);
}

// The rectangle x0 ... x1, y0 ... y1 at depth z.
inline void rectangle(float x0, float y0, float x1, float y1, float z)
{
    polygon({{x0, y0, z}, {x1, y0, z}, {x1, y1, z}, {x0, y1, z}});
}

}  // namespace zebtest
