/* One object, drawn many times: a petal, in the pattern of a sunflower's seeds. Each instance has
 * the colour and the transformation in force when it is called, which needs zebQuirks(0). */
#include "shapes.h"

/* A leaf-shaped shell: size is its length, width and thickness. */
static void petalPoint(const float* size, float u, float v, float* point)
{
    const float a = 2 * SHAPES_PI * u, t = SHAPES_PI * v, fat = sinf(t) * (1.3f + cosf(t)) * 0.5f;
    point[0] = -size[1] * fat * cosf(a);
    point[1] = size[2] * fat * sinf(a) + 0.5f * size[0] * v * v;
    point[2] = size[0] * v;
}

int main(int argc, char** argv)
{
    enum { kPetals = 560 };
    static const unsigned long colors[5] = {0x5F0F40, 0x9A031E, 0xE36414, 0xF7B538, 0xFFE8B6};
    const float shine = 0.35f, body = 0.75f, rough = 0.08f, size[3] = {0.62f, 0.27f, 0.09f};
    const void* petal;
    int i, k;
    beginPicture(argc, argv, "instances", 800, 450);
    zebViewPerspective(26);
    zebTranslate(0, 0.3f, 12.4f);
    zebRotate(-46, 1, 0, 0);
    zebSceneBegin();
    petal = zebObjectBegin();
    addSurface(petalPoint, size, 12, 8);
    zebObjectEnd();

    addAmbient(0.25f, 0xFFFFFF);
    addDistant(0.9f, 0xFFF0DC, 0.9f, -1.2f, 0.5f);
    addDistant(0.3f, 0xBBD0FF, -1, -0.5f, -0.4f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0x234E52);
    addBackdrop(20, 4, 8);
    addShadow(0, 0, 4.3f, 0.8f);
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &body, zebQuark("ks"), &shine,
               zebQuark("roughness"), &rough, 0);
    for (i = 0; i < kPetals; ++i) {
        const float t = (float)i / kPetals, place = 3.999f * t;
        const float scale = 0.45f + 0.75f * t, radius = 2.9f * sqrtf(t);
        float from[3], to[3];
        colorOf(colors[(int)place], from), colorOf(colors[(int)place + 1], to);
        for (k = 0; k < 3; ++k) from[k] += (to[k] - from[k]) * (place - floorf(place));
        zebAttributePush();
        zebColor(from);
        zebRotate(137.508f * (float)i, 0, 1, 0);
        zebTranslate(0, 0.75f * (1 - t) + 0.1f, radius);
        zebRotate(-62 * (1 - t), 1, 0, 0);
        zebScale(scale, scale, scale);
        zebObjectCall(petal);
        zebAttributePop();
    }
    zebSceneEnd();
    return endPicture();
}
