#include "display/screen.h"

#include <algorithm>
#include <chrono>
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

constexpr auto kFrameTime = std::chrono::milliseconds(30);

// Lives as long as the process: windows stay when everything else has been torn down.
struct Desktop {
    std::unique_ptr<Screen> screen;
    bool looked = false, consoleRefused = false;
    std::vector<std::unique_ptr<TDisplayWindow>> windows;
    std::unique_ptr<TRendEdit> console;
    std::chrono::steady_clock::time_point updated{};

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
        static_cast<void>(screen.release());
    }

    void dropClosed()
    {
        const auto isClosed = [](const auto& window) {
            if (!window->isOpen() && gDisplay) gDisplay->destroy(window.get());
            return !window->isOpen();
        };
        windows.erase(std::remove_if(windows.begin(), windows.end(), isClosed), windows.end());
    }

    void handleEvents(bool wait)
    {
        if (!screen) return;
        for (const auto& window : windows) window->update();
        {
            // A host of the same window system has its own events handled here.
            CallbackScope scope;
            screen->events(wait && !windows.empty());
        }
        if (screen->alive()) {
            dropClosed();
        } else {
            lose();
        }
        updated = std::chrono::steady_clock::now();
    }
};

Desktop& desktop()
{
    static auto* theDesktop = new Desktop;
    return *theDesktop;
}

}  // namespace

TDisplayWindow* openWindow(const char* title, long width, long height, const PixelFormat& format)
{
    if (width > kMaxSide || height > kMaxSide ||
        static_cast<double>(width) * static_cast<double>(height) > kMaxPixels) {
        error(kRange, kError, "a picture of %ld x %ld is too large for a window", width, height);
        return nullptr;
    }
    Desktop& desk = desktop();
    Screen* screen = desk.find(true);
    auto window = screen ? screen->makeWindow(title, width, height, format) : nullptr;
    if (!window) {
        error(kUnsupported, kWarning, "no window can be opened here, the picture is dropped");
        return nullptr;
    }
    TDisplayWindow* opened = window.get();
    desk.windows.push_back(std::move(window));
    return opened;
}

void updateWindows()
{
    if (std::chrono::steady_clock::now() - desktop().updated >= kFrameTime) {
        desktop().handleEvents(false);
    }
}

short windowEvents(bool wait)
{
    Desktop& desk = desktop();
    desk.handleEvents(wait);
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
    if (!screen) return false;
    if (!desk.console && !desk.consoleRefused) {
        desk.console = screen->makeConsole();
        desk.consoleRefused = !desk.console;
    }
    if (!desk.console) return false;
    desk.console->print(line);
    desk.handleEvents(false);
    return true;
}

}  // namespace zeb
