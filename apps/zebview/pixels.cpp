#include "pixels.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "failure.h"

namespace zebview
{

namespace
{

constexpr int kMostSide = 16384;
constexpr long kMostPixels = 1L << 26;
// Headers are believed before more than this is read.
constexpr std::size_t kPiece = 1 << 16;

// What is heard from a decoder on the way.
struct Decoding {
    bool tooLarge = false;
    int rows = 0;  // how many from the top something has been read of
};

// A size of nothing makes decoders give up before they take memory.
void onSize(GdkPixbufLoader* loader, int width, int height, gpointer data)
{
    if (width <= kMostSide && height <= kMostSide && long{width} * height <= kMostPixels) return;
    static_cast<Decoding*>(data)->tooLarge = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

void onRows(GdkPixbufLoader*, int, int y, int, int height, gpointer data)
{
    int& rows = static_cast<Decoding*>(data)->rows;
    rows = std::max(rows, y + height);
}

std::string_view textOf(std::span<const std::uint8_t> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Decoders that are fed piece by piece take what there is for all there is.
bool endIsMissing(std::span<const std::uint8_t> file)
{
    const std::string_view text = textOf(file);
    if (text.starts_with("\x89PNG")) return text.rfind("IEND") == std::string_view::npos;
    if (text.starts_with("\xFF\xD8")) return text.rfind("\xFF\xD9") == std::string_view::npos;
    return false;
}

// What decoders say on their own account is for those who write them.
void quieten()
{
    static const guint once = g_log_set_handler(
        "GdkPixbuf", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL),
        [](const char*, GLogLevelFlags, const char*, gpointer) {}, nullptr);
    static_cast<void>(once);
}

std::string firstLine(const GError* error)
{
    const std::string text = error && error->message ? error->message : "it cannot be decoded";
    return text.substr(0, text.find('\n'));
}

Pixels copied(const GdkPixbuf& source)
{
    Pixels pixels;
    pixels.width = static_cast<std::size_t>(gdk_pixbuf_get_width(&source));
    pixels.height = static_cast<std::size_t>(gdk_pixbuf_get_height(&source));
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(&source));
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(&source));
    const guint8* const bytes = gdk_pixbuf_read_pixels(&source);
    pixels.rgba.resize(pixels.count() * 4, 255);
    std::uint8_t* out = pixels.rgba.data();
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const guint8* in = bytes + y * stride;
        for (std::size_t x = 0; x < pixels.width; ++x, in += channels, out += 4) {
            std::copy_n(in, channels, out);
        }
    }
    findAlpha(pixels);
    return pixels;
}

}  // namespace

void findAlpha(Pixels& pixels)
{
    pixels.hasAlpha = false;
    for (std::size_t i = 3; i < pixels.rgba.size(); i += 4) pixels.hasAlpha |= pixels.rgba[i] < 255;
}

Pixels decodePixels(std::span<const std::uint8_t> file)
{
    quieten();
    const std::unique_ptr<GdkPixbufLoader, void (*)(gpointer)> loader(gdk_pixbuf_loader_new(),
                                                                      g_object_unref);
    Decoding decoding;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(onSize), &decoding);
    g_signal_connect(loader.get(), "area-updated", G_CALLBACK(onRows), &decoding);
    GError* error = nullptr;
    bool good = true;
    for (std::size_t at = 0; at < file.size() && good && !decoding.tooLarge; at += kPiece) {
        const auto piece = file.subspan(at, std::min(kPiece, file.size() - at));
        good = gdk_pixbuf_loader_write(loader.get(), piece.data(), piece.size(), &error);
    }
    good &= gdk_pixbuf_loader_close(loader.get(), error ? nullptr : &error) != 0;
    const std::unique_ptr<GError, void (*)(GError*)> reported(error, g_error_free);
    if (decoding.tooLarge) {
        throw Failure("it is larger than " + std::to_string(kMostSide) +
                      " pixels a side or 64 million in all");
    }
    const GdkPixbuf* const pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!good || !pixbuf) throw Failure(firstLine(error));
    if (decoding.rows < gdk_pixbuf_get_height(pixbuf) || endIsMissing(file)) {
        throw Failure("the file breaks off");
    }
    return copied(*pixbuf);
}

}  // namespace zebview
