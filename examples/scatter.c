/* A plot of 5,000 points about the surface that they were scattered from. The picture is made in
 * memory, by a device of the host's own; how far it is shows on standard error, and Ctrl-C gives it
 * up: then no file is written. */
#include <signal.h>
#include <stdio.h>

#include "image.h"
#include "shapes.h"

enum { kPoints = 5000, kSide = 8 };

static volatile sig_atomic_t stopped = 0;

static void stop(int number)
{
    (void)number;
    stopped = 1;
    zebCancel();
}

static short showProgress(void* data, long percent)
{
    (void)data;
    fprintf(stderr, "\r%3ld %%%s", percent, percent == 100 ? "\n" : "");
    return 0;
}

/* The same numbers on every machine, from 0 to 1. */
static float number(void)
{
    static unsigned long state = 1;
    state = (state * 1103515245 + 12345) & 0x7FFFFFFF;
    return (float)(state >> 8) / (float)(0x7FFFFFFF >> 8);
}

static float height(float x, float y) { return 0.8f * sinf(1.7f * x) * cosf(1.3f * y) + 0.15f * x; }

/* A point's colour says how far it lies above or below the surface. */
static void addPoints(void)
{
    static float centers[3 * kPoints], radii[kPoints], colors[3 * kPoints];
    long i;
    for (i = 0; i < kPoints; ++i) {
        const float x = 4 * number() - 2, y = 4 * number() - 2;
        const float off = 0.6f * (number() + number() + number() - 1.5f);
        float* color = colors + 3 * i;
        centers[3 * i] = x, centers[3 * i + 1] = y, centers[3 * i + 2] = height(x, y) + off;
        radii[i] = 0.025f;
        color[0] = off > 0 ? 0.95f : 0.95f + off;
        color[1] = 0.85f - 0.8f * fabsf(off);
        color[2] = off < 0 ? 0.9f : 0.75f - 0.7f * off;
    }
    zebSpheres(kPoints, centers, radii, zebQuark("color"), colors, 0);
}

/* Through the points, of its own control points: a cubic in both directions. */
static void addSheet(void)
{
    static const float knots[kSide + 4] = {0, 0, 0, 0, 1, 2, 3, 4, 5, 5, 5, 5};
    static float points[kSide * kSide][3];
    long i, j;
    for (j = 0; j < kSide; ++j) {
        for (i = 0; i < kSide; ++i) {
            const float x = 4.0f * (float)i / (kSide - 1) - 2,
                        y = 4.0f * (float)j / (kSide - 1) - 2;
            float* p = points[j * kSide + i];
            p[0] = x, p[1] = y, p[2] = 1.1f * height(x, y);
        }
    }
    zebNurbMesh(kSide, 4, knots, 0, 5, kSide, 4, knots, 0, 5, zebQuark("point"), points, 0);
}

static int writeImage(const Image* image)
{
    FILE* file = fopen(image->path, "wb");
    if (!file) return 1;
    fprintf(file, "P6\n%ld %ld\n255\n", image->width, image->height);
    fwrite(image->pixels, 3, (size_t)(image->width * image->height), file);
    return fclose(file) != 0;
}

int main(int argc, char** argv)
{
    static const float eye[3] = {3.8f, -5.8f, 4.0f}, middle[3] = {0, 0, -0.25f}, up[3] = {0, 0, 1};
    Image image = {NULL, NULL, 0, 0};
    ZebDisplay device = {NULL, openImage, keepSpan, NULL, NULL};
    int failed;
    image.path = argc > 1 ? argv[1] : "scatter.ppm";
    setUpPicture(argc, argv, 800, 450);
    device.data = &image;
    zebCustomDisplay(&device);
    zebProgressCallback(showProgress, NULL);
    signal(SIGINT, stop);
    zebViewPerspective(34);
    zebLookAt(eye, middle, up);
    zebSceneBegin();
    addAmbient(0.25f, 0xFFFFFF);
    addDistant(1.0f, 0xFFF6E8, -0.4f, 0.5f, -1);
    addDistant(0.35f, 0xA8C4FF, 0.8f, -0.1f, -0.4f);
    usePlastic(0.8f, 0.25f, 0.08f);
    addPoints();
    paint(0x7C8DA6);
    addSheet();
    zebSceneEnd();
    failed = stopped || writeImage(&image);
    free(image.pixels);
    if (stopped) fputs("\ngiven up\n", stderr);
    return failed || endPicture();
}
