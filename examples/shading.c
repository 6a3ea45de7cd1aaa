/* Surfaces of one's own: functions that shade whole rows of points, with a globe that has an image
 * on it, marble, wood, brushed metal, a cartoon, tiles on the floor, and haze far away. */
#include "shapes.h"

/* All loops of the functions below: over the points of a row. */
#define EACH(k) for (k = 0; k < row->count; ++k)

static unsigned short eyeSpace;
static const unsigned long kSky = 0xC9DCE8;

typedef struct Look {
    float kd, ks, roughness;
} Look;

static void take(const ZebRow* row, float** planes)
{
    int c;
    for (c = 0; c < 3; ++c) planes[c] = zebRowPlane(row);
}

static float mix(float t, float a, float b) { return a + t * (b - a); }

static float smooth(float t) { return t <= 0 ? 0 : t >= 1 ? 1 : t * t * (3 - 2 * t); }

/* Lights colours, three planes, as plastic is lit. */
static void lightUp(ZebRow* row, float** color, Look look)
{
    float *N[3], *V[3], *ambient[3], *diffuse[3], *specular[3];
    long k;
    int c;
    take(row, N), take(row, V), take(row, ambient), take(row, diffuse), take(row, specular);
    for (c = 0; c < 3; ++c) EACH(k) V[c][k] = -row->I[c][k];
    zebRowFacing(row, row->N, N);
    zebRowAmbient(row, ambient);
    zebRowDiffuse(row, N, diffuse);
    zebRowSpecular(row, N, V, look.roughness, specular);
    for (c = 0; c < 3; ++c) {
        EACH(k)
        {
            const float light = ambient[c][k] + look.kd * diffuse[c][k];
            row->Ci[c][k] = row->Os[c][k] * (color[c][k] * light + look.ks * specular[c][k]);
        }
    }
}

/* Between two colours, as a plane says. */
static void blend(ZebRow* row, const float* t, unsigned long from, unsigned long to, float** color)
{
    float a[3], b[3];
    long k;
    int c;
    colorOf(from, a), colorOf(to, b);
    for (c = 0; c < 3; ++c) EACH(k) color[c][k] = mix(t[k], a[c], b[c]);
}

/* Positions in the space of the shader, so many times as large. */
static void inShader(ZebRow* row, float scale, float** P)
{
    long k;
    int c;
    zebRowTransform(row, eyeSpace, 0, ZEB_TRANSFORM_POINT, row->P, P);
    for (c = 0; c < 3; ++c) EACH(k) P[c][k] *= scale;
}

static void marble(void* data, ZebRow* row)
{
    const Look look = {0.85f, 0.5f, 0.04f};
    float *P[3], *color[3], *veins = zebRowPlane(row);
    long k;
    (void)data;
    take(row, P), take(row, color);
    inShader(row, 1.6f, P);
    zebRowTurbulence(row, 3, P, 8, 0.55f, 1, veins);
    EACH(k) veins[k] = powf(0.5f + 0.5f * sinf(2 * P[0][k] + 1.2f * P[1][k] + 7 * veins[k]), 0.35f);
    blend(row, veins, 0x3A4A54, 0xF4F0E6, color);
    lightUp(row, color, look);
}

/* Rings about the trunk's axis, and fibres along it. */
static void wood(void* data, ZebRow* row)
{
    const Look look = {0.8f, 0.25f, 0.1f};
    float *P[3], *color[3], *bend = zebRowPlane(row), *fibres = zebRowPlane(row);
    long k;
    (void)data;
    take(row, P), take(row, color);
    inShader(row, 1, P);
    zebRowTurbulence(row, 3, P, 4, 0.5f, 0, bend);
    EACH(k)
    {
        const float x = P[0][k] + 0.9f, z = P[2][k] - 0.4f;
        const float ring = 9 * sqrtf(x * x + z * z) + 1.1f * bend[k];
        bend[k] =
            smooth(1.25f * (ring - floorf(ring))) * (1 - smooth((ring - floorf(ring) - 0.8f) * 5));
        P[0][k] *= 40, P[1][k] *= 2, P[2][k] *= 40;
    }
    zebRowTurbulence(row, 3, P, 2, 0.5f, 0, fibres);
    EACH(k) bend[k] = smooth(0.15f + 0.7f * bend[k] + 0.25f * fibres[k]);
    blend(row, bend, 0xC98A4B, 0x6B3A1E, color);
    lightUp(row, color, look);
}

