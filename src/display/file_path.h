// Names of files as hosts give them.
#pragma once

#include <filesystem>
#include <string>

namespace zeb
{

// The path of a name in UTF-8. On Windows a name that is no UTF-8 is taken in the code page of the
// system, as older hosts write it; elsewhere the bytes are the path.
std::filesystem::path filePath(const std::string& name);

}  // namespace zeb
