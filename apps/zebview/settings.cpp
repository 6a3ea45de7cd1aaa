#include "settings.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <vector>

#include "color_bar.h"
#include "colormap.h"
#include "console.h"
#include "defaults_file.h"
#include "failure.h"
#include "values.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

constexpr int kWrongUsage = 2;
constexpr long kMaxSize = 65536;
constexpr long kMaxThreads = 256;

const std::map<std::string, Fit> kFits{{"tight", Fit::kTight}, {"sphere", Fit::kSphere}};

const std::map<std::string, Light> kLights{
    {"camera", Light::kCamera}, {"model", Light::kModel}, {"file", Light::kFile}};

const std::map<std::string, Channels> kChannels{{"rgba", Channels::kRgba},
                                                {"rgb", Channels::kRgb},
                                                {"alpha", Channels::kAlpha},
                                                {"depth", Channels::kDepth},
                                                {"rgbaz", Channels::kRgbaz}};

void parseSize(const std::string& text, Settings& settings)
{
    static constexpr const char* wanted = "a width and a height from 1 to 65536, such as 800x600";
    const auto [width, height] = parsePair("--size", text, 'x', wanted);
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
        parsePair("--view", text, ',', "two angles in degrees, such as 30,20");
    if (elevation < -90 || elevation > 90) {
        throw CLI::ValidationError("--view", "an elevation lies between -90 and 90 degrees");
    }
    settings.azimuth = std::fmod(azimuth, 360);
    settings.elevation = elevation;
}

void parseOutput(const std::string& text, Settings& settings)
{
    try {
        settings.output = OutputName(text);
    } catch (const Failure& wrong) {
        throw CLI::ValidationError("--output", wrong.what());
    }
}

void parseBackground(const std::string& text, Settings& settings)
{
    settings.showsEnvironment = text == "environment";
    if (!settings.showsEnvironment) settings.background = parseColor("--background", text);
}

void parseSheet(const std::string& text, Settings& settings)
{
    static constexpr const char* wanted = "columns and rows from 1 to 1000, such as 6x4";
    const auto [columns, rows] = parsePair("--sheet", text, 'x', wanted);
    const auto good = [](double n) { return n >= 1 && n <= 1000 && n == std::floor(n); };
    if (!good(columns) || !good(rows)) {
        throw CLI::ValidationError("--sheet", "'" + text + "' is not " + wanted);
    }
    settings.sheet = {static_cast<long>(columns), static_cast<long>(rows)};
}

void parseRange(const std::string& text, Settings& settings)
{
    static constexpr const char* wanted = "two numbers, the first less than the second, as 0,5";
    const auto [least, most] = parsePair("--scalar-range", text, ',', wanted);
    if (!(least < most)) {
        throw CLI::ValidationError("--scalar-range", "'" + text + "' is not " + wanted);
    }
    settings.scalarRange = {least, most};
}

void parseTime(const std::string& text, Settings& settings)
{
    constexpr double most = 1e6;
    if (text.find(':') == std::string::npos) {
        const double time = parseNumber("--time", text, -most, most);
        settings.times = {time, time};
        return;
    }
    static constexpr const char* wanted = "seconds, such as 1.5, or from and to, such as 0:2";
    const auto [from, to] = parsePair("--time", text, ':', wanted);
    if (std::abs(from) > most || std::abs(to) > most) {
        throw CLI::ValidationError("--time", "'" + text + "' is more than a million seconds");
    }
    settings.times = {from, to};
}

std::string version()
{
    const long version = zebVersion();
    return "zebview " + std::to_string(version / 10000) + "." +
           std::to_string(version / 100 % 100) + "." + std::to_string(version % 100);
}

