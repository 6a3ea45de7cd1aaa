/* A picture in the host's memory, and the part of a device that fills it. */
#ifndef IMAGE_H
#define IMAGE_H

#include <stdlib.h>

/* Three bytes a pixel, rows from the top. */
typedef struct Image {
    const char* path; /* where it shall go; the device's owner sets it */
    unsigned char* pixels;
    long width, height;
} Image;

static inline void openImage(void* data, const char* name, long width, long height, long x, long y)
{
    Image* image = data;
    (void)name, (void)x, (void)y;
    image->width = width, image->height = height;
    image->pixels = calloc((size_t)(width * height), 3);
}

static inline void keepSpan(void* data, long x0, long x1, long y, const unsigned int* words)
{
    Image* image = data;
    unsigned char* to = image->pixels + 3 * (y * image->width + x0);
    long i;
    for (i = 0; i < 3 * (x1 - x0 + 1); ++i) to[i] = (unsigned char)words[i];
}

#endif
