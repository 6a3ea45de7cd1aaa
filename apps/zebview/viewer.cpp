#include "viewer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <thread>

#include "canvas.h"
#include "coarse.h"
#include "color_bar.h"
#include "console.h"
#include "environment.h"
#include "failure.h"
#include "guides.h"
#include "orbit.h"
#include "output_file.h"
#include "player.h"
#include "raster.h"
#include "render.h"
#include "view_window.h"

namespace zebview
{

namespace
{

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// The pictures that a view goes through while it stands still, the last one as the settings ask.
struct Quality {
    bool hasAllFaces;
    long stride;  // pixels from one that is rendered to the next, across and down
    bool isFinal;
    const char* name;
};
constexpr std::array<Quality, 4> kQualities{{{false, 2, false, "coarse"},
                                             {false, 1, false, "fewer faces"},
                                             {true, 1, false, "one sample"},
                                             {true, 1, true, "final"}}};

// While the user moves the model, each picture is the best that is done in this time.
constexpr Seconds kPatience{0.08};
constexpr Seconds kLookEvery{0.01}, kRedrawEvery{0.05};
// From one picture of an animation to the next, at least.
constexpr Seconds kFrame{1.0 / 60};

constexpr double kDegreesPerPixel = 0.4;
constexpr double kZoomPerNotch = 1.1, kZoomPerPixel = 1.01;
// Behind models without a --background, as it is shown.
constexpr Color kBackdrop{0.2f, 0.2f, 0.2f};

constexpr const char* kHelp =
    "drag            turn the model\n"
    "shift + drag    move it (or the middle button)\n"
    "wheel           zoom (or the right button)\n"
    "Enter           back to the first view\n"
    "1 3 7 9         from the front, the right, above, a corner\n"
    "Left Right      the model before, the next one\n"
    "Up              read the model again\n"
    "Space           play its animation, or pause\n"
    "w               the next animation\n"
    "e               edges of its polygons\n"
    "x g             axes, and a grid under the model\n"
    "b               the bar of a scalar's colors\n"
    "f               full screen\n"
    "n               name of the file\n"
    "z               time that pictures take\n"
    "s               save the picture as a PNG file\n"
    "?               print the view on the terminal\n"
    "h               this help\n"
    "Escape          close the window";

// The first of NAME_1.png, NAME_2.png and so on that is not there yet.
std::string freeName(const std::string& model)
{
    const std::string stem = std::filesystem::path(model).stem().string();
    for (int number = 1;; ++number) {
        std::string name = stem + '_' + std::to_string(number) + ".png";
        std::error_code failed;
        if (!std::filesystem::exists(name, failed)) return name;
    }
}

class Viewer : private WindowUser
{
public:
    explicit Viewer(const Settings& settings)
        : fSettings(settings),
          fBackdrop(toLight(settings.background.value_or(kBackdrop))),
          fHasBackground(settings.hasBackground()),
          fEnvironment(readEnvironment(settings)),
          fSize{settings.width, settings.height}
    {
        // Pictures are laid over the backdrop here: it never has to be rendered.
        fSettings.background.reset();
        fSettings.channels = Channels::kRgba;
    }

    bool run()
    {
        load(0);
        fWindow = openViewWindow(fName, fSettings.width, fSettings.height, *this);
        if (!fWindow) throw Failure("without a screen the picture needs a file: -o FILE");
        while (fWindow->handleEvents(isDone()) && !fQuit) {
            obey();
            if (!fQuit && !isDone()) step();
            if (errorReported()) break;
        }
        return !errorReported();
    }

private:
    enum class Wish { kPlayOrPause, kNextAnimation };

    bool isDone() const { return fNext == kQualities.size() && !hasRequest() && !isPlaying(); }
    bool isPlaying() const { return fPlayer && fPlayer->isPlaying(); }
    bool hasRequest() const { return fWantedModel || fWantsAnimation || fWantsFile; }

    void load(std::size_t index)
    {
        const auto asked = Clock::now();
        take(ModelFile(fSettings.models[index], fSettings).model(0));
        fPlayer.reset();
        fIndex = index;
        fName = fSettings.viewName(index, 0);
        if (!fModel.notShown.empty()) complain(fSettings.models[index] + ": " + fModel.notShown);
        tellOfGrid(fSettings.models[index], fModel, fSettings);
        tellOfScalar(fSettings.models[index], fModel, fSettings);
        fTimes.fill(Seconds(0));
        fStart.emplace(chooseCamera(fModel, 0, fSettings), radiusOf(fModel));
        fOrbit = fStart;
        fNext = 0;
        fAsked = asked;
        fToldOfFirst = fToldOfFinal = false;
    }

