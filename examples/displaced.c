/* Surfaces that a function of the program's moves: mountains on a plain, an orange, a ball of fine
 * relief, and a shell whose ribs grow out of a torus. Normals and outlines follow, and nothing
 * opens where pieces of a surface meet. */
#include "shapes.h"

#define EACH(k) for (k = 0; k < row->count; ++k)

static unsigned short eyeSpace;

static float smooth(float t) { return t <= 0 ? 0 : t >= 1 ? 1 : t * t * (3 - 2 * t); }

/* Positions in the space of the shader. */
static void inShader(ZebRow* row, float** P)
{
    int c;
    for (c = 0; c < 3; ++c) P[c] = zebRowPlane(row);
    zebRowTransform(row, eyeSpace, 0, ZEB_TRANSFORM_POINT, row->P, P);
}

/* Moves the points along their normals: by so much in the space of the shader. */
static void moveOut(ZebRow* row, const float* height)
{
    float* N[3];
    long k;
    int c;
    for (c = 0; c < 3; ++c) N[c] = zebRowPlane(row);
    zebRowTransform(row, eyeSpace, 0, ZEB_TRANSFORM_NORMAL, row->N, N);
    EACH(k)
    {
        const float length = sqrtf(N[0][k] * N[0][k] + N[1][k] * N[1][k] + N[2][k] * N[2][k]);
        for (c = 0; c < 3; ++c) N[c][k] *= height[k] / length;
    }
    zebRowTransform(row, 0, eyeSpace, ZEB_TRANSFORM_VECTOR, N, N);
    for (c = 0; c < 3; ++c) EACH(k) row->P[c][k] += N[c][k];
}

/* How high the land is, in a plane: ridges far away, a plain with ripples in front. */
static void landscape(ZebRow* row, float** P, float* height)
{
    float *at[2], *detail = zebRowPlane(row);
    long k;
    at[0] = zebRowPlane(row), at[1] = zebRowPlane(row);
    EACH(k) at[0][k] = 0.16f * P[0][k] + 3.3f, at[1][k] = 0.16f * P[2][k];
    zebRowTurbulence(row, 2, at, 12, 0.52f, 1, height);
    EACH(k) at[0][k] = 3 * P[0][k], at[1][k] = 1.3f * P[2][k];
    zebRowTurbulence(row, 2, at, 4, 0.5f, 0, detail);
    EACH(k)
    {
        const float far = smooth((P[2][k] - 2) / 9);
        height[k] = far * (3.4f - 4.2f * height[k]) + (1 - far) * 0.03f * detail[k];
    }
}

static void land(void* data, ZebRow* row)
{
    float *P[3], *height = zebRowPlane(row);
    long k;
    (void)data;
    inShader(row, P);
    landscape(row, P, height);
    /* Up, not along the normal: the plain faces the other way as seen from below. */
    {
        float* up[3];
        int c;
        for (c = 0; c < 3; ++c) up[c] = zebRowPlane(row);
        EACH(k) up[1][k] = height[k];
        zebRowTransform(row, 0, eyeSpace, ZEB_TRANSFORM_VECTOR, up, up);
        for (c = 0; c < 3; ++c) EACH(k) row->P[c][k] += up[c][k];
    }
}

/* Snow where it is high and not too steep, rock where it is steep, grass below, and haze afar. */
static void landColors(void* data, ZebRow* row)
{
    const float grass[3] = {0.24f, 0.36f, 0.12f}, rock[3] = {0.30f, 0.26f, 0.23f};
    const float snow[3] = {0.92f, 0.95f, 1}, sky[3] = {0.55f, 0.70f, 0.86f};
    float *P[3], *N[3], *ambient[3], *diffuse[3], *up[3];
    long k;
    int c;
    (void)data;
    inShader(row, P);
    for (c = 0; c < 3; ++c) {
        N[c] = zebRowPlane(row), up[c] = zebRowPlane(row);
        ambient[c] = zebRowPlane(row), diffuse[c] = zebRowPlane(row);
    }
    zebRowFacing(row, row->N, N);
    zebRowAmbient(row, ambient);
    zebRowDiffuse(row, N, diffuse);
    zebRowTransform(row, eyeSpace, 0, ZEB_TRANSFORM_NORMAL, N, up);
    EACH(k)
    {
        const float length = sqrtf(up[0][k] * up[0][k] + up[1][k] * up[1][k] + up[2][k] * up[2][k]);
        const float flat = fabsf(up[1][k]) / length;
        const float high = smooth((P[1][k] - 0.9f) / 0.6f), steep = smooth((0.86f - flat) / 0.2f);
        const float afar = 0.85f * smooth((P[2][k] - 4) / 24);
        for (c = 0; c < 3; ++c) {
            const float ground = grass[c] + high * (snow[c] - grass[c]);
            const float color = ground + steep * (1 - 0.35f * high) * (rock[c] - ground);
            const float lit = color * (ambient[c][k] + diffuse[c][k]);
            row->Ci[c][k] = row->Os[c][k] * (lit + afar * (sky[c] - lit));
        }
    }
}

