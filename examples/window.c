/* The library's own window, and its console. Without a file's name on the command line the picture
 * goes to a window that shows it while it renders; what is wrong with the calls stands in the
 * console. zebWindowEvents keeps both alive until the user closes the window. */
#include "shapes.h"

int main(int argc, char** argv)
{
    int i;
    beginPicture(argc, argv, "Beads", 640, 400);
    zebFilter(7); /* there is none: the console says so */
    zebViewPerspective(30);
    zebTranslate(0, -0.3f, 9);
    zebRotate(-25, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xFFFFFF);
    addDistant(0.9f, 0xFFF4E6, 1, -1.3f, 0.8f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEAE4D9);
    addBackdrop(20, 4, 4);
    addShadow(0, 0, 3, 0.5f);
    zebRotate(30, 0, 0, 0); /* about no axis */
    usePlastic(0.8f, 0.4f, 0.1f);
    for (i = 0; i < 20; ++i) {
        const float turn = 18 * (float)i;
        zebAttributePush();
        zebRotate(turn, 0, 1, 0);
        zebTranslate(2, 0.42f, 0);
        paint(i % 4 == 0 ? 0xC8452F : 0x2E8C93);
        zebSphere(i % 4 == 0 ? 0.42f : 0.27f, -1, 1, 360, 0);
        zebAttributePop();
    }
    zebSceneEnd();
    endPicture();
    return zebLastError() != 15; /* the two mistakes are meant */
}