    void take(Model model)
    {
        fModel = std::move(model);
        fCoarse = coarsened(fModel);
    }

    // Does what keys have asked for, once nothing is being rendered.
    void obey()
    {
        if (fWantedModel) {
            const std::size_t index = *fWantedModel;
            fWantedModel.reset();
            attempt([&] { load(index); });
            fWindow->setTitle(fName);
            showText();
        }
        if (fWantsAnimation) {
            const Wish wish = *fWantsAnimation;
            fWantsAnimation.reset();
            attempt([&] { animate(wish); });
        }
        if (fWantsFile && isPlaying()) pause();
        if (fWantsFile && fNext == kQualities.size()) save();
    }

    // If it fails, what has been shown so far stays, and the user is told why.
    template <class Work>
    bool attempt(const Work& work)
    {
        try {
            work();
            return true;
        } catch (const Failure& failure) {
            complain(failure.what());
            say(failure.what());
            return false;
        }
    }

    void animate(Wish wish)
    {
        if (isPlaying() && wish == Wish::kPlayOrPause) return pause();
        const bool isNew = !fPlayer;
        if (isNew) fPlayer = std::make_unique<Player>(fSettings.models[fIndex], fSettings);
        const bool isAnother = wish == Wish::kNextAnimation && (!isNew || fSettings.isAnimated());
        if (isAnother) fPlayer->goToNext();
        if (isNew || isAnother) show(fPlayer->model());
        if (wish == Wish::kPlayOrPause) fPlayer->play();
        say(fPlayer->line());
    }

    // With room for all its times, from where the user looks.
    void show(Model model)
    {
        take(std::move(model));
        fStart.emplace(chooseCamera(fModel, 0, fSettings), radiusOf(fModel));
        Orbit orbit = *fStart;
        orbit.lookLike(*fOrbit);
        fOrbit = orbit;
        fNext = 0;
    }

    void pause()
    {
        fPlayer->pause();
        fNext = 0;
    }

    // The next picture of the view.
    void step()
    {
        if (isPlaying()) advance();
        fMoved = false;
        fLevel = fMoving ? movingLevel() : fNext;
        fMoving = false;
        const bool whole = render();
        // Whoever moves the model goes on to do so: then the next picture is such a one, too.
        fNext = fMoved || !whole ? 0 : fLevel + 1;
        fMoving = fMoved;
    }

    void advance()
    {
        std::this_thread::sleep_until(fAdvanced + kFrame);
        fAdvanced = Clock::now();
        fMoving = true;
        if (!attempt([this] { take(fPlayer->model()); })) pause();
    }

    std::size_t movingLevel() const
    {
        std::size_t level = 0;
        while (level + 2 < kQualities.size() && fTimes[level + 1] > Seconds(0) &&
               fTimes[level + 1] < kPatience) {
            ++level;
        }
        return level;
    }

    // False if it has been given up.
    bool render()
    {
        const Quality& quality = kQualities[fLevel];
        const auto begun = Clock::now();
        const Camera camera = fOrbit->camera(fSize.width, fSize.height);
        Settings settings = fSettings;
        settings.bar = settings.bar && hasRoomForBar(fSize.width, fSize.height);
        settings.width = (fSize.width + quality.stride - 1) / quality.stride;
        settings.height = (fSize.height + quality.stride - 1) / quality.stride;
        if (!quality.isFinal) {
            settings.samples = 1;
            settings.threshold.reset();
            settings.filter = "box";
        }
        // Fewer faces have other edges.
        settings.edges = settings.edges && quality.hasAllFaces;
        // Surfaces have no faces that could be fewer.
        if (!quality.hasAllFaces && !fModel.surfaces.empty()) settings.shadingRate *= 4;
        fRaster.resize(settings.width, settings.height);
        const ZebDisplay device = displayFor();
        Destination destination;
        destination.device = &device;
        fGivenUp = false;
        Model& model = !quality.hasAllFaces && fCoarse ? *fCoarse : fModel;
        if (!renderPicture(model, camera, settings, fEnvironment, destination,
                           [this] { return goesOn(); })) {
            return false;
        }
        fTimes[fLevel] = Clock::now() - begun;
        if (fSettings.verbose) tellHowSoon();
        fRaster.show(fBackdrop, fSize.width, fSize.height, fShown);
        fWindow->show(fShown.data(), fSize.width, fSize.height);
        if (fShowsTime) showText();
        return true;
    }

