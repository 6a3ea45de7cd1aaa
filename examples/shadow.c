/* Shadows: the light looks first. What it sees, as depths, is kept by a device; a light of the
 * program's own then asks of every point whether something lies before it, in many places around:
 * the farther away that is, the wider, so that edges are sharp at the foot of things and soft far
 * from them. The renderer itself knows nothing of shadows.
 *
 * shadow [FILE [SAMPLES [SCALE]]]: the same picture of a world so many times as large. */
#include <string.h>

#include "shapes.h"

#define EACH(k) for (k = 0; k < row->count; ++k)

enum { kMap = 1024, kTaps = 32 };
static const float kHalfWidth = 4.2f; /* of what the light sees, in units of the scene */
static const float kNear = 4, kFar = 20;
static const float kSize = 0.06f; /* how fast edges grow soft: the tangent of the light's size */

typedef struct Shadows {
    float depth[kMap][kMap]; /* 0 at the near plane, 1 at the far one */
    float scale;             /* units of the scene in the world's */
    unsigned short eye;
    float taps[kTaps][2];
} Shadows;

static void keepDepths(void* data, long x0, long x1, long y, const unsigned int* words)
{
    Shadows* shadows = data;
    memcpy(&shadows->depth[y][x0], words, sizeof(float) * (size_t)(x1 - x0 + 1));
}

static float depthAt(const Shadows* shadows, int x, int y)
{
    const int inside = x >= 0 && x < kMap && y >= 0 && y < kMap;
    return inside ? shadows->depth[y][x] : 1;
}

/* A point as the light sees it: a place in the map, and how depth grows from pixel to pixel along
 * the surface, which is what depths beside the point are compared with. */
typedef struct Seen {
    float x, y, z, slopeX, slopeY;
} Seen;

/* How much nearer to the light something lies than the surface does at a pixel, if it is more than
 * a step and a half of the map, and what the surface rises on the way over most of a pixel: depths
 * are those of pixels, and surfaces bend between. 0 if nothing is in the way. */
static float before(const Shadows* shadows, const Seen* seen, int x, int y)
{
    const float room = 1.5f * (2 * kHalfWidth / kMap) / (kFar - kNear) +
                       0.75f * (fabsf(seen->slopeX) + fabsf(seen->slopeY));
    const float here = seen->z + seen->slopeX * ((float)x - seen->x + 0.5f) +
                       seen->slopeY * ((float)y - seen->y + 0.5f);
    const float apart = here - depthAt(shadows, x, y);
    return apart > room ? apart : 0;
}

/* How much is open between the four pixels around a place. */
static float openAt(const Shadows* shadows, const Seen* seen, float x, float y)
{
    const int x0 = (int)floorf(x - 0.5f), y0 = (int)floorf(y - 0.5f);
    const float s = x - 0.5f - (float)x0, t = y - 0.5f - (float)y0;
    float open[4];
    int n;
    for (n = 0; n < 4; ++n) open[n] = before(shadows, seen, x0 + n % 2, y0 + n / 2) > 0 ? 0 : 1;
    return (1 - t) * ((1 - s) * open[0] + s * open[1]) + t * ((1 - s) * open[2] + s * open[3]);
}

/* How much of the light arrives: a search finds what is in the way, and how far off. */
static float openness(const Shadows* shadows, const Seen* seen)
{
    const float pixels = kSize * (kFar - kNear) / (2 * kHalfWidth / kMap), widest = 24;
    float apart = 0, open = 0, radius;
    int n, closed = 0;
    for (n = 0; n < kTaps; ++n) {
        const float* tap = shadows->taps[n];
        const float found = before(shadows, seen, (int)floorf(seen->x + widest * tap[0]),
                                   (int)floorf(seen->y + widest * tap[1]));
        apart += found;
        closed += found > 0;
    }
    if (closed == 0) return 1;
    radius = fminf(fmaxf(pixels * apart / (float)closed, 1.2f), widest);
    for (n = 0; n < kTaps; ++n) {
        const float* tap = shadows->taps[n];
        open += openAt(shadows, seen, seen->x + radius * tap[0], seen->y + radius * tap[1]);
    }
    return open / kTaps;
}

