#include "display/icon.h"

#include "icon_files.h"

namespace zeb
{

namespace
{

unsigned readWord(const unsigned char* bytes)
{
    return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<unsigned>(bytes[3]) << 24;
}

// The first picture of an icon file: a directory of 6 bytes, for each picture 16 bytes of which the
// first is its width and the last four its place, and there a header of 40 bytes before rows from
// the bottom in the order blue, green, red, alpha.
IconImage firstPicture(const unsigned char* file)
{
    IconImage image{file[6], {}};
    const unsigned char* rows = file + readWord(file + 18) + 40;
    for (int y = image.size - 1; y >= 0; --y) {
        const unsigned char* bgra = rows + y * image.size * 4;
        for (int x = 0; x < image.size; ++x, bgra += 4) {
            image.rgba.insert(image.rgba.end(), {bgra[2], bgra[1], bgra[0], bgra[3]});
        }
    }
    return image;
}

}  // namespace

const IconImage& iconImage(Icon which)
{
    static const auto* picture = new IconImage(firstPicture(kPictureIcon));
    static const auto* messages = new IconImage(firstPicture(kMessagesIcon));
    return which == Icon::kPicture ? *picture : *messages;
}

}  // namespace zeb
