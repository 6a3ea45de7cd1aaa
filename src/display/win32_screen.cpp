// Windows by plain Win32.

#include <windows.h>

#include <array>
#include <cstring>
#include <vector>

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
        DestroyWindow(fHandle);
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

    // Whatever the system takes for the frame comes on top of the width and the height.
    void create(const std::wstring& title, DWORD style, int width, int height, int icon)
    {
        RECT outer{0, 0, width, height};
        AdjustWindowRect(&outer, style, FALSE);
        fHandle = CreateWindowExW(0, kClass, title.c_str(), style, CW_USEDEFAULT, CW_USEDEFAULT,
                                  outer.right - outer.left, outer.bottom - outer.top, nullptr,
                                  nullptr, instance(), this);
        if (!fHandle) return;
        useIcon(ICON_BIG, icon, SM_CXICON, SM_CYICON);
        useIcon(ICON_SMALL, icon, SM_CXSMICON, SM_CYSMICON);
    }

    // The answer to a message; false leaves it to the system.
    virtual bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& answer) = 0;

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
        if (frame && frame->handle(message, wparam, lparam, answer)) return answer;
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

// How pixels lie in memory: rows from the top, of a bit depth, with three words of masks or a table
// of colours behind the header.
struct BitmapLayout {
    BITMAPINFOHEADER header{};
    union {
        std::array<DWORD, 3> masks;
        std::array<WORD, kMaxColors> indices;
    };

    BitmapLayout(long width, long height, WORD bits, DWORD kind) : indices{}
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
        makeBitmap();
        if (fBitmap) create(wideText(title), style, fWidth, fHeight, kPictureIcon);
        if (handle()) ShowWindow(handle(), SW_SHOW);
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
    using Frame::handle;

    void makeBitmap()
    {
        const HDC screen = GetDC(nullptr);
        if (!screen) return;
        fMemory = CreateCompatibleDC(screen);
        fBitmap = CreateCompatibleBitmap(screen, fWidth, fHeight);
        ReleaseDC(nullptr, screen);
        if (!fBitmap) return;
        SelectObject(fMemory, fBitmap);
        SelectObject(fMemory, GetStockObject(BLACK_BRUSH));
        PatBlt(fMemory, 0, 0, fWidth, fHeight, PATCOPY);
    }

    bool handle(UINT message, WPARAM wparam, LPARAM, LRESULT& answer) override
    {
        switch (message) {
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
                if (reinterpret_cast<HWND>(wparam) != handle()) updatePalette(true);
                return true;
            case WM_QUERYNEWPALETTE:
                answer = updatePalette(true);
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
            SelectPalette(fMemory, fPalette, FALSE);
        }
        BitBlt(window, 0, 0, fWidth, fHeight, fMemory, 0, 0, SRCCOPY);
        EndPaint(handle(), &state);
    }

    // Brings the palette to the screen, and redraws the window or adapts what it shows. Whether
    // there is a palette.
    bool updatePalette(bool redraw)
    {
        if (!fPalette) return false;
        const HDC window = GetDC(handle());
        SelectPalette(window, fPalette, FALSE);
        RealizePalette(window);
        if (redraw) {
            InvalidateRect(handle(), nullptr, FALSE);
        } else {
            UpdateColors(window);
        }
        ReleaseDC(handle(), window);
        return true;
    }

    bool paletteScreen() const override
    {
        return (GetDeviceCaps(fMemory, RASTERCAPS) & RC_PALETTE) != 0;
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
        SelectPalette(fMemory, fPalette, FALSE);
        RealizePalette(fMemory);

        const std::size_t rowBytes = (static_cast<std::size_t>(fWidth) + 3) / 4 * 4;
        std::vector<BYTE> indices(rowBytes * static_cast<std::size_t>(fHeight));
        for (int y = 0; y < fHeight; ++y) {
            const ScreenColor* row = image.row(y);
            BYTE* out = indices.data() + rowBytes * static_cast<std::size_t>(y);
            for (int x = 0; x < fWidth; ++x) out[x] = palette.index(row[x]);
        }
        BitmapLayout layout(fWidth, fHeight, 8, BI_RGB);
        for (std::size_t i = 0; i < kMaxColors; ++i) layout.indices[i] = static_cast<WORD>(i);
        SetDIBitsToDevice(fMemory, 0, 0, static_cast<DWORD>(fWidth), static_cast<DWORD>(fHeight), 0,
                          0, 0, static_cast<UINT>(fHeight), indices.data(), layout.info(),
                          DIB_PAL_COLORS);
        updatePalette(true);
    }

    const int fWidth, fHeight;
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
        create(L"ZEB Messages", WS_OVERLAPPEDWINDOW, width, height, kMessagesIcon);
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

    bool good() const { return handle() != nullptr; }

    void print(const char* line) override
    {
        const std::wstring text = wideText(line) + L"\r\n";
        const int end = GetWindowTextLengthW(fEdit);
        SendMessageW(fEdit, EM_SETSEL, static_cast<WPARAM>(end), end);
        SendMessageW(fEdit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
        SendMessageW(fEdit, EM_SCROLLCARET, 0, 0);
        if (!IsWindowVisible(handle())) ShowWindow(handle(), SW_SHOWNA);
    }

private:
    using Frame::handle;
    static constexpr int kMargin = 2;

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

    bool handle(UINT message, WPARAM, LPARAM lparam, LRESULT&) override
    {
        switch (message) {
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
    void events(bool wait) override
    {
        if (wait) {
            WaitMessage();
            handleMessages(nullptr);
        } else {
            EnumThreadWindows(GetCurrentThreadId(), handleMessagesOf, 0);
        }
    }

private:
    static BOOL CALLBACK handleMessagesOf(HWND window, LPARAM)
    {
        if (reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(window, GWLP_HINSTANCE)) == instance()) {
            handleMessages(window);
        }
        return TRUE;
    }

    // Those of a window and what is in it, or of all.
    static void handleMessages(HWND window)
    {
        MSG message;
        while (PeekMessageW(&message, window, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                // For the host's own loop.
                PostQuitMessage(static_cast<int>(message.wParam));
                return;
            }
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
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