    // Once for the first picture of a model and once for its final one, since somebody asked for
    // it.
    void tellHowSoon()
    {
        if (fToldOfFinal || (fToldOfFirst && !isFinal())) return;
        char text[80];
        std::snprintf(text, sizeof text, ": the %s picture came after %.0f ms",
                      isFinal() ? "final" : "first", Seconds(Clock::now() - fAsked).count() * 1000);
        complain(fName + text);
        fToldOfFirst = true;
        fToldOfFinal = isFinal();
    }

    ZebDisplay displayFor()
    {
        ZebDisplay display{};
        display.data = this;
        display.span = [](void* data, long x0, long x1, long y, const unsigned int* words) {
            auto& viewer = *static_cast<Viewer*>(data);
            viewer.fRaster.set(x0, x1, y, words);
            if (viewer.isFinal()) {
                viewer.fRaster.showSpan(viewer.fBackdrop, x0, x1, y, viewer.fShown);
            }
            // More often than the renderer asks by itself.
            if (!viewer.goesOn()) zebCancel();
        };
        return display;
    }

    bool isFinal() const { return kQualities[fLevel].isFinal; }

    // Looks at what the user does; false if that makes the picture useless. The coarsest ones are
    // finished in any case: somebody who moves the model wants to see it move.
    bool goesOn()
    {
        const auto now = Clock::now();
        if (fGivenUp || now - fLooked < kLookEvery) return !fGivenUp;
        fLooked = now;
        if (isFinal() && now - fDrawn > kRedrawEvery) {
            fDrawn = now;
            fWindow->redraw();
        }
        if (!fWindow->handleEvents(false)) fQuit = true;
        const bool isUseless = fMoved && fLevel != movingLevel();
        fGivenUp = fQuit || fWantedModel || fWantsAnimation || isUseless || errorReported();
        return !fGivenUp;
    }

    void moved()
    {
        fMoved = fMoving = true;
        fNext = 0;
        if (!fMessage.empty()) say("");
    }

    void onDrag(Drag drag, double right, double down) override
    {
        const double shorter = static_cast<double>(std::min(fSize.width, fSize.height));
        switch (drag) {
            case Drag::kTurn:
                fOrbit->turn(-right * kDegreesPerPixel, down * kDegreesPerPixel);
                break;
            case Drag::kPan:
                fOrbit->pan(right / shorter, -down / shorter);
                break;
            case Drag::kZoom:
                fOrbit->zoom(std::pow(kZoomPerPixel, -down));
                break;
        }
        moved();
    }

    void onWheel(double notches) override
    {
        fOrbit->zoom(std::pow(kZoomPerNotch, notches));
        moved();
    }

    void onResize(long width, long height) override
    {
        fSize = {width, height};
        moved();
    }

    void lookFrom(double azimuth, double elevation)
    {
        fOrbit->lookFrom(azimuth, elevation);
        moved();
    }

    void onKey(char key) override
    {
        switch (key) {
            case static_cast<char>(Key::kEscape):
                fQuit = true;
                break;
            case static_cast<char>(Key::kEnter):
                fOrbit = fStart;
                moved();
                break;
            case '1':
                lookFrom(0, 0);
                break;
            case '3':
                lookFrom(90, 0);
                break;
            case '7':
                lookFrom(0, 90);
                break;
            case '9':
                lookFrom(45, 35.264);
                break;
            case static_cast<char>(Key::kLeft):
                fWantedModel = (fIndex + fSettings.models.size() - 1) % fSettings.models.size();
                break;
            case static_cast<char>(Key::kRight):
                fWantedModel = (fIndex + 1) % fSettings.models.size();
                break;
            case static_cast<char>(Key::kUp):
                fWantedModel = fIndex;
                break;
            case ' ':
                fWantsAnimation = Wish::kPlayOrPause;
                break;
            case 'w':
                fWantsAnimation = Wish::kNextAnimation;
                break;
            case 'e':
                toggle(fSettings.edges);
                break;
            case 'x':
                toggle(fSettings.axes);
                break;
            case 'g':
                toggle(fSettings.grid);
                break;
            case 'b':
                toggle(fSettings.bar);
                break;
            case 'f':
                fWindow->toggleFullScreen();
                break;
            case 'h':
                fShowsHelp = !fShowsHelp;
                showText();
                break;
            case 'n':
                fShowsName = !fShowsName;
                showText();
                break;
            case 'z':
                fShowsTime = !fShowsTime;
                showText();
                break;
            case 's':
                fWantsFile = true;
                break;
            case '?':
                answer(view());
                break;
            default:
                break;
        }
    }

