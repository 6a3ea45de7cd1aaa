/* A first picture: a twisted band of 72 slats. */
#include <math.h>
#include <zebcore/zebcore.h>

int main(int argc, char** argv)
{
    const float slat[4][3] = {
        {-0.6f, 0, -0.05f}, {0.6f, 0, -0.05f}, {0.6f, 0, 0.05f}, {-0.6f, 0, 0.05f}};
    const float to[3] = {1, -1, 1}, intensity = 1.2f, glow = 0.2f;
    float angle;

    zebErrorHandler(ZEB_ALL, ZEB_ERROR_PRINT); /* infos too: of misspelt names, for instance */
    zebQuirks(0);
    zebRasterViewport(0, 640, 0, 480);
    zebSampleUniform(4, 4);
    zebColorGamma(2.2f);
    zebOutputSamples(ZEB_SAMPLES_RGBA);
    zebOutputFile(ZEB_FILE_AUTO, argc > 1 ? argv[1] : "first.png");

    /* The camera: first how it sees, then where the world lies before it. */
    zebViewPerspective(30);
    zebTranslate(0, 0, 8.2f);
    zebRotate(-40, 1, 0, 0);
    zebSceneBegin();
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &glow, 0);
    zebLightSource(zebQuark("distant"), zebQuark("intensity"), &intensity, zebQuark("to"), to, 0);
    for (angle = 0; angle < 360; angle += 5) {
        const float turn = angle * 3.14159265f / 180;
        const float color[3] = {0.5f + 0.45f * cosf(turn), 0.3f, 0.5f - 0.4f * cosf(turn)};
        /* The transformation given last is applied first: twist, move out, turn round. */
        zebAttributePush();
        zebColor(color);
        zebRotate(angle, 0, 1, 0);
        zebTranslate(1.7f, 0, 0);
        zebRotate(1.5f * angle + 30, 0, 0, 1);
        zebPolygon(4, zebQuark("point"), slat, 0);
        zebAttributePop();
    }
    zebSceneEnd(); /* renders */
    return zebLastError() != 0;
}
