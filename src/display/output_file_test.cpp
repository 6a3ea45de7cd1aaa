#include "display/output_file.h"

#include "display/file_path.h"
#include "support/output_file_fixture.h"

namespace zeb
{

namespace
{

namespace fs = std::filesystem;
using zebtest::contents;
using zebtest::put;

// A name with letters of several alphabets.
constexpr const char* kName = "zeb \xC3\xA9 \xCE\xB1 \xE8\xA1\xA8.png";

class OutputFileTest : public OutputFileFixture
{
};

}  // namespace

TEST_F(OutputFileTest, AppearsWhenItIsFinished)
{
    const fs::path path = folder / filePath(kName);
    OutputFile file;
    ASSERT_TRUE(file.open(path));
    EXPECT_TRUE(file.isOpen());
    EXPECT_FALSE(file.isInPlace());
    // No end of line is translated.
    write(file, "a\nb");
    EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(file.finish());
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(contents(path), "a\nb");
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(OutputFileTest, ReplacesWhatWasThere)
{
    put(folder / "a", "something longer");
    make(folder / "a", "new");
    EXPECT_EQ(contents(folder / "a"), "new");
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(OutputFileTest, DiscardedItLeavesWhatWasThere)
{
    put(folder / "a", "old");
    {
        OutputFile file;
        ASSERT_TRUE(file.open(folder / "a"));
        write(file, "new");
    }
    EXPECT_EQ(contents(folder / "a"), "old");
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(OutputFileTest, WithAFailureItLeavesWhatWasThere)
{
    put(folder / "a", "old");
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a"));
    write(file, "new");
    file.fail("the reason");
    file.fail("another");
    EXPECT_FALSE(file.write("x", 1));
    EXPECT_FALSE(file.seek(0));
    EXPECT_FALSE(file.finish());
    EXPECT_EQ(file.why(), "the reason") << "the first counts";
    EXPECT_EQ(contents(folder / "a"), "old");
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(OutputFileTest, AFailureWithoutAReasonIsOneToo)
{
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a"));
    file.fail("");
    EXPECT_FALSE(file.finish());
    EXPECT_FALSE(fs::exists(folder / "a"));
}

TEST_F(OutputFileTest, CanBeReadAndWrittenAnywhere)
{
    OutputFile file;
    ASSERT_TRUE(file.open(folder / "a"));
    const std::string much(200000, 'x');
    write(file, much);
    write(file, "end");
    EXPECT_EQ(file.position(), 200003u);
    ASSERT_TRUE(file.seek(2));
    write(file, "here");
    EXPECT_EQ(file.position(), 6u);
    char bytes[8] = "";
    ASSERT_TRUE(file.seek(1));
    ASSERT_TRUE(file.read(bytes, 6));
    EXPECT_STREQ(bytes, "xherex");
    EXPECT_EQ(file.position(), 7u);
    ASSERT_TRUE(file.seek(200000));
    EXPECT_FALSE(file.read(bytes, 4)) << "there are three";
    EXPECT_TRUE(file.finish()) << "which is no failure";
    EXPECT_EQ(contents(folder / "a"), "xxhere" + much.substr(6) + "end");
}

TEST_F(OutputFileTest, WhatCantBeOpenedSaysWhy)
{
    OutputFile file;
    EXPECT_FALSE(file.open(folder / "missing" / "a"));
    EXPECT_EQ(file.why(), std::strerror(ENOENT));
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(folder.size(), 0);
}

TEST_F(OutputFileTest, ATakenNameBesideItIsLeftAlone)
{
    OutputFile one, two;
    ASSERT_TRUE(one.open(folder / "a", alwaysOne));
    ASSERT_TRUE(fs::exists(first("a")));
    ASSERT_TRUE(two.open(folder / "a", counting)) << two.why();
    EXPECT_EQ(sNext, 3u) << "the second number is free";
    write(two, "two");
    EXPECT_TRUE(two.finish());
    write(one, "one");
    EXPECT_TRUE(fs::exists(first("a"))) << "it is in use";
    EXPECT_TRUE(one.finish());
    EXPECT_EQ(contents(folder / "a"), "one");
    EXPECT_EQ(folder.size(), 1);
}

TEST_F(OutputFileTest, WithoutAFreeNameItGivesUp)
{
    OutputFile one, two;
    ASSERT_TRUE(one.open(folder / "a", alwaysOne));
    EXPECT_FALSE(two.open(folder / "a", alwaysOne));
    EXPECT_EQ(two.why(), std::strerror(EEXIST));
    two.discard();
    EXPECT_TRUE(fs::exists(first("a"))) << "that is the first one's";
}

TEST_F(OutputFileTest, NumbersDiffer) { EXPECT_NE(randomNumber(), randomNumber()); }

TEST_F(OutputFileTest, FilesThatLookAlikeStay)
{
    const char* const names[] = {"a.part",
                                 "a.1000000000000000.par",
                                 "a.1000000000000000.trap",
                                 "a.100000000000000g.part",
                                 "a.10000000000000000.part",
                                 "b.1000000000000000.part",
                                 "a_1000000000000000.part"};
    for (const char* name : names) put(folder / name, "x");
    make(folder / "a", "new");
    for (const char* name : names) EXPECT_TRUE(fs::exists(folder / name)) << name;
}

}  // namespace zeb
