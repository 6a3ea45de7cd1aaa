// The picture in a file.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "display/display.h"

namespace zeb
{

// A whole picture: its rows of words, null where none came.
struct Picture {
    PixelFormat format;
    long width = 0, height = 0;
    std::vector<std::unique_ptr<std::uint32_t[]>> rows;
};

// Keeps the rows, and writes them when the picture is whole: to a temporary name first, so that
// the file is either whole or absent. What can't be written is reported, and rendering goes on.
class FileDisplay : public Display
{
public:
    FileDisplay(unsigned short kind, const PixelFormat& format)
        : fKind(kind), fPicture{format, 0, 0, {}}
    {
    }
    ~FileDisplay() override { discard(); }

    void open(const char* name, long xres, long yres, long xorigin, long yorigin) override;
    void span(long x0, long x1, long y, const std::uint32_t* words) override;
    void flush(long y0, long y1) override;
    void close() override;

private:
    using Writer = bool (*)(const Picture&, std::FILE*);

    bool chooseWriter();
    bool openFile();
    void warnOfLoss() const;
    void discard();

    unsigned short fKind;
    Picture fPicture;
    Writer fWriter = nullptr;
    std::string fName;
    std::filesystem::path fPath, fTemporary;  // fTemporary is empty where fPath itself is written
    std::FILE* fFile = nullptr;
    long fFinalRows = 0;
};

// PNG: 8 or 16 bits, colour divided by alpha. False if the file could not be written.
bool writePng(const Picture& picture, std::FILE* file);
// PNG of at most 256 colours, as a palette screen would show the picture.
bool writeIndexedPng(const Picture& picture, std::FILE* file);
// OpenEXR: float channels R, G, B, A, Z.
bool writeExr(const Picture& picture, std::FILE* file);

}  // namespace zeb
