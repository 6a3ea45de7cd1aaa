// What the reader of a file may do, which is code of others that files can mislead.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <string>
#include <vector>

namespace zebview
{

// As long as it lives, a crash or the end of the time ends the program, with one line that says so,
// and allocations fail beyond the memory. Whoever tells the program to end is obeyed at once, and
// nothing but that line gets to standard error. There may be one at a time.
class ReadingLimits
{
public:
    // file      named in that line
    // fileSize  in bytes; larger files may take more of both
    // seconds   of processor time; 0: as the file's size allows
    ReadingLimits(const std::string& file, std::uintmax_t fileSize, double seconds);
    ~ReadingLimits();
    ReadingLimits(const ReadingLimits&) = delete;
    ReadingLimits& operator=(const ReadingLimits&) = delete;

    // That the reading has failed for want of memory, in words.
    std::string memoryMessage() const;

private:
    struct Handled {
        int signal;
        struct sigaction before;
    };
    void handle(int signal, void (*handler)(int));

    std::uintmax_t fMemory;
    int fError;  // standard error
    rlimit fRoomBefore;
    std::vector<char> fStack;
    stack_t fStackBefore;
    std::vector<Handled> fHandled;
};

}  // namespace zebview
