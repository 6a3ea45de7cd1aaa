/* Rendering in stages: the host keeps control between buckets. Buckets are done row by row, and a
 * primitive that is added on the way shows only where the picture is not done yet. Here a pane of
 * thin coloured glass comes down before everything after each third row. */
#include <stdio.h>

#include "shapes.h"

static void addPane(float z, unsigned long code)
{
    const float clear[3] = {0.16f, 0.16f, 0.16f};
    float pane[4][3] = {{-9, -9, 0}, {9, -9, 0}, {9, 9, 0}, {-9, 9, 0}};
    int i;
    for (i = 0; i < 4; ++i) pane[i][2] = z;
    zebSurface(zebQuark("constant"), 0);
    zebOpacity(clear);
    paint(code);
    zebPolygon(4, zebQuark("point"), pane, 0);
}

int main(int argc, char** argv)
{
    static const unsigned long colors[9] = {0xFFB703, 0xFB8500, 0xE76F51, 0xD62246, 0x9B2FAE,
                                            0x5E35B1, 0x3949AB, 0x1E88E5, 0x00ACC1};
    const long columns = 800 / 16;
    long buckets = 0, panes = 0;
    beginPicture(argc, argv, "staged", 800, 450);
    zebTune(32, 16, 15);
    zebViewPerspective(26);
    zebTranslate(0, 0, 9);
    zebSceneBegin();
    addAmbient(0.3f, 0xFFFFFF);
    addDistant(0.9f, 0xFFF6E8, 0.8f, -1, 1);
    zebAttributePush();
    zebTranslate(0, -2.3f, 0);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xF4EBDD);
    addBackdrop(12, 3, 2);
    zebAttributePop();
    zebMatrixPush();
    zebRotate(-75, 1, 0, 0);
    zebRotate(20, 0, 1, 0);
    paint(0xF2F2F2);
    addKnot(1.25f, 0.3f);
    zebMatrixPop();

    zebRenderInit();
    while (zebRenderBucket()) {
        if (++buckets % (3 * columns) != 0 || panes == 9) continue;
        printf("%ld percent\n", zebProgress());
        addPane(-4 - 0.2f * (float)panes, colors[panes]);
        ++panes;
    }
    zebSceneEnd();
    return endPicture();
}
