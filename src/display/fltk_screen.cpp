// Windows by FLTK on an X server.

#include <FL/Fl.H>
#include <FL/Fl_RGB_Image.H>
#include <FL/Fl_Text_Display.H>
#include <FL/Fl_Window.H>
#include <FL/fl_draw.H>
#include <FL/fl_utf8.h>
#include <FL/x.H>

#include <cmath>
#include <string>

#include "display/icon.h"
#include "display/screen.h"

namespace zeb
{

namespace
{

// The connection that windows are opened by; null before it is made and once it is lost.
::Display* gConnection = nullptr;
bool gRequestFailed = false;

int (*gOtherErrorHandler)(::Display*, XErrorEvent*) = nullptr;
int (*gOtherFatalHandler)(::Display*) = nullptr;

// Xlib's own handlers end the process. A request that the server refuses, such as one for more
// memory than it has, must not do that, nor a server that goes away.
int onRequestError(::Display* display, XErrorEvent* event)
{
    if (display != gConnection && gOtherErrorHandler) return gOtherErrorHandler(display, event);
    gRequestFailed = true;
    return 0;
}

int onConnectionError(::Display* display)
{
    if (display != gConnection && gOtherFatalHandler) return gOtherFatalHandler(display);
    gConnection = nullptr;
    return 0;
}

void stayAlive(::Display*, void*) { gConnection = nullptr; }

class Frame : public Fl_Window
{
public:
    Frame(int width, int height, const char* title) : Fl_Window(width, height)
    {
        copy_label(title);
        xclass("zebcore");
    }
    // What an icon's pixels are read from lives as long as the program.
    void useIcon(Icon which)
    {
        const IconImage& image = iconImage(which);
        const Fl_RGB_Image icon(image.rgba.data(), image.size, image.size, 4);
        Fl_Window::icon(&icon);
    }
};

class FltkWindow : public TDisplayWindow, private Frame
{
public:
    FltkWindow(const char* title, long width, long height, const PixelFormat& format)
        : TDisplayWindow(width, height, format),
          Frame(static_cast<int>(width), static_cast<int>(height), title)
    {
        useIcon(Icon::kPicture);
        resizable(nullptr);
        size_range(w(), h(), w(), h());
        callback([](Fl_Widget* widget, void*) { static_cast<FltkWindow*>(widget)->onClose(); });
        end();
        makeBitmap();
    }
    ~FltkWindow() override
    {
        hide();
        if (fBitmap) XFreePixmap(fl_display, fBitmap);
        if (fColormap) XFreeColormap(fl_display, fColormap);
        // It goes at once, though the host may handle no events for long.
        XFlush(fl_display);
    }

    // Whether the server had room for the picture.
    bool good() const { return fBitmap != 0; }

    using Frame::show;

    void showBitmap()
    {
        show();
        useBitmap();
    }

private:
    void onClose()
    {
        hide();
        closed();
    }

    void makeBitmap()
    {
        gRequestFailed = false;
        fBitmap = fl_create_offscreen(w(), h());
        const GC gc = XCreateGC(fl_display, fBitmap, 0, nullptr);
        XSetForeground(fl_display, gc, BlackPixel(fl_display, fl_screen));
        XFillRectangle(fl_display, fBitmap, gc, 0, 0, static_cast<unsigned>(w()),
                       static_cast<unsigned>(h()));
        XFreeGC(fl_display, gc);
        XSync(fl_display, False);
        if (gRequestFailed) fBitmap = 0;
    }

    // The server repaints by itself from the window's background, so that a host that renders, or
    // does something else altogether, has no need to answer every event.
    void useBitmap() { XSetWindowBackgroundPixmap(fl_display, fl_xid(this), fBitmap); }

    void draw() override { fl_copy_offscreen(0, 0, w(), h(), fBitmap, 0, 0); }

    bool isShown() const override { return fl_xid(this) != 0; }

    bool paletteScreen() const override { return fl_visual->c_class == PseudoColor; }

    void draw(const ColorImage& image, const Area& area) override
    {
        const int x = static_cast<int>(area.x0);
        const int y = static_cast<int>(area.y0);
        const int width = static_cast<int>(area.x1 - area.x0 + 1);
        const int height = static_cast<int>(area.y1 - area.y0 + 1);
        make_current();
        fl_begin_offscreen(fBitmap);
        // FLTK wants red, green and blue in bytes one after the other; words have them so.
        static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);
        fl_draw_image(reinterpret_cast<const uchar*>(image.row(area.y0) + area.x0), x, y, width,
                      height, 4, static_cast<int>(image.width) * 4);
        fl_end_offscreen();
        repaint(x, y, width, height);
    }

