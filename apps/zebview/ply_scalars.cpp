#include "ply_scalars.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>

#include "failure.h"
#include "obj_statements.h"

namespace zebview
{

namespace
{

constexpr std::string_view kOthers[] = {"x",   "y",     "z",         "nx",       "ny", "nz",
                                        "red", "green", "blue",      "alpha",    "s",  "t",
                                        "u",   "v",     "texture_u", "texture_v"};
constexpr std::string_view kBlanks = " \t\r\v\f";

[[noreturn]] void fail(const char* what)
{
    throw Failure(std::string("its scalars cannot be read: ") + what);
}

// In the machine's order of bytes.
template <class Number>
double decoded(const char* bytes)
{
    Number value;
    std::memcpy(&value, bytes, sizeof value);
    return static_cast<double>(value);
}

// Numbers too large are infinite, and those too small 0.
double numberOf(std::string_view word)
{
    if (word.starts_with('+')) word.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error == std::errc::invalid_argument || end != word.data() + word.size()) {
        fail("a value of it is no number");
    }
    if (error == std::errc()) return value;
    const bool isSmall = word.find("e-") != word.npos || word.find("E-") != word.npos;
    return isSmall ? 0 : std::numeric_limits<double>::infinity();
}

}  // namespace

const PlyScalars::Type PlyScalars::kTypes[] = {
    {"char", "int8", 1, decoded<std::int8_t>},    {"uchar", "uint8", 1, decoded<std::uint8_t>},
    {"short", "int16", 2, decoded<std::int16_t>}, {"ushort", "uint16", 2, decoded<std::uint16_t>},
    {"int", "int32", 4, decoded<std::int32_t>},   {"uint", "uint32", 4, decoded<std::uint32_t>},
    {"float", "float32", 4, decoded<float>},      {"double", "float64", 8, decoded<double>},
};

const PlyScalars::Type& PlyScalars::typeNamed(std::string_view name)
{
    for (const Type& type : kTypes) {
        if (name == type.name || name == type.otherName) return type;
    }
    fail("its header names a type that does not exist");
}

PlyScalars::PlyScalars(const std::string& file)
{
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    fText = std::move(text).str();
    readHeader();
}

void PlyScalars::readHeader()
{
    for (bool isFirst = true;; isFirst = false) {
        const std::size_t end = fText.find('\n', fBody);
        if (end == std::string::npos) fail("its header does not end");
        const Words words = wordsOf(std::string_view(fText).substr(fBody, end - fBody));
        fBody = end + 1;
        if (isFirst) {
            if (words != Words{"ply"}) fail("it is no PLY file");
        } else if (words == Words{"end_header"}) {
            return;
        } else if (!words.empty()) {
            readStatement(words);
        }
    }
}

void PlyScalars::readStatement(const std::vector<std::string_view>& words)
{
    if (words[0] == "comment" || words[0] == "obj_info") return;
    if (words[0] == "format" && words.size() > 1) {
        constexpr std::array<std::string_view, 3> formats{"ascii", "binary_little_endian",
                                                          "binary_big_endian"};
        const auto found = std::find(formats.begin(), formats.end(), words[1]);
        if (found == formats.end()) fail("its header names no format that is known");
        fFormat = static_cast<Format>(found - formats.begin());
    } else if (words[0] == "element" && words.size() == 3) {
        const auto count = parsed<std::uint64_t>(words[2]);
        if (!count) fail("its header has a count that is none");
        fElements.push_back({std::string(words[1]), *count, {}});
    } else if (words[0] == "property" && words.size() > 2 && !fElements.empty()) {
        addProperty(words);
    } else {
        fail("its header has a line that is not understood");
    }
}

