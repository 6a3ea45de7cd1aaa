// The desktop: windows with pictures, and the message console. One source for each window system
// implements Screen; which one is chosen when the library is built.
#pragma once

#include <memory>
#include <string>

#include "display/display_window.h"

namespace zeb
{

// Read-only text in a window "ZEB Messages" of 80 columns by 10 lines, from which the user may
// copy.
class TRendEdit
{
public:
    virtual ~TRendEdit() = default;
    // Appends a line, or several with line feeds between them, and shows the end; reopens the
    // window if the user has closed it.
    virtual void print(const std::string& text) = 0;
    // Has showMessages called in a moment by whoever handles events then, the host included.
    virtual void showMessagesSoon() = 0;
    // Whether the window is still there: a host may have destroyed it.
    virtual bool good() const { return true; }
};

class Screen
{
public:
    virtual ~Screen() = default;
    // Null, if the window system refuses.
    virtual std::unique_ptr<TDisplayWindow> makeWindow(const char* title, long width, long height,
                                                       const PixelFormat& format) = 0;
    virtual std::unique_ptr<TRendEdit> makeConsole() = 0;
    // Handles the events at hand; waits for one if told to. False if the process is told to end.
    virtual bool events(bool wait) = 0;
    // Whether the connection to the window system still stands. If not, nothing else is called.
    virtual bool alive() const { return true; }
};

// Null, if this process has no screen. Defined beside the window system.
std::unique_ptr<Screen> makeScreen();

// Opens a window. It stays until the user closes it, and belongs to nobody; when it goes, gDisplay
// is told to forget it. Null and a report, if there is no screen or the picture is too large.
TDisplayWindow* openWindow(const char* title, long width, long height, const PixelFormat& format);
// The picture of a window is complete.
void completeWindow(TDisplayWindow* window);
// Draws what is new and handles events, for the library's own sake: unless that was done a moment
// ago, because drawing every span by itself would cost more than rendering it.
void updateWindows();
// Whether that may call the host, which may have windows of its own.
bool windowsCallHost();
// The same at once, for the host's sake; waits for an event if told to and a window is open. How
// many windows are open, the console not counted; 0 if the process is told to end.
short windowEvents(bool wait);
// Closes every window and the console: the library is being unloaded.
void closeWindows();
// Prints to the message console; false if there is no screen. Of a flood of messages not every one
// is shown at once.
bool printOnConsole(const char* line);
// Shows those that wait.
void showMessages();

}  // namespace zeb
