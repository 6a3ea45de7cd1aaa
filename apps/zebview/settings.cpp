#include "settings.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <vector>

#include "console.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

constexpr int kWrongUsage = 2;
constexpr long kMaxSize = 65536;

const std::map<std::string, Fit> kFits{{"tight", Fit::kTight}, {"sphere", Fit::kSphere}};

const std::map<std::string, Channels> kChannels{{"rgba", Channels::kRgba},
                                                {"rgb", Channels::kRgb},
                                                {"alpha", Channels::kAlpha},
                                                {"depth", Channels::kDepth},
                                                {"rgbaz", Channels::kRgbaz}};

// Numbers with a point in every locale; nothing may follow them.
bool parse(const std::string& text, double& value)
{
    const char* end = text.data() + text.size();
    const auto [stop, failed] = std::from_chars(text.data(), end, value);
    return failed == std::errc() && stop == end && std::isfinite(value);
}

template <std::size_t n>
std::array<double, n> parseList(const std::string& option, const std::string& text, char separator,
                                const char* wanted)
{
    std::array<double, n> values{};
    const std::vector<std::string> parts = CLI::detail::split(text, separator);
    bool good = parts.size() == n;
    for (std::size_t i = 0; good && i < n; ++i) good = parse(parts[i], values[i]);
    if (!good) throw CLI::ValidationError(option, "'" + text + "' is not " + wanted);
    return values;
}

Color parseColor(const std::string& option, const std::string& text)
{
    static constexpr const char* wanted = "three numbers from 0 to 1, such as 0.8,0.2,0";
    Color color{};
    const auto values = parseList<3>(option, text, ',', wanted);
    for (std::size_t i = 0; i < 3; ++i) {
        if (values[i] < 0 || values[i] > 1) {
            throw CLI::ValidationError(option, "'" + text + "' is not " + wanted);
        }
        color[i] = static_cast<float>(values[i]);
    }
    return color;
}

double parseNumber(const std::string& option, const std::string& text, double min, double max)
{
    const double value = parseList<1>(option, text, ',', "a number")[0];
    if (value < min || value > max) {
        char range[80];
        std::snprintf(range, sizeof range, " is not in the range %g to %g", min, max);
        throw CLI::ValidationError(option, text + range);
    }
    return value;
}

void parseSize(const std::string& text, Settings& settings)
{
    static constexpr const char* wanted = "a width and a height from 1 to 65536, such as 800x600";
    const auto [width, height] = parseList<2>("--size", text, 'x', wanted);
    const auto good = [](double size) {
        return size >= 1 && size <= kMaxSize && size == std::floor(size);
    };
    if (!good(width) || !good(height)) {
        throw CLI::ValidationError("--size", "'" + text + "' is not " + wanted);
    }
    settings.width = static_cast<long>(width);
    settings.height = static_cast<long>(height);
}

void parseView(const std::string& text, Settings& settings)
{
    const auto [azimuth, elevation] =
        parseList<2>("--view", text, ',', "two angles in degrees, such as 30,20");
    if (elevation < -90 || elevation > 90) {
        throw CLI::ValidationError("--view", "an elevation lies between -90 and 90 degrees");
    }
    settings.azimuth = std::fmod(azimuth, 360);
    settings.elevation = elevation;
}

std::string version()
{
    const long version = zebVersion();
    return "zebview " + std::to_string(version / 10000) + "." +
           std::to_string(version / 100 % 100) + "." + std::to_string(version % 100);
}

void addPictureOptions(CLI::App& app, Settings& s)
{
    app.add_option("-o,--output", s.output,
                   "The picture to write, .png or .exr, or - for PNG to standard output; default: "
                   "a window shows it")
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--size", [&s](const std::string& text) { parseSize(text, s); },
           "Pixels across and down; default 800x600")
        ->type_name("WxH");
    app.add_option_function<std::string>(
           "--channels", [&s](const std::string& name) { s.channels = kChannels.at(name); },
           "What the file holds of each pixel: rgba, rgb, alpha, depth, and rgbaz for OpenEXR; "
           "default rgba, with --background rgb")
        ->type_name("NAME")
        ->check(CLI::IsMember(kChannels));
    CLI::Option* samples =
        app.add_option("--samples", s.samples, "N x N samples a pixel, 1 to 64; default 4")
            ->type_name("N")
            ->check(CLI::Range(1, 64));
    app.add_option_function<std::string>(
           "--adaptive",
           [&s](const std::string& text) {
               s.threshold = parseNumber("--adaptive", text, 1e-6, 1e6);
           },
           "8 to 96 samples a pixel: more where colours vary by more than the threshold")
        ->type_name("THRESHOLD")
        ->excludes(samples);
    app.add_option_function<std::string>(
           "--rate",
           [&s](const std::string& text) {
               s.shadingRate = parseNumber("--rate", text, 1e-3, 1e6);
           },
           "Shades once in so many pixels; default 1")
        ->type_name("AREA");
    app.add_option("--filter", s.filter, "Pixel filter; default gaussian")
        ->type_name("NAME")
        ->check(CLI::IsMember({"gaussian", "catmull-rom", "box", "triangle", "sinc"}));
    app.add_option_function<std::string>(
           "--background",
           [&s](const std::string& text) { s.background = parseColor("--background", text); },
           "Colour behind the model, from 0 to 1; default transparent")
        ->type_name("R,G,B");
}

