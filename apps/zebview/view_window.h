// A window that shows a picture, and tells what its user does.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zebview
{

// Keys without a character.
enum class Key : char { kEscape = 27, kEnter = '\r', kLeft = 1, kRight, kUp };

enum class Drag { kTurn, kPan, kZoom };

// Hears what happens to a window.
class WindowUser
{
public:
    virtual ~WindowUser() = default;
    // The mouse has been moved with a button held: pixels to the right and down.
    virtual void onDrag(Drag drag, double right, double down) = 0;
    // Notches away from the user.
    virtual void onWheel(double notches) = 0;
    // A character, or a Key.
    virtual void onKey(char key) = 0;
    virtual void onResize(long width, long height) = 0;
};

class ViewWindow
{
public:
    virtual ~ViewWindow() = default;
    virtual void setTitle(const std::string& title) = 0;
    // The picture from now on: red, green and blue of each pixel, row by row. It is read until
    // another one takes its place.
    virtual void show(const std::uint8_t* pixels, long width, long height) = 0;
    // Has the picture drawn anew.
    virtual void redraw() = 0;
    // Lines over the picture: at the top, and at its bottom; each may be empty.
    virtual void setText(const std::string& top, const std::string& bottom) = 0;
    virtual void toggleFullScreen() = 0;
    // Handles what has happened; waits for it if told to. False once the window is closed.
    virtual bool handleEvents(bool wait) = 0;
};

// Null without a screen. The window is as large as it is wanted, or else as the screen; its user
// hears if that is less.
std::unique_ptr<ViewWindow> openViewWindow(const std::string& title, long width, long height,
                                           WindowUser& user);

}  // namespace zebview
