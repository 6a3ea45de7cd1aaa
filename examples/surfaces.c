/* The four surface shaders side by side, under the same three lights: constant, diffuse, metal and
 * plastic. */
#include "shapes.h"

static void addPawn(float x)
{
    zebAttributePush();
    addShadow(x, 0, 1.35f, 0.6f);
    zebTranslate(x, 0.16f, 0);
    paint(0x2A9D8F);
    addTorus(0.6f, 0.16f);
    addCone(0.62f, 0.2f, 1.5f);
    zebTranslate(0, 1.5f, 0);
    paint(0xE9C46A);
    addTorus(0.3f, 0.1f);
    zebTranslate(0, 0.42f, 0);
    paint(0xE76F51);
    addSphere(0.45f);
    zebAttributePop();
}

int main(int argc, char** argv)
{
    const float shine = 1.6f, wide = 0.25f, narrow = 0.04f, body = 0.8f, spot = 0.6f;
    beginPicture(argc, argv, "surfaces", 800, 450);
    zebViewPerspective(20);
    zebTranslate(0, -1.15f, 12.3f);
    zebRotate(-9, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xFFFFFF);
    addDistant(0.8f, 0xFFF1E0, 1, -1.1f, 1.1f);
    addDistant(0.35f, 0xBFD7FF, -1.6f, -0.4f, 0.6f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xF1E3D3);
    addBackdrop(12, 3, 2.5f);

    zebSurface(zebQuark("constant"), 0);
    addPawn(-2.4f);
    zebSurface(zebQuark("diffuse"), 0);
    addPawn(-0.8f);
    zebSurface(zebQuark("metal"), zebQuark("ks"), &shine, zebQuark("roughness"), &wide, 0);
    addPawn(0.8f);
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &body, zebQuark("ks"), &spot,
               zebQuark("roughness"), &narrow, 0);
    addPawn(2.4f);
    zebSceneEnd();
    return endPicture();
}
