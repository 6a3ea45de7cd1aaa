// Models as they are found in the wild, in many formats.

#include <ostream>

#include "image.h"
#include "process.h"

namespace
{

using zebtest::Image;

// What is known of a model's outline at the default view.
enum Shape {
    kConvex,      // nearly: no gap in any row, no crack anywhere
    kSolid,       // no see-through holes
    kSeeThrough,  // nothing is known
};

struct ModelFile {
    const char* name;
    const char* path;
    Shape shape;
    double coverage;  // of the picture
    int contrast = 40;
    const char* missing = "";  // the texture that is not there
    const char* up = "";       // where it is not the axis that is usual for the format
};

void PrintTo(const ModelFile& model, std::ostream* out) { *out << model.path; }

// Where Debian's assimp-testmodels and glmark2-data have their models.
constexpr const char* kFolders[] = {"/usr/share/assimp/models/", "/usr/share/glmark2/models/"};

const ModelFile kModels[] = {
    {"ObjBunny", "bunny.obj", kSolid, 0.34},
    {"ObjSpider", "OBJ/spider.obj", kSeeThrough, 0.24},
    {"ObjBox", "OBJ/box.obj", kConvex, 0.55},
    {"ObjBull", "OBJ/WusonOBJ.obj", kSolid, 0.30},
    {"ObjVertexColors", "OBJ/cube_with_vertexcolors.obj", kConvex, 0.55},
    {"PlyBull", "PLY/Wuson.ply", kSolid, 0.30},
    {"PlyCube", "PLY/cube.ply", kConvex, 0.55},
    {"PlyBinaryCube", "PLY/cube_binary.ply", kConvex, 0.55},
    {"StlSphere", "STL/sphereWithHole.stl", kConvex, 0.51},
    {"StlBull", "STL/Wuson.stl", kSolid, 0.30, 40, "", "y"},
    {"StlSpider", "STL/Spider_binary.stl", kSeeThrough, 0.20},
    {"3dsCat", "cat.3ds", kSolid, 0.45},
    {"3dsHorse", "horse.3ds", kSeeThrough, 0.22},
    {"3dsAsteroid", "asteroid-low.3ds", kConvex, 0.56},
    {"3dsRock", "3DS/fels.3ds", kConvex, 0.46},
    {"3dsCubes", "3DS/cubes_with_alpha.3DS", kSolid, 0.49, 40, "BERETTA_.JPG"},
    {"OffCube", "OFF/Cube.off", kConvex, 0.55},
    {"OffBull", "OFF/Wuson.off", kSolid, 0.30},
    {"GltfTruck", "glTF/CesiumMilkTruck/CesiumMilkTruck.gltf", kSeeThrough, 0.57},
    {"Gltf2Box", "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", kConvex, 0.55},
    {"Gltf2BadNormals", "glTF2/BoxBadNormals-glTF-Binary/BoxBadNormals.glb", kConvex, 0.55, 20},
    {"Gltf2Engine", "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", kSolid, 0.37},
    {"ColladaDuck", "Collada/duck.dae", kSolid, 0.42},
    {"ColladaTeapots", "Collada/teapots.DAE", kSeeThrough, 0.41, 40,
     "..\\LWO\\LWO2\\MappingModes\\earthSpherical.jpg"},
    {"XBull", "X/Testwuson.X", kSolid, 0.39},
    {"Md2Figure", "MD2/sydney.md2", kSeeThrough, 0.09},
    {"FbxHammer", "FBX/huesitos.fbx", kSolid, 0.30},
    {"BlendMonkey", "BLEND/Suzanne_248.blend", kSolid, 0.51},
};

class Models : public zebtest::Zebview, public testing::WithParamInterface<ModelFile>
{
};

// The distance from the picture's border to the shape, on both sides of an axis.
struct Gaps {
    int before, after, size;

    bool centered() const { return std::abs(before - after) <= 3; }
    // The camera leaves 6 % of half the picture free; some more goes to steps of whole pixels.
    bool fills() const { return before <= 0.03 * size + 3 && after <= 0.03 * size + 3; }
};

TEST_P(Models, ShowWholeAndWithoutHoles)
{
    const ModelFile& model = GetParam();
    std::string path = kFolders[0] + std::string(model.path);
    if (!std::filesystem::exists(path)) path = kFolders[1] + std::string(model.path);
    ASSERT_TRUE(std::filesystem::exists(path))
        << model.path << " is missing: install assimp-testmodels and glmark2-data";
    const std::string said =
        *model.missing
            ? "zebview: " + path + ": texture " + model.missing +
                  " is not shown: it is not in the model's folder; --textures DIR names another\n"
            : "";
    std::vector<std::string> options;
    if (*model.up) options = {"--up", model.up};
    const Image image(render(path, options, "picture.png", said));
    ASSERT_EQ(image.width, 160);
    ASSERT_EQ(image.height, 120);
    EXPECT_TRUE(image.hasAlpha);

    EXPECT_GT(image.coverage(), model.coverage * 0.85);
    EXPECT_LT(image.coverage(), model.coverage * 1.15);
    EXPECT_GE(image.contrast(), model.contrast);

    const Gaps x{image.left, image.width - 1 - image.right, image.width};
    const Gaps y{image.top, image.height - 1 - image.bottom, image.height};
    EXPECT_GE(std::min({x.before, x.after, y.before, y.after}), 1) << "touches the border";
    EXPECT_TRUE(x.fills() || y.fills()) << "is smaller than it could be";
    EXPECT_TRUE(x.centered() && y.centered()) << "is not in the middle";

    if (model.shape != kSeeThrough) {
        EXPECT_EQ(image.holePixels(), 0);
    }
    if (model.shape == kConvex) {
        EXPECT_EQ(image.gapPixels(), 0);
        EXPECT_EQ(image.crackPixels(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Models, testing::ValuesIn(kModels),
                         [](const auto& test) { return test.param.name; });

}  // namespace
