// Whole pictures: what must be true of any palette, and a second quantizer, written as plainly as
// can be, that has to come to the same.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "display/quantizer.h"

using namespace zeb;

namespace
{

using Rgb = std::array<int, 3>;

Rgb binOf(ScreenColor color)
{
    return {static_cast<int>(color & 255) / 8, static_cast<int>(color >> 8 & 255) / 8,
            static_cast<int>(color >> 16 & 255) / 8};
}

ScreenColor pack(unsigned r, unsigned g, unsigned b) { return r | g << 8 | b << 16; }

// The colour of the n-th bin, blue counting fastest, with low bits that no bin keeps.
ScreenColor binColor(unsigned n)
{
    return pack((n >> 10) * 8 + 3, (n >> 5 & 31) * 8 + 7, (n & 31) * 8);
}

ColorImage image(const std::vector<ScreenColor>& colors)
{
    ColorImage row(static_cast<long>(colors.size()), 1);
    row.pixels = colors;
    return row;
}

// Some bins spread over all of the colour space: 12347 and the number of bins have no factor in
// common, so none comes twice.
ColorImage spread(unsigned bins)
{
    std::vector<ScreenColor> colors;
    for (unsigned n = 0; n < bins; ++n) colors.push_back(binColor(n * 12347 % 32768));
    return image(colors);
}

std::vector<Rgb> rgbOf(const ColorMap& map)
{
    std::vector<Rgb> all;
    for (const PaletteEntry& entry : map) all.push_back({entry.red, entry.green, entry.blue});
    return all;
}

void expectIndicesInside(const ColorImage& picture)
{
    const Palette palette = makePalette(picture);
    ASSERT_GE(palette.map.size(), 1u);
    ASSERT_LE(palette.map.size(), 256u);
    for (const ScreenColor color : picture.pixels) {
        ASSERT_LT(palette.index(color), palette.map.size());
        ASSERT_LT(palette.bins.of(color), palette.map.size());
    }
}

// Every pixel is drawn in the lower end of its bin, and no two entries are alike.
void expectExact(const ColorImage& picture)
{
    const Palette palette = makePalette(picture);
    const std::vector<Rgb> entries = rgbOf(palette.map);
    for (const ScreenColor color : picture.pixels) {
        const Rgb bin = binOf(color);
        ASSERT_EQ(entries.at(palette.index(color)), (Rgb{bin[0] * 8, bin[1] * 8, bin[2] * 8}));
    }
    EXPECT_EQ(std::set<Rgb>(entries.begin(), entries.end()).size(), entries.size());
}

// A quantizer that keeps a list of pixels a box.
namespace plain
{

struct Box {
    std::vector<Rgb> pixels;
    Rgb min{}, max{};

