#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include "desktop.h"

namespace zebtest
{

namespace
{

// A property's items, each of which Xlib hands over as a long where its format is 32.
struct Property {
    unsigned char* data = nullptr;
    unsigned long count = 0;
    int format = 0;

    Property(::Display* display, ::Window window, const char* name)
    {
        Atom type;
        unsigned long rest;
        XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, 1 << 20, False,
                           AnyPropertyType, &type, &format, &count, &rest, &data);
    }
    ~Property()
    {
        if (data) XFree(data);
    }
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;
    std::string text() const
    {
        return data && format == 8 ? std::string(reinterpret_cast<char*>(data), count) : "";
    }
};

class X11Desktop : public Desktop
{
public:
    explicit X11Desktop(std::function<void()> pause)
        : fDisplay(XOpenDisplay(nullptr)), fPause(std::move(pause))
    {
        // Windows may go while they are asked for something. The library passes on to this handler
        // what is not its own.
        XSetErrorHandler([](::Display*, XErrorEvent*) { return 0; });
        if (!fDisplay) throw std::runtime_error("there is no screen");
        fRoot = DefaultRootWindow(fDisplay);
        fClipboard = XCreateSimpleWindow(fDisplay, fRoot, 0, 0, 1, 1, 0, 0, 0);
    }
    ~X11Desktop() override { XCloseDisplay(fDisplay); }

    std::vector<Window> find(const std::string& title) override
    {
        std::vector<Window> found;
        search(fRoot, "_NET_WM_NAME", title, found);
        return found;
    }
    std::vector<Window> findAll() override
    {
        std::vector<Window> found;
        using namespace std::string_literals;
        search(fRoot, "WM_CLASS", "zebcore\0Zebcore\0"s, found);
        return found;
    }

    Shot shoot(Window window) override
    {
        const auto [x, y, width, height] = place(window);
        XImage* image = XGetImage(fDisplay, fRoot, x, y, static_cast<unsigned>(width),
                                  static_cast<unsigned>(height), AllPlanes, ZPixmap);
        XWindowAttributes attributes;
        XGetWindowAttributes(fDisplay, window, &attributes);
        Shot shot{width, height, {}};
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                shot.colors.push_back(
                    color(static_cast<std::uint32_t>(XGetPixel(image, column, row)), attributes));
            }
        }
        XDestroyImage(image);
        return shot;
    }

    void close(Window window) override
    {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(fDisplay, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] =
            static_cast<long>(XInternAtom(fDisplay, "WM_DELETE_WINDOW", False));
        XSendEvent(fDisplay, window, False, NoEventMask, &event);
        XSync(fDisplay, False);
    }

    void pressEscape(Window window) override { pressKey(window, XK_Escape, false); }

    void cover(Window window) override
    {
        const auto [x, y, width, height] = place(window);
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        attributes.background_pixel = WhitePixel(fDisplay, DefaultScreen(fDisplay));
        fCover = XCreateWindow(fDisplay, fRoot, x, y, static_cast<unsigned>(width),
                               static_cast<unsigned>(height), 0, CopyFromParent, InputOutput,
                               CopyFromParent, CWOverrideRedirect | CWBackPixel, &attributes);
        XMapRaised(fDisplay, fCover);
        XSync(fDisplay, False);
    }
    void uncover() override
    {
        XDestroyWindow(fDisplay, fCover);
        XSync(fDisplay, False);
    }

    void move(Window window, int x, int y) override
    {
        XMoveWindow(fDisplay, window, x, y);
        XSync(fDisplay, False);
    }
    void minimize(Window window) override
    {
        XUnmapWindow(fDisplay, window);
        XSync(fDisplay, False);
    }
    void restore(Window window) override
    {
        XMapWindow(fDisplay, window);
        XSync(fDisplay, False);
    }

    bool canBeResized(Window window) override
    {
        XSizeHints hints{};
        long supplied = 0;
        XGetWMNormalHints(fDisplay, window, &hints, &supplied);
        const auto [x, y, width, height] = place(window);
        return !(hints.flags & PMinSize) || !(hints.flags & PMaxSize) || hints.min_width != width ||
               hints.max_width != width || hints.min_height != height || hints.max_height != height;
    }

    Shot icon(Window window) override
    {
        const Property icon(fDisplay, window, "_NET_WM_ICON");
        const auto* words = reinterpret_cast<const long*>(icon.data);
        Shot shot;
        if (!words || icon.count < 2) return shot;
        const auto pixels = static_cast<std::size_t>(words[0] * words[1]);
        if (icon.count < 2 + pixels) return shot;
        shot.width = static_cast<int>(words[0]);
        shot.height = static_cast<int>(words[1]);
        for (std::size_t i = 0; i < pixels; ++i) {
            const auto argb = static_cast<std::uint32_t>(words[2 + i]);
            shot.colors.push_back(argb >> 24 == 255 ? argb & 0xFFFFFF : 0);
        }
        return shot;
    }

    void selectLine(Window window, int line) override
    {
        const auto [x, y, width, height] = place(window);
        const int lineY = y + 4 + line * (height - 4) / 10 + (height - 4) / 20;
        drag(x + 6, lineY, x + width - 25, lineY);
    }
    std::string copySelection(Window window) override
    {
        const auto atom = [this](const char* name) { return XInternAtom(fDisplay, name, False); };
        XSetSelectionOwner(fDisplay, atom("CLIPBOARD"), None, CurrentTime);
        pressKey(window, XK_c, true);
        pause();
        XDeleteProperty(fDisplay, fClipboard, atom("COPIED"));
        XConvertSelection(fDisplay, atom("CLIPBOARD"), atom("UTF8_STRING"), atom("COPIED"),
                          fClipboard, CurrentTime);
        std::string text;
        for (int round = 0; text.empty() && round < 50; ++round) {
            pause();
            text = Property(fDisplay, fClipboard, "COPIED").text();
        }
        return text;
    }

    void typeText(Window window, const std::string& text) override
    {
        for (const char c : text) pressKey(window, static_cast<KeySym>(c), false);
    }

