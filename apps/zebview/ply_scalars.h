// What vertices of PLY files hold beside their places, normals, colors and places on textures:
// assimp passes over it.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zebview
{

class PlyScalars
{
public:
    // Throws a Failure if the file's header cannot be understood.
    explicit PlyScalars(const std::string& file);

    // In the file's order.
    const std::vector<std::string>& names() const { return fNames; }
    std::uint64_t vertexCount() const;
    // Hands over the scalars of one vertex after the other. Throws a Failure if the file is damaged
    // before the last of them.
    void everyVertex(const std::function<void(std::span<const double>)>& visit) const;

private:
    struct Type {
        const char *name, *otherName;
        std::size_t size;
        double (*decode)(const char* bytes);
    };
    struct Property {
        const Type* type;
        const Type* countType;  // of lists; null: it is none
        bool isScalar;
    };
    struct Element {
        std::string name;
        std::uint64_t count;
        std::vector<Property> properties;
    };
    enum class Format { kAscii, kLittleEndian, kBigEndian };
    class Reader;

    static const Type kTypes[];
    static const Type& typeNamed(std::string_view name);
    void readHeader();
    void readStatement(const std::vector<std::string_view>& words);
    void addProperty(const std::vector<std::string_view>& words);
    const Element* vertices() const;

    std::string fText;
    std::size_t fBody = 0;  // where it begins
    Format fFormat = Format::kAscii;
    std::vector<Element> fElements;
    std::vector<std::string> fNames;
};

}  // namespace zebview