    explicit Box(std::vector<Rgb> inside) : pixels(std::move(inside))
    {
        for (std::size_t c = 0; c < 3; ++c) {
            const auto less = [c](const Rgb& a, const Rgb& b) { return a[c] < b[c]; };
            const auto [low, high] = std::minmax_element(pixels.begin(), pixels.end(), less);
            min[c] = (*low)[c];
            max[c] = (*high)[c];
        }
    }
    std::size_t axis() const
    {
        const int r = max[0] - min[0], g = max[1] - min[1], b = max[2] - min[2];
        if (r >= g && r >= b) return 0;
        return g < b ? 2 : 1;
    }
    // The first value of the upper half.
    int median(std::size_t c) const
    {
        const long half = static_cast<long>(pixels.size()) / 2;
        for (int i = min[c];; ++i) {
            const long upToHere = std::count_if(pixels.begin(), pixels.end(),
                                                [=](const Rgb& pixel) { return pixel[c] <= i; });
            if (upToHere >= half) return i == min[c] ? i + 1 : i;
        }
    }
};

std::vector<Rgb> palette(const ColorImage& picture)
{
    std::vector<Rgb> pixels;
    for (const ScreenColor color : picture.pixels) pixels.push_back(binOf(color));
    std::vector<Box> boxes{Box(pixels)};
    while (boxes.size() < 256) {
        Box* largest = nullptr;
        for (Box& box : boxes) {
            if (box.min != box.max && (!largest || box.pixels.size() > largest->pixels.size()))
                largest = &box;
        }
        if (!largest) break;
        const std::size_t c = largest->axis();
        const int median = largest->median(c);
        std::vector<Rgb> lower, upper;
        for (const Rgb& pixel : largest->pixels)
            (pixel[c] < median ? lower : upper).push_back(pixel);
        *largest = Box(upper);
        boxes.insert(boxes.begin(), Box(lower));
    }
    std::vector<Rgb> entries;
    for (const Box& box : boxes) {
        Rgb entry;
        for (std::size_t c = 0; c < 3; ++c) entry[c] = (box.min[c] + box.max[c]) * 4;
        entries.push_back(entry);
    }
    return entries;
}

struct Candidate {
    std::size_t index;
    long distance;
};

bool sameCell(const Rgb& a, const Rgb& b)
{
    return a[0] / 64 == b[0] / 64 && a[1] / 64 == b[1] / 64 && a[2] / 64 == b[2] / 64;
}

long squared(const Rgb& a, const Rgb& b)
{
    long sum = 0;
    for (std::size_t c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
    return sum;
}

// Differences of colours are less than 256, so that the squares of their 16-bit words, cut to 16
// bits, are those of the differences themselves.
std::vector<Candidate> cell(const std::vector<Rgb>& entries, const Rgb& from)
{
    std::vector<Candidate> candidates;
    long bound = 99999999;
    for (std::size_t n = 0; n < entries.size(); ++n) {
        if (!sameCell(entries[n], from)) continue;
        candidates.push_back({n, 0});
        long corner = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const int d = entries[n][c] - from[c];
            const int side = d >= 0 && d < 32 ? 63 - d : d;
            corner += side * side;
        }
        bound = std::min(bound, corner);
    }
    for (std::size_t n = 0; n < entries.size(); ++n) {
        if (sameCell(entries[n], from)) continue;
        long distance = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const int t = from[c] == entries[n][c] ? 63 : from[c] - entries[n][c];
            distance += t * t;
        }
        if (distance < bound) candidates.push_back({n, distance});
    }
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; });
    return candidates;
}

// Of each pixel, its entry.
std::vector<std::size_t> indices(const ColorImage& picture, const std::vector<Rgb>& entries)
{
    std::vector<std::size_t> all;
    for (const ScreenColor color : picture.pixels) {
        const Rgb bin = binOf(color), point{bin[0] * 8, bin[1] * 8, bin[2] * 8};
        // Arrays compare by red, then green, then blue: as bins are gone through.
        Rgb first = point;
        for (const ScreenColor other : picture.pixels) {
            const Rgb its = binOf(other), corner{its[0] * 8, its[1] * 8, its[2] * 8};
            if (sameCell(corner, point)) first = std::min(first, corner);
        }
        long best = 9999999;
        std::size_t index = 0;
        for (const Candidate& candidate : cell(entries, first)) {
            if (candidate.distance >= best) break;
            const long distance = squared(entries[candidate.index], point);
            if (distance >= best) continue;
            best = distance;
            index = candidate.index;
        }
        all.push_back(index);
    }
    return all;
}

}  // namespace plain

void expectAsPlain(const ColorImage& picture)
{
    const Palette palette = makePalette(picture);
    const std::vector<Rgb> entries = plain::palette(picture);
    ASSERT_EQ(rgbOf(palette.map), entries);
    const std::vector<std::size_t> indices = plain::indices(picture, entries);
    for (std::size_t n = 0; n < indices.size(); ++n)
        ASSERT_EQ(palette.index(picture.pixels[n]), indices[n]) << "pixel " << n;
}

