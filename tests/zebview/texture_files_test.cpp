// Which files are read for textures, and what becomes of bad ones.

#include <sys/stat.h>
#include <zlib.h>

#include "textured.h"

namespace
{

using zebtest::Image;
using zebtest::kPicture;
using zebtest::kUnlit;
using zebtest::Outcome;
using zebtest::Pixel;
using zebtest::pngOf;
using zebtest::texturedPlate;

using Words = std::vector<std::string>;

const Pixel kPaint{200, 30, 40, 255}, kBare{255, 255, 255, 255};

class TextureFiles : public zebtest::Zebview
{
protected:
    TextureFiles() { std::filesystem::create_directory(path("in")); }

    // What the middle of a plate shows whose texture goes by a name, and what is said of it.
    Pixel shown(const std::string& name, std::string* said = nullptr, Words options = {}) const
    {
        zebtest::GltfPlate plate = texturedPlate(kPicture, kUnlit);
        plate.extra.replace(plate.extra.find("a.png"), 5, name);
        const std::string model = write("in/plate.gltf", plate.text());
        options.insert(options.end(), {model, "-o", "p.png", "--size", "40x40", "--view", "0,0"});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, 0) << name;
        if (said) {
            *said = outcome.err;
        } else {
            EXPECT_EQ(outcome.err, "") << name;
        }
        return Image(path("p.png")).at(20, 20);
    }
    void expectRefused(const std::string& name, const std::string& reason) const
    {
        std::string said;
        EXPECT_EQ(shown(name, &said), kBare) << name;
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
        EXPECT_EQ(said.find("zebview: in/plate.gltf: texture "), 0U) << said;
        EXPECT_NE(said.find(reason), std::string::npos) << said;
    }
};

TEST_F(TextureFiles, AreFoundInTheModelsFolder)
{
    std::filesystem::create_directory(path("in/sub"));
    write("in/sub/a.png", pngOf(kPaint));
    write("in/Two Words.PNG", pngOf(kPaint));
    EXPECT_EQ(shown("sub/a.png"), kPaint);
    EXPECT_EQ(shown("./sub/../sub/a.png"), kPaint);
    EXPECT_EQ(shown("sub\\\\a.png"), kPaint);
    EXPECT_EQ(shown("Two Words.PNG"), kPaint);
    EXPECT_EQ(shown("Two%20Words.PNG"), kPaint);
    EXPECT_EQ(shown("two words.png"), kPaint);
    // Of another machine.
    EXPECT_EQ(shown("C:\\\\art\\\\two words.png"), kPaint);
    EXPECT_EQ(shown("/home/somebody/Two Words.PNG"), kPaint);
    EXPECT_EQ(shown("../Two Words.PNG"), kPaint);
}

TEST_F(TextureFiles, AreNotReadElsewhere)
{
    write("secret.png", pngOf(kPaint));
    std::filesystem::create_symlink("../secret.png", path("in/link.png"));
    std::filesystem::create_directory_symlink("..", path("in/up"));
    const std::string reason = "it is not in the model's folder; --textures DIR names another";
    for (const std::string& name :
         {std::string("../secret.png"), std::string("..\\\\secret.png"), path("secret.png"),
          "file://" + path("secret.png"), std::string("link.png"), std::string("up/secret.png"),
          std::string("%2e%2e/secret.png"), std::string("..")}) {
        expectRefused(name, reason);
    }
}

TEST_F(TextureFiles, AreReadInAFolderThatIsNamed)
{
    std::filesystem::create_directory(path("art"));
    write("art/a.png", pngOf(kPaint));
    const Words named{"--textures", "art"};
    std::string said;
    EXPECT_EQ(shown("a.png", &said, named), kPaint);
    EXPECT_EQ(said, "");
    EXPECT_EQ(shown("D:\\\\x\\\\a.png", &said, named), kPaint);
    EXPECT_EQ(shown("../art/a.png", &said, named), kPaint);
    EXPECT_EQ(said, "");
    expectRefused("a.png", "it is not in the model's folder");
}

TEST_F(TextureFiles, MustBeFilesAndPictures)
{
    std::filesystem::create_directory(path("in/folder.png"));
    expectRefused("folder.png", "it is not in the model's folder");
    ASSERT_EQ(mkfifo(path("in/pipe.png").c_str(), 0600), 0);
    expectRefused("pipe.png", "it is not in the model's folder");
    write("in/empty.png", "");
    expectRefused("empty.png", "texture empty.png is not shown: ");
    write("in/text.png", "This is no picture.\n");
    expectRefused("text.png", "texture text.png is not shown: ");
    expectRefused("line\\nbreak.png", "it is not in the model's folder");
}

TEST_F(TextureFiles, ThatBreakOffAreNotShown)
{
    const std::string png = pngOf(64, 64, [](int x, int y) {
        return Pixel{x * 4, y * 4, x ^ y, 255};
    });
    std::string jpeg = read("/usr/share/assimp/models/OBJ/drkwood2.jpg");
    ASSERT_GT(jpeg.size(), 1000U);
    write("in/a.png", png);
    write("in/a.jpg", jpeg);
    EXPECT_NE(shown("a.png"), kBare);
    EXPECT_NE(shown("a.jpg"), kBare);
    for (const int eighths : {1, 4, 7}) {
        for (const auto& [name, whole] : {std::pair{"a.png", png}, {"a.jpg", jpeg}}) {
            write("in/" + std::string(name),
                  whole.substr(0, whole.size() * static_cast<std::size_t>(eighths) / 8));
            expectRefused(name, std::string("texture ") + name + " is not shown: ");
        }
    }
}

void append(std::string& bytes, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift & 255);
}

// The first bytes of a PNG file that claims to be as large.
std::string headerOf(std::uint32_t width, std::uint32_t height)
{
    std::string head = "IHDR";
    append(head, width);
    append(head, height);
    head += std::string("\x08\x06\x00\x00\x00", 5);
    std::string file = std::string("\x89PNG\r\n\x1a\n") + std::string("\0\0\0\x0d", 4) + head;
    append(file, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(head.data()),
                                                  static_cast<uInt>(head.size()))));
    return file + std::string("\0\0\0\0IDAT", 8);
}

TEST_F(TextureFiles, ThatClaimToBeHugeAreRefused)
{
    const std::string reason = "it is larger than 16384 pixels a side or 64 million in all";
    for (const auto& [width, height] :
         {std::pair{16385U, 1U}, {1U, 16385U}, {8193U, 8193U}, {2000000000U, 2000000000U}}) {
        write("in/a.png", headerOf(width, height));
        if (width < 1000000) {
            expectRefused("a.png", reason);
        } else {
            expectRefused("a.png", "texture a.png is not shown: ");
        }
    }
    write("in/a.png", pngOf(16384, 1, [](int, int) { return kPaint; }));
    EXPECT_EQ(shown("a.png"), kPaint);
}

TEST_F(TextureFiles, EachIsReportedOnce)
{
    write("in/m.mtl", "newmtl a\nmap_Kd none.png\nnewmtl b\nmap_Kd none.png\nmap_Ks other.png\n");
    write("in/two.obj",
          "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nvt 0 0\nusemtl a\nf 1/1 2/1 3/1\n"
          "usemtl b\nf 3/1 2/1 1/1\n");
    const Outcome outcome = run({"in/two.obj", "-o", "p.png", "--size", "40x40"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errorLines(), 2) << outcome.err;
}

}  // namespace
