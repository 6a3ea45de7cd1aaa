/* Reports go to a handler of the host. This one keeps them: calls with bad arguments, in the wrong
 * place and with missing ones are refused and change nothing, and the picture shows one ball for
 * each report, coloured by its code. */
#include <stdio.h>

#include "shapes.h"

enum { kMost = 12 };

static long codes[kMost], count;

static void collect(long code, long severity, const char* message)
{
    if (count < kMost) codes[count++] = code;
    printf("code %2ld, severity %lX: %s\n", code, (unsigned long)severity,
           message ? message : "(no text)");
}

int main(int argc, char** argv)
{
    static const unsigned long colors[8] = {0x264653, 0x2A9D8F, 0x8AB17D, 0xE9C46A,
                                            0xF4A261, 0xE76F51, 0xB5838D, 0x6D6875};
    const float corners[3][3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    long i;
    zebCustomErrorHandler(ZEB_ALL, collect);
    beginPicture(argc, argv, "messages", 800, 450);
    zebPolygon(3, zebQuark("point"), corners, 0); /* no world to put it in */
    zebSceneEnd();                                /* none was begun */
    zebFilter(7);                                 /* no such filter */
    zebClip(5, 2);                                /* far before near */
    zebClip(0.1f, 1000);
    zebViewPerspective(24);
    zebTranslate(0, -0.75f, 12);
    zebRotate(-14, 1, 0, 0);
    zebSceneBegin();
    zebSampleUniform(1, 1);                       /* options are settled by now */
    zebPolygon(2, zebQuark("point"), corners, 0); /* two corners */
    zebPolygon(3, 0);                             /* no points */
    zebRotate(30, 0, 0, 0);                       /* no axis */
    zebLightSwitch(corners, 1);                   /* no light that was made */

    addAmbient(0.25f, 0xFFFFFF);
    addDistant(0.85f, 0xFFF4E6, 0.8f, -1.1f, 1);
    addDistant(0.3f, 0xBFD7FF, -1.5f, -0.5f, 0.6f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEAE4D9);
    addBackdrop(14, 3, 2.5f);
    zebSurface(zebQuark("plastic"), 0);
    for (i = 0; i < count; ++i) {
        const float x = ((float)i - 0.5f * (float)(count - 1)) * 0.92f;
        zebAttributePush();
        addShadow(x, 0, 0.75f, 0.6f);
        zebTranslate(x, 0.4f, 0);
        paint(colors[codes[i] % 8]);
        addSphere(0.4f);
        zebAttributePop();
    }
    zebSceneEnd();
    printf("%ld reports\n", count);
    endPicture();
    return count == 9 ? 0 : 1;
}
