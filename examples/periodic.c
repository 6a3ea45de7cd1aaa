/* A mesh that is periodic in u and v: the last control points join the first, and the B-spline
 * basis is smooth across that too, so neither ring has a seam. Each is a star-shaped tube that
 * turns round itself once on its way. */
#include "shapes.h"

enum { kAround = 10, kAlong = 48 };

static void addRing(float radius, float inner, float outer)
{
    float points[kAlong][kAround][3];
    int i, j;
    for (j = 0; j < kAlong; ++j) {
        const float along = 2 * SHAPES_PI * (float)j / kAlong;
        for (i = 0; i < kAround; ++i) {
            const float turn = 2 * SHAPES_PI * (float)i / kAround + along;
            const float r = i % 2 ? inner : outer, out = radius + r * cosf(turn);
            points[j][i][0] = out * sinf(along);
            points[j][i][1] = r * sinf(turn);
            points[j][i][2] = out * cosf(along);
        }
    }
    zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
    zebPatchMesh(ZEB_BICUBIC, kAround, ZEB_PERIODIC, kAlong, ZEB_PERIODIC, zebQuark("point"),
                 points, 0);
}

int main(int argc, char** argv)
{
    beginPicture(argc, argv, "periodic", 800, 450);
    zebViewPerspective(24.5f);
    zebTranslate(-0.15f, -1.6f, 13);
    zebRotate(-22, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.22f, 0xF2F4FF);
    addDistant(0.85f, 0xFFF0DC, 0.9f, -1.3f, 0.8f);
    addDistant(0.35f, 0xBFD7FF, -1.4f, -0.3f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xE3E6E4);
    addBackdrop(18, 4, 5);
    addShadow(-0.9f, 0, 3, 0.85f);
    addShadow(0.95f, 0, 1.5f, 0.5f);
    usePlastic(0.8f, 0.5f, 0.06f);
    zebAttributePush();
    zebTranslate(-0.95f, 0.72f, 0);
    paint(0xE07A3F);
    addRing(1.6f, 0.35f, 0.9f);
    zebAttributePop();
    zebTranslate(0.85f, 1.95f, 0);
    zebRotate(-8, 0, 0, 1);
    zebRotate(90, 1, 0, 0);
    zebRotate(20, 0, 0, 1);
    paint(0x3A86A8);
    addRing(1.5f, 0.3f, 0.62f);
    zebSceneEnd();
    return endPicture();
}
