/* Parameter lists as arrays, for hosts that put them together while they run. Fifteen primitives
 * share one list: colours at the corners and, for those that are made of them, points. */
#include "shapes.h"

static const float ring[8][3] = {{-1, -1},      {1, -1},      {1, 1},        {-1, 1},
                                 {0.5f, -0.5f}, {0.5f, 0.5f}, {-0.5f, 0.5f}, {-0.5f, -0.5f}};
static const float net[8][3] = {{-1, -1, 1},   {1, -1, -1},   {-1, -0.3f, -1}, {1, -0.3f, 1},
                                {-1, 0.3f, 1}, {1, 0.3f, -1}, {-1, 1, -1},     {1, 1, 1}};
static const float bend[4][3] = {{-1, -1, 0.6f}, {1, -1, -0.6f}, {-1, 1, -0.6f}, {1, 1, 0.6f}};
static const float low[3] = {1, 0, -1}, high[3] = {-0.3f, 0.9f, 1};
static const float line[4] = {0, 0, 1, 1}, square[7] = {0, 0, 0, 0.5f, 1, 1, 1};
static const float cubic[8] = {0, 0, 0, 0, 1, 1, 1, 1};
static const long loops[2] = {4, 4}, two = 2, order[8] = {0, 1, 2, 3, 4, 5, 6, 7};
static void add(int k, const unsigned short* tokens, void** list)
{
    const short open = ZEB_NONPERIODIC;
    list[1] = (void*)(k < 4 ? ring : k == 4 ? bend : net);
    if (k == 0) zebPolygonV(4, 2, tokens, list);
    if (k == 1) zebPolygonMeshV(1, loops, order, 2, tokens, list);
    if (k == 2) zebGeneralPolygonV(2, loops, 2, tokens, list);
    if (k == 3) zebGeneralPolygonMeshV(1, &two, loops, order, 2, tokens, list);
    if (k == 4) zebPatchV(ZEB_BILINEAR, 2, tokens, list);
    if (k == 5) zebPatchMeshV(ZEB_BILINEAR, 2, open, 4, open, 2, tokens, list);
    if (k == 6) zebNurbMeshV(2, 2, line, 0, 1, 4, 3, square, 0, 1, 2, tokens, list);
    if (k == 7) zebNurbV(2, line, 0, 1, 4, cubic, 0, 1, 2, tokens, list);
    if (k == 8) zebSphereV(1, -1, 1, 360, 1, tokens, list);
    if (k == 9) zebConeV(1, 2, 2, 360, 1, tokens, list);
    if (k == 10) zebCylinderV(0.8f, -1, 1, 360, 1, tokens, list);
    if (k == 11) zebHyperboloidV(low, high, 360, 1, tokens, list);
    if (k == 12) zebParaboloidV(1, 0, -1.2f, 360, 1, tokens, list);
    if (k == 13) zebDiskV(0.3f, 1, 300, 1, tokens, list);
    if (k == 14) zebTorusV(0.7f, 0.35f, 0, 360, 360, 1, tokens, list);
}

int main(int argc, char** argv)
{
    const unsigned short tokens[2] = {zebQuark("color"), zebQuark("point")};
    const unsigned short name = zebQuark("to");
    static float to[3] = {0.6f, -0.7f, 1}, colors[8][3];
    void *list[2] = {colors, NULL}, *direction = to;
    int i;
    beginPicture(argc, argv, "arrays", 800, 450);
    zebOutputSamples(ZEB_SAMPLES_RGBA);
    zebViewPerspective(24);
    zebTranslate(0, 0, 19.5f);
    zebSceneBegin();
    addAmbient(0.3f, 0xFFFFFF);
    zebLightSourceV(zebQuark("distant"), 1, &name, &direction);
    zebSurfaceV(zebQuark("diffuse"), 0, NULL, NULL);
    for (i = 0; i < 8; ++i) colorOf(i % 3 ? i % 2 ? 0xE9C46A : 0x2A9D8F : 0xD1495B, colors[i]);
    for (i = 0; i < 15; ++i) {
        zebMatrixPush();
        zebTranslate(2.75f * (float)(i % 5 - 2), 2.5f * (float)(1 - i / 5), 0);
        zebRotate(i < 8 ? 25 : -55, 1, i < 8 ? 0.6f : 0.2f, 0);
        add(i, tokens, list);
        zebMatrixPop();
    }
    zebSceneEnd();
    return endPicture();
}