void addPictureOptions(CLI::App& app, Settings& s)
{
    app.add_option_function<std::string>(
           "-o,--output", [&s](const std::string& text) { parseOutput(text, s); },
           "The picture to write, .png or .exr, or - for PNG to standard output; %d in it, or "
           "%03d, "
           "is the number of the view, %s the model's name; default: a window where the mouse "
           "turns the model")
        ->type_name("FILE");
    app.add_option("--format", s.format,
                   "What a file is, png or exr, whatever its name ends in; default as it ends")
        ->type_name("NAME")
        ->check(CLI::IsMember({"png", "exr"}));
    app.add_option_function<std::string>(
           "--sheet", [&s](const std::string& text) { parseSheet(text, s); },
           "Puts all views into one picture, row by row")
        ->type_name("COLUMNSxROWS");
    app.add_option_function<std::string>(
           "--size", [&s](const std::string& text) { parseSize(text, s); },
           "Pixels of a view across and down; default 800x600")
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
           "--background", [&s](const std::string& text) { parseBackground(text, s); },
           "Colour behind the model, from 0 to 1, or the environment; default transparent")
        ->type_name("R,G,B|environment");
}

void addModelOptions(CLI::App& app, Settings& s)
{
    app.add_option("MODEL", s.models, "The models: OBJ, PLY, STL, 3DS, OFF, glTF and many more")
        ->type_name("")
        ->required();
    app.add_option("--up", s.up,
                   "The file's axis that points up; default what the file says, z for 3DS, ASE, "
                   "STL, MD2 and "
                   "Blender files, y for others")
        ->type_name("AXIS")
        ->check(CLI::IsMember({"x", "y", "z", "-x", "-y", "-z"}));
    app.add_option("--textures", s.textures,
                   "A folder whose textures may be shown, besides those in the model's own folder")
        ->type_name("DIR")
        ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
    app.add_option_function<std::string>(
           "--read-limit",
           [&s](const std::string& text) {
               s.readLimit = parseNumber("--read-limit", text, 0.01, 1e6);
           },
           "Processor time that reading a file may take, from 0.01 on; default 20, and 1 more for "
           "each MiB of it")
        ->type_name("SECONDS");
    app.add_option("--surface", s.surface,
                   "What the model is made of; default as the file says, or plastic")
        ->type_name("NAME")
        ->check(CLI::IsMember({"constant", "diffuse", "metal", "plastic"}));
    app.add_option_function<std::string>(
           "--color", [&s](const std::string& text) { s.color = parseColor("--color", text); },
           "Colour of the model, from 0 to 1; default its own")
        ->type_name("R,G,B");
}

void addScalarOptions(CLI::App& app, Settings& s)
{
    app.add_option("--scalar", s.scalar,
                   "Shows a number that each vertex has as colors: one of a PLY file's, by name, "
                   "or x, y or z; list lists them")
        ->type_name("NAME|list")
        ->check([](const std::string& name) {
            return std::string(name.empty() ? "there is no scalar without a name" : "");
        })
        ->excludes(app.get_option("--color"));
    app.add_option("--colormap", s.colormap, "The colors of a scalar; default viridis")
        ->type_name("NAME")
        ->check(CLI::IsMember(Colormap::names()));
    app.add_option_function<std::string>(
           "--scalar-range", [&s](const std::string& text) { parseRange(text, s); },
           "The values that the first and the last color stand for; default the least and the "
           "most that the model has")
        ->type_name("MIN,MAX");
    app.add_flag(
        "--no-bar", [&s](std::int64_t) { s.bar = false; },
        "No bar at the right that tells which color is which value");
}

void addTimeOptions(CLI::App& app, Settings& s)
{
    app.add_option(
           "--animation", s.animation,
           "An animation of the file, by name or number from 0, all of it in --frames; list "
           "lists them; default none, or with --time the first")
        ->type_name("NAME|INDEX|list")
        ->check([](const std::string& name) {
            return std::string(name.empty() ? "there is no animation without a name" : "");
        });
    app.add_option_function<std::string>(
           "--time", [&s](const std::string& text) { parseTime(text, s); },
           "The time of the animation, in seconds, or from one to another in all frames")
        ->type_name("SECONDS|FROM:TO");
}

