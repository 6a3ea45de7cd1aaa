#include "texture_images.h"

#include <assimp/scene.h>

#include <array>
#include <cmath>
#include <cstring>

#include "color.h"
#include "console.h"
#include "failure.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

// What a height that rises from black to white between two pixels is as a slope.
constexpr float kSteepness = 2;

// The renderer's images go on in one way. Where a picture goes on in two, coordinates are brought
// to where either will do (mapping in texture_lookup.cpp).
short wrapOf(const Texture& texture)
{
    const auto either = [&](Wrap wrap) { return texture.across == wrap || texture.down == wrap; };
    if (either(Wrap::kRepeat)) return ZEB_IMAGE_REPEAT;
    return either(Wrap::kMirror) ? ZEB_IMAGE_MIRROR : ZEB_IMAGE_CLAMP;
}

std::array<float, 256> lightOfBytes()
{
    std::array<float, 256> table;
    for (std::size_t i = 0; i < 256; ++i) table[i] = toLight(static_cast<float>(i) / 255);
    return table;
}

// Where alpha is opacity, colours under none count for nothing in the means of what is around them.
void appendColor(const std::uint8_t* pixel, Meaning meaning, std::vector<float>& values)
{
    static const std::array<float, 256> light = lightOfBytes();
    const float alpha = static_cast<float>(pixel[3]) / 255;
    const float factor = meaning == Meaning::kPaint ? alpha : 1;
    for (int c = 0; c < 3; ++c) values.push_back(factor * light[pixel[c]]);
    if (meaning != Meaning::kColor) values.push_back(alpha);
}

// Pictures of heights go by the same names as those of normals, and are grey.
bool isGrey(const Pixels& pixels)
{
    std::size_t colorful = 0;
    for (std::size_t i = 0; i < pixels.rgba.size(); i += 4) {
        const std::uint8_t* const p = &pixels.rgba[i];
        colorful += std::abs(p[0] - p[1]) > 8 || std::abs(p[1] - p[2]) > 8;
    }
    return colorful * 20 < pixels.count();
}

void appendSlope(const Pixels& pixels, bool repeats, std::size_t x, std::size_t y,
                 std::vector<float>& values)
{
    const auto step = [&](std::size_t i, std::size_t size, bool forward) {
        if (forward) return i + 1 < size ? i + 1 : repeats ? 0 : i;
        return i > 0 ? i - 1 : repeats ? size - 1 : i;
    };
    const auto height = [&](std::size_t i, std::size_t j) {
        return static_cast<float>(pixels.rgba[(j * pixels.width + i) * 4]) / 255;
    };
    const float dx =
        height(step(x, pixels.width, true), y) - height(step(x, pixels.width, false), y);
    const float dy =
        height(x, step(y, pixels.height, true)) - height(x, step(y, pixels.height, false));
    const float across = -kSteepness * dx / 2, up = kSteepness * dy / 2;
    const float length = std::sqrt(across * across + up * up + 1);
    values.insert(values.end(), {across / length, up / length, 1 / length});
}

std::size_t channelsOf(Meaning meaning)
{
    return meaning == Meaning::kColor || meaning == Meaning::kNormals ? 3 : 4;
}

std::vector<float> valuesOf(const Pixels& pixels, Meaning meaning, bool repeats)
{
    std::vector<float> values;
    const bool slopes = meaning == Meaning::kNormals && isGrey(pixels);
    values.reserve(pixels.count() * channelsOf(meaning));
    for (std::size_t i = 0; i < pixels.count(); ++i) {
        const std::uint8_t* const pixel = &pixels.rgba[i * 4];
        if (slopes) {
            appendSlope(pixels, repeats, i % pixels.width, i / pixels.width, values);
        } else if (meaning == Meaning::kNormals) {
            // 128 is as near to 0 as it gets, and is meant for it.
            for (int c = 0; c < 3; ++c) {
                values.push_back((static_cast<float>(pixel[c]) - 128) / 127);
            }
        } else if (meaning == Meaning::kValues) {
            for (int c = 0; c < 4; ++c) values.push_back(static_cast<float>(pixel[c]) / 255);
        } else {
            appendColor(pixel, meaning, values);
        }
    }
    return values;
}

// A picture of its own within the model, compressed or not.
Pixels embedded(const aiTexture& texture)
{
    if (texture.mHeight == 0) {
        return decodePixels(
            {reinterpret_cast<const std::uint8_t*>(texture.pcData), texture.mWidth});
    }
    Pixels pixels;
    pixels.width = texture.mWidth;
    pixels.height = texture.mHeight;
    for (std::size_t i = 0; i < pixels.count(); ++i) {
        const aiTexel& texel = texture.pcData[i];
        pixels.rgba.insert(pixels.rgba.end(), {texel.r, texel.g, texel.b, texel.a});
    }
    findAlpha(pixels);
    return pixels;
}

}  // namespace

TextureImage::TextureImage(const Pixels& pixels, Meaning meaning, short wrap)
    : fChannels(channelsOf(meaning)),
      fWidth(pixels.width),
      fHeight(pixels.height),
      fHasAlpha(pixels.hasAlpha),
      fRepeats(wrap == ZEB_IMAGE_REPEAT)
{
    const std::vector<float> values = valuesOf(pixels, meaning, fRepeats);
    fHandle = zebImage(static_cast<long>(pixels.width), static_cast<long>(pixels.height),
                       static_cast<long>(fChannels), values.data(), wrap);
    if (!fHandle) throw Failure("the renderer does not take it");
}

TextureImage::~TextureImage() { zebImageFree(fHandle); }

TextureImages::TextureImages(const aiScene& scene, const std::string& model,
                             const std::string& more)
    : fScene(scene), fModel(model), fFiles(model, more)
{
}

Pixels TextureImages::read(const std::string& name) const
{
    const aiTexture* const inside = fScene.GetEmbeddedTexture(name.c_str());
    if (inside) return embedded(*inside);
    if (name.starts_with('*')) throw Failure("it is missing from the model");
    return decodePixels(fFiles.read(name));
}

std::shared_ptr<const TextureImage> TextureImages::find(const Texture& texture, Meaning meaning)
{
    const short wrap = wrapOf(texture);
    const auto [place, isNew] = fImages.try_emplace(Key{texture.name, {meaning, wrap}});
    if (!isNew) return place->second;
    try {
        place->second = std::make_shared<TextureImage>(read(texture.name), meaning, wrap);
    } catch (const Failure& failure) {
        complain(fModel + ": texture " + texture.name + " is not shown: " + failure.what());
    }
    return place->second;
}

}  // namespace zebview