    // Of what is in the picture.
    void toggle(bool& setting)
    {
        setting = !setting;
        moved();
    }

    // As options.
    std::string view() const
    {
        const std::string way = angle(fOrbit->azimuth()) + ',' + angle(fOrbit->elevation());
        char time[80] = "";
        if (fPlayer) {
            std::snprintf(time, sizeof time, " --animation %zu --time %f", fPlayer->number(),
                          fPlayer->seconds());
        }
        return std::string("--view ").append(way).append(time);
    }

    static std::string angle(double degrees)
    {
        char text[32];
        // Without the sign of a rounded zero.
        std::snprintf(text, sizeof text, "%.6g", std::round(degrees * 100) / 100 + 0.0);
        return text;
    }

    void save()
    {
        fWantsFile = false;
        try {
            const std::string name = freeName(fSettings.models[fIndex]);
            OutputFile file(name);
            const Channels channels = fHasBackground ? Channels::kRgb : Channels::kRgba;
            Canvas canvas(fRaster.width(), fRaster.height(), channels, std::nullopt);
            fRaster.drawOn(canvas, fHasBackground ? &fBackdrop : nullptr);
            file.save(canvas);
            answer(name);
            say("saved as " + name);
        } catch (const Failure& failure) {
            complain(failure.what());
            say(failure.what());
        }
    }

    void say(const std::string& message)
    {
        fMessage = message;
        showText();
    }

    void showText()
    {
        std::string bottom;
        const auto add = [&bottom](const std::string& line) {
            if (!line.empty()) bottom += (bottom.empty() ? "" : "\n") + line;
        };
        if (fShowsName) add(fName);
        if (fShowsTime) add(times());
        add(fMessage);
        fWindow->setText(fShowsHelp ? kHelp : "", bottom);
    }

    std::string times() const
    {
        std::string text;
        for (std::size_t level = 0; level < kQualities.size(); ++level) {
            if (fTimes[level] == Seconds(0)) continue;
            char part[48];
            std::snprintf(part, sizeof part, "%s%s %.0f ms", text.empty() ? "" : ", ",
                          kQualities[level].name, fTimes[level].count() * 1000);
            text += part;
        }
        return text;
    }

    struct Size {
        long width, height;
    };

    Settings fSettings;
    const Color fBackdrop;  // light
    const bool fHasBackground;
    const std::shared_ptr<const Environment> fEnvironment;
    Size fSize;  // of the window
    std::unique_ptr<ViewWindow> fWindow;

    Model fModel;
    std::optional<Model> fCoarse;  // if it differs
    std::size_t fIndex = 0;
    std::string fName;
    std::optional<Orbit> fStart, fOrbit;
    std::unique_ptr<Player> fPlayer;  // once an animation is wanted
    Clock::time_point fAdvanced;      // by it

    Raster fRaster;
    std::vector<std::uint8_t> fShown;
    std::size_t fLevel = 0;  // of the picture under way
    bool fGivenUp = false;   // that picture
    Clock::time_point fLooked, fDrawn;
    Clock::time_point fAsked;  // for the model
    bool fToldOfFirst = false, fToldOfFinal = false;
    std::array<Seconds, kQualities.size()> fTimes{};

    std::size_t fNext = 0;  // of the strides; beyond them: all is done
    bool fMoving = false;   // the view is on its way
    bool fMoved = false;    // since the last picture began
    std::optional<std::size_t> fWantedModel;
    std::optional<Wish> fWantsAnimation;
    bool fWantsFile = false, fQuit = false;
    bool fShowsHelp = false, fShowsName = false, fShowsTime = false;
    std::string fMessage;
};

}  // namespace

bool showModels(const Settings& settings)
{
    receiveReports(settings.verbose);
    return Viewer(settings).run();
}

}  // namespace zebview
