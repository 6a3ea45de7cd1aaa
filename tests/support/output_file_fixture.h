// What the tests of output files share.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "display/output_file.h"
#include "support/folder.h"

namespace zeb
{

class OutputFileFixture : public testing::Test
{
protected:
    OutputFileFixture() { sNext = 1; }

    // Numbers for temporary names.
    static std::uint64_t counting() { return sNext++; }
    static std::uint64_t alwaysOne() { return 1; }
    static inline std::uint64_t sNext = 1;
    // Where a file with the number 1 in its name is while it is written.
    std::filesystem::path first(const char* name) const
    {
        return folder / (std::string(name) + ".1000000000000000.part");
    }

    static void write(OutputFile& file, const std::string& text)
    {
        EXPECT_TRUE(file.write(text.data(), text.size())) << file.why();
    }
    // All steps of a file's life.
    static void make(const std::filesystem::path& path, const std::string& text)
    {
        OutputFile file;
        ASSERT_TRUE(file.open(path)) << file.why();
        write(file, text);
        EXPECT_TRUE(file.finish()) << file.why();
    }

    zebtest::Folder folder;
};

}  // namespace zeb
