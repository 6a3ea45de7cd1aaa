#include "display/screen.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "state/callback.h"
#include "util/report.h"

namespace zeb
{

namespace
{

// What window systems count coordinates in, and a gigabyte.
constexpr long kMaxSide = 32767;
constexpr double kMaxPixels = 1 << 28;

using Clock = std::chrono::steady_clock;

constexpr auto kFrameTime = std::chrono::milliseconds(30);
// Showing messages at once may take so long, or one part in so many of the time.
constexpr auto kPromptTime = std::chrono::milliseconds(500);
constexpr int kPromptShare = 10;
constexpr std::size_t kMostMessages = 1 << 16;  // bytes that wait to be shown

// Running out of memory inside a call ends the process: whether so much can be had is asked before.
bool haveMemory(double bytes)
{
    void* probe = std::malloc(static_cast<std::size_t>(bytes));
    std::free(probe);
    return probe != nullptr;
}

// Lives as long as the process: windows stay when everything else has been torn down.
struct Desktop {
    std::unique_ptr<Screen> screen;
    bool looked = false, consoleRefused = false;
    int busy = 0;
    std::string messages;  // not shown yet
    Clock::time_point printed{};
    Clock::duration promptTime = kPromptTime;  // what is left of it
    std::vector<std::unique_ptr<TDisplayWindow>> windows;
    std::unique_ptr<TRendEdit> console;
    Clock::time_point updated{};

    // A process that had no screen may have got one since; but looking can take long, so a message
    // does not ask again.
    Screen* find(bool again)
    {
        if (screen && !screen->alive()) lose();
        if (!screen && (again || !looked)) screen = makeScreen();
        looked = true;
        return screen.get();
    }

    // Nothing that belongs to a lost connection can be given back to it.
    void lose()
    {
        for (auto& window : windows) {
            if (gDisplay) gDisplay->destroy(window.get());
            static_cast<void>(window.release());
        }
        windows.clear();
        static_cast<void>(console.release());
        screen.reset();
    }

    void dropClosed()
    {
        // A window that goes may make the host call in: it must find the list whole.
        std::vector<std::unique_ptr<TDisplayWindow>> closed;
        for (auto& window : windows) {
            if (window->isOpen()) continue;
            if (gDisplay) gDisplay->destroy(window.get());
            closed.push_back(std::move(window));
        }
        windows.erase(std::remove(windows.begin(), windows.end(), nullptr), windows.end());
    }

    void addMessage(const char* line)
    {
        if (messages.size() > 2 * kMostMessages) {
            messages.erase(0, messages.find('\n', messages.size() - kMostMessages) + 1);
        }
        if (!messages.empty()) messages += '\n';
        messages += line;
    }

    void showMessages()
    {
        if (!console || !console->good() || messages.empty()) return;
        console->print(std::exchange(messages, {}));
    }

    // A host of the same window system has its own events handled here.
    bool hostsEvents(bool wait) const
    {
        const FreeStoreScope theirs(false);
        return screen->events(wait);
    }

    // False if the process is told to end.
    bool handleEvents(bool wait)
    {
        if (!screen || busy) return true;
        const FreeStoreScope ours(true);
        dropClosed();
        showMessages();
        for (const auto& window : windows) window->update();
        const bool goOn = hostsEvents(wait && !windows.empty());
        updated = Clock::now();
        // A callback of the host may have lost the screen on the way.
        if (screen && !screen->alive()) lose();
        dropClosed();
        return goOn;
    }

    // Whether the last time is so long ago that what is new may be shown.
    bool mayUpdate() const { return Clock::now() - updated >= kFrameTime; }

    // Handles events while the library is at work.
    void handleEventsInside()
    {
        CallbackScope scope;
        handleEvents(false);
    }
};

// Alive while a window is made or completed: what the host does on the way may not take it.
class Busy
{
public:
    explicit Busy(Desktop& desktop) : fDesktop(desktop)
    {
        ++fDesktop.busy;
        setErrorFuncName(fScope.callersName());
    }
    ~Busy() { --fDesktop.busy; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    Desktop& fDesktop;
    CallbackScope fScope;
    FreeStoreScope fOurs{true};
};

Desktop& desktop()
{
    static auto* theDesktop = new Desktop;
    return *theDesktop;
}

}  // namespace

TDisplayWindow* openWindow(const char* title, long width, long height, const PixelFormat& format)
{
    const double pixels = static_cast<double>(width) * static_cast<double>(height);
    if (width > kMaxSide || height > kMaxSide || pixels > kMaxPixels || !haveMemory(4 * pixels)) {
        error(kRange, kError, "a picture of %ld x %ld is too large for a window", width, height);
        return nullptr;
    }
    Desktop& desk = desktop();
    Screen* screen = desk.find(true);
    std::unique_ptr<TDisplayWindow> window;
    if (screen) {
        const Busy busy(desk);
        window = screen->makeWindow(title, width, height, format);
    }
    if (!window) {
        error(kUnsupported, kWarning, "no window can be opened here, the picture is dropped");
        return nullptr;
    }
    desk.windows.push_back(std::move(window));
    TDisplayWindow* opened = desk.windows.back().get();
    desk.handleEventsInside();
    // Its user may have been quick.
    const auto isOpened = [opened](const auto& other) { return other.get() == opened; };
    return std::any_of(desk.windows.begin(), desk.windows.end(), isOpened) ? opened : nullptr;
}

void completeWindow(TDisplayWindow* window)
{
    Desktop& desk = desktop();
    {
        const Busy busy(desk);
        window->quantize();
    }
    desk.handleEventsInside();
}

void updateWindows()
{
    Desktop& desk = desktop();
    if (desk.screen && desk.mayUpdate()) desk.handleEventsInside();
}

bool windowsCallHost() { return desktop().screen != nullptr; }

short windowEvents(bool wait)
{
    Desktop& desk = desktop();
    if (!desk.handleEvents(wait)) return 0;
    return static_cast<short>(std::min<std::size_t>(desk.windows.size(), 32767));
}

void closeWindows()
{
    Desktop& desk = desktop();
    desk.windows.clear();
    desk.console.reset();
    desk.screen.reset();
}

bool printOnConsole(const char* line)
{
    Desktop& desk = desktop();
    Screen* screen = desk.find(false);
    if (!screen || desk.busy) return false;
    if (desk.console && !desk.console->good()) desk.console.reset();
    if (!desk.console && !desk.consoleRefused) {
        const Busy busy(desk);
        desk.console = screen->makeConsole();
        desk.consoleRefused = !desk.console;
    }
    if (!desk.console) return false;
    desk.addMessage(line);
    const auto now = Clock::now();
    desk.promptTime = std::min<Clock::duration>(
        kPromptTime, desk.promptTime + (now - desk.printed) / kPromptShare);
    desk.printed = now;
    if (desk.promptTime > Clock::duration::zero() || desk.mayUpdate()) {
        desk.handleEventsInside();
        desk.promptTime -= Clock::now() - now;
    } else {
        desk.console->showMessagesSoon();
    }
    return desk.screen != nullptr;
}

void showMessages()
{
    const FreeStoreScope ours(true);
    desktop().showMessages();
}

}  // namespace zeb