void PlyScalars::addProperty(const std::vector<std::string_view>& words)
{
    Element& element = fElements.back();
    if (words[1] == "list") {
        if (words.size() < 5) fail("its header has a line that is not understood");
        element.properties.push_back({&typeNamed(words[3]), &typeNamed(words[2]), false});
        return;
    }
    // Whatever it is, up to the end of the line.
    const std::string name(words[2].data(), words.back().data() + words.back().size());
    const auto isThere = [&name](const auto& list) {
        return std::find(std::begin(list), std::end(list), name) != std::end(list);
    };
    const bool isScalar = &element == vertices() && !isThere(kOthers) && !isThere(fNames);
    element.properties.push_back({&typeNamed(words[1]), nullptr, isScalar});
    if (isScalar) fNames.push_back(name);
}

const PlyScalars::Element* PlyScalars::vertices() const
{
    for (const Element& element : fElements) {
        if (element.name == "vertex") return &element;
    }
    return nullptr;
}

std::uint64_t PlyScalars::vertexCount() const { return vertices() ? vertices()->count : 0; }

// Goes through the numbers of a file, whatever its format.
class PlyScalars::Reader
{
public:
    Reader(std::string_view body, Format format)
        : fRest(body),
          fIsAscii(format == Format::kAscii),
          fSwaps((format == Format::kBigEndian) != (std::endian::native == std::endian::big))
    {
    }

    void beginElement()
    {
        if (!fIsAscii) return;
        fRest.remove_prefix(std::min(fRest.find_first_not_of(" \t\r\v\f\n"), fRest.size()));
    }
    // The rest of a line means nothing.
    void endElement()
    {
        if (fIsAscii) fRest.remove_prefix(std::min(fRest.find('\n'), fRest.size()));
    }
    double next(const Type& type)
    {
        if (fIsAscii) return numberOf(word());
        std::array<char, 8> bytes;
        std::copy_n(take(type.size), type.size, bytes.begin());
        if (fSwaps) std::reverse(bytes.data(), bytes.data() + type.size);
        return type.decode(bytes.data());
    }
    void skip(const Property& property)
    {
        if (!property.countType) return skip(*property.type, 1);
        const double count = next(*property.countType);
        if (!(count >= 0 && count <= static_cast<double>(fRest.size()))) endEarly();
        skip(*property.type, static_cast<std::size_t>(count));
    }
    void skip(const Element& element)
    {
        for (std::uint64_t i = 0; i < element.count && !element.properties.empty(); ++i) {
            beginElement();
            for (const Property& property : element.properties) skip(property);
            endElement();
        }
    }

private:
    [[noreturn]] static void endEarly() { fail("it ends before its vertices do"); }

    void skip(const Type& type, std::size_t count)
    {
        if (fIsAscii) {
            for (std::size_t i = 0; i < count; ++i) word();
        } else {
            take(count * type.size);
        }
    }
    const char* take(std::size_t size)
    {
        if (size > fRest.size()) endEarly();
        const char* const bytes = fRest.data();
        fRest.remove_prefix(size);
        return bytes;
    }
    // Of the line.
    std::string_view word()
    {
        fRest.remove_prefix(std::min(fRest.find_first_not_of(kBlanks), fRest.size()));
        const std::size_t size = std::min(fRest.find_first_of(" \t\r\v\f\n"), fRest.size());
        if (size == 0) endEarly();
        return {take(size), size};
    }

    std::string_view fRest;
    const bool fIsAscii, fSwaps;
};

void PlyScalars::everyVertex(const std::function<void(std::span<const double>)>& visit) const
{
    if (fNames.empty()) return;
    const Element& wanted = *vertices();
    Reader reader(std::string_view(fText).substr(fBody), fFormat);
    for (const Element* element = fElements.data(); element != &wanted; ++element) {
        reader.skip(*element);
    }
    std::vector<double> values;
    for (std::uint64_t i = 0; i < wanted.count; ++i) {
        values.clear();
        reader.beginElement();
        for (const Property& property : wanted.properties) {
            if (property.isScalar) {
                values.push_back(reader.next(*property.type));
            } else {
                reader.skip(property);
            }
        }
        reader.endElement();
        visit(values);
    }
}

}  // namespace zebview
