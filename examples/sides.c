/* The two sides of a surface. zebBackface(1) drops the side that faces away, and zebOrientation
 * says which side that is: drawn once for each, a shell has two colours. */
#include "shapes.h"

static const float foot[3] = {0.75f, -0.5f, 0}, lip[3] = {0.6f, 0.85f, 2.3f};

static void addShell(int i)
{
    if (i == 0) zebHyperboloid(foot, lip, 360, 0);
    if (i == 1) zebSphere(1.1f, -1.1f, 0.45f, 360, 0);
    if (i == 2) zebTorus(0.8f, 0.45f, 75, 360, 360, 0);
    if (i == 3) zebCylinder(0.9f, 0, 2.2f, 250, 0);
}

int main(int argc, char** argv)
{
    static const unsigned long outer[4] = {0x2A9D8F, 0x3D6C8F, 0x8A5A83, 0xD1495B};
    static const unsigned long inner[4] = {0xF4A261, 0xE9C46A, 0xF2CC8F, 0x8ECAE6};
    static const float height[4] = {0, 1.11f, 0.47f, 0};
    int i;
    beginPicture(argc, argv, "sides", 800, 450);
    zebViewPerspective(21);
    zebTranslate(0, -0.9f, 16.5f);
    zebRotate(-26, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.3f, 0xF4F0FF);
    addDistant(0.85f, 0xFFF0DC, 1, -1.3f, 0.9f);
    addDistant(0.3f, 0xBFD7FF, -1.4f, -0.3f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEFE3D2);
    addBackdrop(18, 4, 4);
    usePlastic(0.8f, 0.3f, 0.08f);
    for (i = 0; i < 4; ++i) {
        const float x = 2.45f * ((float)i - 1.5f);
        zebAttributePush();
        addShadow(x, 0, 1.9f, 0.7f);
        zebTranslate(x, height[i], 0);
        zebRotate(-90, 1, 0, 0);
        zebRotate(35, 0, 0, 1);
        zebBackface(1);
        zebOrientation(ZEB_OUTSIDE);
        paint(outer[i]);
        addShell(i);
        zebOrientation(ZEB_REVERSE);
        paint(inner[i]);
        addShell(i);
        zebAttributePop();
    }
    zebSceneEnd();
    return endPicture();
}
