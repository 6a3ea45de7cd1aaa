/* The teapot, exact: 32 bicubic patches that are split and diced as finely as the picture needs, so
 * that no outline has corners however large it is. */
#include "teapot.h"
#include "shapes.h"

int main(int argc, char** argv)
{
    beginPicture(argc, argv, "teapot", 800, 450);
    zebShadingRate(1);
    zebViewPerspective(17.5f);
    zebTranslate(-0.2f, -1.35f, 17);
    zebRotate(-17, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xF2F4FF);
    addDistant(0.8f, 0xFFF2E0, 1, -1.2f, 1);
    addDistant(0.35f, 0xBFD7FF, -1.5f, -0.35f, 0.7f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xF0DFCB);
    addBackdrop(20, 5, 5);
    addShadow(0, 0, 3.6f, 0.85f);
    addShadow(2.2f, -0.4f, 1.6f, 0.3f);
    usePlastic(0.85f, 0.5f, 0.05f);
    paint(0x2E8C93);
    zebRotate(-20, 0, 1, 0);
    zebRotate(-90, 1, 0, 0);
    addTeapot();
    zebSceneEnd();
    return endPicture();
}
