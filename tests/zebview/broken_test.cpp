// Models that mislead their readers, and models that are broken at random: a picture or a line.

#include <cstdlib>
#include <cstring>
#include <random>

#include "gltf.h"
#include "process.h"

namespace
{

using zebtest::Outcome;

using Words = std::vector<std::string>;

namespace fs = std::filesystem;

const char* const kModels = "/usr/share/assimp/models/";

class Broken : public zebtest::Zebview
{
protected:
    // ZEBVIEW_ROUNDS asks for more.
    static int rounds()
    {
        const char* const wanted = std::getenv("ZEBVIEW_ROUNDS");
        return wanted ? std::atoi(wanted) : 2;
    }

    std::size_t below(std::size_t bound)
    {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(fRandom);
    }
    template <class Value, std::size_t count>
    Value oneOf(const Value (&values)[count])
    {
        return values[below(count)];
    }

    // One thing wrong with it, or a few.
    std::string broken(std::string data)
    {
        for (std::size_t left = 1 + below(3); left > 0 && data.size() > 8; --left) {
            const std::size_t at = below(data.size() - 4);
            switch (below(6)) {
                case 0:
                    data.resize(at);
                    break;
                case 1:
                    data[at] = static_cast<char>(below(256));
                    break;
                case 2: {
                    static constexpr std::uint32_t counts[] = {
                        0xFFFFFFFF, 0x7FFFFFFF, 0x80000000, 0x40000000, 0x10000000, 0xFFFF, 0};
                    const std::uint32_t count = oneOf(counts);
                    std::memcpy(&data[at], &count, 4);
                    break;
                }
                case 3:
                    breakNumber(data, at);
                    break;
                case 4:
                    data.erase(at, 1 + below(200));
                    break;
                default:
                    data.insert(at, data.substr(below(data.size()), 1 + below(200)));
                    break;
            }
        }
        return data;
    }
    void breakNumber(std::string& data, std::size_t at)
    {
        static constexpr const char* digits = "0123456789";
        static constexpr const char* numbers[] = {
            "-1", "0", "99999999999999999999", "4294967295", "2147483647", "1e39", "nan", "-7e-46"};
        const std::size_t begin = data.find_first_of(digits, at);
        if (begin == std::string::npos) return;
        const std::size_t end = std::min(data.find_first_not_of(digits, begin), data.size());
        data.replace(begin, end - begin, oneOf(numbers));
    }

    void expectPictureOrLine(const std::string& name, const std::string& what)
    {
        const Outcome outcome = run({name, "-o", "x.png", "--size", "24x18", "--samples", "1",
                                     "--rate", "64", "--read-limit", "2"});
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << what << outcome.status;
        EXPECT_EQ(fs::exists(path("x.png")), outcome.status == 0) << what;
        std::istringstream lines(outcome.err);
        long count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_EQ(line.rfind("zebview: ", 0), 0U) << what << line;
            EXPECT_LT(line.size(), 1000U) << what;
        }
        EXPECT_LE(count, outcome.status == 0 ? 4 : 2) << what << outcome.err;
        EXPECT_TRUE(outcome.status == 0 || count > 0) << what;
        fs::remove(path("x.png"));
    }

