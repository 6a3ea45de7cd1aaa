/* One net of control points, three NURBS. Round the axis a quadratic with the weights of an exact
 * circle; along it a cubic: left with simple knots, smooth all over; in the middle with triple
 * ones, which make sharp edges next to smooth parts; right the same, trimmed by its limits in u. */
#include "shapes.h"

enum { kRound = 9, kRows = 13 };
/* Radius and height of the outline. */
static const float outline[kRows][2] = {
    {0, 0},         {1.1f, 0},    {1.1f, 0},     {1.1f, 0.18f},  {0.15f, 0.3f},
    {0.2f, 0.75f},  {0.2f, 1.1f}, {0.55f, 1.2f}, {1.25f, 1.25f}, {1.35f, 2.0f},
    {1.05f, 2.75f}, {0.9f, 2.2f}, {0, 1.35f}};
static const float smooth[kRows + 4] = {0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 10, 10, 10};
static const float creased[kRows + 4] = {0, 0, 0, 0, 3, 3, 3, 6, 6, 6, 9, 9, 9, 10, 10, 10, 10};

static void addGoblet(float x, const float* knots, float limit, unsigned long code)
{
    static const float circle[kRound][2] = {{1, 0},   {1, 1},  {0, 1},  {-1, 1}, {-1, 0},
                                            {-1, -1}, {0, -1}, {1, -1}, {1, 0}};
    static const float quarters[kRound + 3] = {0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4};
    float points[kRows * kRound][4];
    int k;
    for (k = 0; k < kRows * kRound; ++k) {
        const float *ring = outline[k / kRound], *place = circle[k % kRound];
        const float weight = k % kRound % 2 ? sqrtf(0.5f) : 1;
        points[k][0] = weight * ring[0] * place[0];
        points[k][1] = weight * ring[0] * place[1];
        points[k][2] = weight * ring[1];
        points[k][3] = weight;
    }
    zebAttributePush();
    addShadow(x, 0, 1.7f, 0.75f);
    paint(code);
    zebTranslate(x, 0.01f, 0);
    zebRotate(-90, 1, 0, 0);
    zebNurbMesh(kRound, 3, quarters, 0, limit, kRows, 4, knots, 0, 10, zebQuark("pointw"), points,
                0);
    zebAttributePop();
}

int main(int argc, char** argv)
{
    beginPicture(argc, argv, "nurbs", 800, 450);
    zebShadingRate(1);
    zebViewPerspective(24);
    zebTranslate(0, -1.3f, 13);
    zebRotate(-16, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xF2F4FF);
    addDistant(0.85f, 0xFFF0DC, 1, -1.1f, 1);
    addDistant(0.3f, 0xBFD7FF, -1.4f, -0.3f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEADFD3);
    addBackdrop(16, 4, 4);
    usePlastic(0.75f, 0.5f, 0.05f);
    addGoblet(-3.05f, smooth, 4, 0x2A9D8F);
    addGoblet(0, creased, 4, 0xE9B44C);
    addGoblet(3.05f, creased, 2.75f, 0xD1495B);
    zebSceneEnd();
    return endPicture();
}
