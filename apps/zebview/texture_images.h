// Textures as the renderer's images.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "pixels.h"
#include "texture.h"
#include "texture_files.h"

struct aiScene;

namespace zebview
{

// What the numbers of a picture are taken for.
enum class Meaning {
    kColor,   // three channels, light
    kPaint,   // four: light, multiplied by alpha, and alpha
    kGloss,   // four: light, and alpha
    kValues,  // four, as they are
    kNormals  // three, from -1 to 1; of heights, in shades of grey, the normals are made
};

// Goes when nothing uses it any more.
class TextureImage
{
public:
    TextureImage(const Pixels& pixels, Meaning meaning, short wrap);
    ~TextureImage();
    TextureImage(const TextureImage&) = delete;
    TextureImage& operator=(const TextureImage&) = delete;

    const void* handle() const { return fHandle; }
    std::size_t channels() const { return fChannels; }
    bool hasAlpha() const { return fHasAlpha; }
    std::size_t width() const { return fWidth; }
    std::size_t height() const { return fHeight; }
    // Whether it goes on as itself beyond its edges.
    bool repeats() const { return fRepeats; }

private:
    const void* fHandle = nullptr;
    std::size_t fChannels, fWidth, fHeight;
    bool fHasAlpha, fRepeats;
};

class TextureImages
{
public:
    // model  its name, for messages; more  a folder that textures may be in as well
    TextureImages(const aiScene& scene, const std::string& model, const std::string& more);

    // None, and a line that says why, if the texture can't be had.
    std::shared_ptr<const TextureImage> find(const Texture& texture, Meaning meaning);

private:
    using Key = std::pair<std::string, std::pair<Meaning, short>>;

    Pixels read(const std::string& name) const;

    const aiScene& fScene;
    std::string fModel;
    TextureFiles fFiles;
    std::map<Key, std::shared_ptr<const TextureImage>> fImages;
};

}  // namespace zebview
