// The desktop as its user has it: looks at what windows show, and does what users do to them. It
// asks the window system, and knows nothing of the library.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zebtest
{

struct Shot {
    int width = 0, height = 0;
    std::vector<std::uint32_t> colors;  // 0xRRGGBB, row by row

    std::uint32_t at(int x, int y) const
    {
        return colors[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    bool operator==(const Shot&) const = default;
};

class Desktop
{
public:
    using Window = std::uintptr_t;

    virtual ~Desktop() = default;
    // The visible windows of a title.
    virtual std::vector<Window> find(const std::string& title) = 0;
    // The visible windows of the library, console included.
    virtual std::vector<Window> findAll() = 0;
    // What the screen shows where a window is, without its frame.
    virtual Shot shoot(Window window) = 0;
    // The close button.
    virtual void close(Window window) = 0;
    virtual void pressEscape(Window window) = 0;
    // Lays a white window over one, and takes it away again.
    virtual void cover(Window window) = 0;
    virtual void uncover() = 0;
    virtual void move(Window window, int x, int y) = 0;
    virtual void minimize(Window window) = 0;
    virtual void restore(Window window) = 0;
    virtual bool canBeResized(Window window) = 0;
    // The largest icon of a window, black where it can be seen through; without colours if there
    // is none.
    virtual Shot icon(Window window) = 0;
    // Selects a row of text, counted in lines from the window's top.
    virtual void selectLine(Window window, int line) = 0;
    // What is selected, by way of the clipboard; empty if that is nothing.
    virtual std::string copySelection(Window window) = 0;
    virtual void typeText(Window window, const std::string& text) = 0;
};

// pause  what a program does while its user takes time
std::unique_ptr<Desktop> openDesktop(std::function<void()> pause);

}  // namespace zebtest
