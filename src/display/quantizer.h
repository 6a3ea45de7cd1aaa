// Reduces a picture to at most 256 colours: median cut over a histogram of 5 bits a channel, then
// for every colour the nearest entry, through a table of cells with the entries near them.
// (P. Heckbert, "Color Image Quantization for Frame Buffer Display", 1982.)
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "display/color_image.h"

namespace zeb
{

inline constexpr int kHistogramBins = 32;  // a channel
inline constexpr int kMaxColors = 256;
inline constexpr std::uint32_t kEmptyBin = 0xFFFFFFFF;

// Pixels of each colour, and after map_colortable the palette index of each.
class Histogram
{
public:
    Histogram() : fBins(kHistogramBins * kHistogramBins * kHistogramBins) {}
    std::uint32_t& at(int r, int g, int b)
    {
        const int bin = (r * kHistogramBins + g) * kHistogramBins + b;
        return fBins[static_cast<std::size_t>(bin)];
    }
    std::uint32_t at(int r, int g, int b) const
    {
        return const_cast<Histogram*>(this)->at(r, g, b);
    }
    // The bin of a colour.
    std::uint32_t& of(ScreenColor color)
    {
        return at((color & 0xFF) >> 3, (color & 0xFFFF) >> 11, ((color >> 16) & 0xFF) >> 3);
    }
    std::uint32_t of(ScreenColor color) const { return const_cast<Histogram*>(this)->of(color); }

private:
    std::vector<std::uint32_t> fBins;
};

// A box of bins, bounds included; axes are red, green, blue.
struct Colorbox {
    Colorbox* next = nullptr;
    Colorbox* prev = nullptr;
    std::array<std::int16_t, 3> min{}, max{};
    std::int64_t total = 0;  // pixels inside
};

struct PaletteEntry {
    std::uint8_t red, green, blue;
    std::uint8_t flags = 4;  // the system may not merge the entry with another
};
using ColorMap = std::vector<PaletteEntry>;

// The boxes of a picture, split one by one.
class MedianCut
{
public:
    // One used box, which is not shrunk to a picture yet; all others are free.
    MedianCut();
    MedianCut(const MedianCut&) = delete;
    MedianCut& operator=(const MedianCut&) = delete;

    // Counts a picture's colours, and fits the box around them.
    void get_histogram(const ColorImage& image, Colorbox* box);
    // The used box of most pixels that can be split, null if none can; of equals the first.
    Colorbox* largest_box();
    // Cuts a box at the median of its longest axis. The lower part becomes the first used box, the
    // upper one stays in place.
    void splitbox(Colorbox* box);
    // Draws the bounds in to bins that are not empty.
    void shrinkbox(Colorbox* box) const;
    // Splits until no box is free or none can be split.
    void splitAll();
    // The centres of the used boxes.
    ColorMap colorMap() const;

    Colorbox* used() const { return fUsed; }
    Colorbox* free() const { return fFree; }
    Histogram& histogram() { return fHistogram; }

private:
    bool slabIsEmpty(const Colorbox& box, std::size_t axis, std::int16_t index) const;

    std::vector<Colorbox> fPool;
    Colorbox* fUsed;
    Colorbox* fFree;
    Histogram fHistogram;
};

// The palette entries near one of 4 x 4 x 4 cells of colour space, by ascending distance.
struct Colorcell {
    struct Candidate {
        std::uint16_t index;
        std::uint32_t distance;
    };
    std::vector<Candidate> candidates;
};

// The cell of an 8-bit colour, with distances measured from that colour.
//
// Differences and their squares are unsigned words of 16 bits: a negative difference wraps, it is
// not skipped. So distances are those to the colour itself, not to the nearest side of the cell,
// and an entry that agrees with the colour in a channel counts as 63 away there. Which entries are
// looked at depends on it, and so do pictures.
Colorcell create_colorcell(const ColorMap& map, int r, int g, int b);

// Replaces every count by the index of the palette entry nearest to the bin, or by kEmptyBin.
void map_colortable(Histogram& histogram, const ColorMap& map);

// A picture's palette, and the entry of each of its colours.
struct Palette {
    ColorMap map;
    Histogram bins;

    std::uint8_t index(ScreenColor color) const
    {
        return static_cast<std::uint8_t>(bins.of(color));
    }
};
Palette makePalette(const ColorImage& image);

}  // namespace zeb
