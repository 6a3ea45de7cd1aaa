/* A forest that is built only where and when it is needed. Each procedural stands for a square of
 * ground; it divides into four until a square holds one tree, and a tree that covers few pixels is
 * a single cone. Squares that cannot be seen are never asked. */
#include <stdio.h>

#include "shapes.h"

typedef struct Square {
    float x, z, size;
} Square;

static long trees, plain;

static float hill(float x, float z)
{
    return 1.6f * sinf(0.09f * x + 0.7f) * cosf(0.075f * z) + 0.9f * sinf(0.16f * z + 0.11f * x);
}

static void landPoint(const float* size, float u, float v, float* point)
{
    point[0] = size[0] * (u - 0.5f);
    point[2] = size[0] * v - 8;
    point[1] = hill(point[0], point[2]);
}

/* 0 to 1, the same for the same place. */
static float chance(float x, float z, float which)
{
    const float t = sinf(12.9898f * x + 78.233f * z + 37.7f * which) * 4375.85f;
    return t - floorf(t);
}

/* A conifer of three cones, a poplar, which is a paraboloid, or an oak of spheres. */
static void addTree(float kind, float shade, float detail)
{
    static const unsigned long greens[4] = {0x3B6B4F, 0x58854B, 0x86A34A, 0xC9A23F};
    const int color = kind < 0.6f    ? (shade < 0.6f ? 0 : 1)
                      : shade < 0.5f ? 1
                      : shade < 0.8f ? 2
                                     : 3;
    int i;
    paint(0x6B4B3A);
    zebCylinder(0.07f, -0.3f, 0.5f, 360, 0);
    paint(greens[color]);
    if (detail < 2000) {
        ++plain;
        zebTranslate(0, 0, 0.3f);
        zebCone(0.45f, 1.9f, 1.9f, 360, 0);
        return;
    }
    if (kind < 0.6f) {
        for (i = 0; i < 3; ++i) {
            zebTranslate(0, 0, i ? 0.46f : 0.32f);
            zebCone(0.56f - 0.12f * (float)i, 0.95f, 0.95f, 360, 0);
        }
    } else if (kind < 0.8f) {
        zebTranslate(0, 0, 2.3f);
        zebParaboloid(0.36f, 0, -1.95f, 360, 0);
    } else {
        zebTranslate(0, 0, 0.95f);
        zebSphere(0.55f, -1, 1, 360, 0);
        zebTranslate(0.28f, 0.2f, 0.32f);
        zebSphere(0.4f, -1, 1, 360, 0);
        zebTranslate(-0.55f, -0.3f, -0.02f);
        zebSphere(0.36f, -1, 1, 360, 0);
    }
}

static void build(void* data, float detail);

static void plant(float x, float z, float size)
{
    const float low = size > 1 ? -3 : hill(x, z) - 1, high = size > 1 ? 6 : low + 5;
    const float bound[6] = {x - 1, x + size + 1, low, high, z - 1, z + size + 1};
    Square* square = malloc(sizeof *square);
    if (!square) return;
    square->x = x, square->z = z, square->size = size;
    zebProcedural(square, bound, build, free);
}

static void build(void* data, float detail)
{
    const Square* s = data;
    const float half = s->size / 2;
    if (s->size > 1) {
        plant(s->x, s->z, half), plant(s->x + half, s->z, half);
        plant(s->x, s->z + half, half), plant(s->x + half, s->z + half, half);
    } else {
        const float x = s->x + chance(s->x, s->z, 1), z = s->z + chance(s->x, s->z, 2);
        const float size = 0.75f + 0.7f * chance(s->x, s->z, 3);
        if (sinf(0.21f * x + 2) * sinf(0.17f * z) > 0.6f) return; /* a clearing */
        ++trees;
        zebTranslate(x, hill(x, z), z);
        zebRotate(-90, 1, 0, 0);
        zebScale(size, size, size);
        addTree(chance(s->x, s->z, 4), chance(s->x, s->z, 5), detail);
    }
}

int main(int argc, char** argv)
{
    const float distance = 110, land = 160;
    const float sky[4][3] = {{-200, -40, 190}, {200, -40, 190}, {200, 80, 190}, {-200, 80, 190}};
    float colors[4][3], mist[3];
    beginPicture(argc, argv, "forest", 800, 450);
    zebViewPerspective(36);
    zebRotate(-13, 1, 0, 0);
    zebTranslate(0, -7.5f, 9);
    zebSceneBegin();
    colorOf(0xF6E7CF, colors[0]), colorOf(0xF6E7CF, colors[1]);
    colorOf(0x8DB7D1, colors[2]), colorOf(0x8DB7D1, colors[3]);
    zebSurface(zebQuark("constant"), 0);
    zebPolygon(4, zebQuark("point"), sky, zebQuark("color"), colors, 0);

    addAmbient(0.3f, 0xDCE8FF);
    addDistant(1, 0xFFE9C4, 1, -0.9f, 0.7f);
    colorOf(0xF6E7CF, mist);
    zebAtmosphere(zebQuark("fog"), zebQuark("distance"), &distance, zebQuark("color"), mist, 0);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0x7C8A4E);
    addSurface(landPoint, &land, 120, 120);
    plant(-64, -4, 128);
    zebSceneEnd();
    printf("%ld trees built, %ld of them plain\n", trees, plain);
    return endPicture();
}
