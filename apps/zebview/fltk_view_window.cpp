// A window by FLTK on an X server.

#include <FL/Fl.H>
#include <FL/Fl_Double_Window.H>
#include <FL/fl_draw.H>
#include <FL/fl_utf8.h>
#include <FL/x.H>

#include <algorithm>

#include "view_window.h"

namespace zebview
{

namespace
{

constexpr int kSmallest = 16;
constexpr int kFontSize = 14, kTextMargin = 8;

// FLTK wants UTF-8; the names of files may be something else.
std::string readable(std::string text)
{
    if (fl_utf8test(text.data(), static_cast<unsigned>(text.size())) != 0) return text;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; }, '?');
    return text;
}

struct Special {
    int key;
    Key meaning;
};

constexpr Special kSpecials[] = {{FL_Escape, Key::kEscape},  {FL_Enter, Key::kEnter},
                                 {FL_KP_Enter, Key::kEnter}, {FL_Left, Key::kLeft},
                                 {FL_Right, Key::kRight},    {FL_Up, Key::kUp}};

// 0 for keys that have no meaning here.
char pressedKey()
{
    for (const Special& special : kSpecials) {
        if (Fl::event_key() == special.key) return static_cast<char>(special.meaning);
    }
    if (Fl::event_state(FL_CTRL | FL_ALT | FL_META)) return 0;
    return Fl::event_length() == 1 ? Fl::event_text()[0] : '\0';
}

// What a button that is pressed begins.
Drag dragBegun()
{
    if (Fl::event_button() == FL_RIGHT_MOUSE) return Drag::kZoom;
    const bool moves = Fl::event_button() == FL_MIDDLE_MOUSE || Fl::event_state(FL_SHIFT) != 0;
    return moves ? Drag::kPan : Drag::kTurn;
}

class FltkViewWindow : public ViewWindow, private Fl_Double_Window
{
public:
    FltkViewWindow(int width, int height, WindowUser& user)
        : Fl_Double_Window(width, height), fUser(user)
    {
        end();
        xclass("zebview");
        resizable(this);
        size_range(kSmallest, kSmallest);
        // Escape too closes windows, by default.
        callback([](Fl_Widget* window, void*) { window->hide(); });
    }

    using Fl_Double_Window::show;

    void setTitle(const std::string& title) override { copy_label(readable(title).c_str()); }
    void show(const std::uint8_t* pixels, long width, long height) override
    {
        fPixels = pixels;
        fWidth = static_cast<int>(width);
        fHeight = static_cast<int>(height);
        redraw();
    }
    void redraw() override { Fl_Double_Window::redraw(); }
    void setText(const std::string& top, const std::string& bottom) override
    {
        fTop = readable(top);
        fBottom = readable(bottom);
        redraw();
    }
    void toggleFullScreen() override
    {
        if (fullscreen_active()) {
            fullscreen_off();
        } else {
            fullscreen();
        }
    }
    bool handleEvents(bool wait) override
    {
        if (wait && shown()) {
            Fl::wait();
        } else {
            Fl::check();
        }
        return shown() != 0;
    }

private:
    void draw() override
    {
        const int width = std::min(w(), fWidth), height = std::min(h(), fHeight);
        if (width < w() || height < h()) fl_rectf(0, 0, w(), h(), FL_BLACK);
        if (fPixels) fl_draw_image(fPixels, 0, 0, width, height, 3, fWidth * 3);
        drawText(fTop, FL_ALIGN_TOP_LEFT);
        drawText(fBottom, FL_ALIGN_BOTTOM_LEFT);
    }

    // On a ground of its own, so that it can be read over any picture.
    void drawText(const std::string& text, Fl_Align place) const
    {
        if (text.empty()) return;
        fl_font(FL_COURIER, kFontSize);
        int width = 0, height = 0;
        fl_measure(text.c_str(), width, height, 0);
        width += 2 * kTextMargin;
        height += 2 * kTextMargin;
        const int y = place == FL_ALIGN_BOTTOM_LEFT ? h() - height : 0;
        fl_rectf(0, y, width, height, 24, 24, 24);
        fl_color(FL_WHITE);
        fl_draw(text.c_str(), kTextMargin, y + kTextMargin, width - 2 * kTextMargin,
                height - 2 * kTextMargin, FL_ALIGN_TOP_LEFT, nullptr, 0);
    }

    int handle(int event) override
    {
        switch (event) {
            case FL_FOCUS:
            case FL_UNFOCUS:
                return 1;
            case FL_PUSH:
                fX = Fl::event_x();
                fY = Fl::event_y();
                fDrag = dragBegun();
                return 1;
            // Where the button is released has not always been told before.
            case FL_DRAG:
            case FL_RELEASE:
                drag();
                return 1;
            case FL_MOUSEWHEEL:
                fUser.onWheel(-Fl::event_dy());
                return 1;
            case FL_KEYBOARD: {
                const char key = pressedKey();
                if (key == 0) break;
                fUser.onKey(key);
                return 1;
            }
            default:
                break;
        }
        return Fl_Double_Window::handle(event);
    }

    void drag()
    {
        const int right = Fl::event_x() - fX, down = Fl::event_y() - fY;
        if (right == 0 && down == 0) return;
        fX += right;
        fY += down;
        fUser.onDrag(fDrag, right, down);
    }

    void resize(int x, int y, int width, int height) override
    {
        const bool differs = width != w() || height != h();
        Fl_Double_Window::resize(x, y, width, height);
        if (differs) fUser.onResize(width, height);
    }

    WindowUser& fUser;
    const std::uint8_t* fPixels = nullptr;
    int fWidth = 0, fHeight = 0;
    std::string fTop, fBottom;
    int fX = 0, fY = 0;  // where the mouse was
    Drag fDrag = Drag::kTurn;
};

}  // namespace

std::unique_ptr<ViewWindow> openViewWindow(const std::string& title, long width, long height,
                                           WindowUser& user)
{
    if (!fl_display) {
        ::Display* connection = XOpenDisplay(nullptr);
        if (!connection) return nullptr;
        fl_open_display(connection);
    }
    int left = 0, top = 0, most = 0, highest = 0;
    Fl::screen_work_area(left, top, most, highest);
    const long shownWidth = std::clamp(width, 1L, static_cast<long>(most));
    const long shownHeight = std::clamp(height, 1L, static_cast<long>(highest));
    if (shownWidth != width || shownHeight != height) user.onResize(shownWidth, shownHeight);
    auto window = std::make_unique<FltkViewWindow>(static_cast<int>(shownWidth),
                                                   static_cast<int>(shownHeight), user);
    window->setTitle(title);
    window->show();
    return window;
}

}  // namespace zebview