// A picture of random size up to 20 x 20, each channel of each pixel made by a function.
template <class Channel>
void compareRandom(unsigned seed, int times, Channel channel)
{
    std::mt19937 random(seed);
    for (int n = 0; n < times; ++n) {
        ColorImage picture(1 + static_cast<long>(random() % 20),
                           1 + static_cast<long>(random() % 20));
        for (ScreenColor& color : picture.pixels) {
            const unsigned r = channel(random, 0), g = channel(random, 1), b = channel(random, 2);
            color = pack(r, g, b);
        }
        SCOPED_TRACE(n);
        ASSERT_NO_FATAL_FAILURE(expectAsPlain(picture));
    }
}

}  // namespace

TEST(Palette, OfOnePixelIsItsBin)
{
    const Palette palette = makePalette(image({pack(255, 130, 7)}));
    EXPECT_EQ(rgbOf(palette.map), (std::vector<Rgb>{{248, 128, 0}}));
    EXPECT_EQ(palette.map[0].flags, 4);
    EXPECT_EQ(palette.index(pack(255, 130, 7)), 0);
}

TEST(Palette, OfOneColorIsOneEntry)
{
    ColorImage picture(40, 30);
    std::fill(picture.pixels.begin(), picture.pixels.end(), pack(17, 200, 99));
    EXPECT_EQ(rgbOf(makePalette(picture).map), (std::vector<Rgb>{{16, 200, 96}}));
}

TEST(Palette, ColorsOfOneBinAreOneEntry)
{
    EXPECT_EQ(rgbOf(makePalette(image({pack(16, 16, 16), pack(23, 20, 17)})).map),
              (std::vector<Rgb>{{16, 16, 16}}));
}

TEST(Palette, OfABlackPictureIsBlack)
{
    EXPECT_EQ(rgbOf(makePalette(ColorImage(3, 3)).map), (std::vector<Rgb>{{0, 0, 0}}));
}

TEST(Palette, OfTwoColorsHasTheLowerFirst)
{
    const ScreenColor low = pack(0, 0, 80), high = pack(0, 0, 200);
    for (const std::vector<ScreenColor>& colors :
         {std::vector<ScreenColor>{low, high}, std::vector<ScreenColor>{high, high, low}}) {
        const Palette palette = makePalette(image(colors));
        EXPECT_EQ(rgbOf(palette.map), (std::vector<Rgb>{{0, 0, 80}, {0, 0, 200}}));
        EXPECT_EQ(palette.index(low), 0);
        EXPECT_EQ(palette.index(high), 1);
    }
}

TEST(Palette, EntriesAreInTheOrderOfTheLastCutFirst)
{
    // Red is cut first, below the bin of 64: 0, then 8 and 64. The latter two are cut next.
    const Palette palette = makePalette(image({pack(0, 0, 0), pack(8, 0, 0), pack(64, 0, 0)}));
    EXPECT_EQ(rgbOf(palette.map), (std::vector<Rgb>{{8, 0, 0}, {0, 0, 0}, {64, 0, 0}}));
}

TEST(Palette, Of256BinsIsExact)
{
    EXPECT_EQ(makePalette(spread(256)).map.size(), 256u);
    expectExact(spread(256));
}

TEST(Palette, OfFewerBinsIsExact)
{
    for (const unsigned bins : {2u, 3u, 17u, 100u, 255u}) {
        EXPECT_EQ(makePalette(spread(bins)).map.size(), bins);
        expectExact(spread(bins));
    }
}

TEST(Palette, Of256BinsTakes255Cuts)
{
    MedianCut cut;
    cut.get_histogram(spread(256), cut.used());
    int cuts = 0;
    while (Colorbox* box = cut.largest_box()) {
        ASSERT_LT(cuts, 255);
        cut.splitbox(box);
        ++cuts;
    }
    EXPECT_EQ(cuts, 255);
    EXPECT_EQ(cut.free(), nullptr);
}

TEST(Palette, Of257BinsHas256Entries)
{
    EXPECT_EQ(makePalette(spread(257)).map.size(), 256u);
    expectIndicesInside(spread(257));
}

