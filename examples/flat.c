/* A flat picture, as drawing programs make them: no camera, coordinates from the upper left corner
 * downwards, and what is given last lies on top. */
#include "shapes.h"

static void addHills(float y, float high, float phase, unsigned long top, unsigned long bottom)
{
    enum { kSteps = 160 };
    float points[2 * kSteps + 2][3], colors[2 * kSteps + 2][3];
    const long corners = 2 * kSteps + 2;
    int i;
    for (i = 0; i <= kSteps; ++i) {
        const float x = 18 * (float)i / kSteps - 1;
        const float ridge = sinf(0.55f * x + phase) + 0.35f * sinf(1.9f * x + 3 * phase);
        float* up = points[i];
        float* down = points[corners - 1 - i];
        up[0] = down[0] = x, up[1] = y - high * ridge, down[1] = 10, up[2] = down[2] = 0.5f;
        colorOf(top, colors[i]), colorOf(bottom, colors[corners - 1 - i]);
    }
    zebGeneralPolygon(1, &corners, zebQuark("point"), points, zebQuark("color"), colors, 0);
}

int main(int argc, char** argv)
{
    /* Filters reach a little beyond the picture: so does what fills it. */
    const float sky[4][3] = {{-1, -1, 0.5f}, {17, -1, 0.5f}, {17, 10, 0.5f}, {-1, 10, 0.5f}};
    static const unsigned long glow[5] = {0xA5707F, 0xC58483, 0xE29B85, 0xF5BC8F, 0xFFE9B8};
    float colors[4][3];
    int i;
    beginPicture(argc, argv, "flat", 800, 450);
    zebViewIdentity();
    zebImageWindow(0, 16, 9, 0);
    zebHider(ZEB_HIDER_SEQUENCE);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    for (i = 0; i < 4; ++i) colorOf(i < 2 ? 0x3A3D78 : 0xFFB08A, colors[i]);
    zebPolygon(4, zebQuark("point"), sky, zebQuark("color"), colors, 0);
    zebAttributePush();
    zebTranslate(11, 4.1f, 0.5f);
    for (i = 0; i < 5; ++i) paint(glow[i]), zebDisk(0, 3.2f - 0.55f * (float)i, 360, 0);
    zebAttributePop();
    addHills(5.2f, 0.8f, 0.3f, 0xB5748F, 0xE8A598);
    addHills(6, 0.7f, 2.1f, 0x7E5A88, 0xC48A9B);
    addHills(7, 0.6f, 4.4f, 0x4D4177, 0x8C6A96);
    addHills(8, 0.4f, 5.7f, 0x2A2752, 0x3F3468);
    zebSceneEnd();
    return endPicture();
}
