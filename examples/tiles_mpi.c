/* A picture that many processes render together, on as many machines: rank 0 hands out tiles, one
 * by one, and writes the picture when all are there; the others render them. Tiles end on borders
 * of buckets, so that the picture is that of a single process, to the last bit. What is instanced
 * is prepared once by each rank, whatever number of tiles it renders.
 *
 *     mpirun -n 5 example_tiles_mpi picture.ppm [samples [width]]
 *
 * If a rank dies, mpirun ends the others and says so: there is no picture then. */
#include <mpi.h>
#include <stdio.h>
#include <string.h>

#include "shapes.h"

/* Tiles are of 5 x 5 buckets, whose sides zebTune decides. */
enum { kBucket = 12, kTile = 5 * kBucket };

enum { kAsk, kPixels, kGive }; /* what messages are about */

typedef struct Size {
    long width, height;
} Size;

/* Pixels x0 ... x1 - 1 of rows y0 ... y1 - 1, and three bytes for each. */
typedef struct Tile {
    long x0, x1, y0, y1;
    unsigned char* pixels;
} Tile;

static void check(int holds, const char* message)
{
    if (holds) return;
    fprintf(stderr, "tiles_mpi: %s\n", message);
    MPI_Abort(MPI_COMM_WORLD, 1);
}

static long tilesAlong(long pixels) { return (pixels + kTile - 1) / kTile; }

static int tileCount(Size size) { return (int)(tilesAlong(size.width) * tilesAlong(size.height)); }

static Tile tileOf(int number, Size size)
{
    const long across = tilesAlong(size.width);
    Tile tile = {0, 0, 0, 0, NULL};
    tile.x0 = number % across * kTile, tile.y0 = number / across * kTile;
    tile.x1 = tile.x0 + kTile < size.width ? tile.x0 + kTile : size.width;
    tile.y1 = tile.y0 + kTile < size.height ? tile.y0 + kTile : size.height;
    return tile;
}

static int byteCount(const Tile* tile)
{
    return (int)(3 * (tile->x1 - tile->x0) * (tile->y1 - tile->y0));
}

static void keepSpan(void* data, long x0, long x1, long y, const unsigned int* words)
{
    const Tile* tile = data;
    unsigned char* to = tile->pixels + 3 * ((y - tile->y0) * (tile->x1 - tile->x0) + x0 - tile->x0);
    long i;
    for (i = 0; i < 3 * (x1 - x0 + 1); ++i) to[i] = (unsigned char)words[i];
}

/* Where a crop window has to begin or end for the pixel at a border to be its first, or the first
 * one past it: half a pixel earlier, whatever rounding does. */
static float borderAt(long border, long resolution)
{
    if (border == 0 || border == resolution) return border == 0 ? 0.0f : 1.0f;
    return ((float)border - 0.5f) / (float)resolution;
}

/* Opens the frame that all tiles are rendered in; what is made once is returned. */
static const void* beginFrame(int argc, char** argv, Size size)
{
    const void* knot;
    setUpPicture(argc, argv, size.width, size.height);
    zebFrameBegin();
    zebViewPerspective(30);
    zebTranslate(0, -0.7f, 19);
    zebRotate(-38, 1, 0, 0);
    knot = zebObjectBegin();
    addKnot(1, 0.3f);
    zebObjectEnd();
    return knot;
}

static void render(const void* knot, Tile* tile, Size size)
{
    static const unsigned long colors[5] = {0x264653, 0x2A9D8F, 0xE9C46A, 0xF4A261, 0xE76F51};
    ZebDisplay device = {NULL, NULL, keepSpan, NULL, NULL};
    int i;
    device.data = tile;
    zebCustomDisplay(&device);
    zebImageCrop(borderAt(tile->x0, size.width), borderAt(tile->x1, size.width),
                 borderAt(tile->y0, size.height), borderAt(tile->y1, size.height));
    zebSceneBegin();
    addAmbient(0.25f, 0xFFFFFF);
    addDistant(0.9f, 0xFFF0DC, 0.9f, -1.2f, 0.5f);
    addDistant(0.3f, 0xBBD0FF, -1, -0.5f, -0.4f);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEADFCF);
    addBackdrop(60, 6, 30);
    usePlastic(0.8f, 0.4f, 0.07f);
    for (i = 0; i < 15; ++i) {
        zebAttributePush();
        paint(colors[(i + i / 5 * 2) % 5]);
        zebTranslate(3.1f * (float)(i % 5 - 2), 1, 3.3f * (float)(i / 5 - 1));
        zebRotate(47 * (float)i, 0.3f, 1, 0.2f);
        zebObjectCall(knot);
        zebAttributePop();
    }
    zebSceneEnd();
    check(zebLastError() == 0, "a tile could not be rendered");
}

