// A mesh that several nodes show is kept once, and looks as if each had its own.

#include "gltf.h"
#include "image.h"
#include "process.h"

namespace
{

using zebtest::base64;
using zebtest::bytesOf;
using zebtest::Image;
using zebtest::Outcome;

// Two square pyramids, base to base, so high. Their faces meet at a sharp angle where they are as
// high as wide; where they are flat they are smoothed.
class Copies : public zebtest::Zebview
{
protected:
    // separate  every node has a mesh of its own
    std::string file(const std::vector<std::string>& nodes, bool separate, bool normals = false,
                     const std::string& material = "{}") const
    {
        const std::vector<float> points{1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0, -1, 0, 1, 0, 0, -1, 0};
        const std::vector<std::uint16_t> corners{4, 1, 0, 4, 2, 1, 4, 3, 2, 4, 0, 3,
                                                 5, 0, 1, 5, 1, 2, 5, 2, 3, 5, 3, 0};
        const std::string data = bytesOf(points) + bytesOf(corners);
        std::string text = R"({"asset":{"version":"2.0"},"scene":0,"nodes":[)", list, meshes;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const std::string comma = i > 0 ? "," : "";
            text += comma + "{\"mesh\":" + std::to_string(separate ? i : 0) + ',' + nodes[i] + '}';
            list += comma + std::to_string(i);
            meshes += comma + R"({"primitives":[{"attributes":{"POSITION":0)" +
                      (normals ? R"(,"NORMAL":0)" : "") + R"(},"indices":1,"material":0}]})";
        }
        text += R"(],"scenes":[{"nodes":[)" + list + R"(]}],"meshes":[)" + meshes +
                R"(],"materials":[)" + material + R"(],"buffers":[{"byteLength":)" +
                std::to_string(data.size()) + R"(,"uri":"data:application/octet-stream;base64,)" +
                base64(data) +
                R"("}],"bufferViews":[{"buffer":0,"byteLength":72},)"
                R"({"buffer":0,"byteOffset":72,"byteLength":48}],"accessors":[)"
                R"({"bufferView":0,"componentType":5126,"count":6,"type":"VEC3",)"
                R"("min":[-1,-1,-1],"max":[1,1,1]},)"
                R"({"bufferView":1,"componentType":5123,"count":24,"type":"SCALAR"}]})";
        return write(separate ? "separate.gltf" : "shared.gltf", text);
    }
    // How many meshes are kept for the nodes, which look the same whether they share or not.
    std::string expectAlike(const std::vector<std::string>& nodes, bool normals = false,
                            const std::string& material = "{}") const
    {
        const Image own(render(file(nodes, true, normals, material)));
        const std::string shared = file(nodes, false, normals, material);
        const Image image(render(shared));
        EXPECT_GT(own.coverage(), 0.1);
        // Where edges cross pixels, samples may fall on either side.
        EXPECT_LE(difference(own, image), 16) << nodes[0];
        const Outcome outcome = run({shared, "-v", "-o", "a.png", "--size", "20x20"});
        const std::size_t start = outcome.err.find(": ", 10) + 2;
        return outcome.err.substr(start, outcome.err.find(',', start) - start);
    }
};

TEST_F(Copies, LookLikeMeshesOfTheirOwn)
{
    const std::vector<std::string> nodes{
        R"("translation":[0,0,0])", R"("translation":[2.5,1,0],"rotation":[0,0,0.6,0.8])",
        R"("translation":[0,2.5,0],"scale":[0.5,0.5,0.5],"rotation":[0.8,0,0,0.6])",
        R"("translation":[-2,0,1],"scale":[2,2,2])"};
    EXPECT_EQ(expectAlike(nodes), "1 mesh");
    EXPECT_EQ(expectAlike(nodes, true), "1 mesh");
}

// Only the front shows: a mirror image that were turned inside out would show its back.
TEST_F(Copies, ThatAreMirroredKeepTheirFront)
{
    const std::string right = R"("translation":[1.2,0,0],"rotation":[0,0,0.6,0.8])";
    const std::string mirrored = R"("translation":[-1.2,0,0],"scale":[-1,1,1])";
    for (const bool normals : {false, true}) {
        EXPECT_EQ(expectAlike({right, mirrored}, normals), "1 mesh");
        EXPECT_EQ(expectAlike({mirrored, right}, normals), "1 mesh");
    }
}

// They are smoothed by the angles between their faces, and these differ.
TEST_F(Copies, ThatAreStretchedAreMeshesOfTheirOwn)
{
    const std::string plain = R"("translation":[1.2,0,0])";
    const std::string flat = R"("translation":[-1.2,0,0],"scale":[1,0.2,1.4])";
    const std::string small = R"("translation":[0,1,1],"scale":[0.5,0.1,0.7])";
    EXPECT_EQ(expectAlike({plain, flat}), "2 meshes");
    EXPECT_EQ(expectAlike({plain, flat, small}, true), "2 meshes");
}

TEST_F(Copies, WithoutAnExtentAreMeshesOfTheirOwn)
{
    const std::string plain = R"("translation":[1.2,0,0])";
    const std::string flat = R"("translation":[-1.2,0,0],"scale":[1,0,1])";
    EXPECT_EQ(expectAlike({flat, plain, flat}, true), "3 meshes");
    // So thin that only their being thin is seen of their shape.
    const std::string thin = R"("scale":[1,1,0.0001])";
    const std::string thicker = R"("translation":[2,0,0],"scale":[1,1,0.001])";
    EXPECT_EQ(expectAlike({thin, thicker}), "2 meshes");
}

TEST_F(Copies, AreCounted)
{
    const std::string shared =
        file({R"("translation":[0,0,0])", R"("translation":[3,0,0])"}, false);
    const Outcome outcome = run({shared, "-v", "-o", "a.png", "--size", "20x20"});
    EXPECT_NE(outcome.err.find("0 lights, 2 instances that share "), std::string::npos)
        << outcome.err;
}

}  // namespace
