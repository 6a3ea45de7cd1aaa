// Radiance pictures (G. Ward, 1991): lines of text, then rows of pixels that are three mantissas
// and one exponent.
#include "radiance_file.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "failure.h"

namespace zebview
{

namespace
{

constexpr long kMaxSide = 32768;

using Texel = std::array<std::uint8_t, 4>;

[[noreturn]] void refuse(const char* why) { throw Failure(std::string("cannot be read: ") + why); }

class Reader
{
public:
    explicit Reader(std::string_view bytes) : fRest(bytes) {}

    LightPicture read()
    {
        readHeader();
        LightPicture picture;
        readSize(picture);
        std::vector<Texel> row(static_cast<std::size_t>(picture.width));
        for (long y = 0; y < picture.height; ++y) {
            readRow(row);
            for (const Texel& texel : row) {
                const float unit = texel[3] ? std::ldexp(fScale, texel[3] - 136) : 0;
                for (int c = 0; c < 3; ++c) {
                    const float value = static_cast<float>(texel[c]) * unit;
                    picture.light.push_back(std::isfinite(value) ? value : 0);
                }
            }
        }
        return picture;
    }

private:
    std::uint8_t byte()
    {
        if (fRest.empty()) refuse("it ends early");
        const auto value = static_cast<std::uint8_t>(fRest.front());
        fRest.remove_prefix(1);
        return value;
    }
    Texel texel() { return {byte(), byte(), byte(), byte()}; }

    std::string_view line()
    {
        const std::size_t end = fRest.find('\n');
        if (end == std::string_view::npos) refuse("it ends early");
        const std::string_view text = fRest.substr(0, end);
        fRest.remove_prefix(end + 1);
        return text;
    }

    // What EXPOSURE lines say has been multiplied into the pixels.
    void readHeader()
    {
        static constexpr std::string_view exposure = "EXPOSURE=", format = "FORMAT=";
        for (std::string_view text = line(); !text.empty(); text = line()) {
            if (text.starts_with(format) && text.substr(format.size()) != "32-bit_rle_rgbe") {
                refuse("its pixels are not red, green and blue");
            }
            if (!text.starts_with(exposure)) continue;
            const std::string value(text.substr(text.find_first_not_of(" \t", exposure.size())));
            float factor = 0;
            std::from_chars(value.data(), value.data() + value.size(), factor);
            if (factor > 0 && std::isfinite(factor)) fScale /= factor;
        }
        if (!(fScale > 0) || !std::isfinite(fScale)) refuse("its exposure is out of range");
    }

    long number(std::string_view& text, std::string_view before)
    {
        if (!text.starts_with(before)) refuse("its rows do not run from the top to the bottom");
        text.remove_prefix(before.size());
        long value = 0;
        const auto [stop, failed] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (failed != std::errc() || value < 1 || value > kMaxSide) refuse("its size is wrong");
        text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
        return value;
    }
    void readSize(LightPicture& picture)
    {
        std::string_view text = line();
        picture.height = number(text, "-Y ");
        picture.width = number(text, " +X ");
    }

    void readRow(std::vector<Texel>& row)
    {
        const Texel first = texel();
        const bool isPacked = row.size() >= 8 && row.size() < 0x8000 && first[0] == 2 &&
                              first[1] == 2 && first[2] < 128;
        if (!isPacked) {
            readFlat(first, row);
        } else if (first[2] * 256u + first[3] != row.size()) {
            refuse("a row has another length");
        } else {
            for (std::size_t c = 0; c < 4; ++c) readPacked(c, row);
        }
    }

    // Channel by channel: runs of one value, and values as they are.
    void readPacked(std::size_t channel, std::vector<Texel>& row)
    {
        for (std::size_t x = 0; x < row.size();) {
            const std::uint8_t code = byte();
            const bool isRun = code > 128;
            const std::size_t count = isRun ? code - 128u : code;
            if (count == 0 || count > row.size() - x) refuse("a row has another length");
            std::uint8_t value = isRun ? byte() : 0;
            for (const std::size_t end = x + count; x < end; ++x) {
                if (!isRun) value = byte();
                row[x][channel] = value;
            }
        }
    }

    // Pixels of 1, 1, 1 repeat the one before; several in a row are digits of a larger number.
    void readFlat(Texel next, std::vector<Texel>& row)
    {
        unsigned shift = 0;
        for (std::size_t x = 0; x < row.size();) {
            if (next[0] == 1 && next[1] == 1 && next[2] == 1) {
                const std::size_t count = shift < 24 ? std::size_t{next[3]} << shift : row.size();
                if (x == 0 || count > row.size() - x) refuse("a row has another length");
                for (const std::size_t end = x + count; x < end; ++x) row[x] = row[x - 1];
                shift += 8;
            } else {
                row[x++] = next;
                shift = 0;
            }
            if (x < row.size()) next = texel();
        }
    }

    std::string_view fRest;
    float fScale = 1;
};

}  // namespace

LightPicture readRadiance(const std::string& bytes) { return Reader(bytes).read(); }

}  // namespace zebview
