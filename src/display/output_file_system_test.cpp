// Output files where other processes, links and rights meet them.

#if !defined(_WIN32)

#include <sys/stat.h>

#include "display/output_file.h"
#include "support/output_file_fixture.h"
#include "support/posix.h"

namespace zeb
{

namespace
{

namespace fs = std::filesystem;
using zebtest::contents;
using zebtest::inChild;
using zebtest::put;

class OutputFileSystem : public OutputFileFixture
{
};

}  // namespace

TEST_F(OutputFileSystem, WhatAProcessLeftBehindIsRemovedByTheNext)
{
    put(folder / "a", "old");
    const int status = inChild([&] {
        OutputFile file;
        _exit(file.open(folder / "a") && file.write("x", 1) ? 0 : 1);
        return 1;
    });
    ASSERT_EQ(status, 0);
    EXPECT_EQ(folder.size(), 2);
    make(folder / "b", "another");
    EXPECT_EQ(folder.size(), 3) << "another file leaves it alone";
    make(folder / "a", "new");
    EXPECT_EQ(contents(folder / "a"), "new");
    EXPECT_EQ(folder.size(), 2);
}

TEST_F(OutputFileSystem, WhatIsNoFileIsNotTakenForOneLeftBehind)
{
    ASSERT_EQ(mkfifo(first("a").c_str(), 0600), 0);
    const fs::path other = folder / "a.2000000000000000.part";
    put(folder / "precious", "x");
    fs::create_symlink("precious", other);
    make(folder / "a", "new");
    EXPECT_TRUE(fs::is_fifo(first("a")));
    EXPECT_TRUE(fs::is_symlink(other));
    EXPECT_EQ(contents(folder / "precious"), "x");
}

TEST_F(OutputFileSystem, ALinkUnderTheNameBesideItIsNotFollowed)
{
    fs::create_symlink("elsewhere", first("a"));
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a", counting));
    EXPECT_EQ(sNext, 3u);
    EXPECT_TRUE(file.finish());
    EXPECT_FALSE(fs::exists(folder / "elsewhere"));
}

TEST_F(OutputFileSystem, NamesOfUpTo255BytesWork)
{
    for (const std::size_t size : {200u, 233u, 234u, 255u}) {
        const fs::path path = folder / std::string(size, 'x');
        make(path, "text");
        EXPECT_EQ(contents(path), "text") << size;
        make(path, "again");
        EXPECT_EQ(contents(path), "again") << size;
    }
    EXPECT_EQ(folder.size(), 4);
    OutputFile file;
    EXPECT_FALSE(file.open(folder / std::string(256, 'x')));
    EXPECT_EQ(file.why(), std::strerror(ENAMETOOLONG));
}

TEST_F(OutputFileSystem, KeepsTheMode)
{
    for (const mode_t mode : {0640u, 0604u, 0444u}) {
        put(folder / "a", "old");
        chmod((folder / "a").c_str(), mode);
        make(folder / "a", "new");
        struct stat status;
        ASSERT_EQ(stat((folder / "a").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode);
        EXPECT_EQ(contents(folder / "a"), "new");
        fs::remove(folder / "a");
    }
}

TEST_F(OutputFileSystem, ANewFilesModeIsTheProcesss)
{
    const mode_t before = umask(027);
    make(folder / "a", "new");
    umask(before);
    EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms{0640});
}

// What is secret is secret while it is written.
TEST_F(OutputFileSystem, ThePlaceBesideItHasTheModeOfTheFile)
{
    put(folder / "a", "old");
    chmod((folder / "a").c_str(), 0600);
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a", alwaysOne));
    EXPECT_EQ(fs::status(first("a")).permissions(), fs::perms{0600});
}

TEST_F(OutputFileSystem, KeepsTheOwner)
{
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser gives files away";
    put(folder / "a", "old");
    ASSERT_EQ(chown((folder / "a").c_str(), 1234, 4321), 0);
    chmod((folder / "a").c_str(), 0751);
    make(folder / "a", "new");
    struct stat status;
    ASSERT_EQ(stat((folder / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234u);
    EXPECT_EQ(status.st_gid, 4321u);
    EXPECT_EQ(status.st_mode & 07777, 0751u);
    EXPECT_EQ(contents(folder / "a"), "new");
}

TEST_F(OutputFileSystem, ALinkStaysAndWhatItLeadsToIsReplaced)
{
    fs::create_directories(folder / "sub");
    put(folder / "sub" / "target", "old");
    fs::create_symlink("sub/relative", folder / "link");
    fs::create_symlink(folder / "sub" / "target", folder / "sub" / "relative");
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "link", alwaysOne));
    EXPECT_TRUE(fs::exists(folder / "sub" / "target.1000000000000000.part"));
    write(file, "new");
    EXPECT_TRUE(file.finish());
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_symlink(folder / "sub" / "relative"));
    EXPECT_EQ(contents(folder / "sub" / "target"), "new");
    EXPECT_EQ(folder.size(), 2);
}

