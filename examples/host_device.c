/* A display device of the host's own: the renderer hands the picture over in spans. This one keeps
 * it, prints a small version as text, and writes a portable pixmap when it is closed. */
#include <stdio.h>

#include "image.h"
#include "shapes.h"

static void closeImage(void* data)
{
    Image* image = data;
    FILE* file = fopen(image->path, "wb");
    long x, y;
    for (y = 8; y < image->height; y += 16) {
        for (x = 4; x < image->width; x += 8) {
            const unsigned char* p = image->pixels + 3 * (y * image->width + x);
            putchar(" .:-=+*#%@"[(2 * p[0] + 5 * p[1] + p[2]) * 10 / (8 * 256)]);
        }
        putchar('\n');
    }
    if (!file) return;
    fprintf(file, "P6\n%ld %ld\n255\n", image->width, image->height);
    fwrite(image->pixels, 3, (size_t)(image->width * image->height), file);
    fclose(file);
}

int main(int argc, char** argv)
{
    Image image = {NULL, NULL, 0, 0};
    ZebDisplay device = {NULL, openImage, keepSpan, NULL, closeImage};
    image.path = argc > 1 ? argv[1] : "host_device.ppm";
    setUpPicture(argc, argv, 640, 480);
    device.data = &image;
    zebCustomDisplay(&device);
    zebViewPerspective(32);
    zebTranslate(0, 0, 7);
    zebRotate(-72, 1, 0, 0);
    zebRotate(18, 0, 1, 0);
    zebSceneBegin();
    addAmbient(0.1f, 0xFFFFFF);
    addDistant(0.9f, 0xFFF0DC, 0.8f, -1, -0.9f);
    addDistant(0.25f, 0x8FB4FF, -1, 0.1f, 0.8f);
    paint(0xE76F51);
    addKnot(1.15f, 0.28f);
    zebSceneEnd();
    free(image.pixels);
    return endPicture();
}
