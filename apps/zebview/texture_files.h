// The files that a model's textures are in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zebview
{

// A model says which files are read, and models come from anywhere: nothing outside of some folders
// is read, wherever its name or a link would lead.
class TextureFiles
{
public:
    // more  a further folder; may be empty
    TextureFiles(const std::string& model, const std::string& more);

    // What a file holds. Names that lead elsewhere, as those of another machine do, are looked for
    // in the folders themselves. Throws a Failure if there is no such file.
    std::vector<std::uint8_t> read(const std::string& name) const;

private:
    std::vector<std::filesystem::path> fFolders;
};

}  // namespace zebview