/* Scratches along u bend the normal across them; highlights are drawn out. */
static void brushed(void* data, ZebRow* row)
{
    float *N[3], *V[3], *wide[3], *near[3], *at[2], *scratches = zebRowPlane(row), steel[3];
    long k;
    int c;
    (void)data;
    take(row, N), take(row, V), take(row, wide), take(row, near);
    at[0] = zebRowPlane(row), at[1] = zebRowPlane(row);
    EACH(k) at[0][k] = 3 * row->u[k], at[1][k] = 110 * row->v[k];
    zebRowTurbulence(row, 2, at, 3, 0.7f, 0, scratches);
    zebRowFacing(row, row->N, N);
    EACH(k)
    {
        float length = 0;
        for (c = 0; c < 3; ++c) length += row->dPdv[c][k] * row->dPdv[c][k];
        length = length > 0 ? 1 / sqrtf(length) : 0;
        for (c = 0; c < 3; ++c) N[c][k] += 0.6f * scratches[k] * length * row->dPdv[c][k];
    }
    for (c = 0; c < 3; ++c) EACH(k) V[c][k] = -row->I[c][k];
    zebRowSpecular(row, N, V, 0.35f, wide);
    zebRowSpecular(row, N, V, 0.06f, near);
    colorOf(0xC9D2DA, steel);
    for (c = 0; c < 3; ++c) {
        EACH(k)
        {
            const float light =
                0.22f + 0.25f * scratches[k] + 0.5f * wide[c][k] + 0.5f * near[c][k];
            row->Ci[c][k] = row->Os[c][k] * steel[c] * light;
        }
    }
}

/* A few flat tones, and an outline where the surface turns away from the eye. */
static void cartoon(void* data, ZebRow* row)
{
    float *N[3], *diffuse[3], *tone = zebRowPlane(row), *more = zebRowPlane(row);
    float* facing = zebRowPlane(row);
    long k;
    int c;
    (void)data;
    take(row, N), take(row, diffuse);
    zebRowFacing(row, row->N, N);
    zebRowDiffuse(row, N, diffuse);
    EACH(k)
    {
        float dot = 0, length = 0;
        for (c = 0; c < 3; ++c)
            dot -= N[c][k] * row->I[c][k], length += row->I[c][k] * row->I[c][k];
        facing[k] = dot / sqrtf(length);
    }
    zebRowStep(row, 0.12f, diffuse[1], tone);
    zebRowStep(row, 0.6f, diffuse[1], more);
    zebRowStep(row, 0.32f, facing, facing);
    for (c = 0; c < 3; ++c) {
        EACH(k)
        row->Ci[c][k] =
            row->Os[c][k] * facing[k] * row->Cs[c][k] * (0.35f + 0.35f * tone[k] + 0.4f * more[k]);
    }
}

/* Looks an image up. */
static void globe(void* data, ZebRow* row)
{
    const Look look = {0.9f, 0.3f, 0.08f};
    float *color[3], *t = zebRowPlane(row);
    long k;
    take(row, color);
    EACH(k) t[k] = 1 - row->v[k];
    zebRowImage(row, data, row->u, t, 0, color);
    lightUp(row, color, look);
}

static void tiles(void* data, ZebRow* row)
{
    const Look look = {0.8f, 0.15f, 0.1f};
    float *color[3], *P[3], *fields = zebRowPlane(row);
    (void)data;
    take(row, color), take(row, P);
    inShader(row, 1.5f, P);
    zebRowChecks(row, P[0], P[2], fields);
    blend(row, fields, 0x8D99A6, 0xEDE6DA, color);
    lightUp(row, color, look);
}

/* An atmosphere: what is far away takes the colour of the sky. */
static void haze(void* data, ZebRow* row)
{
    float sky[3];
    long k;
    int c;
    (void)data;
    colorOf(kSky, sky);
    for (c = 0; c < 3; ++c) {
        EACH(k)
        {
            const float t = smooth((row->P[2][k] - 14) / 14);
            row->Ci[c][k] = mix(t, row->Ci[c][k], row->Oi[c][k] * sky[c]);
        }
    }
}

/* Land and sea, ice at the poles, and a line every 15 degrees. */
static void mapPixel(float longitude, float latitude, float* pixel)
{
    static const float waves[7][4] = {{1.7f, 0.4f, -1.1f, 0.3f}, {-0.6f, 2.3f, 1.4f, 1.9f},
                                      {2.9f, -1.2f, 2.2f, 4.1f}, {-3.8f, 1.7f, 2.6f, 0.8f},
                                      {4.3f, 4.9f, -3.1f, 2.7f}, {7.7f, -6.1f, 5.3f, 5.5f},
                                      {-9.1f, 8.3f, 11.9f, 3.3f}};
    const float x = cosf(latitude) * cosf(longitude), y = cosf(latitude) * sinf(longitude);
    const float z = sinf(latitude), line = SHAPES_PI / 12;
    float height = -0.35f, share;
    float sea[3], land[3];
    int n, c;
    for (n = 0; n < 7; ++n) {
        const float* w = waves[n];
        height += sinf(w[0] * x + w[1] * y + w[2] * z + w[3]) / (1 + 0.55f * (float)n);
    }
    colorOf(height > -0.2f ? 0x2E86B5 : 0x1C5D8C, sea);
    colorOf(fabsf(latitude) > 1.18f ? 0xF5F7F8 : height > 0.75f ? 0xB08D57 : 0x5E8C4A, land);
    share = smooth(height * 30);
    for (c = 0; c < 3; ++c) pixel[c] = mix(fabsf(latitude) > 1.3f ? 1 : share, sea[c], land[c]);
    if (fabsf(remainderf(longitude, line)) * cosf(latitude) > 0.004f &&
        fabsf(remainderf(latitude, line)) > 0.004f) {
        return;
    }
    for (c = 0; c < 3; ++c) pixel[c] = mix(0.35f, pixel[c], 1);
}

