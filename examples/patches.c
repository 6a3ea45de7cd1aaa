/* One net of 7 x 7 control points, taken four ways: as bilinear patches, and as bicubic ones in the
 * Bezier, B-spline and Catmull-Rom bases. "height" places the points over the unit square. */
#include "shapes.h"

enum { kSide = 7 };

static float heights[kSide][kSide];

static void addNet(float x, float z, short type, short basis, unsigned long code)
{
    static const float base[4][3] = {{-0.08f, -0.08f, -0.2f},
                                     {1.08f, -0.08f, -0.2f},
                                     {-0.08f, 1.08f, -0.2f},
                                     {1.08f, 1.08f, -0.2f}};
    int i, j;
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
    zebPatchMesh(type, kSide, ZEB_NONPERIODIC, kSide, ZEB_NONPERIODIC, zebQuark("height"), heights,
                 0);
    paint(0x2B2D42);
    for (j = 0; j < kSide; ++j) {
        for (i = 0; i < kSide; ++i) {
            zebMatrixPush();
            zebTranslate((float)i / (kSide - 1), (float)j / (kSide - 1), heights[j][i]);
            zebSphere(0.014f, -1, 1, 360, 0);
            zebMatrixPop();
        }
    }
    zebAttributePop();
}

int main(int argc, char** argv)
{
    const float body = 0.85f, shine = 0.3f, rough = 0.06f;
    int i, j;
    for (j = 0; j < kSide; ++j) {
        for (i = 0; i < kSide; ++i) {
            const float x = (float)i - 3, y = (float)j - 3, r = sqrtf(x * x + y * y);
            heights[j][i] = 0.5f * expf(-0.35f * r * r) + 0.09f * cosf(2.1f * r + 0.4f * x);
        }
    }
    beginPicture(argc, argv, "patches.png", 800, 450);
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
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &body, zebQuark("ks"), &shine,
               zebQuark("roughness"), &rough, 0);
    addNet(-3.6f, 1.75f, ZEB_BILINEAR, ZEB_BASIS_BEZIER, 0xE76F51);
    addNet(-1.2f, -1.05f, ZEB_BICUBIC, ZEB_BASIS_BEZIER, 0xE9B44C);
    addNet(1.2f, 1.75f, ZEB_BICUBIC, ZEB_BASIS_BSPLINE, 0x2A9D8F);
    addNet(3.6f, -1.05f, ZEB_BICUBIC, ZEB_BASIS_CATMULL_ROM, 0x4A6FA5);
    zebSceneEnd();
    return zebLastError() != 0;
}
