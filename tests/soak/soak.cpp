// Renders random pictures in one process for so many seconds, by one, two and three threads in
// turn.
//
// Nothing may be left of them: what is in use of the heap at the end may be at most a little more
// than in the first fifth of the time, when all that is kept for later has been made. And the last
// picture must be drawn as the first: some are rendered again and again and compared bit for bit.
// The exit status is 1 if either fails.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "support/random_scene.h"

namespace
{

using zebtest::Picture;
using zebtest::RandomScene;

// These come again, with so many others between them.
constexpr unsigned kKnown = 10, kOthers = 90;
constexpr double kRoom = 0.25;  // MiB

std::vector<std::uint32_t> render(unsigned number, long threads)
{
    Picture picture(4);
    RandomScene(number).render(picture, [threads] { zebThreads(threads); });
    return picture.words();
}

constexpr double kMebibyte = 1 << 20;

// Of the heap, by the library and the tests.
double inUse()
{
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd) / kMebibyte;
}

// What the process takes up once the heap has given back what it can.
double resident()
{
    malloc_trim(0);
    long all = 0, pages = 0;
    std::ifstream("/proc/self/statm") >> all >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / kMebibyte;
}

}  // namespace

int main(int argc, char** argv)
{
    using Clock = std::chrono::steady_clock;
    const double seconds = argc > 1 ? std::atof(argv[1]) : 10;
    // Scenes are drawn without a thought for what may be reported of them.
    zebCustomErrorHandler(static_cast<short>(0xB0F), [](long, long, const char*) {});
    std::vector<std::vector<std::uint32_t>> known;
    for (unsigned number = 0; number < kKnown; ++number) known.push_back(render(number, 1));

    const auto begun = Clock::now();
    double early = 0, residentEarly = 0;
    unsigned long pictures = 0, differ = 0;
    for (unsigned number = kKnown;; number += kOthers) {
        const double part = std::chrono::duration<double>(Clock::now() - begun).count() / seconds;
        if (part >= 1) break;
        for (unsigned i = 0; i < kOthers; ++i) render(number + i, 1 + (number + i) % 3);
        for (unsigned i = 0; i < kKnown; ++i) differ += render(i, 1 + i % 3) != known[i];
        pictures += kOthers + kKnown;
        if (part >= 0.2) continue;
        early = std::max(early, inUse());
        residentEarly = std::max(residentEarly, resident());
    }
    const double late = inUse();
    std::printf("%lu pictures, %lu not as before\n", pictures, differ);
    std::printf("of the heap in use: %.2f MiB at first, %.2f at last\n", early, late);
    std::printf("resident: %.1f MiB at first, %.1f at last\n", residentEarly, resident());
    return differ > 0 || late > early + kRoom ? 1 : 0;
}
