#include "reading_limits.h"

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace zebview
{

namespace
{

constexpr std::uintmax_t kMegabyte = 1 << 20;
constexpr std::uintmax_t kLeastMemory = 2048 * kMegabyte;
constexpr std::uintmax_t kMemoryPerByte = 100;
constexpr double kLeastSeconds = 20, kSecondsPerMegabyte = 1;
constexpr std::size_t kStackSize = 1 << 16;

// All that handlers of signals may look at.
std::string gCrashLine, gTimeLine;
int gError = STDERR_FILENO;

void endWith(const std::string& line)
{
    // There is nobody to be told if it fails.
    if (write(gError, line.data(), line.size()) < 0) _exit(1);
    _exit(1);
}

std::uintmax_t addressSpace()
{
    std::uintmax_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uintmax_t>(sysconf(_SC_PAGESIZE));
}

void setTimer(double seconds)
{
    const double whole = std::floor(seconds);
    itimerval timer{};
    timer.it_value.tv_sec = static_cast<time_t>(whole);
    timer.it_value.tv_usec = static_cast<suseconds_t>((seconds - whole) * 1e6);
    setitimer(ITIMER_PROF, &timer, nullptr);
}

}  // namespace

ReadingLimits::ReadingLimits(const std::string& file, std::uintmax_t fileSize, double seconds)
    : fMemory(kLeastMemory + kMemoryPerByte * fileSize),
      fError(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)),
      fStack(kStackSize)
{
    if (seconds == 0) {
        seconds = kLeastSeconds +
                  kSecondsPerMegabyte * std::floor(static_cast<double>(fileSize) / kMegabyte);
    }
    const std::string start = "zebview: " + file + ": cannot be read: ";
    char text[120];
    std::snprintf(text, sizeof text, "it takes more than %g seconds (--read-limit)\n", seconds);
    gTimeLine = start + text;
    gCrashLine = start + "its reader has crashed\n";

    // Readers that call themselves without end leave no room for a handler.
    stack_t stack{};
    stack.ss_sp = fStack.data();
    stack.ss_size = fStack.size();
    sigaltstack(&stack, &fStackBefore);
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        handle(signal, [](int) { endWith(gCrashLine); });
    }
    handle(SIGPROF, [](int) { endWith(gTimeLine); });
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) handle(signal, SIG_DFL);

    // Readers tell it at length, and some go on.
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (fError >= 0 && nowhere >= 0) {
        gError = fError;
        std::fflush(stderr);
        dup2(nowhere, STDERR_FILENO);
    }
    if (nowhere >= 0) close(nowhere);

    getrlimit(RLIMIT_AS, &fRoomBefore);
    rlimit room = fRoomBefore;
    room.rlim_cur = std::min<rlim_t>(room.rlim_cur, addressSpace() + fMemory);
    setrlimit(RLIMIT_AS, &room);
    setTimer(seconds);
}

ReadingLimits::~ReadingLimits()
{
    setTimer(0);
    setrlimit(RLIMIT_AS, &fRoomBefore);
    gError = STDERR_FILENO;
    if (fError >= 0) {
        dup2(fError, STDERR_FILENO);
        close(fError);
    }
    for (const Handled& handled : fHandled) sigaction(handled.signal, &handled.before, nullptr);
    sigaltstack(&fStackBefore, nullptr);
}

void ReadingLimits::handle(int signal, void (*handler)(int))
{
    struct sigaction action {
    };
    action.sa_handler = handler;
    action.sa_flags = SA_ONSTACK;
    fHandled.push_back({signal, {}});
    sigaction(signal, &action, &fHandled.back().before);
}

std::string ReadingLimits::memoryMessage() const
{
    return "cannot be read: it takes more than " + std::to_string(fMemory / kMegabyte) +
           " MiB of memory";
}

}  // namespace zebview
