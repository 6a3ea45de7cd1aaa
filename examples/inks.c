/* Colours in samples of the host's own: here two, as of a print with two inks. Each value of a
 * colour, also in lists of parameters, then has two numbers. */
#include "shapes.h"

int main(int argc, char** argv)
{
    /* What one unit of each ink adds to red, green and blue; together they are white. */
    const float toRgb[2][3] = {{0.98f, 0.25f, 0.08f}, {0.02f, 0.75f, 0.92f}};
    const float fromRgb[3][2] = {{0.9f, 0.1f}, {0.3f, 0.7f}, {0.1f, 0.9f}};
    const float ground[2] = {0.9f, 0.9f}, dim = 0.2f, bright = 0.8f, to[3] = {0.8f, -1, 0.9f};
    int i, j;
    beginPicture(argc, argv, "inks", 800, 450);
    zebColorSpace(2, &toRgb[0][0], &fromRgb[0][0]);
    zebViewPerspective(24);
    zebTranslate(0, -0.1f, 15);
    zebRotate(-30, 1, 0, 0);
    zebSceneBegin();
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &dim, 0);
    zebLightSource(zebQuark("distant"), zebQuark("intensity"), &bright, zebQuark("to"), to, 0);
    zebSurface(zebQuark("diffuse"), 0);
    zebColor(ground);
    addBackdrop(20, 4, 5);
    usePlastic(0.85f, 0.25f, 0.08f);
    for (j = 0; j < 5; ++j) {
        for (i = 0; i < 9; ++i) {
            float ink[2];
            ink[0] = (float)i / 8, ink[1] = (float)j / 4;
            zebAttributePush();
            zebTranslate(1.02f * (float)(i - 4), 0.42f, 1.02f * (float)(j - 2));
            zebColor(ink);
            zebSphere(0.42f, -1, 1, 360, 0);
            zebAttributePop();
        }
    }
    zebSceneEnd();
    return endPicture();
}