TEST(Palette, Of257BinsIsExactButForTheTwoThatShareAnEntry)
{
    const ColorImage picture = spread(257);
    const Palette palette = makePalette(picture);
    const std::vector<Rgb> entries = rgbOf(palette.map);
    long exact = 0;
    for (const ScreenColor color : picture.pixels) {
        const Rgb bin = binOf(color);
        exact += entries[palette.index(color)] == Rgb{bin[0] * 8, bin[1] * 8, bin[2] * 8};
    }
    EXPECT_EQ(exact, 255);
}

TEST(Palette, OfAllBinsHas256Entries)
{
    EXPECT_EQ(makePalette(spread(32768)).map.size(), 256u);
    expectIndicesInside(spread(32768));
}

TEST(Palette, OfAllBinsHasNoTwoEntriesAlike)
{
    // Boxes don't overlap, so no two have the same centre.
    const std::vector<Rgb> entries = rgbOf(makePalette(spread(32768)).map);
    EXPECT_EQ(std::set<Rgb>(entries.begin(), entries.end()).size(), 256u);
}

TEST(Palette, IndicesAreInside)
{
    std::mt19937 random(11);
    for (int n = 0; n < 20; ++n) {
        ColorImage picture(64, 64);
        for (ScreenColor& color : picture.pixels) color = random() & 0xFFFFFF;
        ASSERT_NO_FATAL_FAILURE(expectIndicesInside(picture));
    }
}

TEST(Palette, BinsOfNoPixelHaveNoEntry)
{
    const Palette palette = makePalette(image({pack(0, 0, 0), pack(255, 255, 255)}));
    EXPECT_EQ(palette.bins.at(0, 0, 1), kEmptyBin);
    EXPECT_EQ(palette.bins.at(31, 31, 30), kEmptyBin);
    EXPECT_EQ(palette.bins.at(31, 31, 31), 1u);
}

TEST(Palette, BitsAboveBlueDoNotMatter)
{
    const Palette palette = makePalette(image({0xAB102030, 0x00102030}));
    EXPECT_EQ(rgbOf(palette.map), (std::vector<Rgb>{{0x30, 0x20, 0x10}}));
}

TEST(PaletteOfRandomPixels, IsThatOfThePlainQuantizer)
{
    compareRandom(1, 60, [](std::mt19937& random, int) { return random() & 255; });
}

TEST(PaletteOfFewLevels, IsThatOfThePlainQuantizer)
{
    compareRandom(2, 60, [](std::mt19937& random, int) { return (random() % 4) * 85; });
    compareRandom(3, 40, [](std::mt19937& random, int c) { return (random() % (3u + c)) * 8; });
}

TEST(PaletteOfDarkPixels, IsThatOfThePlainQuantizer)
{
    compareRandom(4, 60, [](std::mt19937& random, int) {
        const unsigned v = random() & 255;
        return v * v * v >> 16;
    });
}

TEST(PaletteOfOneHue, IsThatOfThePlainQuantizer)
{
    for (int hue = 0; hue < 3; ++hue) {
        compareRandom(5, 20, [hue](std::mt19937& random, int c) {
            const unsigned v = random();
            return c == hue ? v & 255 : 40 + (v & 15);
        });
    }
}

TEST(PaletteOfClusters, IsThatOfThePlainQuantizer)
{
    // A third of the pixels around each of three tones, whichever channel.
    compareRandom(6, 60, [](std::mt19937& random, int) {
        const unsigned tone = random() % 3;
        return tone * 100 + random() % 24;
    });
}

TEST(PaletteOfRamps, IsThatOfThePlainQuantizer)
{
    for (unsigned step = 1; step < 40; ++step) {
        ColorImage picture(17, 23);
        for (long y = 0; y < 23; ++y) {
            for (long x = 0; x < 17; ++x) {
                const auto u = static_cast<unsigned>(x), v = static_cast<unsigned>(y);
                picture.row(y)[x] = pack(u * 15, v * 11, (u + v) * step & 255);
            }
        }
        SCOPED_TRACE(step);
        ASSERT_NO_FATAL_FAILURE(expectAsPlain(picture));
    }
}
