#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <chrono>
#include <thread>

#include "mouse.h"

namespace zebtest
{

namespace
{

class X11Mouse : public Mouse
{
public:
    explicit X11Mouse(::Window window) : fDisplay(XOpenDisplay(nullptr)), fWindow(window) {}
    ~X11Mouse() override { XCloseDisplay(fDisplay); }

    void drag(int x0, int y0, int x1, int y1, MouseButton button, bool shift) override
    {
        moveTo(x0, y0);
        if (shift) key(XK_Shift_L, true);
        click(static_cast<unsigned>(button), true);
        moveTo((x0 + x1) / 2, (y0 + y1) / 2);
        moveTo(x1, y1);
        click(static_cast<unsigned>(button), false);
        if (shift) key(XK_Shift_L, false);
    }
    void wheel(bool away) override
    {
        const unsigned button = away ? 4 : 5;
        moveTo(20, 20);
        click(button, true);
        click(button, false);
    }
    void press(const char* name, bool shift) override
    {
        XSetInputFocus(fDisplay, fWindow, RevertToParent, CurrentTime);
        if (shift) key(XK_Shift_L, true);
        key(XStringToKeysym(name), true);
        key(XStringToKeysym(name), false);
        if (shift) key(XK_Shift_L, false);
    }
    void resizeWindow(int width, int height) override
    {
        XResizeWindow(fDisplay, fWindow, static_cast<unsigned>(width),
                      static_cast<unsigned>(height));
        settle();
    }

private:
    void moveTo(int x, int y)
    {
        ::Window child;
        int rootX = 0, rootY = 0;
        XTranslateCoordinates(fDisplay, fWindow, DefaultRootWindow(fDisplay), x, y, &rootX, &rootY,
                              &child);
        XTestFakeMotionEvent(fDisplay, -1, rootX, rootY, CurrentTime);
        settle();
    }
    void click(unsigned button, bool down)
    {
        XTestFakeButtonEvent(fDisplay, button, down ? True : False, CurrentTime);
        settle();
    }
    void key(KeySym symbol, bool down)
    {
        const KeyCode code = XKeysymToKeycode(fDisplay, symbol);
        XTestFakeKeyEvent(fDisplay, code, down ? True : False, CurrentTime);
        settle();
    }
    void settle()
    {
        XSync(fDisplay, False);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }

    ::Display* fDisplay;
    ::Window fWindow;
};

}  // namespace

std::unique_ptr<Mouse> takeMouse(Desktop::Window window)
{
    return std::make_unique<X11Mouse>(window);
}

}  // namespace zebtest
