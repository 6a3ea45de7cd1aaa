/* Geometry that is built on demand. A procedural stands for a cube and all that grows on it. It is
 * asked to build only if its bound can be seen, and is told how many pixels that covers, so that it
 * can stop where nobody would see more. */
#include <stdio.h>

#include "shapes.h"

static long built;

static void build(void* data, float detail);

static void plant(long level)
{
    const float bound[6] = {-3, 3, -3, 3, -3, 3};
    long* data = malloc(sizeof *data);
    if (!data) return;
    *data = level;
    zebProcedural(data, bound, build, free);
}

static void build(void* data, float detail)
{
    static const unsigned long colors[6] = {0x264653, 0x2A9D8F, 0x8AB17D,
                                            0xE9C46A, 0xF4A261, 0xE76F51};
    /* takes the top to each of the five free sides */
    static const float turns[5][4] = {
        {0, 1, 0, 0}, {90, 1, 0, 0}, {-90, 1, 0, 0}, {90, 0, 0, 1}, {-90, 0, 0, 1}};
    const long level = *(const long*)data;
    int i;
    ++built;
    paint(colors[level]);
    addBox(-1, 1, -1, 1, -1, 1);
    if (level == 5 || detail < 64) return;
    for (i = 0; i < 5; ++i) {
        zebAttributePush();
        zebRotate(turns[i][0], turns[i][1], turns[i][2], turns[i][3]);
        zebTranslate(0, 1.5f, 0);
        zebScale(0.5f, 0.5f, 0.5f);
        plant(level + 1);
        zebAttributePop();
    }
}

int main(int argc, char** argv)
{
    const float body = 0.9f, shine = 0.25f;
    beginPicture(argc, argv, "procedural", 800, 450);
    zebViewPerspective(28);
    zebTranslate(0, -2.2f, 12);
    zebRotate(-20, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.3f, 0xDCE6FF);
    addDistant(0.9f, 0xFFF0DC, 0.8f, -1.4f, 0.9f);
    addDistant(0.3f, 0xA8C4FF, -1, -0.2f, 0.5f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEFE6DA);
    addBackdrop(24, 4, 6);
    addShadow(0, 0, 3.4f, 0.85f);
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &body, zebQuark("ks"), &shine, 0);
    zebTranslate(0, 1.6f, 0);
    zebRotate(32, 0, 1, 0);
    plant(0);
    zebSceneEnd();
    printf("%ld cubes built\n", built);
    return endPicture();
}