/* Asks rank 0 for tiles until there are none. */
static void serve(const void* knot, Size size)
{
    static unsigned char pixels[3 * kTile * kTile];
    int number = -1;
    for (;;) {
        Tile tile;
        MPI_Send(&number, 1, MPI_INT, 0, kAsk, MPI_COMM_WORLD);
        if (number >= 0) {
            tile = tileOf(number, size);
            MPI_Send(pixels, byteCount(&tile), MPI_BYTE, 0, kPixels, MPI_COMM_WORLD);
        }
        MPI_Recv(&number, 1, MPI_INT, 0, kGive, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
        if (number < 0) return;
        tile = tileOf(number, size);
        tile.pixels = pixels;
        render(knot, &tile, size);
    }
}

/* Takes what a rank has rendered into the picture. */
static void collect(int rank, int number, Size size, unsigned char* picture)
{
    static unsigned char pixels[3 * kTile * kTile];
    const Tile tile = tileOf(number, size);
    const size_t row = (size_t)(3 * (tile.x1 - tile.x0));
    const unsigned char* from = pixels;
    long y;
    MPI_Recv(pixels, byteCount(&tile), MPI_BYTE, rank, kPixels, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
    for (y = tile.y0; y < tile.y1; ++y, from += row) {
        memcpy(picture + 3 * (y * size.width + tile.x0), from, row);
    }
}

static void handOut(int ranks, Size size, unsigned char* picture)
{
    int next = 0, serving = ranks - 1;
    while (serving > 0) {
        MPI_Status status;
        int number;
        MPI_Recv(&number, 1, MPI_INT, MPI_ANY_SOURCE, kAsk, MPI_COMM_WORLD, &status);
        if (number >= 0) collect(status.MPI_SOURCE, number, size, picture);
        number = next < tileCount(size) ? next++ : -1;
        if (number < 0) --serving;
        MPI_Send(&number, 1, MPI_INT, status.MPI_SOURCE, kGive, MPI_COMM_WORLD);
    }
}

/* Under another name first: a file with the picture's name is whole. */
static void writePicture(const char* path, Size size, const unsigned char* picture)
{
    const size_t bytes = (size_t)(3 * size.width * size.height);
    char part[4096];
    FILE* file;
    snprintf(part, sizeof part, "%s.part", path);
    file = fopen(part, "wb");
    check(file != NULL, "the picture can't be written");
    fprintf(file, "P6\n%ld %ld\n255\n", size.width, size.height);
    check(fwrite(picture, 1, bytes, file) == bytes && fclose(file) == 0 && rename(part, path) == 0,
          "the picture can't be written");
}

int main(int argc, char** argv)
{
    const char* path;
    const void* knot;
    int rank, ranks;
    Size size;
    MPI_Init(&argc, &argv);
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    MPI_Comm_size(MPI_COMM_WORLD, &ranks);
    path = argc > 1 ? argv[1] : "tiles_mpi.ppm";
    size.width = argc > 3 ? atol(argv[3]) : 800;
    size.height = size.width * 9 / 16;
    check(size.height > 0, "a picture needs some pixels");
    knot = beginFrame(argc, argv, size);
    if (rank > 0) {
        serve(knot, size);
    } else {
        unsigned char* picture = malloc((size_t)(3 * size.width * size.height));
        check(picture != NULL, "no memory for the picture");
        if (ranks > 1) {
            handOut(ranks, size, picture);
        } else {
            Tile whole = {0, 0, 0, 0, NULL};
            whole.x1 = size.width, whole.y1 = size.height, whole.pixels = picture;
            render(knot, &whole, size);
        }
        writePicture(path, size, picture);
        free(picture);
    }
    zebFrameEnd();
    MPI_Finalize();
    return 0;
}
