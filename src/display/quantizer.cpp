#include "display/quantizer.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace zeb
{

MedianCut::MedianCut() : fPool(kMaxColors), fUsed(fPool.data()), fFree(fUsed + 1)
{
    for (Colorbox* box = fFree; box != fPool.data() + kMaxColors; ++box) {
        box->prev = box == fFree ? nullptr : box - 1;
        box->next = box == &fPool.back() ? nullptr : box + 1;
    }
}

void MedianCut::get_histogram(const ColorImage& image, Colorbox* box)
{
    box->min.fill(999);
    box->max.fill(-1);
    box->total = static_cast<std::int64_t>(image.pixels.size());
    for (const ScreenColor color : image.pixels) {
        const std::array<std::int16_t, 3> bin{static_cast<std::int16_t>((color & 0xFF) >> 3),
                                              static_cast<std::int16_t>((color & 0xFFFF) >> 11),
                                              static_cast<std::int16_t>((color >> 16 & 0xFF) >> 3)};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            box->min[axis] = std::min(box->min[axis], bin[axis]);
            box->max[axis] = std::max(box->max[axis], bin[axis]);
        }
        ++fHistogram.at(bin[0], bin[1], bin[2]);
    }
}

Colorbox* MedianCut::largest_box()
{
    Colorbox* largest = nullptr;
    std::int64_t most = -1;
    for (Colorbox* box = fUsed; box; box = box->next) {
        const bool splittable =
            box->min[0] < box->max[0] || box->min[1] < box->max[1] || box->min[2] < box->max[2];
        if (splittable && box->total > most) {
            largest = box;
            most = box->total;
        }
    }
    return largest;
}

namespace
{

// Red before green before blue where extents are equal.
std::size_t longestAxis(const Colorbox& box)
{
    const int red = box.max[0] - box.min[0];
    const int green = box.max[1] - box.min[1];
    const int blue = box.max[2] - box.min[2];
    if (red >= green && red >= blue) return 0;
    return green < blue ? 2 : 1;
}

template <typename Visit>
void forEachBin(const Colorbox& box, const Visit& visit)
{
    for (int r = box.min[0]; r <= box.max[0]; ++r) {
        for (int g = box.min[1]; g <= box.max[1]; ++g) {
            for (int b = box.min[2]; b <= box.max[2]; ++b) visit(std::array{r, g, b});
        }
    }
}

}  // namespace

void MedianCut::splitbox(Colorbox* box)
{
    const std::size_t axis = longestAxis(*box);
    std::array<std::int64_t, kHistogramBins> counts{};
    forEachBin(*box, [&](const std::array<int, 3>& bin) {
        counts[static_cast<std::size_t>(bin[axis])] += fHistogram.at(bin[0], bin[1], bin[2]);
    });

    const std::int16_t min = box->min[axis];
    const std::int64_t half = box->total / 2;
    std::int16_t cut = min;
    std::int64_t sum = counts[static_cast<std::size_t>(cut)];
    while (sum < half) sum += counts[static_cast<std::size_t>(++cut)];
    // The lower part is never empty.
    if (cut == min) ++cut;

    Colorbox* lower = std::exchange(fFree, fFree->next);
    if (fFree) fFree->prev = nullptr;
    lower->min = box->min;
    lower->max = box->max;
    lower->max[axis] = static_cast<std::int16_t>(cut - 1);
    box->min[axis] = cut;
    lower->total = box->total = 0;
    for (int i = min; i <= box->max[axis]; ++i) {
        (i < cut ? lower : box)->total += counts[static_cast<std::size_t>(i)];
    }
    lower->prev = nullptr;
    lower->next = std::exchange(fUsed, lower);
    lower->next->prev = lower;
    shrinkbox(lower);
    shrinkbox(box);
}

bool MedianCut::slabIsEmpty(const Colorbox& box, std::size_t axis, std::int16_t index) const
{
    Colorbox slab = box;
    slab.min[axis] = slab.max[axis] = index;
    bool empty = true;
    forEachBin(slab, [&](const std::array<int, 3>& bin) {
        empty = empty && fHistogram.at(bin[0], bin[1], bin[2]) == 0;
    });
    return empty;
}

void MedianCut::shrinkbox(Colorbox* box) const
{
    for (std::size_t axis = 0; axis < 3; ++axis) {
        auto& min = box->min[axis];
        auto& max = box->max[axis];
        while (min < max && slabIsEmpty(*box, axis, min)) ++min;
        while (min < max && slabIsEmpty(*box, axis, max)) --max;
    }
}

