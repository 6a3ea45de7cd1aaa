/* What the examples share, so that each can keep to its one idea: the options of a good picture,
 * colours by their usual codes, and shapes as polygon meshes with smooth normals.
 *
 * Coordinates: x to the right, y up, z away from the eye. Every normal points to the side of its
 * face that (P1 - P0) x (P2 - P0) points to; the renderer turns normals towards the eye by that
 * side, so the two must agree. */
#ifndef ZEBCORE_EXAMPLES_SHAPES_H
#define ZEBCORE_EXAMPLES_SHAPES_H

#include <math.h>
#include <stdlib.h>
#include <zebcore/zebcore.h>

#define SHAPES_PI 3.14159265f

/* Has infos printed, and sets the options of a picture: its size, a display gamma, and 4 x 4
 * samples a pixel, or n x n if n follows the file's name on the command line. Micropolygons of 2 x
 * 2 pixels are enough where colours are interpolated. */
static inline void setUpPicture(int argc, char** argv, long width, long height)
{
    const float samples = argc > 2 ? (float)atof(argv[2]) : 4;
    zebErrorHandler(ZEB_INFO, ZEB_ERROR_PRINT); /* misspelt names come to light */
    zebQuirks(0);
    zebRasterViewport(0, width, 0, height);
    zebSampleUniform(samples, samples);
    zebColorGamma(2.2f);
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(4);
}

/* The same, and where it goes: to the file named on the command line, or else a window of the title
 * given. */
static inline void beginPicture(int argc, char** argv, const char* title, long width, long height)
{
    setUpPicture(argc, argv, width, height);
    if (argc > 1) {
        zebOutputFile(ZEB_FILE_AUTO, argv[1]);
    } else {
        zebOutputDisplay(title);
    }
}

/* Keeps the window, if there is one, until its user closes it. Returns the program's exit status.
 */
static inline int endPicture(void)
{
    while (zebWindowEvents(1) > 0) {
    }
    return zebLastError() != 0;
}

/* The linear colour of a display code such as 0xE76F51. */
static inline void colorOf(unsigned long code, float* color)
{
    int i;
    for (i = 0; i < 3; ++i) color[i] = powf((float)(code >> (16 - 8 * i) & 255) / 255, 2.2f);
}

/* Makes it the surface colour. */
static inline void paint(unsigned long code)
{
    float color[3];
    colorOf(code, color);
    zebColor(color);
}

/* Makes a plastic of so much diffuse and specular reflection the surface. */
static inline void usePlastic(float kd, float ks, float roughness)
{
    zebSurface(zebQuark("plastic"), zebQuark("kd"), &kd, zebQuark("ks"), &ks, zebQuark("roughness"),
               &roughness, 0);
}

static inline void addAmbient(float intensity, unsigned long code)
{
    float color[3];
    colorOf(code, color);
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &intensity, zebQuark("color"), color,
                   0);
}

/* Parallel light that shines along a direction. */
static inline void addDistant(float intensity, unsigned long code, float x, float y, float z)
{
    float color[3], from[3] = {0, 0, 0}, to[3];
    to[0] = x, to[1] = y, to[2] = z;
    colorOf(code, color);
    zebLightSource(zebQuark("distant"), zebQuark("intensity"), &intensity, zebQuark("color"), color,
                   zebQuark("from"), from, zebQuark("to"), to, 0);
}

/* A lamp; what it gives falls off with the square of the distance. */
static inline void addOmni(float intensity, unsigned long code, float x, float y, float z)
{
    float color[3], from[3];
    from[0] = x, from[1] = y, from[2] = z;
    colorOf(code, color);
    zebLightSource(zebQuark("omni"), zebQuark("intensity"), &intensity, zebQuark("color"), color,
                   zebQuark("from"), from, 0);
}

/* A point of a surface at u, v, both 0 to 1; size holds what the shape needs. */
typedef void (*SurfaceFunction)(const float* size, float u, float v, float* point);

