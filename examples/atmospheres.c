/* The two atmospheres over one range of hills: "depthcue" fades to its colour from one depth to
 * another, "fog" by how far light travels. */
#include "shapes.h"

static float hill(float x, float z)
{
    float height = 0, size = 2.2f, scale = 0.19f;
    int i;
    for (i = 0; i < 5; ++i) {
        const float ridge = sinf(scale * x + 1.7f * (float)i) * cosf(scale * z - 0.9f * (float)i) +
                            0.5f * sinf(scale * (z + 0.7f * x) + (float)i);
        height += size * (1 - sqrtf(ridge * ridge + 0.03f));
        size *= 0.42f;
        scale *= 2.1f;
    }
    return height;
}

/* size: the side, -1 or 1, of x = 0 that this half of the land lies on */
static void landPoint(const float* size, float u, float v, float* point)
{
    const float z = 1 + 69 * v * v, x = (u + (size[0] < 0 ? -1 : 0)) * (1 + 0.8f * z);
    point[0] = x;
    point[1] = hill(x, z + 3) - 3.9f;
    point[2] = z;
}

static void addSky(float x0, float x1, unsigned long low, unsigned long high)
{
    float points[4][3] = {{0, -9, 200}, {0, -9, 200}, {0, 75, 200}, {0, 75, 200}};
    float colors[4][3];
    points[0][0] = points[3][0] = x0, points[1][0] = points[2][0] = x1;
    colorOf(low, colors[0]), colorOf(low, colors[1]);
    colorOf(high, colors[2]), colorOf(high, colors[3]);
    zebAttributePush();
    zebSurface(zebQuark("constant"), 0);
    zebPolygon(4, zebQuark("point"), points, zebQuark("color"), colors, 0);
    zebAttributePop();
}

int main(int argc, char** argv)
{
    const float hither = 4, yon = 55, distance = 24, left = -1, right = 1;
    float color[3];
    beginPicture(argc, argv, "atmospheres", 800, 450);
    zebViewPerspective(40);
    zebRotate(-4, 1, 0, 0);
    zebSceneBegin();
    zebSurface(zebQuark("diffuse"), 0);

    addSky(-200, 0, 0x6D5A9C, 0x10163A);
    zebAttributePush();
    addAmbient(0.12f, 0x9FB4FF);
    addDistant(0.9f, 0xC9D6FF, 1.2f, -1, 0.5f);
    colorOf(0x6D5A9C, color);
    zebAtmosphere(zebQuark("depthcue"), zebQuark("hither"), &hither, zebQuark("yon"), &yon,
                  zebQuark("color"), color, 0);
    paint(0x3F7D8C);
    addSurface(landPoint, &left, 200, 300);
    zebAttributePop();

    addSky(0, 200, 0xFBE3C4, 0x8FBFD9);
    addAmbient(0.2f, 0xFFE8D0);
    addDistant(1.1f, 0xFFE2B8, -1.2f, -0.8f, 0.6f);
    colorOf(0xFBE3C4, color);
    zebAtmosphere(zebQuark("fog"), zebQuark("distance"), &distance, zebQuark("color"), color, 0);
    paint(0x8A9A4B);
    addSurface(landPoint, &right, 200, 300);
    zebSceneEnd();
    return endPicture();
}
