// A PNG file that appears when it is whole.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace zebview
{

class Canvas;

// Until it is saved it has a name of its own in the same folder, and if it never is, nothing
// remains of it. What stands under its name and is no ordinary file gets the picture in one go.
class OutputFile
{
public:
    // "-" is standard output. Throws a Failure if nothing can be written there.
    explicit OutputFile(const std::string& name);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Once. Throws a Failure if the file takes less than all of the picture.
    void save(const Canvas& picture);

private:
    void openBeside();
    [[noreturn]] void fail(int error) const;

    std::string fName;
    std::filesystem::path fPath, fTemporary;  // links followed; empty if there is no such file
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> fFile{nullptr, std::fclose};
};

}  // namespace zebview
