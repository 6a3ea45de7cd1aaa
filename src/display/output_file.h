// A file that is either whole or as it was before.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "display/descriptor.h"

namespace zeb
{

std::uint64_t randomNumber();

// Takes bytes until it is finished: then what stood under its name is replaced by them, and its
// mode, its owner and links that lead to it stay. Until then they are in a file beside it, under a
// name that nobody has. What is no ordinary file, or can't be replaced, has its bytes kept in
// memory until they are all there.
//
// Whoever has a copy of it by a fork leaves the file alone.
class OutputFile
{
public:
    OutputFile() = default;
    ~OutputFile() { discard(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // False, as below, if something failed; why() then says what did first.
    bool open(const std::filesystem::path& path, std::uint64_t (*random)() = randomNumber);
    bool write(const char* bytes, std::size_t size);
    bool read(char* bytes, std::size_t size);  // false also, and no failure, at the end
    bool seek(std::uint64_t position);
    std::uint64_t position() const { return fPosition; }
    bool finish();
    // Leaves everything as it was.
    void discard();

    bool isOpen() const { return static_cast<bool>(fFile); }
    // Whether an ordinary file is written over, for lack of room beside it.
    bool isInPlace() const { return fPlace == Place::kOver; }

    // What a writer has found makes the file useless.
    void fail(const std::string& why);
    const std::string& why() const { return fWhy; }

private:
    enum class Place { kBeside, kOver, kDevice };

    bool openBeside(std::uint64_t (*random)(), bool replaces);
    bool isUsable();
    bool failed();
    bool send();
    bool replace();
    bool overwrite();

    Place fPlace = Place::kBeside;
    std::filesystem::path fPath, fTemporary;
    Descriptor fFile;
    long fOwner = 0;
    std::vector<char> fBytes;  // those not sent yet; beside another file they end at the position
    std::uint64_t fPosition = 0;
    std::string fWhy;
};

}  // namespace zeb
