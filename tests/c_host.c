/* Calls the interface the way a C host does: plain and V forms, decorated names, tokens of every
   integer width. What it counts is checked by c_host_test.cpp. */
#include <zebcore/zebcore.h>

int c_host_spans;
static void count_span(void *data, long x0, long x1, long y, const unsigned int *words)
{
    (void)data, (void)x0, (void)x1, (void)y, (void)words;
    ++c_host_spans;
}

long c_host_decorated(void)
{
    float times[2] = {0, 1};
    ZebDisplay device = {0};
    long buckets = 0;
    device.span = count_span;
    c_host_spans = 0;
    zebReset();
    zebErrorPrinter(0);
    zebRasterViewport(0, 24, 0, 12);
    zebCustomDisplay(&device);
    zebSceneBegin();
    zebBoundDisplacement(0.5f);
    zebMotionBegin(2, 0.0, 1.0);
    zebTranslate(0, 0, 1);
    zebMotionEnd();
    zebMotionBeginV(2, times);
    zebMotionEnd();
    zebRenderInit();
    if (zebProgress() != 50) return -1;
    while (zebRenderBucket()) ++buckets;
    zebSceneEnd();
    zebReset();
    return buckets;
}

/* The pairs of a variable list behind fixed arguments of every type: long, float, short, pointer. */
void c_host_lists(void)
{
    float points[12] = {-1, -1, 0.5f, 1, -1, 0.5f, 1, 1, 0.5f, -1, 1, 0.5f};
    float color[12] = {1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0};
    /* Nearer: a green and a white strip at two of the edges, and a blue sphere about the origin. */
    float upper[12] = {-1, 0.5f, 0.25f, 1, 0.5f, 0.25f, -1, 1, 0.25f, 1, 1, 0.25f};
    float lower[12] = {-1, -1, 0.25f, 1, -1, 0.25f, -1, -0.5f, 0.25f, 1, -0.5f, 0.25f};
    float green[12] = {0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0};
    float blue[12] = {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1};
    float intensity = 2;
    const long sizes[1] = {4}, loops[1] = {1}, indices[4] = {0, 1, 2, 3};
    unsigned short point = zebQuark("point");
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &intensity, 0);
    zebPolygon(4, point, points, zebQuark("color"), color, 0);
    zebGeneralPolygon(1, sizes, point, points, 0);
    zebPolygonMesh(1, sizes, indices, (int)point, points, 0x10000);
    zebGeneralPolygonMesh(1, loops, sizes, indices, point, points, 0);
    zebSphere(0.5f, -0.5f, 0.5f, 360, zebQuark("color"), blue, 0);
    zebPatch(ZEB_BILINEAR, point, upper, zebQuark("color"), green, 0);
    zebPatchMesh(ZEB_BILINEAR, 2, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, point, lower, 0);
}
