#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "display/file_display.h"

namespace zeb
{

namespace
{

// Writes to a file that is open already.
class FileStream : public OPENEXR_IMF_NAMESPACE::OStream
{
public:
    explicit FileStream(std::FILE* file) : OStream("picture"), fFile(file) {}
    void write(const char* bytes, int n) override
    {
        if (std::fwrite(bytes, 1, static_cast<std::size_t>(n), fFile) !=
            static_cast<std::size_t>(n)) {
            throw std::runtime_error("write failed");
        }
    }
    std::uint64_t tellp() override { return static_cast<std::uint64_t>(std::ftell(fFile)); }
    void seekp(std::uint64_t position) override
    {
        if (std::fseek(fFile, static_cast<long>(position), SEEK_SET) != 0) {
            throw std::runtime_error("seek failed");
        }
    }

private:
    std::FILE* fFile;
};

float decode(std::uint32_t word, const Quantizer& quantizer)
{
    if (quantizer.one >= 1) {
        return static_cast<float>(static_cast<double>(static_cast<std::int32_t>(word)) /
                                  static_cast<double>(quantizer.one));
    }
    float value;
    std::memcpy(&value, &word, sizeof value);
    return value;
}

}  // namespace

bool writeExr(const Picture& picture, std::FILE* file)
try {
    namespace imf = OPENEXR_IMF_NAMESPACE;
    const PixelFormat& format = picture.format;
    std::vector<const char*> names;
    if (format.rgb) names = {"R", "G", "B"};
    if (format.alpha) names.push_back("A");
    if (format.depth) names.push_back("Z");

    std::vector<float> row(static_cast<std::size_t>(picture.width) * names.size());
    imf::Header header(static_cast<int>(picture.width), static_cast<int>(picture.height));
    imf::FrameBuffer buffer;
    for (std::size_t c = 0; c < names.size(); ++c) {
        header.channels().insert(names[c], imf::Channel(imf::FLOAT));
        // No stride between rows: each is written from the same place.
        buffer.insert(names[c], imf::Slice(imf::FLOAT, reinterpret_cast<char*>(&row[c]),
                                           sizeof(float) * names.size(), 0));
    }
    FileStream stream(file);
    imf::OutputFile output(stream, header);
    output.setFrameBuffer(buffer);
    for (long y = 0; y < picture.height; ++y) {
        const std::uint32_t* words = picture.rows[static_cast<std::size_t>(y)].get();
        for (std::size_t k = 0; k < row.size(); ++k) {
            const bool depth = format.depth && k % names.size() + 1 == names.size();
            row[k] = words ? decode(words[k], depth ? format.depthQuantizer : format.color) : 0;
        }
        output.writePixels(1);
    }
    return true;
} catch (const std::exception&) {
    return false;
}

}  // namespace zeb
