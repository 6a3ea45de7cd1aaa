// A folder of a test's own, with short ways to look at files.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

namespace zebtest
{

// Empty at first, and gone at the end.
class Folder
{
public:
    Folder()
        : fPath(std::filesystem::path(testing::TempDir()) /
                ("zeb-folder-" + std::to_string(getpid())))
    {
        clear();
        std::filesystem::create_directories(fPath);
    }
    ~Folder() { clear(); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return fPath; }
    std::filesystem::path operator/(const std::filesystem::path& name) const
    {
        return fPath / name;
    }
    // How many files there are in it.
    long size() const
    {
        return static_cast<long>(std::distance(std::filesystem::directory_iterator(fPath),
                                               std::filesystem::directory_iterator()));
    }

private:
    void clear()
    {
        std::error_code ignored;
        std::filesystem::permissions(fPath, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(fPath);
    }
    std::filesystem::path fPath;
};

inline std::string contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void put(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace zebtest
