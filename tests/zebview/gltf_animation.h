// A glTF file whose nodes, skins and targets tests make up.
#pragma once

#include <map>

#include "gltf.h"

namespace zebtest
{

// A glTF file of a plate from -1 to 1 in x and y, which a camera shows that stands still: from -2
// to 2 in x and y.
struct Gltf {
    std::string nodes = R"({"mesh":0,"name":"plate"})";  // the camera follows
    int nodeCount = 1;
    std::string scene = "0";
    std::string attributes, targets, weights, normals = "2";
    std::string more;  // members of the file, each with a comma before it

    Gltf()
    {
        add<float>({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}, 5126, "VEC3",
                   R"(,"min":[-1,-1,0],"max":[1,1,0])");
        add<std::uint16_t>({0, 1, 2, 0, 2, 3}, 5123, "SCALAR");
        add<float>({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}, 5126, "VEC3");
    }

    // The number of the accessor.
    template <class Value>
    int add(const std::vector<Value>& values, int component, const std::string& type,
            const std::string& limits = "")
    {
        static const std::map<std::string, std::size_t> sizes{
            {"SCALAR", 1}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
        const std::string bytes = bytesOf(values), comma = fCount == 0 ? "" : ",";
        fViews += comma + R"({"buffer":0,"byteOffset":)" + std::to_string(fData.size()) +
                  R"(,"byteLength":)" + std::to_string(bytes.size()) + '}';
        fAccessors += comma + R"({"bufferView":)" + std::to_string(fCount) +
                      R"(,"componentType":)" + std::to_string(component) + R"(,"count":)" +
                      std::to_string(values.size() / sizes.at(type)) + R"(,"type":")" + type + '"' +
                      limits + '}';
        fData += bytes;
        fData.resize((fData.size() + 3) / 4 * 4);
        return fCount++;
    }
    int addFloats(const std::vector<float>& values, const std::string& type)
    {
        return add(values, 5126, type);
    }

    // Keys of one property of a node.
    std::string animation(const std::string& name, int node, const char* property,
                          const std::vector<float>& times, const std::vector<float>& values,
                          const std::string& type)
    {
        const std::string input = std::to_string(addFloats(times, "SCALAR"));
        const std::string output = std::to_string(addFloats(values, type));
        return R"({"name":")" + name + R"(","channels":[{"sampler":0,"target":{"node":)" +
               std::to_string(node) + R"(,"path":")" + property + R"("}}],"samplers":[{"input":)" +
               input + R"(,"output":)" + output + "}]}";
    }
    void animate(int node, const char* property, const std::vector<float>& times,
                 const std::vector<float>& values, const std::string& type)
    {
        more += R"(,"animations":[)" + animation("one", node, property, times, values, type) + ']';
    }

    std::string text() const
    {
        const std::string camera = std::to_string(nodeCount);
        return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)" + scene + ',' +
               camera + R"(]}],"nodes":[)" + nodes +
               R"(,{"name":"eye","camera":0,"translation":[0,0,10]}],"cameras":[{"type":"orthographic",)"
               R"("orthographic":{"xmag":2,"ymag":2,"znear":0.1,"zfar":100}}],"meshes":[{)" +
               weights + R"("primitives":[{"attributes":{"POSITION":0,"NORMAL":)" + normals +
               attributes + R"(},"indices":1,"material":0)" + targets +
               R"(}]}],"materials":[{"doubleSided":true}],"buffers":[{"byteLength":)" +
               std::to_string(fData.size()) + R"(,"uri":"data:application/octet-stream;base64,)" +
               base64(fData) + R"("}],"bufferViews":[)" + fViews + R"(],"accessors":[)" +
               fAccessors + ']' + more + '}';
    }

private:
    std::string fData, fViews, fAccessors;
    int fCount = 0;
};

}  // namespace zebtest
