// Which axis points up, by format and by option.

#include <cstdint>
#include <cstring>
#include <sstream>

#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::Image;
using zebtest::kLetter;
using zebtest::kUpright;
using zebtest::Place;
using zebtest::readLetter;

// The letter with z up, its front where y is least; or with y up, its front where z is largest.
Place zUp(double x, double y) { return {x, 0, y}; }
Place yUp(double x, double y) { return {x, y, 0}; }

using Put = Place (*)(double, double);

// The corners of the letter's cells, counter-clockwise.
std::vector<Place> corners(Put put)
{
    std::vector<Place> result;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (kLetter[row][column] != '#') continue;
            const double x = column, y = 4 - row;
            for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                result.push_back(put(x + dx, y + dy));
            }
        }
    }
    return result;
}

std::string chunk(std::uint16_t id, const std::string& content)
{
    std::string text(6, '\0');
    const auto length = static_cast<std::uint32_t>(content.size() + 6);
    std::memcpy(text.data(), &id, 2);
    std::memcpy(text.data() + 2, &length, 4);
    return text + content;
}

template <class Value>
void append(std::string& text, Value value)
{
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    text.append(bytes, sizeof value);
}

std::string letter3ds(Put put)
{
    const auto points = corners(put);
    std::string vertices, faces;
    append(vertices, static_cast<std::uint16_t>(points.size()));
    for (const Place& point : points) {
        for (const double value : point) append(vertices, static_cast<float>(value));
    }
    append(faces, static_cast<std::uint16_t>(points.size() / 2));
    for (std::size_t cell = 0; cell < points.size(); cell += 4) {
        for (const std::size_t corner : {0, 1, 2, 7, 0, 2, 3, 7}) {
            append(faces, static_cast<std::uint16_t>(corner == 7 ? 0 : cell + corner));
        }
    }
    const std::string mesh = chunk(0x4100, chunk(0x4110, vertices) + chunk(0x4120, faces));
    return chunk(0x4D4D, chunk(0x3D3D, chunk(0x4000, std::string("letter\0", 7) + mesh)));
}

std::string letterStl(Put put)
{
    const auto points = corners(put);
    std::ostringstream text;
    text << "solid letter\n";
    for (std::size_t cell = 0; cell < points.size(); cell += 4) {
        for (const auto& triangle : {std::array{0, 1, 2}, {0, 2, 3}}) {
            text << "facet normal 0 0 0\nouter loop\n";
            for (const int corner : triangle) {
                const Place& p = points[cell + static_cast<std::size_t>(corner)];
                text << "vertex " << p[0] << ' ' << p[1] << ' ' << p[2] << '\n';
            }
            text << "endloop\nendfacet\n";
        }
    }
    text << "endsolid letter\n";
    return text.str();
}

std::string letterPly(Put put)
{
    const auto points = corners(put);
    std::ostringstream text;
    text << "ply\nformat ascii 1.0\nelement vertex " << points.size()
         << "\nproperty float x\nproperty float y\nproperty float z\nelement face "
         << points.size() / 4 << "\nproperty list uchar int vertex_indices\nend_header\n";
    for (const Place& p : points) text << p[0] << ' ' << p[1] << ' ' << p[2] << '\n';
    for (std::size_t i = 0; i < points.size(); i += 4) {
        text << "4 " << i << ' ' << i + 1 << ' ' << i + 2 << ' ' << i + 3 << '\n';
    }
    return text.str();
}

// axis  1 for y, 2 for z
std::string letterFbx(Put put, int axis)
{
    const auto points = corners(put);
    std::ostringstream text;
    text << "; FBX 7.3.0 project file\nFBXHeaderExtension:  {\nFBXHeaderVersion: 1003\n"
            "FBXVersion: 7300\n}\nGlobalSettings:  {\nVersion: 1000\nProperties70:  {\n"
            "P: \"UpAxis\", \"int\", \"Integer\", \"\","
         << axis << "\nP: \"UpAxisSign\", \"int\", \"Integer\", \"\",1\n}\n}\nObjects:  {\n"
         << "Geometry: 1000, \"Geometry::g\", \"Mesh\" {\nVertices: *" << points.size() * 3
         << " {\na: ";
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Place& p = points[i];
        text << (i ? "," : "") << p[0] << ',' << p[1] << ',' << p[2];
    }
    text << "\n}\nPolygonVertexIndex: *" << points.size() << " {\na: ";
    for (std::size_t i = 0; i < points.size(); ++i) {
        text << (i ? "," : "") << (i % 4 == 3 ? -static_cast<long>(i) - 1 : static_cast<long>(i));
    }
    text << "\n}\nGeometryVersion: 124\n}\nModel: 2000, \"Model::m\", \"Mesh\" {\nVersion: 232\n}\n"
            "}\nConnections:  {\nC: \"OO\",2000,0\nC: \"OO\",1000,2000\n}\n";
    return text.str();
}

