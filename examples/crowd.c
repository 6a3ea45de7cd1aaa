/* A thousand instances of one object. What they share is the shape alone: each has the colour,
 * place and size in force at its call (zebQuirks(0)), and is split as finely as it is large on
 * screen. */
#include "shapes.h"
#include "teapot.h"

/* 0 to 1, the same for the same number. */
static float chance(unsigned long number)
{
    number = (number * 2654435761UL) & 0xFFFFFFFFUL;
    number = ((number ^ number >> 15) * 2246822519UL) & 0xFFFFFFFFUL;
    return (float)((number ^ number >> 13) & 0xFFFF) / 65536;
}

int main(int argc, char** argv)
{
    enum { kColumns = 40, kRows = 25, kColors = 6 };
    static const unsigned long colors[kColors] = {0xD1495B, 0xE76F51, 0xE9B44C,
                                                  0x7FB069, 0x2A9D8F, 0x3D6C8F};
    const void* pot;
    unsigned long i;
    beginPicture(argc, argv, "crowd", 800, 450);
    zebViewPerspective(26);
    zebTranslate(0, 3, 66);
    zebRotate(-33, 1, 0, 0);
    zebSceneBegin();
    pot = zebObjectBegin();
    addTeapot();
    zebObjectEnd();

    addAmbient(0.3f, 0xF2F4FF);
    addDistant(0.85f, 0xFFF0DC, 1, -1.3f, 0.8f);
    addDistant(0.25f, 0xBFD7FF, -1.4f, -0.4f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEADFCF);
    addBackdrop(220, 30, 120);
    usePlastic(0.85f, 0.4f, 0.07f);
    for (i = 0; i < kColumns * kRows; ++i) {
        const float x = 2.5f * ((float)(i % kColumns) - 0.5f * kColumns + 0.7f * chance(3 * i));
        const float z = 2.5f * ((float)(i / kColumns) - 0.4f * kRows + 0.7f * chance(3 * i + 1));
        const float wave = 0.04f * sqrtf(x * x + z * z) * kColors / 2 + 0.4f * chance(3 * i + 2);
        const float size = 0.36f + 0.09f * chance(7 * i);
        addShadow(x, z, 2.4f * size * 1.6f, 0.5f);
        zebAttributePush();
        paint(colors[(int)wave % kColors]);
        zebTranslate(x, 0.01f, z);
        zebScale(size, size, size);
        zebRotate(360 * chance(5 * i), 0, 1, 0);
        zebRotate(-90, 1, 0, 0);
        zebObjectCall(pot);
        zebAttributePop();
    }
    zebSceneEnd();
    return endPicture();
}
