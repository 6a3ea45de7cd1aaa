// The picture in a file.
#pragma once

#include <string>
#include <vector>

#include "display/display.h"
#include "display/output_file.h"

namespace zeb
{

// A whole picture: its rows of words, null where none came.
struct Picture {
    PixelFormat format;
    long width = 0, height = 0;
    std::vector<std::unique_ptr<std::uint32_t[]>> rows;
};

// Keeps the rows, and writes them when the picture is whole. What can't be written is reported, and
// rendering goes on.
class FileDisplay : public Display
{
public:
    FileDisplay(unsigned short kind, const PixelFormat& format)
        : fKind(kind), fPicture{format, 0, 0, {}}
    {
    }

    void open(const char* name, long xres, long yres, long xorigin, long yorigin) override;
    bool isLinear() const override { return fKind == kOutputExr; }
    void span(long x0, long x1, long y, const std::uint32_t* words) override;
    void flush(long y0, long y1) override;
    void close() override;

private:
    using Writer = void (*)(const Picture&, OutputFile&);

    bool chooseWriter();
    void warnOfLoss() const;

    unsigned short fKind;
    Picture fPicture;
    Writer fWriter = nullptr;
    std::string fName;
    OutputFile fFile;
    long fFinalRows = 0;
};

// PNG: 8 or 16 bits, colour divided by alpha, as far as gamma has left it there. This writer, and
// the others, tell the file what fails.
void writePng(const Picture& picture, OutputFile& file);
// PNG of at most 256 colours, as a palette screen would show the picture.
void writeIndexedPng(const Picture& picture, OutputFile& file);
// OpenEXR: float channels R, G, B, A, Z; colour is light multiplied by alpha.
void writeExr(const Picture& picture, OutputFile& file);

}  // namespace zeb
