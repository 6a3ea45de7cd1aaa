// Pictures that shading looks up.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace zeb
{

// With ever smaller copies of itself, each half as wide and high as the one before: averages of
// what they stand for (L. Williams, 1983).
class Image
{
public:
    // What lies beyond its edges.
    enum Wrap : short { kClamp = 0xF00, kRepeat, kMirror, kBlack };

    // Row by row from the top, the channels of a pixel side by side. Null, and a report, if that is
    // no image.
    static std::shared_ptr<const Image> make(long width, long height, long channels,
                                             const float* pixels, short wrap);
    // Handles of those that are kept until the host lets them go. On any thread.
    static const void* keep(std::shared_ptr<const Image> image);
    static bool release(const void* handle);
    static std::shared_ptr<const Image> find(const void* handle);

    long width() const { return fLevels[0].width; }
    long height() const { return fLevels[0].height; }
    long channels() const { return fChannels; }
    short wrap() const { return fWrap; }

    // At (s, t), where the image covers 0 ... 1 by 0 ... 1 and t runs downwards, averaged over
    // about so many of its pixels each way; all channels.
    void look(float s, float t, float pixels, float* channels) const;

private:
    struct Level {
        long width, height;
        std::vector<float> pixels;
    };

    Image() = default;
    void halve();
    std::int64_t wrapped(std::int64_t i, std::int64_t size) const;
    void bilinear(const Level& level, double s, double t, float weight, float* channels) const;

    long fChannels = 0;
    short fWrap = kClamp;
    std::vector<Level> fLevels;
};

}  // namespace zeb
