#include "display/file_display.h"

#include <algorithm>

#include "display/file_path.h"
#include "util/report.h"

namespace zeb
{

namespace
{

// Rows are kept in memory until the picture is whole.
constexpr double kMaxWords = 4e9;

// The reason comes first: the end of a long message is cut.
void reportFile(const std::string& name, const char* why)
{
    error(kRange, kError, "cannot write (%s): \"%s\"", why, name.c_str());
}

}  // namespace

bool FileDisplay::chooseWriter()
{
#if ZEB_PNG
    if (fKind == kOutputPng) fWriter = writePng;
    if (fKind == kOutputIndexed) fWriter = writeIndexedPng;
#endif
#if ZEB_EXR
    if (fKind == kOutputExr) fWriter = writeExr;
#endif
    if (fWriter) return true;
    zeb::error(kUnsupported, kError, "this build has no writer for \"%s\"", fName.c_str());
    return false;
}

void FileDisplay::open(const char* name, long xres, long yres, long xorigin, long yorigin)
{
    Display::open(name, xres, yres, xorigin, yorigin);
    fName = name;
    const double words =
        static_cast<double>(xres) * static_cast<double>(yres) * fPicture.format.channels();
    if (words > kMaxWords) {
        zeb::error(kRange, kError, "a picture of %ld x %ld is too large for a file", xres, yres);
        return;
    }
    if (!chooseWriter()) return;
    if (!fFile.open(filePath(fName))) {
        reportFile(fName, fFile.why().c_str());
        return;
    }
    if (fFile.isInPlace()) {
        zeb::error(kRange, kWarning, "written in place, it cannot be replaced: \"%s\"", name);
    }
    fPicture.width = xres;
    fPicture.height = yres;
    fPicture.rows.resize(static_cast<std::size_t>(yres));
    warnOfLoss();
}

// What the format has no room for.
void FileDisplay::warnOfLoss() const
{
    const PixelFormat& format = fPicture.format;
    if (fKind == kOutputExr) {
        if (format.rgb && format.inverseGamma != 1) {
            zeb::error(kUnsupported, kWarning, "gamma is left out of \"%s\"", fName.c_str());
        }
        return;
    }
    const bool indexed = fKind == kOutputIndexed;
    if (indexed && format.alpha && format.rgb) {
        zeb::error(kUnsupported, kWarning, "alpha is left out of \"%s\"", fName.c_str());
    }
    if (format.depth && (format.rgb || (indexed && format.alpha))) {
        zeb::error(kUnsupported, kWarning, "depth is left out of \"%s\"", fName.c_str());
    }
}

void FileDisplay::span(long x0, long x1, long y, const std::uint32_t* words)
{
    if (!fFile.isOpen()) return;
    const auto channels = static_cast<std::size_t>(fPicture.format.channels());
    auto& row = fPicture.rows[static_cast<std::size_t>(y)];
    if (!row) {
        row.reset(new std::uint32_t[static_cast<std::size_t>(fPicture.width) * channels]());
    }
    std::copy(words, words + static_cast<std::size_t>(x1 - x0 + 1) * channels,
              row.get() + static_cast<std::size_t>(x0) * channels);
}

void FileDisplay::flush(long y0, long y1) { fFinalRows += y1 - y0 + 1; }

void FileDisplay::close()
{
    if (fFile.isOpen() && fFinalRows >= fPicture.height) {
        fWriter(fPicture, fFile);
        if (!fFile.finish()) reportFile(fName, fFile.why().c_str());
    }
    fFile.discard();
    fPicture.rows.clear();
}

}  // namespace zeb
