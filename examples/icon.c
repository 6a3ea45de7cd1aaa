/* A picture with a transparent ground: the alpha samples carry the coverage, and the PNG stores it
 * beside colours that are not multiplied by it. The library's own windows wear it; with "messages"
 * as the third argument a sheet with lines of text lies in front of the ball. */
#include <string.h>

#include "shapes.h"

/* A ball in stripes of two colours, each a sphere cut above and below. The dark one inside stops
 * the odd sample that finds a gap between two grids: the far side's light stripes would shine
 * through. */
static void addStripedBall(int stripes)
{
    int i;
    zebAttributePush();
    zebRotate(-25, 0, 0, 1);
    zebRotate(-70, 1, 0, 0);
    for (i = 0; i < stripes; ++i) {
        const float zmin = (float)-cos(SHAPES_PI * i / stripes);
        const float zmax = (float)-cos(SHAPES_PI * (i + 1) / stripes);
        paint(i & 1 ? 0x20242C : 0xFAF7F0);
        zebSphere(1, zmin, zmax, 360, 0);
    }
    paint(0x20242C);
    zebSphere(0.98f, -1, 1, 360, 0);
    zebAttributePop();
}

static void addRectangle(float left, float right, float bottom, float top, float z,
                         unsigned long code)
{
    float corners[4][3];
    int i;
    for (i = 0; i < 4; ++i) {
        corners[i][0] = i == 1 || i == 2 ? right : left;
        corners[i][1] = i < 2 ? bottom : top;
        corners[i][2] = z;
    }
    paint(code);
    zebPolygon(4, zebQuark("point"), corners, 0);
}

static void addSheet(void)
{
    int line;
    zebSurface(zebQuark("constant"), 0);
    addRectangle(-0.95f, 0.45f, -1, 0.3f, -2, 0x20242C);
    addRectangle(-0.87f, 0.37f, -0.92f, 0.22f, -2.1f, 0xFAF7F0);
    for (line = 0; line < 4; ++line) {
        const float top = 0.06f - 0.24f * (float)line;
        addRectangle(-0.7f, line & 1 ? -0.05f : 0.2f, top - 0.1f, top, -2.2f, 0xC8452F);
    }
}

int main(int argc, char** argv)
{
    beginPicture(argc, argv, "icon", 256, 256);
    zebOutputSamples(ZEB_SAMPLES_RGBA);
    zebImageWindow(-1.05f, 1.05f, -1.05f, 1.05f);
    zebViewOrthographic();
    zebTranslate(0, 0, 10);
    zebSceneBegin();
    addAmbient(0.35f, 0xFFFFFF);
    addDistant(0.9f, 0xFFFFFF, 1, -1.5f, 2);
    usePlastic(0.8f, 0.25f, 0.15f);
    addStripedBall(9);
    if (argc > 3 && strcmp(argv[3], "messages") == 0) addSheet();
    zebSceneEnd();
    return endPicture();
}
