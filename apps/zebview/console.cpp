#include "console.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

constexpr long kBarLength = 50;

// The library's handlers carry no data of the host.
bool gErrorReported = false;
long gShownPercent = -1;

std::string oneLine(std::string text)
{
    const auto isControl = [](unsigned char c) { return std::iscntrl(c) != 0; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// In words for those who know the program and not the library: without the function's name, which
// stands before the text, or alone.
std::string describe(long code, long severity, const char* message)
{
    const std::string prefix = severity == ZEB_INFO      ? "info: "
                               : severity == ZEB_WARNING ? "warning: "
                                                         : "";
    const std::string text = message ? message : "";
    const std::size_t colon = text.find(": ");
    if (text.rfind("zeb", 0) != 0 && !text.empty()) return prefix + text;
    if (colon != std::string::npos) return prefix + text.substr(colon + 2);
    return prefix + "the renderer refused " + text + " (code " + std::to_string(code) + ")";
}

void receive(long code, long severity, const char* message)
{
    if (severity == ZEB_ERROR || severity == ZEB_SEVERE) gErrorReported = true;
    try {
        complain(describe(code, severity, message));
    } catch (...) {
        std::fputs("zebview: out of memory\n", stderr);
    }
    // The library aborts the process after a severe report; a clean exit status says as much.
    if (severity == ZEB_SEVERE) std::_Exit(1);
}

}  // namespace

void complain(const std::string& text)
{
    static std::set<std::string> printed;
    const std::string line = oneLine(text);
    if (!printed.insert(line).second) return;
    clearProgress();
    std::fprintf(stderr, "zebview: %s\n", line.c_str());
}

void answer(const std::string& text)
{
    std::printf("%s\n", oneLine(text).c_str());
    std::fflush(stdout);
}

void showProgress(long percent)
{
    if (percent == gShownPercent || !isatty(STDERR_FILENO)) return;
    gShownPercent = percent;
    const auto done = static_cast<std::size_t>(std::clamp(percent, 0L, 100L) * kBarLength / 100);
    const std::string bar = std::string(done, '#') + std::string(kBarLength - done, '.');
    std::fprintf(stderr, "\r[%s] %3ld%%", bar.c_str(), percent);
    std::fflush(stderr);
}

void clearProgress()
{
    if (gShownPercent < 0) return;
    gShownPercent = -1;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
}

void receiveReports(bool all)
{
    // Infos that nobody wants are not even looked for.
    zebCustomErrorHandler(static_cast<short>(ZEB_ALL), receive);
    if (!all) zebErrorHandler(static_cast<short>(ZEB_INFO), ZEB_ERROR_IGNORE);
}

bool errorReported() { return gErrorReported; }

}  // namespace zebview