private:
    struct Place {
        int x, y, width, height;
    };

    Place place(::Window window)
    {
        XWindowAttributes attributes;
        ::Window child;
        int x = 0, y = 0;
        XGetWindowAttributes(fDisplay, window, &attributes);
        XTranslateCoordinates(fDisplay, window, fRoot, 0, 0, &x, &y, &child);
        return {x, y, attributes.width, attributes.height};
    }

    void search(::Window from, const char* property, const std::string& text,
                std::vector<Window>& found)
    {
        ::Window root, parent, *children = nullptr;
        unsigned count = 0;
        if (!XQueryTree(fDisplay, from, &root, &parent, &children, &count)) return;
        for (unsigned i = 0; i < count; ++i) {
            XWindowAttributes attributes;
            if (!XGetWindowAttributes(fDisplay, children[i], &attributes)) continue;
            const bool visible = attributes.map_state == IsViewable;
            if (visible && Property(fDisplay, children[i], property).text() == text) {
                found.push_back(children[i]);
            }
            search(children[i], property, text, found);
        }
        if (children) XFree(children);
    }

    std::uint32_t color(std::uint32_t pixel, const XWindowAttributes& attributes)
    {
        if (attributes.visual->c_class != PseudoColor) return pixel & 0xFFFFFF;
        XColor entry{};
        entry.pixel = pixel;
        XQueryColor(fDisplay, attributes.colormap, &entry);
        return static_cast<std::uint32_t>(entry.red >> 8 << 16 | entry.green >> 8 << 8 |
                                          entry.blue >> 8);
    }

    void pressKey(Window window, KeySym key, bool control)
    {
        XSetInputFocus(fDisplay, window, RevertToParent, CurrentTime);
        const KeyCode modifier = XKeysymToKeycode(fDisplay, XK_Control_L);
        const KeyCode code = XKeysymToKeycode(fDisplay, key);
        if (control) XTestFakeKeyEvent(fDisplay, modifier, True, CurrentTime);
        XTestFakeKeyEvent(fDisplay, code, True, CurrentTime);
        XTestFakeKeyEvent(fDisplay, code, False, CurrentTime);
        if (control) XTestFakeKeyEvent(fDisplay, modifier, False, CurrentTime);
        XSync(fDisplay, False);
    }

    // A program sees a drag only if it looks in between, and the events have reached it by then.
    void drag(int x0, int y0, int x1, int y1)
    {
        XTestFakeMotionEvent(fDisplay, -1, x0, y0, CurrentTime);
        pause();
        XTestFakeButtonEvent(fDisplay, 1, True, CurrentTime);
        pause();
        XTestFakeMotionEvent(fDisplay, -1, x1, y1, CurrentTime);
        pause();
        XTestFakeButtonEvent(fDisplay, 1, False, CurrentTime);
        pause();
    }

    void pause()
    {
        XSync(fDisplay, False);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        fPause();
    }

    ::Display* fDisplay;
    std::function<void()> fPause;
    ::Window fRoot = 0, fCover = 0, fClipboard = 0;
};

}  // namespace

std::unique_ptr<Desktop> openDesktop(std::function<void()> pause)
{
    return std::make_unique<X11Desktop>(std::move(pause));
}

}  // namespace zebtest
