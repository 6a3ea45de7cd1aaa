// Windows by plain Win32.

#include <windows.h>

#include <array>

#include "display/module.h"
#include "display/screen.h"
#include "util/wide_text.h"

namespace zeb
{

namespace
{

constexpr int kPictureIcon = 101, kMessagesIcon = 103;

HINSTANCE instance()
{
    return static_cast<HINSTANCE>(gModule ? gModule->instance() : GetModuleHandleW(nullptr));
}

// A window of the system whose messages an object of the library handles.
class Frame
{
public:
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
    virtual ~Frame()
    {
        if (!fHandle) return;
        SetWindowLongPtrW(fHandle, GWLP_USERDATA, 0);
        if (DestroyWindow(fHandle)) return;
        // It belongs to another thread, which must not come back here.
        SetWindowLongPtrW(fHandle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DefWindowProcW));
        PostMessageW(fHandle, WM_CLOSE, 0, 0);
    }

    HWND handle() const { return fHandle; }

    static constexpr const wchar_t* kClass = L"zebcore";
    static void registerClass()
    {
        WNDCLASSW frames{};
        frames.lpfnWndProc = dispatch;
        frames.hInstance = instance();
        frames.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
        frames.lpszClassName = kClass;
        RegisterClassW(&frames);
    }

protected:
    Frame() = default;

    void create(const std::wstring& title, DWORD style, SIZE outer, int icon)
    {
        fHandle = CreateWindowExW(0, kClass, title.c_str(), style, CW_USEDEFAULT, CW_USEDEFAULT,
                                  outer.cx, outer.cy, nullptr, nullptr, instance(), this);
        if (!fHandle) return;
        useIcon(ICON_BIG, icon, SM_CXICON, SM_CYICON);
        useIcon(ICON_SMALL, icon, SM_CXSMICON, SM_CYSMICON);
    }

    // The size that a window has with what the system takes for the frame.
    static SIZE outerSize(DWORD style, long width, long height)
    {
        RECT outer{0, 0, width, height};
        AdjustWindowRect(&outer, style, FALSE);
        return {outer.right - outer.left, outer.bottom - outer.top};
    }

    // The answer to a message; false leaves it to the system.
    virtual bool onMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& answer) = 0;

private:
    static LRESULT CALLBACK dispatch(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
    {
        if (message == WM_NCCREATE) {
            const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lparam);
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
        }
        auto* frame = reinterpret_cast<Frame*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        LRESULT answer = 0;
        if (frame && frame->onMessage(message, wparam, lparam, answer)) return answer;
        if (frame && message == WM_NCDESTROY) frame->fHandle = nullptr;
        return DefWindowProcW(window, message, wparam, lparam);
    }

    void useIcon(WPARAM which, int icon, int width, int height)
    {
        const HANDLE image =
            LoadImageW(instance(), MAKEINTRESOURCEW(icon), IMAGE_ICON, GetSystemMetrics(width),
                       GetSystemMetrics(height), LR_SHARED);
        SendMessageW(fHandle, WM_SETICON, which, reinterpret_cast<LPARAM>(image));
    }

    HWND fHandle = nullptr;
};

// How pixels lie in memory: rows from the top, of a bit depth, with three masks or a table of
// colours behind the header.
struct BitmapLayout {
    BITMAPINFOHEADER header{};
    union {
        std::array<DWORD, 3> masks;
        std::array<RGBQUAD, kMaxColors> colors;
    };

    BitmapLayout(long width, long height, WORD bits, DWORD kind) : colors{}
    {
        header.biSize = sizeof header;
        header.biWidth = width;
        header.biHeight = -height;
        header.biPlanes = 1;
        header.biBitCount = bits;
        header.biCompression = kind;
    }
    const BITMAPINFO* info() const { return reinterpret_cast<const BITMAPINFO*>(this); }
};

