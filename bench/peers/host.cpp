#include "host.h"

#include <png.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <stdexcept>

namespace zebpeers
{

void writePng(const Picture& picture, const std::string& path)
{
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = image.height = kSize;
    image.format = PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&image, path.c_str(), 0, picture.bytes.data(), 0, nullptr)) {
        throw std::runtime_error(path + ": " + image.message);
    }
}

bool commandLine(int argc, char** argv, Scene& scene, std::string& path)
{
    if (argc != 3) {
        for (const std::string& name : sceneNames()) std::puts(name.c_str());
        return false;
    }
    scene = makeScene(argv[1]);
    path = argv[2];
    return true;
}

int runHost(int argc, char** argv, const Prepare& prepare)
{
    Scene scene;
    std::string path;
    if (!commandLine(argc, argv, scene, path)) return argc == 1 ? 0 : 2;
    const auto render = prepare(scene);
    Picture picture;
    render(picture);
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const std::clock_t begin = std::clock();
    render(picture);
    const double processor = 1e3 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    const std::chrono::duration<double, std::milli> clock = Clock::now() - start;
    std::printf("%.1f %.1f\n", processor, clock.count());
    writePng(picture, path);
    return 0;
}

}  // namespace zebpeers
