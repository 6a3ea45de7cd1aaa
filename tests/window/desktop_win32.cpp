#include <windows.h>

#include <utility>

#include "desktop.h"

namespace zebtest
{

namespace
{

HWND handle(Desktop::Window window) { return reinterpret_cast<HWND>(window); }

std::string narrow(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    bytes.pop_back();
    return bytes;
}

class Win32Desktop : public Desktop
{
public:
    explicit Win32Desktop(std::function<void()> pause) : fPause(std::move(pause))
    {
        WNDCLASSW covers{};
        covers.lpfnWndProc = DefWindowProcW;
        covers.hInstance = GetModuleHandleW(nullptr);
        covers.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        covers.lpszClassName = L"cover";
        RegisterClassW(&covers);
    }

    std::vector<Window> find(const std::string& title) override
    {
        Search search{title, GetWindowTextW, {}};
        EnumThreadWindows(GetCurrentThreadId(), addMatching, reinterpret_cast<LPARAM>(&search));
        return search.found;
    }
    std::vector<Window> findAll() override
    {
        Search search{"zebcore", GetClassNameW, {}};
        EnumThreadWindows(GetCurrentThreadId(), addMatching, reinterpret_cast<LPARAM>(&search));
        return search.found;
    }

    Shot shoot(Window window) override
    {
        UpdateWindow(handle(window));
        RECT area;
        GetClientRect(handle(window), &area);
        POINT corner{0, 0};
        ClientToScreen(handle(window), &corner);
        const HDC screen = GetDC(nullptr);
        const HDC memory = CreateCompatibleDC(screen);
        const HBITMAP bitmap = makeBitmap(memory, area.right, area.bottom);
        BitBlt(memory, 0, 0, area.right, area.bottom, screen, corner.x, corner.y, SRCCOPY);
        const Shot shot = takeShot(bitmap);
        DeleteDC(memory);
        DeleteObject(bitmap);
        ReleaseDC(nullptr, screen);
        return shot;
    }

    void close(Window window) override { PostMessageW(handle(window), WM_SYSCOMMAND, SC_CLOSE, 0); }
    void pressEscape(Window window) override
    {
        PostMessageW(handle(window), WM_KEYDOWN, VK_ESCAPE, 1);
        PostMessageW(handle(window), WM_KEYUP, VK_ESCAPE, 1);
    }

    void cover(Window window) override
    {
        RECT area;
        GetWindowRect(handle(window), &area);
        fCover =
            CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, L"cover", L"", WS_POPUP, area.left,
                            area.top, area.right - area.left, area.bottom - area.top, nullptr,
                            nullptr, GetModuleHandleW(nullptr), nullptr);
        ShowWindow(fCover, SW_SHOWNA);
        UpdateWindow(fCover);
        MSG message;
        while (PeekMessageW(&message, fCover, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    }
    void uncover() override { DestroyWindow(fCover); }

    void move(Window window, int x, int y) override
    {
        SetWindowPos(handle(window), nullptr, x, y, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    void minimize(Window window) override { ShowWindow(handle(window), SW_MINIMIZE); }
    void restore(Window window) override { ShowWindow(handle(window), SW_RESTORE); }

    bool canBeResized(Window window) override
    {
        return (GetWindowLongW(handle(window), GWL_STYLE) & (WS_THICKFRAME | WS_MAXIMIZEBOX)) != 0;
    }

    Shot icon(Window window) override
    {
        const auto icon =
            reinterpret_cast<HICON>(SendMessageW(handle(window), WM_GETICON, ICON_BIG, 0));
        ICONINFO info{};
        if (!icon || !GetIconInfo(icon, &info) || !info.hbmColor) return {};
        BITMAP bitmap{};
        GetObjectW(info.hbmColor, sizeof bitmap, &bitmap);
        const HDC memory = CreateCompatibleDC(nullptr);
        const HBITMAP bits = makeBitmap(memory, bitmap.bmWidth, bitmap.bmHeight);
        DrawIconEx(memory, 0, 0, icon, bitmap.bmWidth, bitmap.bmHeight, 0, nullptr, DI_NORMAL);
        const Shot shot = takeShot(bits);
        DeleteDC(memory);
        DeleteObject(bits);
        DeleteObject(info.hbmMask);
        DeleteObject(info.hbmColor);
        return shot;
    }

    void selectLine(Window window, int line) override
    {
        const HWND text = GetWindow(handle(window), GW_CHILD);
        const auto first = SendMessageW(text, EM_GETFIRSTVISIBLELINE, 0, 0);
        const auto begin = SendMessageW(text, EM_LINEINDEX, static_cast<WPARAM>(first + line), 0);
        const auto size = SendMessageW(text, EM_LINELENGTH, static_cast<WPARAM>(begin), 0);
        SendMessageW(text, EM_SETSEL, static_cast<WPARAM>(begin), begin + size);
    }
    std::string copySelection(Window window) override
    {
        if (!OpenClipboard(nullptr)) return "";
        EmptyClipboard();
        CloseClipboard();
        SendMessageW(GetWindow(handle(window), GW_CHILD), WM_COPY, 0, 0);
        if (!OpenClipboard(nullptr)) return "";
        std::string text;
        if (const HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
            text = narrow(static_cast<const wchar_t*>(GlobalLock(data)));
            GlobalUnlock(data);
        }
        CloseClipboard();
        return text;
    }

    void typeText(Window window, const std::string& text) override
    {
        const HWND edit = GetWindow(handle(window), GW_CHILD);
        for (const char c : text) SendMessageW(edit, WM_CHAR, static_cast<WPARAM>(c), 1);
    }

private:
    // A black one, selected for drawing.
    static HBITMAP makeBitmap(HDC memory, long width, long height)
    {
        BITMAPINFO layout{};
        layout.bmiHeader.biSize = sizeof layout.bmiHeader;
        layout.bmiHeader.biWidth = width;
        layout.bmiHeader.biHeight = -height;
        layout.bmiHeader.biPlanes = 1;
        layout.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        const HBITMAP bitmap = CreateDIBSection(memory, &layout, DIB_RGB_COLORS, &bits, nullptr, 0);
        SelectObject(memory, bitmap);
        return bitmap;
    }
    static Shot takeShot(HBITMAP bitmap)
    {
        GdiFlush();
        DIBSECTION section{};
        GetObjectW(bitmap, sizeof section, &section);
        const auto* pixels = static_cast<const DWORD*>(section.dsBm.bmBits);
        Shot shot{section.dsBm.bmWidth, section.dsBm.bmHeight, {}};
        for (long i = 0; i < section.dsBm.bmWidth * section.dsBm.bmHeight; ++i) {
            shot.colors.push_back(pixels[i] & 0xFFFFFF);
        }
        return shot;
    }

    struct Search {
        const std::string text;
        int(WINAPI* read)(HWND, LPWSTR, int);
        std::vector<Window> found;
    };
    static BOOL CALLBACK addMatching(HWND window, LPARAM data)
    {
        auto& search = *reinterpret_cast<Search*>(data);
        wchar_t text[256] = L"";
        search.read(window, text, 256);
        if (IsWindowVisible(window) && narrow(text) == search.text) {
            search.found.push_back(reinterpret_cast<Window>(window));
        }
        return TRUE;
    }

    std::function<void()> fPause;
    HWND fCover = nullptr;
};

}  // namespace

std::unique_ptr<Desktop> openDesktop(std::function<void()> pause)
{
    return std::make_unique<Win32Desktop>(std::move(pause));
}

}  // namespace zebtest
