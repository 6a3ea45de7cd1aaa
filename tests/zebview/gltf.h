// A plate as a glTF file: from -1 to 1 in x and y, at z = 0.
#pragma once

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace zebtest
{

inline std::string base64(const std::string& bytes)
{
    static constexpr char digits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group =
                group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += i + k <= bytes.size() ? digits[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

template <class Value>
std::string bytesOf(const std::vector<Value>& values)
{
    std::string bytes(values.size() * sizeof(Value), '\0');
    if (!values.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

struct GltfPlate {
    std::string material = "{}";
    std::vector<float> colors{};       // four a corner, from the lower left to the left, or none
    std::string nodes{};               // more of them, each with a comma before it
    std::string nodeList{};            // and their numbers, from 1
    std::string extra{};               // further members of the file, each with a comma before it
    std::vector<float> places{};       // of a texture: two a corner, the second downwards, or none
    std::vector<float> otherPlaces{};  // in the second channel
    std::vector<float> normals{};      // three a corner, or none

    std::string text() const
    {
        std::string data, views, accessors, attributes;
        int count = 0;
        const auto add = [&](const std::string& bytes, const std::string& accessor) {
            const char* const comma = count == 0 ? "" : ",";
            views += comma + std::string(R"({"buffer":0,"byteOffset":)") +
                     std::to_string(data.size()) + R"(,"byteLength":)" +
                     std::to_string(bytes.size()) + '}';
            accessors += comma + std::string(R"({"bufferView":)") + std::to_string(count++) + ',' +
                         accessor + '}';
            data += bytes;
        };
        const auto addCorners = [&](const char* name, const std::vector<float>& values,
                                    const char* type) {
            if (values.empty()) return;
            attributes += std::string(",\"") + name + "\":" + std::to_string(count);
            add(bytesOf(values),
                std::string(R"("componentType":5126,"count":4,"type":")") + type + '"');
        };
        add(bytesOf<float>({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}),
            R"("componentType":5126,"count":4,"type":"VEC3","min":[-1,-1,0],"max":[1,1,0])");
        add(bytesOf<std::uint16_t>({0, 1, 2, 0, 2, 3}),
            R"("componentType":5123,"count":6,"type":"SCALAR")");
        addCorners("COLOR_0", colors, "VEC4");
        addCorners("TEXCOORD_0", places, "VEC2");
        addCorners("TEXCOORD_1", otherPlaces, "VEC2");
        addCorners("NORMAL", normals, "VEC3");
        std::ostringstream text;
        text << R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0)" << nodeList
             << R"(]}],"nodes":[{"mesh":0})" << nodes
             << R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0)" << attributes
             << R"(},"indices":1,"material":0}]}],"materials":[)" << material
             << R"(],"buffers":[{"byteLength":)" << data.size()
             << R"(,"uri":"data:application/octet-stream;base64,)" << base64(data)
             << R"("}],"bufferViews":[)" << views << R"(],"accessors":[)" << accessors << ']'
             << extra << '}';
        return text.str();
    }
};

// A material whose base colour has these factors.
inline std::string gltfColor(const std::string& factors, const std::string& more = "")
{
    return R"({"pbrMetallicRoughness":{"baseColorFactor":[)" + factors + "]}" + more + "}";
}

}  // namespace zebtest
