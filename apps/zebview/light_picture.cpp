#include "light_picture.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "failure.h"
#include "radiance_file.h"

namespace zebview
{

namespace
{

constexpr long kMaxSide = 32768;
constexpr long kMaxPixels = 1L << 27;
constexpr long kRowsAtOnce = 64;
// Suns of half floats may be infinite.
constexpr float kBrightest = 65504;

// Names of what holds red, green and blue.
std::array<std::string, 3> channelNames(const Imf::Header& header)
{
    const Imf::ChannelList& channels = header.channels();
    if (channels.findChannel("R") && channels.findChannel("G") && channels.findChannel("B")) {
        return {"R", "G", "B"};
    }
    if (channels.findChannel("Y") && !channels.findChannel("RY")) return {"Y", "Y", "Y"};
    throw Failure("cannot be read: it has no channels R, G and B");
}

void readRows(Imf::InputFile& file, LightPicture& picture)
{
    const Imath::Box2i window = file.header().dataWindow();
    const auto names = channelNames(file.header());
    const auto width = static_cast<std::size_t>(picture.width);
    std::vector<float> plane;
    for (long y = 0; y < picture.height; y += kRowsAtOnce) {
        const long rows = std::min(kRowsAtOnce, picture.height - y);
        const std::size_t count = width * static_cast<std::size_t>(rows), start = 3 * width * y;
        picture.light.resize(start + 3 * count);
        plane.resize(count);
        for (std::size_t c = 0; c < 3; ++c) {
            const long first = window.min.y + y;
            float* const origin = plane.data() - window.min.x - first * picture.width;
            Imf::FrameBuffer buffer;
            buffer.insert(names[c], Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(origin),
                                               sizeof(float), sizeof(float) * width));
            file.setFrameBuffer(buffer);
            file.readPixels(static_cast<int>(first), static_cast<int>(first + rows - 1));
            for (std::size_t i = 0; i < count; ++i) {
                const float value = plane[i];
                picture.light[start + 3 * i + c] = value > 0 ? std::min(value, kBrightest) : 0;
            }
        }
    }
}

LightPicture readOpenExr(const std::string& name)
{
    try {
        Imf::Header::setMaxImageSize(kMaxSide, kMaxSide);
        Imf::InputFile file(name.c_str());
        const Imath::Box2i window = file.header().dataWindow();
        LightPicture picture;
        picture.width = long{window.max.x} - window.min.x + 1;
        picture.height = long{window.max.y} - window.min.y + 1;
        if (picture.width * picture.height > kMaxPixels) {
            throw Failure("cannot be read: it is too large");
        }
        readRows(file, picture);
        return picture;
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& wrong) {
        std::string why = wrong.what();
        std::replace(why.begin(), why.end(), '\n', ' ');
        throw Failure("cannot be read: " + why);
    }
}

std::string readAll(const std::string& name)
{
    if (!std::filesystem::exists(name)) throw Failure("there is no such file");
    if (!std::filesystem::is_regular_file(name)) throw Failure("it is not a file");
    std::ostringstream bytes;
    bytes << std::ifstream(name, std::ios::binary).rdbuf();
    return bytes.str();
}

}  // namespace

LightPicture readLightPicture(const std::string& name)
{
    try {
        const std::string bytes = readAll(name);
        if (bytes.starts_with("#?")) return readRadiance(bytes);
        if (bytes.starts_with("v/1\x01")) return readOpenExr(name);
        throw Failure("it is neither a Radiance nor an OpenEXR file");
    } catch (const Failure& failure) {
        throw Failure(name + ": " + failure.what());
    }
}

}  // namespace zebview
