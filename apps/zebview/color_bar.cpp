#include "color_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <vector>

#include "console.h"
#include "drawing.h"
#include "round_number.h"
#include "surface.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

constexpr long kLeastSide = 240;  // of a picture with a bar, in pixels
// Of half the picture's shorter side.
constexpr double kMargin = 0.1, kWidth = 0.1, kFrame = 0.012, kTick = 0.04, kGap = 0.035;
constexpr double kLetter = 0.038, kStroke = 0.014;  // half a digit's height, and its width
constexpr double kHalo = 0.021;                     // around all strokes, and so much wider
// Of the picture's height: where the bar begins.
constexpr double kBottom = 0.2;
// Between the eye and what is nearest of the model.
constexpr double kFrameDepth = 0.86, kColorDepth = 0.85, kHaloDepth = 0.84, kInkDepth = 0.83;
constexpr Color kInk{1, 1, 1}, kPaper{0.1f, 0.1f, 0.1f};
constexpr double kMostTicks = 8;

// The strokes of a letter, each from corner to corner, -1 to 1 upwards, and how far the next letter
// is from its middle.
struct Letter {
    std::vector<std::vector<Spot>> strokes;
    double halfAdvance = 0.95;
};
const std::map<char, Letter> kLetters{
    {'0',
     {{{{0.25, 1},
        {0.6, 0.65},
        {0.6, -0.65},
        {0.25, -1},
        {-0.25, -1},
        {-0.6, -0.65},
        {-0.6, 0.65},
        {-0.25, 1},
        {0.25, 1}}}}},
    {'1', {{{{-0.3, 0.65}, {0.1, 1}, {0.1, -1}}}}},
    {'2',
     {{{{-0.6, 0.65}, {-0.25, 1}, {0.25, 1}, {0.6, 0.65}, {0.6, 0.35}, {-0.6, -1}, {0.6, -1}}}}},
    {'3',
     {{{{-0.6, 0.7}, {-0.25, 1}, {0.25, 1}, {0.6, 0.7}, {0.6, 0.35}, {0.25, 0.05}, {-0.15, 0.05}},
       {{0.25, 0.05}, {0.6, -0.3}, {0.6, -0.65}, {0.25, -1}, {-0.25, -1}, {-0.6, -0.7}}}}},
    {'4', {{{{0.3, -1}, {0.3, 1}, {-0.6, -0.4}, {0.7, -0.4}}}}},
    {'5',
     {{{{0.55, 1},
        {-0.5, 1},
        {-0.55, 0.15},
        {0.25, 0.15},
        {0.6, -0.2},
        {0.6, -0.65},
        {0.25, -1},
        {-0.25, -1},
        {-0.6, -0.7}}}}},
    {'6',
     {{{{0.4, 1},
        {0.05, 1},
        {-0.6, 0.3},
        {-0.6, -0.65},
        {-0.25, -1},
        {0.25, -1},
        {0.6, -0.65},
        {0.6, -0.25},
        {0.25, 0.1},
        {-0.25, 0.1},
        {-0.6, -0.15}}}}},
    {'7', {{{{-0.6, 1}, {0.6, 1}, {-0.15, -1}}}}},
    {'8',
     {{{{0.25, 1},
        {0.55, 0.7},
        {0.55, 0.35},
        {0.25, 0.05},
        {-0.25, 0.05},
        {-0.55, 0.35},
        {-0.55, 0.7},
        {-0.25, 1},
        {0.25, 1}},
       {{0.25, 0.05},
        {0.6, -0.3},
        {0.6, -0.65},
        {0.25, -1},
        {-0.25, -1},
        {-0.6, -0.65},
        {-0.6, -0.3},
        {-0.25, 0.05}}}}},
    {'9',
     {{{{-0.4, -1},
        {-0.05, -1},
        {0.6, -0.3},
        {0.6, 0.65},
        {0.25, 1},
        {-0.25, 1},
        {-0.6, 0.65},
        {-0.6, 0.25},
        {-0.25, -0.1},
        {0.25, -0.1},
        {0.6, 0.15}}}}},
    {'-', {{{{-0.45, 0}, {0.45, 0}}}, 0.7}},
    {'.', {{{{0, -1}, {0, -0.9}}}, 0.4}},
    {'e',
     {{{{-0.55, -0.3},
        {0.55, -0.3},
        {0.55, 0},
        {0.25, 0.3},
        {-0.25, 0.3},
        {-0.55, 0},
        {-0.55, -0.7},
        {-0.25, -1},
        {0.25, -1},
        {0.5, -0.8}}}}},
};

