/* Pixel filters under a magnifying glass. A star of fine rays is rendered once with each of the
 * five filters and once with a filter of the host's own, 72 x 72 pixels each, into the host's
 * memory; then every pixel is drawn as a square. */
#include <string.h>

#include "shapes.h"

enum { kSide = 72, kStars = 6 };

static unsigned char stars[kStars][kSide][kSide];

/* Keeps the red of each pixel. */
static void keepSpan(void* data, long x0, long x1, long y, const unsigned int* words)
{
    unsigned char(*star)[kSide] = data;
    long x;
    for (x = x0; x <= x1; ++x, words += 3) star[y][x] = (unsigned char)words[0];
}

/* A filter of the host's own: two pixels side by side, as after a shaken exposure. */
static float twice(float dx, float dy, float xwidth, float ywidth)
{
    const float d = fabsf(dx) - xwidth / 4;
    (void)ywidth;
    return expf(-6 * (d * d + dy * dy));
}

static void renderStar(int which, short filter, float width)
{
    const float white[3] = {1, 1, 1};
    ZebDisplay device;
    int i;
    memset(&device, 0, sizeof device);
    device.data = stars[which];
    device.span = keepSpan;
    zebFrameBegin();
    zebQuirks(0);
    zebRasterViewport(0, kSide, 0, kSide);
    zebSampleUniform(8, 8);
    zebCustomDisplay(&device);
    if (filter)
        zebFilter(filter);
    else
        zebCustomFilter(twice);
    zebFilterWidth(width, width);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    zebColor(white);
    for (i = 0; i < 36; ++i) {
        const float a = 2 * SHAPES_PI * (float)i / 36, b = a + SHAPES_PI / 36;
        float ray[3][3] = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
        ray[1][0] = 0.95f * cosf(a), ray[1][1] = 0.95f * sinf(a);
        ray[2][0] = 0.95f * cosf(b), ray[2][1] = 0.95f * sinf(b);
        zebPolygon(3, zebQuark("point"), ray, 0);
    }
    zebSceneEnd();
    zebFrameEnd();
}

/* One square a pixel, from the star's dark colour to its bright one. */
static void showStar(int which, unsigned long dark, unsigned long bright)
{
    const float left = (float)(which % 3) * (kSide + 6) - 114, top = which < 3 ? 75.0f : -3.0f;
    float low[3], high[3], color[3], square[4][3];
    int x, y, k;
    colorOf(dark, low), colorOf(bright, high);
    for (y = 0; y < kSide; ++y) {
        for (x = 0; x < kSide; ++x) {
            const float t = (float)stars[which][y][x] / 255;
            for (k = 0; k < 3; ++k) color[k] = low[k] + (high[k] - low[k]) * t;
            for (k = 0; k < 4; ++k) {
                square[k][0] = left + (float)(x + (k == 1 || k == 2));
                square[k][1] = top - (float)(y + k / 2);
                square[k][2] = 1;
            }
            zebColor(color);
            zebPolygon(4, zebQuark("point"), square, 0);
        }
    }
}

int main(int argc, char** argv)
{
    static const unsigned long bright[kStars] = {0xE9C46A, 0xF4A261, 0xE76F51,
                                                 0x2A9D8F, 0x8AB17D, 0xBFD7EA};
    const float page[4][3] = {{-120, -80, 2}, {120, -80, 2}, {120, 80, 2}, {-120, 80, 2}};
    int i;
    renderStar(0, ZEB_FILTER_BOX, 1);
    renderStar(1, ZEB_FILTER_TRIANGLE, 2);
    renderStar(2, ZEB_FILTER_GAUSSIAN, 2);
    renderStar(3, ZEB_FILTER_CATMULL_ROM, 4);
    renderStar(4, ZEB_FILTER_SINC, 4);
    renderStar(5, 0, 4);

    beginPicture(argc, argv, "filters", 720, 480);
    zebImageWindow(-120, 120, -80, 80);
    zebSampleUniform(1, 1);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    paint(0x0E161E);
    zebPolygon(4, zebQuark("point"), page, 0);
    for (i = 0; i < kStars; ++i) showStar(i, 0x182430, bright[i]);
    zebSceneEnd();
    return endPicture();
}
