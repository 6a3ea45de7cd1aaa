// Picture files under bad conditions: full disks, other processes, pipes, folders that take no
// file. What was there stays until a whole picture takes its place, and what goes wrong is
// reported.

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "support/folder.h"
#include "support/posix.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

namespace fs = std::filesystem;

constexpr short kKinds[] = {ZEB_FILE_PNG, ZEB_FILE_PNG_INDEXED, ZEB_FILE_EXR};

class FileSafety : public RasterTest
{
protected:
    // A picture that differs with the colour, up to its last bucket.
    void begin(const fs::path& path, short kind, float red)
    {
        zebReset();
        raster(40, 40);
        zebOutputSamples(ZEB_SAMPLES_RGB);
        zebColorQuantize(255, 0, 255);
        zebOutputFile(kind, path.c_str());
        beginFlat();
        for (int k = 0; k < 20; ++k) {
            color(red, static_cast<float>(k * 7 % 20) / 20, static_cast<float>(k * 3 % 20) / 20);
            const auto x = static_cast<float>(2 * k);
            rectangle(x, 0.5f * x, x + 5, 40, 0.5f);
        }
        zebRenderInit();
        zebRenderBucket();
    }
    void render(const fs::path& path, short kind, float red = 0.5f)
    {
        begin(path, kind, red);
        zebSceneEnd();
    }
    std::string bytesOf(short kind, float red)
    {
        const fs::path path = folder / "reference";
        render(path, kind, red);
        std::string bytes = contents(path);
        fs::remove(path);
        return bytes;
    }
    void expectReport(const char* function, int why, const fs::path& path) const
    {
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        const std::string text = std::string(function) + ": cannot write (" + std::strerror(why) +
                                 "): \"" + path.string() + "\"";
        EXPECT_EQ(reports[0].message, text.substr(0, 123));
    }

    Folder folder;
};

}  // namespace

TEST_F(FileSafety, APictureThatDoesNotFitLeavesTheOldFile)
{
    for (const short kind : kKinds) {
        put(folder / "a", "old");
        const rlim_t size = bytesOf(kind, 0.5f).size();
        for (const rlim_t most : {rlim_t{0}, size / 2, size - 1}) {
            reports.clear();
            const SignalCount count(SIGXFSZ);
            const FileLimit limit(most);
            render(folder / "a", kind);
            expectReport("zebSceneEnd", EFBIG, folder / "a");
            EXPECT_EQ(contents(folder / "a"), "old") << kind << ", " << most;
            EXPECT_EQ(folder.size(), 1);
            EXPECT_EQ(SignalCount::count(), 0);
        }
        reports.clear();
        const FileLimit limit(size);
        render(folder / "a", kind);
        EXPECT_TRUE(reports.empty()) << kind;
        EXPECT_EQ(contents(folder / "a").size(), size);
    }
}

// Of a message 123 characters reach the host.
TEST_F(FileSafety, TheReasonComesBeforeALongName)
{
    const fs::path path = folder / "missing" / (std::string(200, 'x') + ".png");
    render(path, ZEB_FILE_PNG);
    expectReport("zebSceneBegin", ENOENT, path);
    EXPECT_NE(reports[0].message.find(std::strerror(ENOENT)), std::string::npos);
}

TEST_F(FileSafety, AFolderThatTakesNoFileIsWarnedOf)
{
    const std::string expected = bytesOf(ZEB_FILE_PNG, 0.5f);
    const fs::path path = folder / "a";
    put(path, "old");
    chmod(path.c_str(), 0666);
    chmod(folder.path().c_str(), 0555);
    {
        const Nobody nobody;
        render(path, ZEB_FILE_PNG);
    }
    chmod(folder.path().c_str(), 0755);
    EXPECT_EQ(contents(path), expected);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_EQ(reports[0].severity, ZEB_WARNING);
    EXPECT_EQ(reports[0].message,
              ("zebSceneBegin: written in place, it cannot be replaced: \"" + path.string() + "\"")
                  .substr(0, 123));
}

