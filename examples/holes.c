/* General polygons: outlines that are concave, with holes in them. Each letter is a front face and
 * one quadrangle a side along its loops. */
#include "shapes.h"

enum { kMaxCorners = 128 };

typedef struct Outline {
    float xy[kMaxCorners][2];
    long sizes[4], loops, corners;
} Outline;

static void corner(Outline* o, float x, float y)
{
    o->xy[o->corners][0] = x;
    o->xy[o->corners++][1] = y;
    ++o->sizes[o->loops - 1];
}

/* Corners along an ellipse; degrees from one angle to another. */
static void arc(Outline* o, float x, float y, float rx, float ry, float from, float to)
{
    int i;
    for (i = 0; i <= 20; ++i) {
        const float a = (from + (to - from) * (float)i / 20) * SHAPES_PI / 180;
        corner(o, x + rx * cosf(a), y + ry * sinf(a));
    }
}

static void loop(Outline* o) { o->sizes[o->loops++] = 0; }

static void addLetter(const Outline* o, float x, unsigned long front, unsigned long side)
{
    float points[kMaxCorners][3];
    long i, k, first = 0;
    zebAttributePush();
    zebTranslate(x, 0, 0);
    for (i = 0; i < o->corners; ++i)
        points[i][0] = o->xy[i][0], points[i][1] = o->xy[i][1], points[i][2] = 0;
    paint(front);
    zebGeneralPolygon(o->loops, o->sizes, zebQuark("point"), points, 0);
    paint(side);
    for (k = 0; k < o->loops; first += o->sizes[k++]) {
        for (i = 0; i < o->sizes[k]; ++i) {
            const float *a = o->xy[first + i], *b = o->xy[first + (i + 1) % o->sizes[k]];
            float quad[4][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0.5f}, {0, 0, 0.5f}};
            quad[0][0] = quad[3][0] = a[0], quad[0][1] = quad[3][1] = a[1];
            quad[1][0] = quad[2][0] = b[0], quad[1][1] = quad[2][1] = b[1];
            zebPolygon(4, zebQuark("point"), quad, 0);
        }
    }
    zebAttributePop();
}

int main(int argc, char** argv)
{
    static Outline z, e, b;
    const float zcorners[10][2] = {{0, 0},         {1.5f, 0}, {1.5f, 0.42f}, {0.66f, 0.42f},
                                   {1.5f, 1.58f},  {1.5f, 2}, {0, 2},        {0, 1.58f},
                                   {0.84f, 1.58f}, {0, 0.42f}};
    int i;
    loop(&z);
    for (i = 0; i < 10; ++i) corner(&z, zcorners[i][0], zcorners[i][1]);
    loop(&e);
    arc(&e, 0.9f, 0.9f, 0.9f, 0.9f, 0, 320);
    arc(&e, 0.9f, 0.9f, 0.5f, 0.5f, 315, 205);
    corner(&e, 1.8f, 0.69f);
    loop(&e);
    arc(&e, 0.9f, 1.02f, 0.5f, 0.42f, 170, 10);
    loop(&b);
    corner(&b, 0, 2.6f), corner(&b, 0, 0);
    corner(&b, 0.42f, 0);
    arc(&b, 0.9f, 0.9f, 0.9f, 0.9f, -100, 122);
    corner(&b, 0.42f, 2.6f);
    loop(&b);
    arc(&b, 0.92f, 0.9f, 0.48f, 0.48f, 0, 342);

    beginPicture(argc, argv, "holes", 800, 450);
    zebViewPerspective(24);
    zebTranslate(0.1f, -1.1f, 10);
    zebRotate(-10, 1, 0, 0);
    zebRotate(-20, 0, 1, 0);
    zebSceneBegin();
    addAmbient(0.35f, 0xFFFFFF);
    addDistant(0.8f, 0xFFF4E2, 0.5f, -0.8f, 1);
    addDistant(0.3f, 0xC8D8FF, -1, -0.1f, 0.3f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xDCE8EA);
    addBackdrop(20, 3, 3);
    addShadow(-1.9f, 0.3f, 1.4f, 0.7f);
    addShadow(0.1f, 0.3f, 1.4f, 0.7f);
    addShadow(2.2f, 0.3f, 1.4f, 0.7f);
    addLetter(&z, -2.75f, 0xE76F51, 0xA63F26);
    addLetter(&e, -0.85f, 0xE9C46A, 0xB58A2A);
    addLetter(&b, 1.35f, 0x2A9D8F, 0x17635A);
    zebSceneEnd();
    return endPicture();
}
