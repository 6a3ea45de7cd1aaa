// Built without a window system.

#include "view_window.h"

namespace zebview
{

std::unique_ptr<ViewWindow> openViewWindow(const std::string&, long, long, WindowUser&)
{
    return nullptr;
}

}  // namespace zebview
