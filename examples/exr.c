/* Colour, coverage and depth as floats in one OpenEXR file, unquantized and without gamma: what a
 * compositing program wants. */
#include "shapes.h"

int main(int argc, char** argv)
{
    float i;
    beginPicture(argc, argv, "exr", 640, 480);
    zebColorGamma(1);
    zebColorQuantize(0, 0, 0);
    zebDepthQuantize(0, 0, 0);
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebClip(3, 20);
    zebViewPerspective(30);
    zebTranslate(0.35f, 0.15f, 10.5f);
    zebRotate(-25, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.15f, 0xFFFFFF);
    addDistant(0.9f, 0xFFF0DC, 0.8f, -1, 0.9f);
    for (i = -2; i <= 2; ++i) {
        zebAttributePush();
        zebTranslate(0.8f * i, 0, 1.1f * i);
        zebRotate(60 + 25 * i, 1, 0, 0.4f);
        paint(i < 0 ? 0xE76F51 : i > 0 ? 0x2A9D8F : 0xE9C46A);
        addTorus(0.9f, 0.26f);
        zebAttributePop();
    }
    zebSceneEnd();
    return endPicture();
}