void addViewOptions(CLI::App& app, Settings& s)
{
    CLI::Option* camera =
        app.add_option("--camera", s.camera,
                       "A camera of the file, by name or number from 0; list lists them")
            ->type_name("NAME|INDEX|list")
            ->check([](const std::string& name) {
                return std::string(name.empty() ? "there is no camera without a name" : "");
            });
    app.add_option_function<std::string>(
           "--view", [&s](const std::string& text) { parseView(text, s); },
           "Degrees that the eye goes to the right around the model and up; default 30,20")
        ->type_name("AZIMUTH,ELEVATION")
        ->excludes(camera);
    app.add_option("--frames", s.frames,
                   "Views of each model, as the eye goes around it, or as it moves; default 1")
        ->type_name("N")
        ->check(CLI::Range(1, 100000));
    app.add_option_function<std::string>(
           "--turn",
           [&s](const std::string& text) { s.turn = parseNumber("--turn", text, -1e6, 1e6); },
           "How far the eye goes to the right in all frames; default 360, or 0 where they differ "
           "in time")
        ->type_name("DEGREES");
    app.add_option_function<std::string>(
           "--fov", [&s](const std::string& text) { s.fov = parseNumber("--fov", text, 1, 150); },
           "Field of view across the picture's shorter side, 1 to 150; default 35")
        ->type_name("DEGREES")
        ->excludes(camera);
    app.add_option_function<std::string>(
           "--fit", [&s](const std::string& name) { s.fit = kFits.at(name); },
           "Fits the view (tight), or a sphere around the model, which looks the same from all "
           "sides (sphere); default tight for one frame, sphere for more")
        ->type_name("NAME")
        ->check(CLI::IsMember(kFits))
        ->excludes(camera);
}

void addLightOptions(CLI::App& app, Settings& s)
{
    app.add_option_function<std::string>(
           "--light", [&s](const std::string& name) { s.light = kLights.at(name); },
           "What lights go with: camera, model, or the file's own (file); default camera, with "
           "--camera the file's own if it has any, with --environment none")
        ->type_name("NAME")
        ->check(CLI::IsMember(kLights));
    CLI::Option* shadows = app.add_flag("--shadows", s.shadows,
                                        "The key light, or the file's distant lights, throw "
                                        "shadows");
    app.add_flag("--ground", s.ground,
                 "A floor under the model that nothing is seen of but the shadows on it")
        ->needs(shadows);
    CLI::Option* environment =
        app.add_option("--environment", s.environment,
                       "A picture of light from all around that lights the model and shows in what "
                       "mirrors: Radiance (.hdr) or OpenEXR, twice as wide as high")
            ->type_name("FILE")
            ->check(CLI::Validator(CLI::ExistingFile).description(""));
    app.add_option_function<std::string>(
           "--environment-turn",
           [&s](const std::string& text) {
               s.environmentTurn = parseNumber("--environment-turn", text, -1e6, 1e6);
           },
           "Turns the environment to the right; default 0: its middle is behind the model as "
           "--view 0,0 shows it")
        ->type_name("DEGREES")
        ->needs(environment);
    app.add_option_function<std::string>(
           "--exposure",
           [&s](const std::string& text) { s.exposure = parseNumber("--exposure", text, -40, 40); },
           "Makes the environment twice as bright for every stop, or half for those below 0; "
           "default 0")
        ->type_name("STOPS")
        ->needs(environment);
}