class Win32Window : public TDisplayWindow, private Frame
{
public:
    Win32Window(const char* title, long width, long height, const PixelFormat& format)
        : TDisplayWindow(width, height, format),
          fWidth(static_cast<int>(width)),
          fHeight(static_cast<int>(height))
    {
        // No frame to size it by, and no box to maximize it.
        constexpr DWORD style =
            (WS_OVERLAPPEDWINDOW | WS_BORDER) & ~(WS_THICKFRAME | WS_MAXIMIZEBOX);
        fMemory = CreateCompatibleDC(nullptr);
        if (!useBitmap(BitmapLayout(width, height, 32, BI_RGB))) return;
        fOuter = outerSize(style, width, height);
        create(wideText(title), style, fOuter, kPictureIcon);
        if (!handle()) return;
        // The system does not ask how small or large a window may be before it is there.
        SetWindowPos(handle(), nullptr, 0, 0, fOuter.cx, fOuter.cy,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        ShowWindow(handle(), SW_SHOW);
        // The first time whoever started the program has a say in it.
        if (!IsWindowVisible(handle())) ShowWindow(handle(), SW_SHOW);
    }
    ~Win32Window() override
    {
        if (fMemory) DeleteDC(fMemory);
        if (fBitmap) DeleteObject(fBitmap);
        if (fPalette) DeleteObject(fPalette);
    }

    // Whether the system had room for the picture and a place to show it.
    bool good() const { return handle() != nullptr; }

private:
    // Makes another bitmap the backing one, all its words 0, and returns its words; null if the
    // system has no room for it.
    void* useBitmap(const BitmapLayout& layout)
    {
        void* words = nullptr;
        const HBITMAP bitmap =
            CreateDIBSection(nullptr, layout.info(), DIB_RGB_COLORS, &words, nullptr, 0);
        if (!bitmap) return nullptr;
        SelectObject(fMemory, bitmap);
        if (fBitmap) DeleteObject(fBitmap);
        fBitmap = bitmap;
        return words;
    }

    bool onMessage(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& answer) override
    {
        switch (message) {
            case WM_GETMINMAXINFO: {
                // Pictures may be smaller than the system's smallest window, and larger than the
                // screen.
                auto& limits = *reinterpret_cast<MINMAXINFO*>(lparam);
                limits.ptMinTrackSize = limits.ptMaxTrackSize = {fOuter.cx, fOuter.cy};
                return true;
            }
            case WM_PAINT:
                paint();
                return true;
            case WM_ERASEBKGND:
                answer = 1;
                return true;
            case WM_KEYDOWN:
                if (wparam != VK_ESCAPE) return false;
                [[fallthrough]];
            case WM_CLOSE:
                ShowWindow(handle(), SW_HIDE);
                closed();
                return true;
            case WM_DESTROY:
                closed();
                return true;
            case WM_PALETTECHANGED:
                if (reinterpret_cast<HWND>(wparam) != handle()) updatePalette();
                return true;
            case WM_QUERYNEWPALETTE:
                answer = updatePalette();
                return true;
            default:
                return false;
        }
    }

    void paint()
    {
        PAINTSTRUCT state;
        const HDC window = BeginPaint(handle(), &state);
        if (fPalette) {
            SelectPalette(window, fPalette, FALSE);
            RealizePalette(window);
        }
        BitBlt(window, 0, 0, fWidth, fHeight, fMemory, 0, 0, SRCCOPY);
        EndPaint(handle(), &state);
    }

    // Brings the palette to the screen and redraws the window in it. Whether there is a palette.
    bool updatePalette()
    {
        if (!fPalette) return false;
        const HDC window = GetDC(handle());
        SelectPalette(window, fPalette, FALSE);
        RealizePalette(window);
        ReleaseDC(handle(), window);
        InvalidateRect(handle(), nullptr, FALSE);
        return true;
    }

    bool isShown() const override { return IsWindowVisible(handle()); }

    bool paletteScreen() const override
    {
        const HDC screen = GetDC(nullptr);
        const int capabilities = GetDeviceCaps(screen, RASTERCAPS);
        ReleaseDC(nullptr, screen);
        return (capabilities & RC_PALETTE) != 0;
    }

    void draw(const ColorImage& image, const Area& area) override
    {
        const long rows = area.y1 - area.y0 + 1;
        const long columns = area.x1 - area.x0 + 1;
        BitmapLayout layout(image.width, rows, 32, BI_BITFIELDS);
        layout.masks = {0xFF, 0xFF00, 0xFF0000};
        SetDIBitsToDevice(fMemory, area.x0, area.y0, static_cast<DWORD>(columns),
                          static_cast<DWORD>(rows), area.x0, 0, 0, static_cast<UINT>(rows),
                          image.row(area.y0), layout.info(), DIB_RGB_COLORS);
        const RECT changed{area.x0, area.y0, area.x1 + 1, area.y1 + 1};
        InvalidateRect(handle(), &changed, FALSE);
    }

    void quant(const ColorImage& image, const Palette& palette) override
    {
        struct {
            WORD version = 0x300;
            WORD count = 0;
            std::array<PALETTEENTRY, kMaxColors> entries{};
        } colors;
        for (const PaletteEntry& entry : palette.map) {
            colors.entries[colors.count++] = {entry.red, entry.green, entry.blue, entry.flags};
        }
        if (fPalette) DeleteObject(fPalette);
        fPalette = CreatePalette(reinterpret_cast<const LOGPALETTE*>(&colors));
        BitmapLayout layout(fWidth, fHeight, 8, BI_RGB);
        for (std::size_t i = 0; i < palette.map.size(); ++i) {
            const PaletteEntry& entry = palette.map[i];
            layout.colors[i] = {entry.blue, entry.green, entry.red, 0};
        }
        auto* out = static_cast<BYTE*>(useBitmap(layout));
        if (!out) return;
        const int rowBytes = (fWidth + 3) / 4 * 4;
        for (int y = 0; y < fHeight; ++y, out += rowBytes) {
            const ScreenColor* row = image.row(y);
            for (int x = 0; x < fWidth; ++x) out[x] = palette.index(row[x]);
        }
        updatePalette();
    }

    const int fWidth, fHeight;
    SIZE fOuter{};
    HDC fMemory = nullptr;
    HBITMAP fBitmap = nullptr;
    HPALETTE fPalette = nullptr;
};

class Win32Console : public TRendEdit, private Frame
{
public:
    Win32Console()
    {
        const auto font = static_cast<HFONT>(GetStockObject(ANSI_FIXED_FONT));
        const auto [width, height] = tenLines(font);
        create(L"ZEB Messages", WS_OVERLAPPEDWINDOW, outerSize(WS_OVERLAPPEDWINDOW, width, height),
               kMessagesIcon);
        if (!handle()) return;
        constexpr DWORD style =
            WS_CHILD | WS_VISIBLE | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_READONLY;
        fEdit = CreateWindowExW(0, L"EDIT", L"", style, 0, 0, width, height, handle(), nullptr,
                                instance(), nullptr);
        SendMessageW(fEdit, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
        SendMessageW(fEdit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN,
                     MAKELPARAM(kMargin, kMargin));
        SendMessageW(fEdit, EM_SETLIMITTEXT, 0, 0);
    }

    bool good() const override { return handle() != nullptr; }

    void showMessagesSoon() override { SetTimer(handle(), kTimer, 30, nullptr); }

    void print(const std::string& lines) override
    {
        std::wstring text;
        for (const wchar_t c : wideText(lines)) text += c == L'\n' ? L"\r\n" : std::wstring(1, c);
        text += L"\r\n";
        DWORD from = 0, to = 0, removed = 0;
        SendMessageW(fEdit, EM_GETSEL, reinterpret_cast<WPARAM>(&from),
                     reinterpret_cast<LPARAM>(&to));
        if (GetWindowTextLengthW(fEdit) > kMostText) {
            const auto middle = SendMessageW(fEdit, EM_LINEFROMCHAR, kMostText / 2, 0);
            removed = static_cast<DWORD>(
                SendMessageW(fEdit, EM_LINEINDEX, static_cast<WPARAM>(middle), 0));
            select(0, removed);
            replace(L"");
        }
        const auto end = static_cast<DWORD>(GetWindowTextLengthW(fEdit));
        select(end, end);
        replace(text.c_str());
        SendMessageW(fEdit, EM_SCROLLCARET, 0, 0);
        // The user may be about to copy something. Wine scrolls there.
        if (removed <= from && from < to) {
            const auto newest = firstVisibleLine();
            select(from - removed, to - removed);
            SendMessageW(fEdit, EM_LINESCROLL, 0, newest - firstVisibleLine());
        }
        if (!IsWindowVisible(handle())) ShowWindow(handle(), SW_SHOWNA);
    }

private:
    static constexpr int kMargin = 2;
    static constexpr UINT_PTR kTimer = 1;
    // Older messages give way to new ones.
    static constexpr int kMostText = 1 << 16;

    LRESULT firstVisibleLine() const { return SendMessageW(fEdit, EM_GETFIRSTVISIBLELINE, 0, 0); }

    void select(DWORD from, DWORD to)
    {
        SendMessageW(fEdit, EM_SETSEL, from, static_cast<LPARAM>(to));
    }

    // Replaces what is selected.
    void replace(const wchar_t* text)
    {
        SendMessageW(fEdit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text));
    }

