// A build without windows.

#include "display/screen.h"

namespace zeb
{

std::unique_ptr<Screen> makeScreen() { return nullptr; }

}  // namespace zeb