static const void* makeMap(void)
{
    const long width = 1024, height = 512;
    float* const pixels = malloc(sizeof(float) * 3 * (size_t)(width * height));
    const void* map;
    long i, j;
    for (j = 0; j < height; ++j) {
        for (i = 0; i < width; ++i) {
            mapPixel(2 * SHAPES_PI * ((float)i + 0.5f) / (float)width,
                     SHAPES_PI * (0.5f - ((float)j + 0.5f) / (float)height),
                     pixels + 3 * (j * width + i));
        }
    }
    map = zebImage(width, height, 3, pixels, ZEB_IMAGE_REPEAT);
    free(pixels);
    return map;
}

static void freeMap(void* map) { zebImageFree(map); }

/* Makes a function the surface; it may run on any thread. */
static void useSurface(ZebShadeFunction shade, void* data, ZebFreeFunction release)
{
    ZebShader shader = {NULL, NULL, NULL, ZEB_SHADE_ANYWHERE};
    shader.data = data;
    shader.shade = shade;
    shader.free = release;
    zebCustomSurface(&shader);
}

static void addGlobe(float radius, float lean)
{
    zebAttributePush();
    zebRotate(lean, 0, 0, 1);
    zebRotate(-90, 1, 0, 0);
    zebRotate(175, 0, 0, 1);
    zebSphere(radius, -radius, radius, 360, 0);
    zebAttributePop();
}

int main(int argc, char** argv)
{
    ZebShader air = {NULL, NULL, NULL, ZEB_SHADE_ANYWHERE};
    beginPicture(argc, argv, "shading", 800, 450);
    zebShadingRate(1);
    zebThreads(0);
    eyeSpace = zebQuark("eye");
    zebViewPerspective(22);
    zebTranslate(0, -0.6f, 14.2f);
    zebRotate(-16, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.25f, 0xFFFFFF);
    addDistant(0.85f, 0xFFF1E0, 1, -1.4f, 1.1f);
    addDistant(0.3f, 0xBFD7FF, -1.6f, -0.4f, 0.6f);

    paint(kSky);
    zebSurface(zebQuark("constant"), 0);
    addBox(-40, 40, -30, 30, 29, 30);
    air.shade = haze;
    zebCustomAtmosphere(&air);

    useSurface(tiles, NULL, NULL);
    zebAttributePush();
    zebRotate(-90, 1, 0, 0);
    zebDisk(0, 29, 360, 0);
    zebAttributePop();

    addShadow(-3.3f, 0.6f, 1.25f, 0.7f);
    addShadow(-1, 1.5f, 1.5f, 0.7f);
    addShadow(1.4f, 0.3f, 1.7f, 0.7f);
    addShadow(3.7f, 1.2f, 1.6f, 0.7f);
    addShadow(0.05f, -1.7f, 0.65f, 0.7f);
    addShadow(-1.2f, -1.45f, 0.6f, 0.7f);

    zebTranslate(-3.4f, 1, 0.6f);
    useSurface(marble, NULL, NULL);
    zebSphere(1, -1, 1, 360, 0);

    zebTranslate(2.35f, 0.25f, 0.9f);
    useSurface(globe, (void*)makeMap(), freeMap);
    addGlobe(1.25f, 20);

    zebTranslate(2.4f, -0.85f, -1.2f);
    zebAttributePush();
    zebRotate(-90, 1, 0, 0);
    useSurface(brushed, NULL, NULL);
    zebTorus(0.75f, 0.4f, 0, 360, 360, 0);
    zebTranslate(0, 0, -0.4f);
    zebAttributePop();

    zebTranslate(2.25f, -0.4f, 0.9f);
    zebAttributePush();
    zebRotate(28, 0, 1, 0);
    useSurface(wood, NULL, NULL);
    zebTranslate(0, 0.85f, 0);
    zebScale(0.75f, 0.85f, 0.75f);
    addBox(-1, 1, -1, 1, -1, 1);
    zebAttributePop();

    zebTranslate(-3.6f, 0.5f, -2.9f);
    paint(0xE4572E);
    useSurface(cartoon, NULL, NULL);
    zebSphere(0.5f, -0.5f, 0.5f, 360, 0);
    zebTranslate(-1.25f, -0.36f, 0.25f);
    paint(0x2A9D8F);
    zebRotate(-90, 1, 0, 0);
    zebTorus(0.35f, 0.14f, 0, 360, 360, 0);
    zebSceneEnd();
    return endPicture();
}
