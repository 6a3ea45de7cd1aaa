// A device that keeps the picture, for tests that look at pixels.
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "zebcore/zebcore.h"

namespace zebtest
{

class Picture
{
public:
    explicit Picture(int channels) : fChannels(channels) {}
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    // For pictures with another number of samples than the device was made for.
    void setChannels(int channels) { fChannels = channels; }

    int channels() const { return fChannels; }

    // Makes this the device of what follows. The object must live until the world's end.
    void attach()
    {
        ZebDisplay device;
        device.data = this;
        device.open = [](void* data, const char*, long xres, long yres, long, long) {
            auto& self = *static_cast<Picture*>(data);
            self.width = xres;
            self.height = yres;
            ++self.opened;
            self.spans = 0;
            self.flushes.clear();
            self.fWords.assign(static_cast<std::size_t>(xres * yres * self.fChannels), 0);
        };
        device.span = [](void* data, long x0, long x1, long y, const unsigned int* words) {
            auto& self = *static_cast<Picture*>(data);
            std::memcpy(&self.fWords[self.at(x0, y, 0)], words,
                        static_cast<std::size_t>((x1 - x0 + 1) * self.fChannels) * sizeof *words);
            ++self.spans;
        };
        device.flush = [](void* data, long y0, long y1) {
            static_cast<Picture*>(data)->flushes.emplace_back(y0, y1);
        };
        device.close = [](void* data) { ++static_cast<Picture*>(data)->closed; };
        zebCustomDisplay(&device);
    }
    // As attach(), with words that are the bits of floats.
    void attachFloat()
    {
        attach();
        zebColorQuantize(0, 0, 0);
        zebDepthQuantize(0, 0, 0);
    }

    std::uint32_t word(long x, long y, int channel) const { return fWords[at(x, y, channel)]; }
    float value(long x, long y, int channel) const
    {
        const std::uint32_t bits = word(x, y, channel);
        float v;
        std::memcpy(&v, &bits, sizeof v);
        return v;
    }
    const std::vector<std::uint32_t>& words() const { return fWords; }
    // The sum of a float channel over all pixels.
    double sum(int channel) const
    {
        double total = 0;
        for (long y = 0; y < height; ++y) {
            for (long x = 0; x < width; ++x) total += static_cast<double>(value(x, y, channel));
        }
        return total;
    }

    long width = 0, height = 0;
    int opened = 0, closed = 0;
    long spans = 0;
    std::vector<std::pair<long, long>> flushes;

private:
    std::size_t at(long x, long y, int channel) const
    {
        return static_cast<std::size_t>((y * width + x) * fChannels + channel);
    }

    int fChannels;
    std::vector<std::uint32_t> fWords;
};

}  // namespace zebtest
