/* Opacity has three components. Petals that are opaque to one primary each work like sheets of
 * coloured glass: where all three kinds lie over each other nothing is left but black. */
#include "shapes.h"

/* A petal from the centre outwards along an angle, in front of the page by so much. */
static void addPetal(float angle, float length, float width, float z, float r, float g, float b)
{
    enum { kCorners = 48 };
    const float black[3] = {0, 0, 0};
    float points[kCorners][3], opacity[3];
    int i;
    for (i = 0; i < kCorners; ++i) {
        const float a = 2 * SHAPES_PI * (float)i / kCorners;
        points[i][0] = length * 0.5f * (1 + cosf(a)) + 0.12f;
        points[i][1] = width * sinf(a) * (0.72f + 0.28f * cosf(a));
        points[i][2] = -z;
    }
    opacity[0] = r, opacity[1] = g, opacity[2] = b;
    zebAttributePush();
    zebRotate(angle, 0, 0, 1);
    zebColor(black);
    zebOpacity(opacity);
    zebPolygon(kCorners, zebQuark("point"), points, 0);
    zebAttributePop();
}

static void addChecks(void)
{
    float tile[4][3] = {{0, 0, 0.5f}, {0, 0, 0.5f}, {0, 0, 0.5f}, {0, 0, 0.5f}};
    int i, j, k;
    for (j = -4; j < 4; ++j) {
        for (i = -6; i < 6; ++i) {
            paint((i + j) & 1 ? 0xFFFDF8 : 0xF0EAE0);
            for (k = 0; k < 4; ++k) {
                tile[k][0] = 0.5f * (float)(i + (k == 1 || k == 2));
                tile[k][1] = 0.5f * (float)(j + k / 2);
            }
            zebPolygon(4, zebQuark("point"), tile, 0);
        }
    }
}

int main(int argc, char** argv)
{
    int i;
    beginPicture(argc, argv, "opacity", 640, 480);
    zebImageWindow(-2.4f, 2.4f, -1.8f, 1.8f);
    zebViewOrthographic();
    zebTranslate(0, 0, 10);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    addChecks();
    for (i = 0; i < 8; ++i) {
        const float angle = 45 * (float)i;
        addPetal(angle, 1.52f, 0.42f, 1, 0.85f, 0.12f, 0);
        addPetal(angle + 15, 1.3f, 0.36f, 2, 0.1f, 0.8f, 0.1f);
        addPetal(angle + 30, 1.08f, 0.3f, 3, 0, 0.15f, 0.9f);
    }
    zebSceneEnd();
    return endPicture();
}
