/* Coordinate systems with names. Each mast is built in its own, and marks the one at its top;
 * zebProjectPoints then tells where the tops lie in the world, so that strings of lamps can hang
 * from one to the next. */
#include "shapes.h"

enum { kMasts = 6, kLamps = 13 };

static void addMast(int i, const char* top)
{
    zebAttributePush();
    zebTranslate(2.1f * ((float)i - 2.5f), 0, i % 2 ? 2.2f : -0.6f);
    zebRotate(6 * (float)(i * i * 7 % 5 - 2), 0.4f, 0, 1);
    zebRotate(-90, 1, 0, 0);
    zebCone(0.16f, 6, 2.9f, 360, 0);
    zebTranslate(0, 0, 2.9f);
    zebSphere(0.15f, -1, 1, 360, 0);
    zebMarkSpace(zebQuark(top));
    zebAttributePop();
}

static void addString(const char* from, const char* to)
{
    static const unsigned long colors[4] = {0xFFD166, 0xEF476F, 0x06D6A0, 0x5CC8FF};
    ZebPoint a[1] = {{0, 0, 0}}, b[1] = {{0, 0, 0}};
    int k;
    zebProjectPoints(zebQuark(from), zebQuark("world"), 1, a);
    zebProjectPoints(zebQuark(to), zebQuark("world"), 1, b);
    for (k = 1; k < kLamps; ++k) {
        const float t = (float)k / kLamps, sag = 4 * t * (1 - t);
        zebMatrixPush();
        zebTranslate(a[0][0] + t * (b[0][0] - a[0][0]), a[0][1] + t * (b[0][1] - a[0][1]) - sag,
                     a[0][2] + t * (b[0][2] - a[0][2]));
        paint(colors[k % 4]);
        zebSphere(0.1f, -1, 1, 360, 0);
        zebMatrixPop();
    }
}

int main(int argc, char** argv)
{
    static const char* tops[kMasts] = {"gate", "well", "oak", "barn", "inn", "mill"};
    int i;
    beginPicture(argc, argv, "spaces", 800, 450);
    zebViewPerspective(26);
    zebTranslate(0, -1.45f, 14.8f);
    zebRotate(-20, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0x9FB0FF);
    addDistant(0.75f, 0xC9D6FF, 0.8f, -1, 0.7f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0x5566A8);
    addBackdrop(24, 5, 6);
    paint(0xE8D9BF);
    for (i = 0; i < kMasts; ++i) addMast(i, tops[i]);
    zebSurface(zebQuark("constant"), 0);
    for (i = 1; i < kMasts; ++i) addString(tops[i - 1], tops[i]);
    zebSceneEnd();
    return endPicture();
}