TEST_F(OutputFileSystem, WhatALinkLeadsToIsMadeIfItIsNotThere)
{
    fs::create_symlink("target", folder / "link");
    make(folder / "link", "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(contents(folder / "target"), "new");
}

TEST_F(OutputFileSystem, ARelativeNameCountsFromWhereItWasGiven)
{
    const fs::path before = fs::current_path();
    fs::create_directory(folder / "sub");
    fs::current_path(folder.path());
    OutputFile file;
    EXPECT_TRUE(file.open("a")) << file.why();
    write(file, "text");
    fs::current_path(folder / "sub");
    EXPECT_TRUE(file.finish()) << file.why();
    fs::current_path(before);
    EXPECT_EQ(contents(folder / "a"), "text");
}

TEST_F(OutputFileSystem, LinksInACircleAreRefused)
{
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    OutputFile file;
    EXPECT_FALSE(file.open(folder / "a"));
    EXPECT_EQ(file.why(), std::strerror(ELOOP));
}

// Such as what the system shows as the standard output of a process.
TEST_F(OutputFileSystem, ALinkThatIsNoPathIsWrittenInPlace)
{
    const int number = open((folder / "a").c_str(), O_RDWR | O_CREAT, 0600);
    fs::remove(folder / "a");
    const fs::path link = "/proc/self/fd/" + std::to_string(number);
    OutputFile file;
    ASSERT_TRUE(file.open(link)) << file.why();
    EXPECT_TRUE(file.isInPlace());
    write(file, "new");
    EXPECT_TRUE(file.finish());
    char bytes[4] = "";
    EXPECT_EQ(pread(number, bytes, 4, 0), 3);
    EXPECT_STREQ(bytes, "new");
    EXPECT_EQ(folder.size(), 0);
    close(number);
}

// The number that the next file of the process will have.
int nextNumber()
{
    const int number = dup(0);
    close(number);
    return number;
}

TEST_F(OutputFileSystem, NothingIsReplacedByWhatCantBeKept)
{
    put(folder / "a", "old");
    const int number = nextNumber();
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a"));
    write(file, "new");
    // Pipes take what is written, but do not keep it.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(dup2(ends[1], number), number);
    EXPECT_FALSE(file.finish());
    EXPECT_EQ(file.why(), std::strerror(EINVAL));
    EXPECT_EQ(contents(folder / "a"), "old");
    EXPECT_EQ(folder.size(), 1);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(OutputFileSystem, AFailureToCloseIsOne)
{
    const int number = nextNumber();
    OutputFile file;
    ASSERT_TRUE(file.open("/dev/null"));
    ASSERT_EQ(close(number), 0);
    EXPECT_FALSE(file.finish()) << "there was nothing to write but the end";
    EXPECT_EQ(file.why(), std::strerror(EBADF));
}

TEST_F(OutputFileSystem, AFailureToGetTheNameIsOne)
{
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a"));
    write(file, "text");
    fs::create_directory(folder / "a");
    EXPECT_FALSE(file.finish());
    EXPECT_EQ(file.why(), std::strerror(EISDIR));
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(OutputFileSystem, ADeviceGetsAllOrNothing)
{
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int reader = open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    char bytes[16] = "";
    {
        OutputFile file;
        ASSERT_TRUE(file.open(folder / "pipe"));
        write(file, "unfinished");
    }
    EXPECT_EQ(read(reader, bytes, sizeof bytes), 0);
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "pipe"));
    write(file, "some bytes");
    ASSERT_TRUE(file.seek(5));
    write(file, "BYTES!");
    ASSERT_TRUE(file.seek(4));
    ASSERT_TRUE(file.read(bytes, 2));
    EXPECT_STREQ(bytes, " B");
    EXPECT_FALSE(file.read(bytes, 6)) << "five are left";
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(read(reader, bytes, sizeof bytes), 11);
    EXPECT_STREQ(bytes, "some BYTES!");
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    close(reader);
}

// A process that has it by a fork may end, discard or finish it: it stays its maker's.
TEST_F(OutputFileSystem, BelongsToTheProcessThatOpenedIt)
{
    put(folder / "a", "old");
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a", alwaysOne));
    write(file, "first, ");
    for (const char what : {'d', 'f', 'w'}) {
        const int status = inChild([&] {
            if (what == 'd') file.discard();
            if (what == 'f') return int{file.finish() || file.why() != "another process opened it"};
            if (what == 'w') return int{file.write("x", 1) || file.seek(0)};
            return 0;
        });
        EXPECT_EQ(status, 0) << what;
        EXPECT_TRUE(fs::exists(first("a"))) << what;
        EXPECT_EQ(contents(folder / "a"), "old") << what;
    }
    write(file, "second");
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(contents(folder / "a"), "first, second");
}

// The file of a folder that takes no others.
class InPlace : public OutputFileFixture
{
protected:
    InPlace()
    {
        put(path, "an old file");
        chmod(path.c_str(), 0666);
        chmod(folder.path().c_str(), 0555);
    }
    const fs::path path = folder / "a";
};

TEST_F(InPlace, AFileIsWrittenWhereNoneCanBeMadeBesideIt)
{
    const zebtest::Nobody nobody;
    OutputFile file;
    ASSERT_TRUE(file.open(path)) << file.why();
    EXPECT_TRUE(file.isInPlace());
    write(file, "a file");
    EXPECT_EQ(contents(path), "an old file") << "until it is finished";
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(contents(path), "a file") << "nothing of the old one is left at its end";
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(InPlace, DiscardedItLeavesTheOldFile)
{
    const zebtest::Nobody nobody;
    OutputFile file;
    ASSERT_TRUE(file.open(path));
    write(file, "x");
    file.discard();
    EXPECT_EQ(contents(path), "an old file");
    OutputFile failed;
    ASSERT_TRUE(failed.open(path));
    write(failed, "x");
    failed.fail("the writer's");
    EXPECT_FALSE(failed.finish());
    EXPECT_EQ(contents(path), "an old file");
}

TEST_F(InPlace, AFailureHalfwayLeavesNothingRatherThanAMixture)
{
    const zebtest::Nobody nobody;
    OutputFile file;
    ASSERT_TRUE(file.open(path));
    write(file, "longer than it may be");
    const zebtest::FileLimit limit(12);
    EXPECT_FALSE(file.finish());
    EXPECT_EQ(file.why(), std::strerror(EFBIG));
    EXPECT_EQ(contents(path), "");
}

TEST_F(InPlace, AFileOfAnotherProcessIsLeftAlone)
{
    const zebtest::Nobody nobody;
    OutputFile file;
    ASSERT_TRUE(file.open(path));
    write(file, "x");
    EXPECT_EQ(inChild([&] { return int{file.finish()}; }), 0);
    EXPECT_EQ(contents(path), "an old file");
}

TEST_F(InPlace, AFileThatMayNotBeWrittenEitherIsRefused)
{
    chmod(path.c_str(), 0444);
    const zebtest::Nobody nobody;
    OutputFile file;
    EXPECT_FALSE(file.open(path));
    EXPECT_EQ(file.why(), std::strerror(EACCES));
    OutputFile missing;
    EXPECT_FALSE(missing.open(folder / "b"));
    EXPECT_EQ(missing.why(), std::strerror(EACCES));
}

// To replace it would make it the process's own.
TEST_F(InPlace, SoIsAFileOfAnotherOwner)
{
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser has files of others";
    chmod(folder.path().c_str(), 0777);
    {
        const zebtest::Nobody nobody;
        OutputFile file;
        ASSERT_TRUE(file.open(path));
        EXPECT_TRUE(file.isInPlace());
        EXPECT_EQ(folder.size(), 1);
        write(file, "new");
        EXPECT_TRUE(file.finish());
        EXPECT_EQ(contents(path), "new");
    }
    chmod(path.c_str(), 0644);
    const zebtest::Nobody nobody;
    OutputFile file;
    EXPECT_FALSE(file.open(path));
    EXPECT_EQ(file.why(), std::strerror(EPERM));
    EXPECT_EQ(folder.size(), 1);
}

}  // namespace zeb

#endif