    // The window gets a colour map of its own.
    void quant(const ColorImage& image, const Palette& palette) override
    {
        fColormap = XCreateColormap(fl_display, RootWindow(fl_display, fl_screen),
                                    fl_visual->visual, AllocAll);
        unsigned long pixel = 0;
        for (const PaletteEntry& entry : palette.map) {
            XColor color{pixel++,
                         static_cast<unsigned short>(entry.red * 257),
                         static_cast<unsigned short>(entry.green * 257),
                         static_cast<unsigned short>(entry.blue * 257),
                         DoRed | DoGreen | DoBlue,
                         0};
            XStoreColor(fl_display, fColormap, &color);
        }
        XImage* row =
            XCreateImage(fl_display, fl_visual->visual, static_cast<unsigned>(fl_visual->depth),
                         ZPixmap, 0, nullptr, static_cast<unsigned>(w()), 1, 32, 0);
        std::string bytes(static_cast<std::size_t>(row->bytes_per_line), '\0');
        row->data = bytes.data();
        const GC gc = XCreateGC(fl_display, fBitmap, 0, nullptr);
        for (int y = 0; y < h(); ++y) {
            const ScreenColor* colors = image.row(y);
            for (int x = 0; x < w(); ++x) XPutPixel(row, x, 0, palette.index(colors[x]));
            XPutImage(fl_display, fBitmap, gc, row, 0, 0, 0, y, static_cast<unsigned>(w()), 1);
        }
        XFreeGC(fl_display, gc);
        row->data = nullptr;
        XDestroyImage(row);
        XSetWindowColormap(fl_display, fl_xid(this), fColormap);
        repaint(0, 0, w(), h());
    }

    void repaint(int x, int y, int width, int height)
    {
        useBitmap();
        damage(FL_DAMAGE_USER1, x, y, width, height);
    }

    Pixmap fBitmap = 0;
    Colormap fColormap = 0;
};

// New widgets go to the group that is open, and showing a window closes that: it may be the host's,
// and stays as it was.
class KeepGroup
{
public:
    KeepGroup() : fGroup(Fl_Group::current()) { Fl_Group::current(nullptr); }
    ~KeepGroup() { Fl_Group::current(fGroup); }
    KeepGroup(const KeepGroup&) = delete;
    KeepGroup& operator=(const KeepGroup&) = delete;

private:
    Fl_Group* fGroup;
};

class FltkConsole : public TRendEdit
{
public:
    FltkConsole() : fFrame(1, 1, "ZEB Messages"), fBuffer(0, kMostText / 4), fText(0, 0, 1, 1)
    {
        fBuffer.canUndo(0);
        fFrame.end();
        fFrame.useIcon(Icon::kMessages);
        fText.textfont(FL_COURIER);
        fText.textsize(14);
        fText.wrap_mode(Fl_Text_Display::WRAP_AT_BOUNDS, 0);
        fText.buffer(&fBuffer);
        fl_font(FL_COURIER, 14);
        // Around the text: the borders, its margins, the scroll bar.
        const int width = static_cast<int>(std::ceil(fl_width('0') * 80)) +
                          2 * Fl::box_dx(fText.box()) + 8 + Fl::scrollbar_size();
        const int height = fl_height() * 10 + 2 * Fl::box_dy(fText.box()) + 4;
        fText.size(width, height);
        fFrame.size(width, height);
        fFrame.resizable(fText);
    }

    ~FltkConsole() override { Fl::remove_timeout(onTimeout); }

    void showMessagesSoon() override
    {
        if (!Fl::has_timeout(onTimeout)) Fl::add_timeout(0.03, onTimeout);
    }

    void print(const std::string& text) override
    {
        if (fBuffer.length() > kMostText) {
            fBuffer.remove(0, fBuffer.line_start(kMostText / 2));
        }
        fBuffer.append(readable(text).c_str());
        fBuffer.append("\n");
        fText.insert_position(fBuffer.length());
        fText.show_insert_position();
        if (fFrame.shown()) return;
        const KeepGroup keep;
        fFrame.show();
    }

private:
    // Older messages give way to new ones.
    static constexpr int kMostText = 1 << 16;

    static void onTimeout(void*) { showMessages(); }

    // FLTK wants UTF-8; a host may have given names in something else.
    static std::string readable(std::string text)
    {
        if (fl_utf8test(text.data(), static_cast<unsigned>(text.size())) == 0) {
            for (char& c : text) c = (c & 0x80) ? '?' : c;
        }
        return text;
    }

    Frame fFrame;
    Fl_Text_Buffer fBuffer;
    Fl_Text_Display fText;
};

class FltkScreen : public Screen
{
public:
    std::unique_ptr<TDisplayWindow> makeWindow(const char* title, long width, long height,
                                               const PixelFormat& format) override
    {
        const KeepGroup keep;
        auto window = std::make_unique<FltkWindow>(title, width, height, format);
        if (!window->good()) return nullptr;
        window->showBitmap();
        return window;
    }
    std::unique_ptr<TRendEdit> makeConsole() override
    {
        const KeepGroup keep;
        return std::make_unique<FltkConsole>();
    }
    bool events(bool wait) override
    {
        if (wait) {
            Fl::wait();
        } else {
            Fl::check();
        }
        return true;
    }
    bool alive() const override { return gConnection != nullptr; }
};

}  // namespace

std::unique_ptr<Screen> makeScreen()
{
    // FLTK connects once a process.
    static bool made = false;
    if (made) return nullptr;
    // A host that uses FLTK too has connected already; what becomes of that connection is its
    // affair.
    const bool own = !fl_display;
    if (own) {
        ::Display* connection = XOpenDisplay(nullptr);
        if (!connection) return nullptr;
        fl_open_display(connection);
        gOtherFatalHandler = XSetIOErrorHandler(onConnectionError);
        XSetIOErrorExitHandler(connection, stayAlive, nullptr);
    }
    made = true;
    gConnection = fl_display;
    gOtherErrorHandler = XSetErrorHandler(onRequestError);
    return std::make_unique<FltkScreen>();
}

}  // namespace zeb