    // Every format by the smallest files that there are.
    static std::vector<fs::path> models()
    {
        std::vector<fs::path> result;
        std::vector<fs::path> folders;
        for (const auto& entry : fs::directory_iterator(kModels)) {
            if (entry.is_directory()) folders.push_back(entry.path());
        }
        std::sort(folders.begin(), folders.end());
        for (const fs::path& folder : folders) {
            std::vector<std::pair<std::uintmax_t, fs::path>> files;
            for (const auto& entry : fs::recursive_directory_iterator(folder)) {
                if (!entry.is_regular_file() || entry.file_size() > 100'000) continue;
                files.emplace_back(entry.file_size(), entry.path());
            }
            std::sort(files.begin(), files.end());
            for (std::size_t i = 0; i < files.size(); i += 1 + files.size() / 3) {
                result.push_back(files[i].second);
            }
        }
        return result;
    }

    std::mt19937 fRandom;
};

TEST_F(Broken, ModelsOfEveryFormatMakeAPictureOrALine)
{
    const std::vector<fs::path> all = models();
    ASSERT_GT(all.size(), 60U);
    for (int round = 0; round < rounds(); ++round) {
        fRandom.seed(static_cast<unsigned>(round));
        for (const fs::path& file : all) {
            const std::string name =
                write("broken" + file.extension().string(), broken(read(file)));
            expectPictureOrLine(name, file.string() + ' ' + std::to_string(round) + ": ");
        }
    }
}

class Misleading : public zebtest::Zebview
{
protected:
    // Within the limits for files of their size, with a sanitizer's delay.
    void expectLine(const std::string& name, const std::string& part, const Words& more = {})
    {
        Words arguments{name, "-o", "x.png", "--size", "24x18"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1) << name;
        EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
        EXPECT_EQ(outcome.err.rfind("zebview: " + name + ": cannot be read: ", 0), 0U)
            << outcome.err;
        EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
        EXPECT_EQ(files(), Words{name});
        fs::remove(path(name));
    }
    std::string manyFaces(int count)
    {
        std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
        for (int i = 0; i < count; ++i) text += "f 1 2 3\n";
        return write("many.obj", text);
    }
    std::string nodes(const std::string& list)
    {
        return write("nodes.gltf",
                     R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[)" +
                         list +
                         R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],)"
                         R"("buffers":[{"byteLength":36,"uri":)"
                         R"("data:application/octet-stream;base64,)" +
                         zebtest::base64(std::string(36, '\0')) +
                         R"("}],"bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[{)"
                         R"("bufferView":0,"componentType":5126,"count":3,"type":"VEC3",)"
                         R"("min":[0,0,0],"max":[0,0,0]}]})");
    }
};

TEST_F(Misleading, ReadersAreStoppedAfterAWhile)
{
    expectLine(manyFaces(500'000), "it takes more than 0.01 seconds (--read-limit)",
               {"--read-limit", "0.01"});
}

TEST_F(Misleading, ReadersThatAreToldToEndDoSo)
{
    const pid_t pid = start({manyFaces(3'000'000), "-o", "x.png"});
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    kill(pid, SIGTERM);
    const Outcome outcome = finish(pid);
    EXPECT_EQ(outcome.status, 1000 + SIGTERM);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(files(), Words{"many.obj"});
}

TEST_F(Misleading, NodesThatHoldThemselves)
{
    expectLine(nodes(R"({"children":[0],"mesh":0})"), "");
    expectLine(nodes(R"({"children":[1]},{"children":[0],"mesh":0})"), "");
}

TEST_F(Misleading, ReadersThatCrashAreToldOf)
{
    std::string nested;
    for (int i = 1; i <= 300'000; ++i) nested += "{\"children\":[" + std::to_string(i) + "]},";
    expectLine(nodes(nested + R"({"mesh":0})"), "its reader has crashed");
}

// A sanitizer gives a program up that asks for too much.
#ifndef ZEB_SANITIZED
TEST_F(Misleading, MoreMemoryThanFilesOfTheirSizeNeedIsRefused)
{
    const std::string vertices =
        "element vertex 800000000\nproperty float x\nproperty float y\nproperty float z\n";
    const std::string faces =
        "element face 800000000\nproperty list uchar int vertex_indices\nend_header\n";
    expectLine(write("claim.ply", "ply\nformat ascii 1.0\n" + vertices + faces + "0 0 0\n"),
               "it takes more than 2048 MiB of memory");
    expectLine(write("claim.ply", "ply\nformat binary_little_endian 1.0\n" + vertices + faces +
                                      std::string(36, '\0')),
               "it takes more than 2048 MiB of memory");
    expectLine(write("claim.off", "OFF\n2000000000 2000000000 0\n0 0 0\n"),
               "it takes more than 2048 MiB of memory");
    // Each node stands in the next one twice.
    std::string doubled;
    for (int i = 1; i <= 40; ++i) {
        const std::string next = std::to_string(i);
        doubled += "{\"children\":[" + next + ',' + next + "]},";
    }
    expectLine(nodes(doubled + R"({"mesh":0})"), "it takes more than 2048 MiB of memory");
}
#endif

TEST_F(Misleading, ReadersDoNotWriteToTheTerminal)
{
    const Outcome outcome = run({write("nothing.ogex", "Nonsense {}\n"), "-o", "x.png"});
    EXPECT_EQ(outcome.err, "zebview: nothing.ogex: it has nothing to show\n");
}

// The reader has made room for nodes of groups that do not follow.
TEST_F(Misleading, NodesThatAreMissing)
{
    const std::string whole = read(std::string(kModels) + "RAW/WithColor.raw");
    const Outcome outcome = run({write("groups.raw", whole.substr(0, 155)), "-o", "x.png"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "zebview: groups.raw: it has nothing to show\n");
}

}  // namespace