// spacing  of values whose texts should differ
std::string textOf(double value, double spacing, double largest)
{
    const double digits = std::floor(std::log10(largest)) - std::floor(std::log10(spacing)) + 1;
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", static_cast<int>(std::clamp(digits, 6.0, 17.0)),
                  value);
    // An exponent needs no sign but a minus, and no zeros before it.
    std::string result = text;
    const std::size_t e = result.find('e');
    if (e == std::string::npos) return result;
    std::size_t begin = e + 1;
    if (result[begin] == '-') ++begin;
    const std::size_t end = result.find_first_not_of("+0", begin);
    return result.erase(begin, end - begin);
}

struct Tick {
    double place;  // from 0 to 1
    std::string text;
};

std::vector<Tick> ticksOf(const Range& range)
{
    const double largest = std::max(std::abs(range.least), std::abs(range.most));
    if (range.least == range.most) {
        return {{0.5, largest == 0 ? "0" : textOf(range.least, largest * 1e-9, largest)}};
    }
    const double spacing = roundedUp(range.most / kMostTicks - range.least / kMostTicks);
    std::vector<Tick> ticks;
    // Rounding must not take those at the ends away.
    const double first = std::ceil(range.least / spacing - 1e-6);
    for (double k = first; k * spacing <= range.most + 1e-6 * spacing; ++k) {
        const double value = k == 0 ? 0 : k * spacing;
        const double place = std::clamp<double>(placeIn(range, value), 0, 1);
        ticks.push_back({place, textOf(value, spacing, largest)});
        if (ticks.size() > kMostTicks) break;
    }
    return ticks;
}

// Draws a stroke that can be read on anything.
void addStroke(const Drawing& drawing, Spot from, Spot to)
{
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::hypot(dx, dy);
    // Strokes meet at their corners.
    const auto draw = [&](const Color& color, double width, double depth) {
        const double x = dx / length * width / 2, y = dy / length * width / 2;
        setPaint(color);
        drawing.line({from.x - x, from.y - y}, {to.x + x, to.y + y}, width, depth);
    };
    draw(kPaper, kStroke + kHalo, kHaloDepth);
    draw(kInk, kStroke, kInkDepth);
}

// end  right of the text, in the middle of its height
void addText(const Drawing& drawing, const std::string& text, Spot end)
{
    for (auto c = text.rbegin(); c != text.rend(); ++c) {
        const Letter& letter = kLetters.at(*c);
        end.x -= letter.halfAdvance * kLetter;
        for (const std::vector<Spot>& stroke : letter.strokes) {
            for (std::size_t i = 1; i < stroke.size(); ++i) {
                const Spot &from = stroke[i - 1], &to = stroke[i];
                addStroke(drawing, {end.x + kLetter * from.x, end.y + kLetter * from.y},
                          {end.x + kLetter * to.x, end.y + kLetter * to.y});
            }
        }
        end.x -= letter.halfAdvance * kLetter;
    }
}

// least, most  places on the map
void addColors(const Drawing& drawing, Spot from, Spot to, const ScalarColors& colors)
{
    Material material;
    material.isLit = false;
    setFunction(material, true, nullptr, colors);
    zebShadingRate(0.25f);
    const std::vector<Point> corners{
        drawing.point(from, kColorDepth), drawing.point({from.x, to.y}, kColorDepth),
        drawing.point(to, kColorDepth), drawing.point({to.x, from.y}, kColorDepth)};
    const float places[4] = {0, 1, 1, 0};
    zebPolygon(4, zebQuark("point"), corners.data(), scalarToken(), places, 0);
}

}  // namespace

bool hasRoomForBar(long width, long height) { return std::min(width, height) >= kLeastSide; }

bool showsBar(const Model& model, const Settings& settings)
{
    return settings.bar && model.shownRange;
}

void addColorBar(const Range& range, const std::shared_ptr<const Colormap>& map,
                 const Camera& camera)
{
    const Drawing drawing(camera);
    const Spot end = drawing.end();
    const Spot from{end.x - kMargin - kWidth, kBottom * end.y};
    const Spot to{end.x - kMargin, (1 - kBottom) * end.y};
    setPaint(kPaper);
    const double middle = (from.x + to.x) / 2;
    drawing.line({middle, from.y - kFrame}, {middle, to.y + kFrame}, kWidth + 2 * kFrame,
                 kFrameDepth);
    addColors(drawing, from, to, ScalarColors(map));
    for (const Tick& tick : ticksOf(range)) {
        const double y = std::lerp(from.y, to.y, tick.place);
        addStroke(drawing, {from.x - kTick, y}, {from.x - kFrame - (kStroke + kHalo) / 2, y});
        addText(drawing, tick.text, {from.x - kTick - kGap, y});
    }
}

void tellOfScalar(const std::string& name, const Model& model, const Settings& settings)
{
    if (!settings.verbose || !model.scalar) return;
    std::string text = name + ": scalar " + lineOf(*model.scalar);
    if (settings.scalarRange) text += ", shown" + lineOf({"", settings.scalarRange, std::nullopt});
    complain(text);
}

}  // namespace zebview
