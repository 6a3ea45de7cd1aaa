// The desktop: windows with pictures, and the message console. One source for each window system
// implements Screen; which one is chosen when the library is built.
#pragma once

#include <memory>

#include "display/display_window.h"

namespace zeb
{

// Read-only text in a window "ZEB Messages" of 80 columns by 10 lines, from which the user may
// copy.
class TRendEdit
{
public:
    virtual ~TRendEdit() = default;
    // Appends a line and shows it; reopens the window if the user has closed it.
    virtual void print(const char* line) = 0;
};

class Screen
{
public:
    virtual ~Screen() = default;
    // Null, if the window system refuses.
    virtual std::unique_ptr<TDisplayWindow> makeWindow(const char* title, long width, long height,
                                                       const PixelFormat& format) = 0;
    virtual std::unique_ptr<TRendEdit> makeConsole() = 0;
    // Handles the events at hand; waits for one if told to.
    virtual void events(bool wait) = 0;
    // Whether the connection to the window system still stands. If not, nothing else is called.
    virtual bool alive() const { return true; }
};

// Null, if this process has no screen. Defined beside the window system.
std::unique_ptr<Screen> makeScreen();

// Opens a window. It stays until the user closes it, and belongs to nobody; when it goes, gDisplay
// is told to forget it. Null and a report, if there is no screen or the picture is too large.
TDisplayWindow* openWindow(const char* title, long width, long height, const PixelFormat& format);
// Draws what is new and handles events, unless that was done a moment ago: drawing every span by
// itself would cost more than rendering it.
void updateWindows();
// Draws what is new and handles events; waits for one if told to and a window is open. How many
// windows are open, the console not counted.
short windowEvents(bool wait);
// Closes every window and the console: the library is being unloaded.
void closeWindows();
// Prints to the message console; false if there is no screen.
bool printOnConsole(const char* line);

}  // namespace zeb
