// The mouse and the keys of somebody who uses one window.
#pragma once

#include <memory>

#include "desktop.h"

namespace zebtest
{

enum class MouseButton : unsigned { kLeft = 1, kMiddle, kRight };

class Mouse
{
public:
    virtual ~Mouse() = default;
    // Places are pixels of the window.
    virtual void drag(int x0, int y0, int x1, int y1, MouseButton button = MouseButton::kLeft,
                      bool shift = false) = 0;
    virtual void wheel(bool away) = 0;
    // A key by the name that X has for it.
    virtual void press(const char* key, bool shift = false) = 0;
    virtual void resizeWindow(int width, int height) = 0;
};

std::unique_ptr<Mouse> takeMouse(Desktop::Window window);

}  // namespace zebtest