/* The light. Its space is that of the map: the light looks along z. */
static void shine(void* data, ZebRow* row)
{
    const Shadows* shadows = data;
    const float step = 2 * kHalfWidth / kMap * shadows->scale; /* a pixel in the world */
    const float range = (kFar - kNear) * shadows->scale;
    const float color[3] = {1, 0.93f, 0.82f};
    float *P[3], *N[3], *along[3], zero[3] = {0, 0, 1};
    long k;
    int c;
    for (c = 0; c < 3; ++c)
        P[c] = zebRowPlane(row), N[c] = zebRowPlane(row), along[c] = zebRowPlane(row);
    zebRowTransform(row, shadows->eye, 0, ZEB_TRANSFORM_POINT, row->P, P);
    zebRowTransform(row, shadows->eye, 0, ZEB_TRANSFORM_NORMAL, row->N, N);
    for (c = 0; c < 3; ++c) EACH(k) along[c][k] = zero[c];
    zebRowTransform(row, 0, shadows->eye, ZEB_TRANSFORM_VECTOR, along, row->L);
    EACH(k)
    {
        Seen seen;
        float steep = 6 * step / range, open;
        seen.x = P[0][k] / step + 0.5f * kMap;
        seen.y = 0.5f * kMap - P[1][k] / step;
        seen.z = (P[2][k] - kNear * shadows->scale) / range;
        /* On a surface N . (x, y, z) stays the same. */
        seen.slopeX = -N[0][k] / N[2][k] * step / range;
        seen.slopeY = N[1][k] / N[2][k] * step / range;
        seen.slopeX = seen.slopeX > -steep ? fminf(seen.slopeX, steep) : -steep;
        seen.slopeY = seen.slopeY > -steep ? fminf(seen.slopeY, steep) : -steep;
        open = openness(shadows, &seen);
        for (c = 0; c < 3; ++c) row->Cl[c][k] = 1.05f * color[c] * open;
    }
}

/* The same figure at three sizes: a ring that leans on a post, a ball, and a fence of thin posts.
 */
static void addFigure(float size, unsigned long code)
{
    int i;
    zebAttributePush();
    zebScale(size, size, size);
    zebRotate(-90, 1, 0, 0); /* z is up */
    paint(code);
    zebMatrixPush();
    zebTranslate(-0.5f, 0, 0.62f);
    zebRotate(62, 0, 1, 0);
    zebTorus(0.5f, 0.12f, 0, 360, 360, 0);
    zebMatrixPop();
    zebMatrixPush();
    zebTranslate(0.55f, 0.55f, 0.3f);
    zebSphere(0.3f, -0.3f, 0.3f, 360, 0);
    zebMatrixPop();
    paint(0xF2EEE6);
    for (i = 0; i < 9; ++i) {
        zebMatrixPush();
        zebTranslate(0.1f + 0.13f * (float)i, -0.3f, 0);
        zebCylinder(0.025f, 0, 0.9f, 360, 0);
        zebTranslate(0, 0, 0.9f);
        zebSphere(0.045f, -0.045f, 0.045f, 360, 0);
        zebMatrixPop();
    }
    zebMatrixPush();
    zebTranslate(0, -0.3f, 0.72f);
    zebRotate(90, 0, 1, 0);
    zebCylinder(0.03f, 0, 1.25f, 360, 0);
    zebMatrixPop();
    zebAttributePop();
}

static void addScene(float scale)
{
    zebScale(scale, scale, scale);
    usePlastic(0.85f, 0.3f, 0.08f);
    paint(0xD9CDB8);
    addBackdrop(14, 2.5f, 5);
    zebTranslate(-1.35f, 0, 0.6f);
    addFigure(1.9f, 0xC1440E);
    zebTranslate(2.5f, 0, -0.9f);
    addFigure(0.75f, 0x2A7F86);
    zebTranslate(0.75f, 0, -0.75f);
    addFigure(0.25f, 0xE0A526);
}