void MedianCut::splitAll()
{
    while (fFree) {
        Colorbox* box = largest_box();
        if (!box) {
            fFree = nullptr;
            return;
        }
        splitbox(box);
    }
}

ColorMap MedianCut::colorMap() const
{
    ColorMap map;
    for (const Colorbox* box = fUsed; box; box = box->next) {
        const auto center = [box](std::size_t axis) {
            return static_cast<std::uint8_t>(((box->min[axis] + box->max[axis]) * 8) >> 1);
        };
        map.push_back({center(0), center(1), center(2)});
    }
    return map;
}

namespace
{

std::uint16_t word(int value) { return static_cast<std::uint16_t>(value); }

// Kept to 16 bits, like the difference.
std::uint32_t square(std::uint16_t difference)
{
    return static_cast<std::uint16_t>(std::uint32_t{difference} * difference);
}

struct Channels {
    std::array<int, 3> value;
    explicit Channels(const PaletteEntry& entry) : value{entry.red, entry.green, entry.blue} {}
    Channels(int r, int g, int b) : value{r, g, b} {}
    int cell() const { return (value[0] >> 6) * 16 + (value[1] >> 6) * 4 + (value[2] >> 6); }
};

// From a colour to the far corner of its cell, as an entry in the cell sees it.
std::uint32_t farCorner(const Channels& entry, const Channels& color)
{
    std::uint32_t distance = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::uint16_t d = word(entry.value[axis] - color.value[axis]);
        distance += square(d < 32 ? word(63 - d) : d);
    }
    return distance;
}

std::uint32_t outerDistance(const Channels& entry, const Channels& color)
{
    std::uint32_t distance = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::uint16_t t = word(color.value[axis] - entry.value[axis]);
        distance += square(t != 0 ? t : word(entry.value[axis] - (color.value[axis] + 63)));
    }
    return distance;
}

}  // namespace

Colorcell create_colorcell(const ColorMap& map, int r, int g, int b)
{
    const Channels color(r, g, b);
    Colorcell cell;
    std::uint32_t bound = 99999999;
    for (std::size_t i = 0; i < map.size(); ++i) {
        const Channels entry(map[i]);
        if (entry.cell() != color.cell()) continue;
        cell.candidates.push_back({word(static_cast<int>(i)), 0});
        bound = std::min(bound, farCorner(entry, color));
    }
    for (std::size_t i = 0; i < map.size(); ++i) {
        const Channels entry(map[i]);
        if (entry.cell() == color.cell()) continue;
        const std::uint32_t distance = outerDistance(entry, color);
        if (distance < bound) cell.candidates.push_back({word(static_cast<int>(i)), distance});
    }
    // Equal distances keep their order: it decides which of two entries equally near is taken.
    std::stable_sort(cell.candidates.begin(), cell.candidates.end(),
                     [](const Colorcell::Candidate& a, const Colorcell::Candidate& c) {
                         return a.distance < c.distance;
                     });
    return cell;
}

namespace
{

std::uint32_t nearestEntry(const Colorcell& cell, const ColorMap& map, const Channels& color)
{
    std::uint32_t nearest = 0;
    std::uint32_t best = 9999999;
    for (const auto& [index, distance] : cell.candidates) {
        if (distance >= best) break;
        const Channels entry(map[index]);
        std::uint32_t exact = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const int d = entry.value[axis] - color.value[axis];
            exact += static_cast<std::uint32_t>(d * d);
        }
        if (exact < best) {
            best = exact;
            nearest = index;
        }
    }
    return nearest;
}

}  // namespace

void map_colortable(Histogram& histogram, const ColorMap& map)
{
    std::array<std::unique_ptr<Colorcell>, 64> cells;
    const Colorbox all{nullptr, nullptr, {0, 0, 0}, {31, 31, 31}, 0};
    forEachBin(all, [&](const std::array<int, 3>& bin) {
        std::uint32_t& count = histogram.at(bin[0], bin[1], bin[2]);
        if (count == 0) {
            count = kEmptyBin;
            return;
        }
        const Channels color(bin[0] * 8, bin[1] * 8, bin[2] * 8);
        auto& cell = cells[static_cast<std::size_t>(color.cell())];
        if (!cell) {
            cell = std::make_unique<Colorcell>(
                create_colorcell(map, color.value[0], color.value[1], color.value[2]));
        }
        count = nearestEntry(*cell, map, color);
    });
}

Palette makePalette(const ColorImage& image)
{
    MedianCut cut;
    cut.get_histogram(image, cut.used());
    cut.splitAll();
    Palette palette{cut.colorMap(), std::move(cut.histogram())};
    map_colortable(palette.bins, palette.map);
    return palette;
}

}  // namespace zeb