// axis  Y_UP or Z_UP
std::string letterCollada(Put put, const std::string& axis)
{
    const auto points = corners(put);
    std::ostringstream text;
    text << R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset><up_axis>)"
         << axis << R"(</up_axis></asset><library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="a" count=")"
         << points.size() * 3 << R"(">)";
    for (const Place& p : points) text << p[0] << ' ' << p[1] << ' ' << p[2] << ' ';
    text << R"(</float_array><technique_common><accessor source="#a" count=")" << points.size()
         << R"(" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices><polylist count=")"
         << points.size() / 4 << R"("><input semantic="VERTEX" source="#v" offset="0"/><vcount>)";
    for (std::size_t i = 0; i < points.size(); i += 4) text << "4 ";
    text << "</vcount><p>";
    for (std::size_t i = 0; i < points.size(); ++i) text << i << ' ';
    text << R"(</p></polylist></mesh></geometry></library_geometries><library_visual_scenes>
<visual_scene id="s"><node id="n"><instance_geometry url="#g"/></node></visual_scene>
</library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    return text.str();
}

class UpAxis : public zebtest::Zebview
{
protected:
    std::string seen(const std::string& name, const std::string& text, const char* axis = nullptr)
    {
        std::vector<std::string> options{"--view", "0,0"};
        if (axis) options.insert(options.end(), {"--up", axis});
        return readLetter(Image(render(write(name, text), options)));
    }
};

TEST_F(UpAxis, IsZWhereThatIsTheFormatsCustom)
{
    EXPECT_EQ(seen("f.3ds", letter3ds(zUp)), kUpright);
    EXPECT_EQ(seen("f.stl", letterStl(zUp)), kUpright);
}

TEST_F(UpAxis, IsYOtherwise)
{
    EXPECT_EQ(seen("f.ply", letterPly(yUp)), kUpright);
    EXPECT_EQ(seen("f.obj", zebtest::letterObj()), kUpright);
}

TEST_F(UpAxis, IsWhatTheFileSaysIfItDoes)
{
    EXPECT_EQ(seen("f.fbx", letterFbx(yUp, 1)), kUpright);
    EXPECT_EQ(seen("f.fbx", letterFbx(zUp, 2)), kUpright);
    EXPECT_EQ(seen("f.dae", letterCollada(yUp, "Y_UP")), kUpright);
    EXPECT_EQ(seen("f.dae", letterCollada(zUp, "Z_UP")), kUpright);
}

TEST_F(UpAxis, OfTheOptionIsOneOfTheFile)
{
    for (const auto& [axis, put] : {std::pair<const char*, Put>{"y", yUp}, {"z", zUp}}) {
        EXPECT_EQ(seen("f.3ds", letter3ds(put), axis), kUpright) << axis;
        EXPECT_EQ(seen("f.stl", letterStl(put), axis), kUpright) << axis;
        EXPECT_EQ(seen("f.ply", letterPly(put), axis), kUpright) << axis;
        EXPECT_EQ(seen("f.fbx", letterFbx(put, 1), axis), kUpright) << axis;
        EXPECT_EQ(seen("f.fbx", letterFbx(put, 2), axis), kUpright) << axis;
        EXPECT_EQ(seen("f.dae", letterCollada(put, "Y_UP"), axis), kUpright) << axis;
        EXPECT_EQ(seen("f.dae", letterCollada(put, "Z_UP"), axis), kUpright) << axis;
    }
}

}  // namespace