/* Where the light's axes and its place lie in the world, which is where it is looked at from. */
static void placeLight(float scale, ZebMatrix place)
{
    const float to[3] = {0.52f, -0.68f, 0.52f}, center[3] = {0, 0.8f, 0.2f};
    const float flat = sqrtf(to[0] * to[0] + to[2] * to[2]);
    const float size = sqrtf(flat * flat + to[1] * to[1]);
    int c;
    memset(place, 0, sizeof(ZebMatrix));
    for (c = 0; c < 3; ++c) place[2][c] = to[c] / size;
    place[0][0] = to[2] / flat, place[0][2] = -to[0] / flat;
    place[1][0] = place[2][1] * place[0][2] - place[2][2] * place[0][1];
    place[1][1] = place[2][2] * place[0][0] - place[2][0] * place[0][2];
    place[1][2] = place[2][0] * place[0][1] - place[2][1] * place[0][0];
    for (c = 0; c < 3; ++c) place[3][c] = scale * (center[c] - 11 * place[2][c]);
    place[3][3] = 1;
}

/* The way back of axes that are at right angles. */
static void invertPlace(ZebMatrix place, ZebMatrix back)
{
    int i, j;
    memset(back, 0, sizeof(ZebMatrix));
    for (i = 0; i < 3; ++i) {
        for (j = 0; j < 3; ++j) {
            back[i][j] = place[j][i];
            back[3][i] -= place[3][j] * place[i][j];
        }
    }
    back[3][3] = 1;
}

static void lookFromLight(Shadows* shadows, ZebMatrix place)
{
    const float half = kHalfWidth * shadows->scale;
    ZebDisplay device = {NULL, NULL, keepDepths, NULL, NULL};
    ZebMatrix back;
    device.data = shadows;
    invertPlace(place, back);
    zebFrameBegin();
    zebRasterViewport(0, kMap, 0, kMap);
    zebImageWindow(-half, half, -half, half);
    zebViewOrthographic();
    zebClip(kNear * shadows->scale, kFar * shadows->scale);
    zebSampleUniform(2, 2);
    zebDepthNearest(1);
    zebOutputSamples(ZEB_SAMPLES_DEPTH);
    zebCustomDisplay(&device);
    zebMultMatrix(back);
    zebSceneBegin();
    addScene(shadows->scale);
    zebSceneEnd();
    zebFrameEnd();
}

int main(int argc, char** argv)
{
    static Shadows shadows;
    ZebShader light = {NULL, shine, NULL, ZEB_SHADE_ANYWHERE};
    ZebMatrix place;
    int n;
    shadows.scale = argc > 3 ? (float)atof(argv[3]) : 1;
    shadows.eye = zebQuark("eye");
    /* Evenly over a disk: each a golden angle on from the one before. */
    for (n = 0; n < kTaps; ++n) {
        const float r = sqrtf(((float)n + 0.5f) / kTaps), a = 2.3999632f * (float)n;
        shadows.taps[n][0] = r * cosf(a), shadows.taps[n][1] = r * sinf(a);
    }
    beginPicture(argc, argv, "shadow", 800, 450);
    zebThreads(0);
    zebShadingRate(1);
    placeLight(shadows.scale, place);
    lookFromLight(&shadows, place);

    zebViewPerspective(24);
    zebClip(1 * shadows.scale, 40 * shadows.scale);
    zebTranslate(-0.2f * shadows.scale, -0.75f * shadows.scale, 9.5f * shadows.scale);
    zebRotate(-20, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.22f, 0xC8D8FF);
    light.data = &shadows;
    zebMatrixPush();
    zebMultMatrix(place);
    zebCustomLight(&light);
    zebMatrixPop();
    addScene(shadows.scale);
    zebSceneEnd();
    return endPicture();
}
