/* A host in plain C, without a test framework: so that it can be built for targets that have none.
   It plays the calls of c_host.c and looks at the picture they give. */
#include <stdio.h>
#include <string.h>
#include <zebcore/zebcore.h>

long c_host_decorated(void);
void c_host_lists(void);

static float pixels[4 * 4 * 3];
static long reports;

static void keep(void *data, long x0, long x1, long y, const unsigned int *words)
{
    (void)data;
    memcpy(&pixels[(y * 4 + x0) * 3], words, (size_t)(x1 - x0 + 1) * 3 * sizeof *words);
}

static void count(long code, long severity, const char *message)
{
    (void)code, (void)severity, (void)message;
    ++reports;
}

static const float *pixel(long x, long y) { return &pixels[(y * 4 + x) * 3]; }

static int failures;
static void expect(int condition, const char *what)
{
    if (!condition) {
        ++failures;
        printf("failed: %s\n", what);
    }
}

int main(void)
{
    ZebDisplay device = {0};
    zebCustomErrorHandler(ZEB_ALL, count);
    expect(c_host_decorated() == 1, "functions under decorated names");

    device.span = keep;
    zebReset();
    zebRasterViewport(0, 4, 0, 4);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebCustomDisplay(&device);
    zebColorQuantize(0, 0, 0);
    zebImageWindow(-1, 1, -1, 1);
    zebViewIdentity();
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    c_host_lists();
    zebSceneEnd();
    expect(pixel(0, 1)[0] == 1 && pixel(0, 1)[2] == 0, "values behind long and pointer arguments");
    expect(pixel(0, 0)[0] == 0 && pixel(0, 0)[1] == 1, "values behind a short argument");
    expect(pixel(0, 3)[0] == 1 && pixel(0, 3)[2] == 1, "values behind several short arguments");
    expect(pixel(1, 1)[2] > 0.5f, "values behind a float argument");
    expect(reports == 0, "nothing is reported");
    expect(zebVersion() >= 100, "the version");
    zebReset();
    printf("%d failures, %u-bit pointers\n", failures, (unsigned)(8 * sizeof(void *)));
    return failures != 0;
}