/* An orange: pores that are round, of a lattice of noise, and a dimple at the stalk. */
static void peel(void* data, ZebRow* row)
{
    float *P[3], *pores = zebRowPlane(row), *lumps = zebRowPlane(row);
    long k;
    int c;
    (void)data;
    inShader(row, P);
    EACH(k) lumps[k] = P[2][k];
    for (c = 0; c < 3; ++c) EACH(k) P[c][k] *= 16;
    zebRowNoise(row, 3, P, NULL, pores);
    EACH(k)
    {
        const float stalk = smooth((lumps[k] - 0.86f) / 0.14f);
        pores[k] = -0.012f * smooth(1.8f * pores[k]) - 0.13f * stalk * stalk;
    }
    moveOut(row, pores);
}

/* Fine relief: terraces of noise upon noise, as on a carved ball. */
static void relief(void* data, ZebRow* row)
{
    float *P[3], *height = zebRowPlane(row);
    long k;
    int c;
    (void)data;
    inShader(row, P);
    for (c = 0; c < 3; ++c) EACH(k) P[c][k] *= 2.2f;
    zebRowTurbulence(row, 3, P, 7, 0.5f, 0, height);
    EACH(k)
    {
        const float step = 2.5f * height[k], whole = floorf(step);
        height[k] = 0.06f * (whole + smooth(2.5f * (step - whole) - 0.75f));
    }
    moveOut(row, height);
}

/* Ribs around a torus, which wind. */
static void ribs(void* data, ZebRow* row)
{
    float* height = zebRowPlane(row);
    long k;
    (void)data;
    EACH(k) { height[k] = 0.05f * sinf(2 * SHAPES_PI * (14 * row->u[k] + 2 * row->v[k])); }
    moveOut(row, height);
}

static void displaceBy(ZebShadeFunction function, float bound)
{
    ZebShader shader = {NULL, NULL, NULL, ZEB_SHADE_ANYWHERE};
    shader.shade = function;
    zebCustomDisplacement(&shader);
    zebBoundDisplacement(bound);
}

int main(int argc, char** argv)
{
    const float plain[12] = {-16, 0, -7, 16, 0, -7, -16, 0, 24, 16, 0, 24};
    ZebShader colors = {NULL, landColors, NULL, ZEB_SHADE_ANYWHERE};
    beginPicture(argc, argv, "displaced", 800, 450);
    zebThreads(0);
    zebShadingRate(1);
    eyeSpace = zebQuark("eye");
    zebViewPerspective(30);
    zebTranslate(0, -1.5f, 8.2f);
    zebRotate(-9, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xBFD7FF);
    addDistant(1, 0xFFE9CC, 1, -0.75f, 0.35f);

    zebAttributePush();
    zebSurface(zebQuark("constant"), 0);
    paint(0xA7CBE8);
    addBox(-40, 40, -30, 30, 29, 30);
    zebAttributePop();

    zebAttributePush();
    zebCustomSurface(&colors);
    displaceBy(land, 4);
    zebPatch(ZEB_BILINEAR, zebQuark("point"), plain, 0);
    zebAttributePop();

    zebAttributePush();
    usePlastic(0.9f, 0.35f, 0.12f);
    paint(0xF28C1B);
    zebTranslate(-2.15f, 0.85f, 0.2f);
    zebRotate(-62, 1, 0, 0);
    zebRotate(25, 0, 1, 0);
    displaceBy(peel, 0.17f);
    zebSphere(0.95f, -0.95f, 0.95f, 360, 0);
    zebAttributePop();

    zebAttributePush();
    usePlastic(0.85f, 0.4f, 0.06f);
    paint(0xB9AFA3);
    zebTranslate(0.2f, 0.95f, -0.1f);
    zebRotate(-80, 1, 0, 0);
    displaceBy(relief, 0.25f);
    zebSphere(0.95f, -0.95f, 0.95f, 360, 0);
    zebAttributePop();

    zebAttributePush();
    usePlastic(0.8f, 0.6f, 0.05f);
    paint(0x2F9C95);
    zebTranslate(2.5f, 0.62f, 0.1f);
    zebRotate(-58, 1, 0, 0);
    zebRotate(20, 0, 1, 0);
    displaceBy(ribs, 0.06f);
    zebTorus(0.72f, 0.3f, 0, 360, 360, 0);
    zebAttributePop();
    zebSceneEnd();
    return endPicture();
}