void addGuideOptions(CLI::App& app, Settings& s)
{
    CLI::Option* edges =
        app.add_flag("--edges", s.edges, "The edges of the model's polygons, as lines over them");
    app.add_option_function<std::string>(
           "--edge-color",
           [&s](const std::string& text) { s.edgeColor = parseColor("--edge-color", text); },
           "Their color, from 0 to 1; default nearly black")
        ->type_name("R,G,B")
        ->needs(edges);
    app.add_option_function<std::string>(
           "--line-width",
           [&s](const std::string& text) {
               s.lineWidth = parseNumber("--line-width", text, 0.1, 100);
           },
           "How wide these and the model's own lines are, 0.1 to 100 pixels; default 1.5")
        ->type_name("PIXELS");
    app.add_option_function<std::string>(
           "--point-size",
           [&s](const std::string& text) {
               s.pointSize = parseNumber("--point-size", text, 1e-30, 1e30);
           },
           "How large the spheres are that the model's points show as, in the file's units; "
           "default so that those of a closed cloud touch")
        ->type_name("UNITS");
    app.add_flag("--axes", s.axes, "The file's axes in the lower left corner, as they are turned");
    CLI::Option* grid =
        app.add_flag("--grid", s.grid, "A grid under the model; --verbose tells its spacing");
    app.add_option_function<std::string>(
           "--grid-unit",
           [&s](const std::string& text) {
               s.gridUnit = parseNumber("--grid-unit", text, 1e-30, 1e30);
           },
           "How far apart its lines are, in the file's units; default 1, 2 or 5 times a power of "
           "ten")
        ->type_name("UNITS")
        ->needs(grid);
}

std::string ending(const std::string& name)
{
    std::string text = std::filesystem::path(name).extension().string();
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

void checkChannels(const CLI::App& app, Settings& s)
{
    const bool named = app.count("--channels") > 0;
    if (s.showsEnvironment && s.environment.empty()) {
        throw CLI::ValidationError("--background", "there is no --environment to show");
    }
    if (s.ground && (s.channels == Channels::kDepth || s.channels == Channels::kRgbaz)) {
        throw CLI::ValidationError("--ground", "a floor of shadows has no depth to be written");
    }
    if (s.hasBackground() && !named) s.channels = Channels::kRgb;
    if (s.hasBackground() && (s.channels == Channels::kAlpha || s.channels == Channels::kDepth)) {
        throw CLI::ValidationError("--background",
                                   "there are no colours in --channels alpha, depth");
    }
    if (named && s.toWindow()) {
        throw CLI::ValidationError("--channels", "a window shows colours: add -o FILE");
    }
    if (s.channels == Channels::kRgbaz && !s.toExr()) {
        throw CLI::ValidationError("--channels", "rgbaz needs a file that ends in .exr");
    }
}

// All views in one picture.
void checkSheet(const Settings& s)
{
    if (s.toWindow()) throw CLI::ValidationError("--sheet", "a sheet needs a file: -o FILE");
    if (s.toExr())
        throw CLI::ValidationError("--sheet", "a sheet is a PNG file, not an OpenEXR one");
    if (s.output.hasNumber() || s.output.hasModel()) {
        throw CLI::ValidationError("--sheet",
                                   "a sheet is one file: %d and %s have no place in its name");
    }
    const long room = s.sheet->columns * s.sheet->rows;
    if (s.viewCount() > room) {
        throw CLI::ValidationError("--sheet", "there is room for " + std::to_string(room) + " of " +
                                                  std::to_string(s.viewCount()) + " views");
    }
}

// Each view in a file of its own.
void checkNames(const Settings& s)
{
    if (s.viewCount() == 1) return;
    if (s.toWindow()) {
        // It goes from model to model.
        if (s.frames == 1) return;
        throw CLI::ValidationError("--output", "more than one view needs a file: -o FILE");
    }
    std::set<std::string> names;
    for (std::size_t model = 0; model < s.models.size(); ++model) {
        for (long frame = 0; frame < s.frames; ++frame) {
            const std::string name = s.viewName(model, frame);
            if (!names.insert(name).second) {
                throw CLI::ValidationError("--output",
                                           "more than one view would be '" + name +
                                               "': add %d or %s to the name, or ask for a --sheet");
            }
        }
    }
}

// What is wrong with the output is known before hours of rendering, not after.
void checkOutput(const CLI::App& app, Settings& s)
{
    const std::string kind = ending(s.output.text());
    const bool standardOutput = s.output.text() == "-";
    if (standardOutput && s.toExr()) {
        throw CLI::ValidationError("--format", "standard output takes PNG files");
    }
    const bool isKnown = standardOutput || !s.format.empty() || kind == ".png" || kind == ".exr";
    if (!s.toWindow() && !isKnown) {
        throw CLI::ValidationError("--output",
                                   "'" + s.output.text() + "' ends neither in .png nor in .exr");
    }
    checkChannels(app, s);
    const bool numbered = s.output.hasNumber() || s.output.hasModel();
    // Models stand side by side unless they are told otherwise.
    if (!s.sheet && s.models.size() > 1 && s.frames == 1 && !numbered && !s.toWindow()) {
        s.sheet = {static_cast<long>(s.models.size()), 1};
    }
    if (s.sheet) {
        checkSheet(s);
    } else {
        checkNames(s);
    }
    if (app.count("--turn") == 0 && s.movesInTime()) s.turn = 0;
    const bool isColored = s.channels != Channels::kAlpha && s.channels != Channels::kDepth;
    if (!s.toWindow()) s.bar = s.bar && isColored && hasRoomForBar(s.width, s.height);
    const bool seenAround = s.frames > 1 && !(s.movesInTime() && s.turn == 0);
    if (app.count("--fit") == 0 && seenAround) s.fit = Fit::kSphere;
}

}  // namespace

