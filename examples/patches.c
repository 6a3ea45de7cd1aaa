/* One net of 7 x 7 control points, taken four ways: as bilinear patches, and as bicubic ones in the
 * Bezier, B-spline and Catmull-Rom bases. "height" places the points over the unit square. */
#include "shapes.h"

enum { kN = 7 };
static float heights[kN * kN];

static void addNet(float x, float z, short type, short basis, unsigned long code)
{
    static const float base[12] = {-0.08f, -0.08f, -0.2f, 1.08f, -0.08f, -0.2f,
                                   -0.08f, 1.08f,  -0.2f, 1.08f, 1.08f,  -0.2f};
    int i;
    zebAttributePush();
    zebTranslate(x, 0, z);
    zebScale(2.75f, 2.75f, 2.75f);
    zebRotate(45, 0, 1, 0);
    zebRotate(-90, 1, 0, 0);
    zebTranslate(-0.5f, -0.5f, 0.26f);
    paint(0xFBF6EC);
    zebPatch(ZEB_BILINEAR, zebQuark("point"), base, 0);
    paint(code);
    zebBasis(basis, ZEB_APPLY_BOTH);
    zebPatchMesh(type, kN, ZEB_NONPERIODIC, kN, ZEB_NONPERIODIC, zebQuark("height"), heights, 0);
    paint(0x2B2D42);
    for (i = 0; i < kN * kN; ++i) {
        zebMatrixPush();
        zebTranslate((float)(i % kN) / (kN - 1), (float)(i / kN) / (kN - 1), heights[i]);
        zebSphere(0.014f, -1, 1, 360, 0);
        zebMatrixPop();
    }
    zebAttributePop();
}

int main(int argc, char** argv)
{
    int i;
    for (i = 0; i < kN * kN; ++i) {
        const float x = (float)(i % kN) - 3, y = (float)(i / kN) - 3, r = hypotf(x, y);
        heights[i] = 0.5f * expf(-0.35f * r * r) + 0.09f * cosf(2.1f * r + 0.4f * x);
    }
    beginPicture(argc, argv, "patches", 800, 450);
    zebViewPerspective(24);
    zebTranslate(-0.3f, -0.6f, 17);
    zebRotate(-33, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xF2F4FF);
    addDistant(0.85f, 0xFFF0DC, 1, -1.1f, 0.25f);
    addDistant(0.25f, 0xBFD7FF, -1, -0.5f, 0.9f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xDCCDB8);
    addBackdrop(24, 5, 9);
    usePlastic(0.85f, 0.3f, 0.06f);
    addNet(-3.6f, 1.75f, ZEB_BILINEAR, ZEB_BASIS_BEZIER, 0xE76F51);
    addNet(-1.2f, -1.05f, ZEB_BICUBIC, ZEB_BASIS_BEZIER, 0xE9B44C);
    addNet(1.2f, 1.75f, ZEB_BICUBIC, ZEB_BASIS_BSPLINE, 0x2A9D8F);
    addNet(3.6f, -1.05f, ZEB_BICUBIC, ZEB_BASIS_CATMULL_ROM, 0x4A6FA5);
    zebSceneEnd();
    return endPicture();
}
