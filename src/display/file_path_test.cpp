#include "display/file_path.h"

#include <gtest/gtest.h>

namespace zeb
{

namespace
{

namespace fs = std::filesystem;

// A name with letters of several alphabets.
constexpr const char* kName = "zeb \xC3\xA9 \xCE\xB1 \xE8\xA1\xA8.png";

}  // namespace

TEST(FilePath, NamesAreUtf8)
{
    EXPECT_EQ(filePath("plain.png"), fs::path("plain.png"));
    EXPECT_EQ(filePath(""), fs::path());
    EXPECT_EQ(filePath(kName), fs::path(u8"zeb \u00E9 \u03B1 \u8868.png"));
}

TEST(FilePath, BytesThatAreNoUtf8MakeAPathToo)
{
    const fs::path path = filePath("caf\xE9.png");
    EXPECT_EQ(path.extension(), ".png");
#if defined(_WIN32)
    EXPECT_EQ(path.native().size(), 8u) << "one letter a byte in the code page of the system";
    EXPECT_EQ(path.native().substr(0, 3), L"caf");
#else
    EXPECT_EQ(path.native(), "caf\xE9.png");
#endif
}

}  // namespace zeb