TEST_F(FileSafety, LinksAndModesStay)
{
    const std::string expected = bytesOf(ZEB_FILE_PNG, 0.5f);
    put(folder / "a", "old");
    chmod((folder / "a").c_str(), 0640);
    fs::create_symlink("a", folder / "link");
    render(folder / "link", ZEB_FILE_PNG);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(contents(folder / "a"), expected);
    EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms{0640});
    EXPECT_EQ(folder.size(), 2);
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileSafety, ProcessesThatWriteOneFileWriteWholePictures)
{
    for (const short kind : kKinds) {
        const std::string one = bytesOf(kind, 0), two = bytesOf(kind, 1);
        ASSERT_NE(one, two);
        pid_t children[2];
        for (int k = 0; k < 2; ++k) {
            children[k] = fork();
            if (children[k] != 0) continue;
            for (int time = 0; time < 30; ++time) {
                render(folder / "a", kind, static_cast<float>(k));
            }
            for (std::size_t r = 0; r < reports.size(); ++r) {
                std::fprintf(stderr, "%s\n", reports[r].message.c_str());
            }
            _exit(reports.empty() ? 0 : 1);
        }
        // Whoever looks meanwhile sees a whole picture too.
        int left = 2, status = 0;
        while (left > 0) {
            const pid_t ended = waitpid(-1, &status, WNOHANG);
            if (ended > 0) {
                --left;
                EXPECT_EQ(status, 0) << "it reported something";
            }
            const std::string seen = contents(folder / "a");
            ASSERT_TRUE(seen.empty() || seen == one || seen == two) << seen.size();
        }
        EXPECT_FALSE(contents(folder / "a").empty());
        EXPECT_EQ(folder.size(), 1);
        fs::remove(folder / "a");
    }
}

TEST_F(FileSafety, AProcessThatAbortsLeavesWhatTheNextPictureRemoves)
{
    put(folder / "a", "old");
    EXPECT_NE(inChild([&] {
                  begin(folder / "a", ZEB_FILE_PNG, 0);
                  std::abort();
                  return 0;
              }),
              0);
    EXPECT_EQ(contents(folder / "a"), "old");
    EXPECT_LE(folder.size(), 2);
    render(folder / "a", ZEB_FILE_PNG);
    EXPECT_EQ(folder.size(), 1);
    EXPECT_TRUE(reports.empty());
}

// A picture is its process's: a copy of the process by a fork does not finish it, and does not take
// it away by ending.
TEST_F(FileSafety, AForkLeavesThePictureOfItsParentAlone)
{
    for (const short kind : kKinds) {
        const std::string expected = bytesOf(kind, 0.5f);
        put(folder / "a", "old");
        begin(folder / "a", kind, 0.5f);
        std::fflush(nullptr);
        EXPECT_EQ(inChild([] {
                      std::exit(0);
                      return 1;
                  }),
                  0);
        EXPECT_EQ(inChild([&] {
                      zebReset();
                      return reports.empty() ? 0 : 1;
                  }),
                  0);
        EXPECT_EQ(inChild([&] {
                      zebSceneEnd();
                      const bool reported =
                          reports.size() == 1 &&
                          reports[0].message.rfind(
                              "zebSceneEnd: cannot write (another process opened it)", 0) == 0;
                      return reported ? 0 : 1;
                  }),
                  0);
        EXPECT_EQ(contents(folder / "a"), "old");
        EXPECT_EQ(folder.size(), 2);
        zebSceneEnd();
        EXPECT_EQ(contents(folder / "a"), expected);
        EXPECT_EQ(folder.size(), 1);
        EXPECT_TRUE(reports.empty());
    }
}

TEST_F(FileSafety, AForkMakesPicturesOfItsOwn)
{
    const std::string expected = bytesOf(ZEB_FILE_PNG, 1);
    begin(folder / "a", ZEB_FILE_PNG, 0);
    EXPECT_EQ(inChild([&] {
                  render(folder / "b", ZEB_FILE_PNG, 1);
                  return reports.empty() ? 0 : 1;
              }),
              0);
    EXPECT_EQ(contents(folder / "b"), expected);
    EXPECT_EQ(folder.size(), 2);
}

TEST_F(FileSafety, APipeGetsWhatAFileWouldHold)
{
    const fs::path pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const short kind : kKinds) {
        const std::string expected = bytesOf(kind, 0.5f);
        std::string got;
        std::thread reader([&] { got = contents(pipe); });
        render(pipe, kind);
        reader.join();
        EXPECT_EQ(got, expected) << kind;
        EXPECT_TRUE(fs::is_fifo(pipe));
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(FileSafety, APipeWhoseReaderLeavesIsReported)
{
    const fs::path pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const short kind : kKinds) {
        reports.clear();
        const SignalCount count(SIGPIPE);
        const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
        begin(pipe, kind, 0.5f);
        close(reader);
        zebSceneEnd();
        expectReport("zebSceneEnd", EPIPE, pipe);
        EXPECT_EQ(SignalCount::count(), 0);
    }
}

}  // namespace zebtest
