#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "display/file_display.h"

namespace zeb
{

namespace
{

namespace imf = OPENEXR_IMF_NAMESPACE;

// Everything happens on the caller's thread, whatever the host has set for itself.
constexpr int kNoThreads = 0;

// One step of a stream at a file that is open already.
void expect(bool good)
{
    if (!good) throw std::runtime_error("the file failed");
}

class WrittenFile : public imf::OStream
{
public:
    explicit WrittenFile(OutputFile& file) : OStream("picture"), fFile(file) {}
    void write(const char* bytes, int n) override
    {
        expect(fFile.write(bytes, static_cast<std::size_t>(n)));
    }
    std::uint64_t tellp() override { return fFile.position(); }
    void seekp(std::uint64_t position) override { expect(fFile.seek(position)); }

private:
    OutputFile& fFile;
};

class ReadFile : public imf::IStream
{
public:
    explicit ReadFile(OutputFile& file) : IStream("picture"), fFile(file) {}
    bool read(char* bytes, int n) override
    {
        expect(fFile.read(bytes, static_cast<std::size_t>(n)));
        return true;
    }
    std::uint64_t tellg() override { return fFile.position(); }
    void seekg(std::uint64_t position) override { expect(fFile.seek(position)); }

private:
    OutputFile& fFile;
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

void writeRows(const Picture& picture, OutputFile& file)
{
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
    WrittenFile stream(file);
    imf::OutputFile output(stream, header, kNoThreads);
    output.setFrameBuffer(buffer);
    for (long y = 0; y < picture.height; ++y) {
        const std::uint32_t* words = picture.rows[static_cast<std::size_t>(y)].get();
        for (std::size_t k = 0; k < row.size(); ++k) {
            const bool depth = format.depth && k % names.size() + 1 == names.size();
            row[k] = words ? decode(words[k], depth ? format.depthQuantizer : format.color) : 0;
        }
        output.writePixels(1);
    }
}

}  // namespace

void writeExr(const Picture& picture, OutputFile& file)
try {
    writeRows(picture, file);
    // Some failures end in a picture that lacks rows.
    expect(file.seek(0));
    ReadFile stream(file);
    if (!imf::InputFile(stream, kNoThreads).isComplete()) file.fail("OpenEXR left rows out");
} catch (const std::exception& failure) {
    file.fail(failure.what());
}

}  // namespace zeb
