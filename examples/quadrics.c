/* The seven quadrics as a still life: sphere, cone, cylinder, hyperboloid, paraboloid, disk and
 * torus. Each turns a curve about the z axis, here tipped to stand upright. */
#include "shapes.h"

/* Opens an attribute block in which the origin stands at x, z on the floor and z points up. */
static void stand(float x, float y, float z, unsigned long code)
{
    zebAttributePush();
    paint(code);
    zebTranslate(x, y, z);
    zebRotate(-90, 1, 0, 0);
}

int main(int argc, char** argv)
{
    const float foot[3] = {0.85f, -0.65f, 0}, lip[3] = {0.6f, 0.8f, 2.6f};
    beginPicture(argc, argv, "quadrics", 800, 450);
    zebViewPerspective(21.5f);
    zebTranslate(0, -1.25f, 13);
    zebRotate(-14, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.28f, 0xF4F0FF);
    addDistant(0.85f, 0xFFF0DC, 1, -1.3f, 0.9f);
    addDistant(0.3f, 0xBFD7FF, -1.4f, -0.3f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEFE3D2);
    addBackdrop(16, 4, 4);
    addShadow(-3.1f, 1.2f, 1.9f, 0.7f), addShadow(-0.7f, 1.9f, 1.7f, 0.7f);
    addShadow(2.2f, 1.6f, 1.6f, 0.7f), addShadow(-1.75f, -1.1f, 1.3f, 0.7f);
    addShadow(0.75f, -0.6f, 1.4f, 0.7f), addShadow(3.3f, -0.2f, 1.5f, 0.7f);
    usePlastic(0.8f, 0.35f, 0.07f);

    stand(-3.1f, 0, 1.2f, 0x2A9D8F);
    zebHyperboloid(foot, lip, 360, 0);
    zebAttributePop();
    stand(-0.7f, 0, 1.9f, 0xE9C46A);
    zebCone(1, 3.3f, 3.3f, 360, 0);
    zebAttributePop();
    stand(2.2f, 0, 1.6f, 0x3D6C8F);
    zebCylinder(0.85f, 0, 1.7f, 360, 0);
    zebTranslate(0, 0, 1.7f);
    zebDisk(0, 0.85f, 360, 0);
    zebTranslate(0, 0, 0.62f);
    paint(0xE76F51);
    zebSphere(0.62f, -0.62f, 0.62f, 360, 0);
    zebAttributePop();
    stand(-1.75f, 0.27f, -1.1f, 0xD1495B);
    zebTorus(0.62f, 0.27f, 0, 360, 360, 0);
    zebAttributePop();
    stand(0.75f, 1.15f, -0.6f, 0x8A5A83);
    zebParaboloid(0.85f, 0, -1.15f, 360, 0);
    zebAttributePop();
    stand(3.3f, 0.86f, -0.2f, 0xF4A261);
    zebRotate(48, 0, 0, 1);
    zebRotate(-72, 1, 0, 0);
    zebDisk(0.3f, 0.9f, 360, 0);
    zebAttributePop();
    zebSceneEnd();
    return endPicture();
}
