// An OpenEXR file read back.
#pragma once

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>

#include <map>
#include <string>
#include <vector>

namespace zebtest
{

class ExrImage
{
public:
    explicit ExrImage(const std::string& name)
    {
        Imf::InputFile file(name.c_str());
        const auto window = file.header().dataWindow();
        width = window.max.x + 1;
        height = window.max.y + 1;
        Imf::FrameBuffer buffer;
        const Imf::ChannelList& list = file.header().channels();
        for (auto channel = list.begin(); channel != list.end(); ++channel) {
            names += channel.name();
            auto& plane = fPlanes[channel.name()];
            plane.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
            buffer.insert(
                channel.name(),
                Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(plane.data()), sizeof(float),
                           sizeof(float) * static_cast<std::size_t>(width)));
        }
        file.setFrameBuffer(buffer);
        file.readPixels(window.min.y, window.max.y);
    }

    float at(const std::string& channel, int x, int y) const
    {
        return fPlanes.at(channel)[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                   static_cast<std::size_t>(x)];
    }

    int width = 0, height = 0;
    std::string names;  // of the channels, in the alphabet's order

private:
    std::map<std::string, std::vector<float>> fPlanes;
};

}  // namespace zebtest