    // The size that 80 columns by 10 lines take, with margins and the scroll bar.
    static SIZE tenLines(HFONT font)
    {
        TEXTMETRICW metrics{};
        const HDC screen = GetDC(nullptr);
        SelectObject(screen, font);
        GetTextMetricsW(screen, &metrics);
        ReleaseDC(nullptr, screen);
        return {metrics.tmAveCharWidth * 80 + 2 * kMargin + GetSystemMetrics(SM_CXVSCROLL),
                (metrics.tmHeight + metrics.tmExternalLeading) * 10};
    }

    bool onMessage(UINT message, WPARAM, LPARAM lparam, LRESULT&) override
    {
        switch (message) {
            case WM_TIMER:
                KillTimer(handle(), kTimer);
                showMessages();
                return true;
            case WM_SIZE:
                MoveWindow(fEdit, 0, 0, LOWORD(lparam), HIWORD(lparam), TRUE);
                return true;
            case WM_SETFOCUS:
                SetFocus(fEdit);
                return true;
            // The next message opens it again.
            case WM_CLOSE:
                ShowWindow(handle(), SW_HIDE);
                return true;
            default:
                return false;
        }
    }

    HWND fEdit = nullptr;
};

class Win32Screen : public Screen
{
public:
    Win32Screen() { Frame::registerClass(); }
    // A library that is unloaded must leave nothing that calls into it.
    ~Win32Screen() override { UnregisterClassW(Frame::kClass, instance()); }

