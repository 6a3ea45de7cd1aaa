/* Depth as a picture: each pixel is the distance of what it shows, from black at the near clipping
 * distance to white at the far one. The closer the two are, the finer the steps; as floats they
 * fill the 16 bits of a grey PNG. */
#include "shapes.h"

int main(int argc, char** argv)
{
    const float ground[4][3] = {{-20, 0, -5}, {20, 0, -5}, {20, 0, 30}, {-20, 0, 30}};
    int i;
    beginPicture(argc, argv, "depth", 800, 450);
    zebOutputSamples(ZEB_SAMPLES_DEPTH);
    zebClip(4, 12);
    zebViewPerspective(34);
    zebTranslate(0, -0.7f, 8);
    zebRotate(-20, 1, 0, 0);
    zebSceneBegin();
    zebPolygon(4, zebQuark("point"), ground, 0);
    for (i = 0; i < 40; ++i) {
        const float turn = 0.62f * (float)i, out = 2 + 0.1f * (float)i;
        zebAttributePush();
        zebTranslate(out * cosf(turn), 0.34f, out * sinf(turn) + 0.4f);
        addSphere(0.34f);
        zebAttributePop();
    }
    zebTranslate(0, 0.84f, 0.4f);
    zebRotate(40, 0, 1, 0);
    addKnot(1, 0.25f);
    zebSceneEnd();
    return endPicture();
}