/* The surface's normal, dP/du x dP/dv, by differences; v keeps off the poles. */
static inline void surfaceNormal(SurfaceFunction f, const float* size, float u, float v,
                                 float* normal)
{
    const float e = 1e-3f, w = fminf(fmaxf(v, 2 * e), 1 - 2 * e);
    float a[3], b[3], c[3], d[3], length;
    int i;
    f(size, u - e, w, a), f(size, u + e, w, b);
    f(size, u, w - e, c), f(size, u, w + e, d);
    for (i = 0; i < 3; ++i) b[i] -= a[i], d[i] -= c[i];
    for (i = 0; i < 3; ++i)
        normal[i] = b[(i + 1) % 3] * d[(i + 2) % 3] - b[(i + 2) % 3] * d[(i + 1) % 3];
    length = sqrtf(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
    for (i = 0; i < 3; ++i) normal[i] /= length;
}

/* Adds a surface as a mesh of nu x nv quadrangles, each cut in two. */
static inline void addSurface(SurfaceFunction f, const float* size, long nu, long nv)
{
    const size_t count = (size_t)((nu + 1) * (nv + 1)), faces = (size_t)(2 * nu * nv);
    float* points = malloc(count * 3 * sizeof *points);
    float* normals = malloc(count * 3 * sizeof *normals);
    long *sizes = malloc(faces * sizeof *sizes), *corners = malloc(faces * 3 * sizeof *corners);
    if (points && normals && sizes && corners) {
        const unsigned short tokens[2] = {zebQuark("point"), zebQuark("normal")};
        void* values[2];
        long i, j, *corner = corners;
        values[0] = points, values[1] = normals;
        for (j = 0; j <= nv; ++j) {
            for (i = 0; i <= nu; ++i) {
                const size_t at = (size_t)(3 * (j * (nu + 1) + i));
                const float u = (float)i / (float)nu, v = (float)j / (float)nv;
                f(size, u, v, points + at);
                surfaceNormal(f, size, u, v, normals + at);
            }
        }
        for (j = 0; j < nv; ++j) {
            for (i = 0; i < nu; ++i) {
                const long a = j * (nu + 1) + i, b = a + 1, c = a + nu + 1, d = c + 1;
                *corner++ = a, *corner++ = b, *corner++ = d;
                *corner++ = a, *corner++ = d, *corner++ = c;
            }
        }
        for (i = 0; i < (long)faces; ++i) sizes[i] = 3;
        zebPolygonMeshV((long)faces, sizes, corners, 2, tokens, values);
    }
    free(points), free(normals), free(sizes), free(corners);
}

static inline void spherePoint(const float* size, float u, float v, float* point)
{
    const float a = 2 * SHAPES_PI * u, b = SHAPES_PI * (v - 0.5f);
    point[0] = size[0] * cosf(b) * cosf(a);
    point[1] = size[0] * cosf(b) * sinf(a);
    point[2] = size[0] * sinf(b);
}

/* A sphere about the origin. */
static inline void addSphere(float radius) { addSurface(spherePoint, &radius, 48, 24); }

static inline void torusPoint(const float* size, float u, float v, float* point)
{
    const float a = 2 * SHAPES_PI * u, b = 2 * SHAPES_PI * v;
    point[0] = (size[0] + size[1] * cosf(b)) * sinf(a);
    point[1] = size[1] * sinf(b);
    point[2] = (size[0] + size[1] * cosf(b)) * cosf(a);
}

/* A ring about the y axis. */
static inline void addTorus(float major, float minor)
{
    float size[2];
    size[0] = major, size[1] = minor;
    addSurface(torusPoint, size, 72, 24);
}

/* A tube around a trefoil knot that goes round the y axis. */
static inline void knotPoint(const float* size, float u, float v, float* point)
{
    const float t = 2 * SHAPES_PI * u, b = 2 * SHAPES_PI * v;
    const float ring = 1 + 0.45f * cosf(3 * t), slope = -1.35f * sinf(3 * t);
    /* the curve's tangent, its direction across that and away from the axis, and the third */
    const float tx = slope * cosf(2 * t) - 2 * ring * sinf(2 * t), ty = 1.05f * cosf(3 * t);
    const float tz = slope * sinf(2 * t) + 2 * ring * cosf(2 * t);
    const float tt = tx * tx + ty * ty + tz * tz;
    const float nt = (tx * cosf(2 * t) + tz * sinf(2 * t)) / tt;
    const float nx = cosf(2 * t) - nt * tx, ny = -nt * ty, nz = sinf(2 * t) - nt * tz;
    const float nn = sqrtf(nx * nx + ny * ny + nz * nz), n = size[1] * cosf(b) / nn;
    const float m = size[1] * sinf(b) / (nn * sqrtf(tt));
    point[0] = size[0] * ring * cosf(2 * t) + n * nx + m * (ny * tz - nz * ty);
    point[1] = size[0] * 0.35f * sinf(3 * t) + n * ny + m * (nz * tx - nx * tz);
    point[2] = size[0] * ring * sinf(2 * t) + n * nz + m * (nx * ty - ny * tx);
}

static inline void addKnot(float radius, float thickness)
{
    float size[2];
    size[0] = radius, size[1] = thickness;
    addSurface(knotPoint, size, 240, 20);
}

static inline void conePoint(const float* size, float u, float v, float* point)
{
    const float a = -2 * SHAPES_PI * u, r = size[0] + (size[1] - size[0]) * v;
    point[0] = r * cosf(a);
    point[1] = size[2] * v;
    point[2] = r * sinf(a);
}

/* A cone's side about the y axis, from one radius at y = 0 to another at a height. */
static inline void addCone(float bottom, float top, float height)
{
    float size[3];
    size[0] = bottom, size[1] = top, size[2] = height;
    addSurface(conePoint, size, 48, 1);
}

/* A box with flat sides. */
static inline void addBox(float x0, float x1, float y0, float y1, float z0, float z1)
{
    static const long sizes[6] = {4, 4, 4, 4, 4, 4};
    static const long corners[24] = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4,
                                     2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    const float x[2] = {x0, x1}, y[2] = {y0, y1}, z[2] = {z0, z1};
    float points[8][3];
    int i;
    for (i = 0; i < 8; ++i)
        points[i][0] = x[i & 1], points[i][1] = y[i >> 1 & 1], points[i][2] = z[i >> 2];
    zebPolygonMesh(6, sizes, corners, zebQuark("point"), points, 0);
}

/* The height 0 from the front to size[2], then a quarter turn of radius size[1], then a wall. */
static inline void backdropPoint(const float* size, float u, float v, float* point)
{
    const float r = size[1], turn = 0.5f * SHAPES_PI * fminf(fmaxf((v - 0.4f) / 0.3f, 0), 1);
    point[0] = size[0] * (2 * u - 1);
    point[1] = r * (1 - cosf(turn)) + fmaxf(v - 0.7f, 0) / 0.3f * size[0];
    point[2] = size[2] + r * sinf(turn) + fminf(v - 0.4f, 0) / 0.4f * size[0];
}

/* A studio's floor that bends up into a wall, so that no horizon shows. */
static inline void addBackdrop(float width, float radius, float z)
{
    float size[3];
    size[0] = width, size[1] = radius, size[2] = z;
    addSurface(backdropPoint, size, 8, 60);
}

/* The renderer casts no shadows; a dark disk that grows transparent towards its edge grounds what
 * stands on the floor. */
static inline void addShadow(float x, float z, float radius, float strength)
{
    enum { kSides = 32, kRings = 8 };
    float points[kRings + 1][kSides][3], opacity[kRings + 1][kSides][3];
    const float black[3] = {0, 0, 0};
    long sizes[kRings * kSides], corners[kRings * kSides * 4], *corner = corners;
    int i, j, k;
    for (j = 0; j <= kRings; ++j) {
        const float r = (float)j / kRings, left = (1 - r * r) * (1 - r * r) * strength;
        for (i = 0; i < kSides; ++i) {
            const float a = 2 * SHAPES_PI * (float)i / kSides;
            points[j][i][0] = x + radius * r * cosf(a);
            points[j][i][1] = 0.004f;
            points[j][i][2] = z + radius * r * sinf(a);
            for (k = 0; k < 3; ++k) opacity[j][i][k] = left;
        }
    }
    for (j = 0; j < kRings; ++j) {
        for (i = 0; i < kSides; ++i) {
            const int next = (i + 1) % kSides;
            sizes[j * kSides + i] = 4;
            *corner++ = j * kSides + i, *corner++ = (j + 1) * kSides + i;
            *corner++ = (j + 1) * kSides + next, *corner++ = j * kSides + next;
        }
    }
    zebAttributePush();
    zebSurface(zebQuark("constant"), 0);
    zebColor(black);
    zebPolygonMesh(kRings * kSides, sizes, corners, zebQuark("point"), points, zebQuark("opacity"),
                   opacity, 0);
    zebAttributePop();
}

#endif