    std::unique_ptr<TDisplayWindow> makeWindow(const char* title, long width, long height,
                                               const PixelFormat& format) override
    {
        auto window = std::make_unique<Win32Window>(title, width, height, format);
        if (!window->good()) return nullptr;
        return window;
    }
    std::unique_ptr<TRendEdit> makeConsole() override
    {
        auto console = std::make_unique<Win32Console>();
        if (!console->good()) return nullptr;
        return console;
    }

    // While a host renders, its own windows rest; when it waits, it expects them to live.
    bool events(bool wait) override
    {
        fGoOn = true;
        if (wait) {
            MsgWaitForMultipleObjectsEx(0, nullptr, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            handleMessages(nullptr);
        } else {
            EnumThreadWindows(GetCurrentThreadId(), handleMessagesOf,
                              reinterpret_cast<LPARAM>(this));
        }
        return fGoOn;
    }

private:
    static BOOL CALLBACK handleMessagesOf(HWND window, LPARAM self)
    {
        if (reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(window, GWLP_HINSTANCE)) == instance()) {
            reinterpret_cast<Win32Screen*>(self)->handleMessages(window);
        }
        return TRUE;
    }

    // Those of a window and what is in it, or of all.
    void handleMessages(HWND window)
    {
        MSG message;
        while (fGoOn && PeekMessageW(&message, window, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                // For the host's own loop.
                PostQuitMessage(static_cast<int>(message.wParam));
                fGoOn = false;
                return;
            }
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

    bool fGoOn = true;
};

}  // namespace

std::unique_ptr<Screen> makeScreen()
{
    // A service has a desktop too, but nobody sees it.
    USEROBJECTFLAGS flags{};
    const bool known = GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags,
                                                 sizeof flags, nullptr);
    if (known && !(flags.dwFlags & WSF_VISIBLE)) return nullptr;
    return std::make_unique<Win32Screen>();
}

}  // namespace zeb
