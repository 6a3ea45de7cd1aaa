/* The four kinds of light, one to each alcove: ambient, distant, omni and spot. A light belongs to
 * the attribute block it is made in: what comes after the block is not lit by it. */
#include "shapes.h"

static void addAlcove(float x)
{
    zebMatrixPush();
    zebTranslate(x, 0, 0);
    paint(0xE8DED2);
    addBox(-1, 1, -0.1f, 0, -1, 1.2f);
    addBox(-1, 1, 4.4f, 4.5f, -1, 1.2f);
    addBox(-1, 1, 0, 4.4f, 1.2f, 1.3f);
    addBox(-1.05f, -1, -0.1f, 4.5f, -1, 1.2f);
    addBox(1, 1.05f, -0.1f, 4.5f, -1, 1.2f);
    addShadow(-0.2f, 0.4f, 0.75f, 0.6f);
    addShadow(0.5f, -0.3f, 0.5f, 0.6f);
    zebTranslate(-0.2f, 0, 0.4f);
    paint(0x2A9D8F);
    addCone(0.62f, 0.1f, 2.5f);
    zebTranslate(0, 2.75f, 0);
    paint(0xE9C46A);
    addSphere(0.4f);
    zebTranslate(0.7f, -2.39f, -0.7f);
    paint(0xE76F51);
    addSphere(0.36f);
    zebMatrixPop();
}

int main(int argc, char** argv)
{
    const float intensity = 90, from[3] = {2.3f, 4.2f, -6}, to[3] = {3.2f, 1.5f, 0.6f};
    const float cone = 14, soft = 4, beam = 2, body = 0.8f, shine = 0.4f, rough = 0.06f;
    float color[3];
    beginPicture(argc, argv, "lights", 800, 450);
    zebViewPerspective(18);
    zebTranslate(0, -2.2f, 16.2f);
    zebSceneBegin();
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &body, zebQuark("ks"), &shine,
               zebQuark("roughness"), &rough, 0);

    zebAttributePush();
    addAmbient(0.6f, 0xFFFFFF);
    addAlcove(-3.15f);
    zebAttributePop();

    zebAttributePush();
    addDistant(1, 0xFFF4E6, 1, -0.9f, 1.4f);
    addAlcove(-1.05f);
    zebAttributePop();

    zebAttributePush();
    addOmni(3.4f, 0xFFDDB0, 1.5f, 2.7f, -1);
    addAlcove(1.05f);
    zebAttributePop();

    zebAttributePush();
    colorOf(0xFFF0D8, color);
    zebLightSource(zebQuark("spot"), zebQuark("intensity"), &intensity, zebQuark("color"), color,
                   zebQuark("from"), from, zebQuark("to"), to, zebQuark("coneangle"), &cone,
                   zebQuark("conedeltaangle"), &soft, zebQuark("beamdistribution"), &beam, 0);
    addAlcove(3.15f);
    zebAttributePop();
    zebSceneEnd();
    return endPicture();
}