void addModelOptions(CLI::App& app, Settings& s)
{
    app.add_option("MODEL", s.model, "The model: OBJ, PLY, STL, 3DS, OFF, glTF and many more")
        ->type_name("")
        ->required();
    app.add_option_function<std::string>(
           "--view", [&s](const std::string& text) { parseView(text, s); },
           "Degrees that the eye goes to the right around the model and up; default 30,20")
        ->type_name("AZIMUTH,ELEVATION");
    app.add_option_function<std::string>(
           "--fov", [&s](const std::string& text) { s.fov = parseNumber("--fov", text, 1, 150); },
           "Field of view across the picture's shorter side, 1 to 150; default 35")
        ->type_name("DEGREES");
    app.add_option_function<std::string>(
           "--fit", [&s](const std::string& name) { s.fit = kFits.at(name); },
           "Fits the view (tight), or a sphere around the model, which looks the same from all "
           "sides (sphere); default tight")
        ->type_name("NAME")
        ->check(CLI::IsMember(kFits));
    app.add_option("--up", s.up,
                   "The model's axis that points up; default y, unless the file names another")
        ->type_name("AXIS")
        ->check(CLI::IsMember({"x", "y", "z", "-x", "-y", "-z"}));
    app.add_option("--surface", s.surface, "What the model is made of; default plastic")
        ->type_name("NAME")
        ->check(CLI::IsMember({"constant", "diffuse", "metal", "plastic"}));
    app.add_option_function<std::string>(
           "--color", [&s](const std::string& text) { s.color = parseColor("--color", text); },
           "Colour of the model, from 0 to 1; default its own")
        ->type_name("R,G,B");
}

std::string ending(const std::string& name)
{
    std::string text = std::filesystem::path(name).extension().string();
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// What is wrong with the output is known before hours of rendering, not after.
void checkOutput(const CLI::App& app, Settings& s)
{
    const bool named = app.count("--channels") > 0;
    if (s.background && !named) s.channels = Channels::kRgb;
    if (s.background && (s.channels == Channels::kAlpha || s.channels == Channels::kDepth)) {
        throw CLI::ValidationError("--background",
                                   "there are no colours in --channels alpha, depth");
    }
    if (s.toWindow()) {
        if (named) throw CLI::ValidationError("--channels", "a window shows colours: add -o FILE");
        return;
    }
    const std::string kind = ending(s.output);
    if (s.output != "-" && kind != ".png" && kind != ".exr") {
        throw CLI::ValidationError("--output",
                                   "'" + s.output + "' ends neither in .png nor in .exr");
    }
    if (s.channels == Channels::kRgbaz && !s.toExr()) {
        throw CLI::ValidationError("--channels", "rgbaz needs a file that ends in .exr");
    }
}

}  // namespace

bool Settings::toExr() const { return ending(output) == ".exr"; }

CommandLine readCommandLine(int argc, char** argv)
{
    CommandLine result;
    CLI::App app("Renders a model file into a window, or into a picture file.", "zebview");
    app.set_version_flag("--version", version);
    addModelOptions(app, result.settings);
    addPictureOptions(app, result.settings);
    try {
        app.parse(argc, argv);
        checkOutput(app, result.settings);
    } catch (const CLI::Success& wanted) {
        result.exitStatus = app.exit(wanted);
    } catch (const CLI::ParseError& wrong) {
        complain(wrong.what() + std::string(". Run with --help for more information."));
        result.exitStatus = kWrongUsage;
    }
    return result;
}

}  // namespace zebview
