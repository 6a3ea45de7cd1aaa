// Renders with zebcore.
#include "host.h"
#include "zebcore_scene.h"

using namespace zebpeers;

namespace
{

void span(void* data, long x0, long x1, long y, const unsigned int* words)
{
    unsigned char* to = static_cast<Picture*>(data)->at(x0, y);
    for (long k = 0; k < 3 * (x1 - x0 + 1); ++k) to[k] = static_cast<unsigned char>(words[k]);
}

void render(const Scene& scene, const Lists& lists, Picture& picture)
{
    ZebDisplay device{};
    device.data = &picture;
    device.span = span;
    setUp(device, kSize);
    zebSceneBegin();
    addLights();
    addSurface();
    addShapes(scene, lists);
    zebSceneEnd();
}

}  // namespace

int main(int argc, char** argv)
{
    return runHost(argc, argv, [](const Scene& scene) {
        const Lists lists = makeLists(scene);
        return [&scene, lists](Picture& picture) { render(scene, lists, picture); };
    });
}
