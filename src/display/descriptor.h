// Files by their descriptors, the same on every system. What fails says why in errno. A signal that
// arrives meanwhile cuts nothing short, and what a failing write sends goes to nobody.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <utility>

namespace zeb
{

class Descriptor
{
public:
    explicit Descriptor(int number = -1) : fNumber(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : fNumber(std::exchange(other.fNumber, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(fNumber, other.fNumber);
        return *this;
    }

    // Makes a file that is there under no name yet, not even as a link. A private one is for its
    // owner alone.
    static Descriptor create(const std::filesystem::path& path, bool isPrivate);
    // Opens for writing what is there.
    static Descriptor open(const std::filesystem::path& path);

    explicit operator bool() const { return fNumber >= 0; }

    bool write(const char* bytes, std::size_t size) const;
    // False, with an errno of 0, if fewer are left.
    bool read(char* bytes, std::size_t size) const;
    bool seek(std::uint64_t position) const;
    bool cut(std::uint64_t size) const;
    // Waits until what was written is kept.
    bool sync() const;
    // False if what was written is not kept.
    bool close();

    bool isRegular() const;
    // Takes over owner, group and mode of another file.
    bool becomeLike(const std::filesystem::path& other) const;

    // Marks the file as one in use; false if another process is about to remove it. The mark holds
    // until the last duplicate is closed, and ends with the process.
    bool claim() const;
    Descriptor duplicate() const;
    // Removes a file that no process has claimed.
    static void removeUnclaimed(const std::filesystem::path& path);

private:
    int fNumber;
};

// A number that two processes don't share.
long processId();

}  // namespace zeb
