/* A spline basis of the host's own: cardinal splines, which pass through their control points as
 * tightly as their tension says. The same outline four times, with less and less of it. */
#include "shapes.h"

enum { kRound = 12, kRows = 11 };

static void addVase(float x, float slack, unsigned long code)
{
    /* Radius and height; the first and the last only say where the curve comes from and goes to. */
    static const float outline[kRows][2] = {
        {0.2f, -0.1f}, {0.5f, 0},    {0.85f, 0.45f}, {0.3f, 0.95f}, {0.8f, 1.45f}, {0.25f, 1.9f},
        {0.55f, 2.3f}, {0.2f, 2.7f}, {0.35f, 2.95f}, {0.55f, 3.1f}, {0.7f, 3.2f}};
    /* Row by row the weights of the four points, for t^3, t^2, t and 1. */
    const float s = slack;
    ZebMatrix cardinal = {
        {-s, 2 - s, s - 2, s}, {2 * s, s - 3, 3 - 2 * s, -s}, {-s, 0, s, 0}, {0, 1, 0, 0}};
    float points[kRows][kRound][3];
    int i, j;
    for (j = 0; j < kRows; ++j) {
        for (i = 0; i < kRound; ++i) {
            const float a = 2 * SHAPES_PI * (float)i / kRound;
            points[j][i][0] = outline[j][0] * sinf(a);
            points[j][i][1] = outline[j][1];
            points[j][i][2] = outline[j][0] * cosf(a);
        }
    }
    zebAttributePush();
    addShadow(x, 0, 1.5f, 0.7f);
    zebTranslate(x, 0, 0);
    paint(code);
    zebBasis(ZEB_BASIS_CATMULL_ROM, ZEB_APPLY_U);
    zebCustomBasis(ZEB_APPLY_V, cardinal, 1);
    zebPatchMesh(ZEB_BICUBIC, kRound, ZEB_PERIODIC, kRows, ZEB_NONPERIODIC, zebQuark("point"),
                 points, 0);
    zebAttributePop();
}

int main(int argc, char** argv)
{
    beginPicture(argc, argv, "tension", 800, 450);
    zebViewPerspective(22);
    zebTranslate(0, -1.35f, 13.5f);
    zebRotate(-14, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xF2F4FF);
    addDistant(0.85f, 0xFFF0DC, 1, -1.1f, 1);
    addDistant(0.3f, 0xBFD7FF, -1.4f, -0.3f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xE4DCCF);
    addBackdrop(18, 4, 4);
    usePlastic(0.75f, 0.45f, 0.06f);
    addVase(-3.3f, 0, 0x4A6FA5), addVase(-1.1f, 0.5f, 0x2A9D8F);
    addVase(1.1f, 1, 0xE9B44C), addVase(3.3f, 1.6f, 0xD1495B);
    zebSceneEnd();
    return endPicture();
}