bool Settings::toExr() const
{
    return format.empty() ? ending(output.text()) == ".exr" : format == "exr";
}

bool Settings::movesInTime() const
{
    return isAnimated() && frames > 1 && (!times || times->from != times->to);
}

// The end is left to the frame that would come next: there, what repeats itself begins anew.
double Settings::secondsAt(long frame, double length) const
{
    const auto [from, to] = times.value_or(Times{0, length});
    return from + (to - from) * static_cast<double>(frame) / static_cast<double>(frames);
}

Light Settings::lightFor(bool fileHasLights) const
{
    return light.value_or(!camera.empty() && fileHasLights ? Light::kFile : Light::kCamera);
}

std::string Settings::viewName(std::size_t model, long frame) const
{
    const std::filesystem::path path(models[model]);
    if (toWindow()) return path.filename().string();
    const long before = output.hasModel() ? 0 : static_cast<long>(model) * frames;
    return output.forView(before + frame, path.stem().string());
}

CommandLine readCommandLine(int argc, char** argv)
{
    CommandLine result;
    CLI::App app("Renders a model file into a window, or into a picture file.", "zebview");
    app.set_version_flag("--version", version);
    addModelOptions(app, result.settings);
    addScalarOptions(app, result.settings);
    addViewOptions(app, result.settings);
    addTimeOptions(app, result.settings);
    addLightOptions(app, result.settings);
    addGuideOptions(app, result.settings);
    addPictureOptions(app, result.settings);
    app.add_option("--threads", result.settings.threads,
                   "Threads that render, up to 256, or 0 for one a core; default 0")
        ->type_name("N")
        ->check(CLI::Range(0L, kMaxThreads));
    app.add_flag("-v,--verbose", result.settings.verbose,
                 "Tells what the models hold, and shows what the library reports as infos");
    addDefaultsFile(app);
    try {
        app.parse(argc, argv);
        if (!result.settings.lists()) checkOutput(app, result.settings);
    } catch (const CLI::Success& wanted) {
        result.exitStatus = app.exit(wanted);
    } catch (const CLI::ParseError& wrong) {
        complain(wrong.what() + std::string(". Run with --help for more information."));
        result.exitStatus = kWrongUsage;
    }
    return result;
}

}  // namespace zebview
