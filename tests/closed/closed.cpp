// Counts the samples that see through a surface, in random views of every family.
//
// A picture of one sample a pixel is compared with one of the same view whose micropolygons are
// much smaller: a sample lies within the surface where that shows it all round, at about one depth.
// Every such sample must be covered, whatever the shading rate. Prints a table; the exit status is
// 1 if more than one sample in ten millions is not covered.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "support/families.h"
#include "support/picture.h"

namespace
{

using namespace zebtest;

struct Subject {
    Family family;
    bool closed;  // has an inside: only its front is drawn, the back would cover what the front
                  // lets through
};

Subject open(const char* name, std::function<void(float)> add) { return {{name, add}, false}; }

std::vector<Subject> subjects()
{
    std::vector<Subject> list;
    for (const Family& family : families()) {
        const bool closed = family.name == "sphere" || family.name == "torus" ||
                            family.name == "patch mesh" || family.name == "NURBS" ||
                            family.name == "polygon mesh";
        list.push_back({family, closed});
    }
    list.push_back(open("open sphere", [](float s) { zebSphere(s, -0.6f * s, 0.8f * s, 250, 0); }));
    list.push_back(open("open cone", [](float s) { zebCone(s, s, 0.6f * s, 250, 0); }));
    list.push_back(
        open("open cylinder", [](float s) { zebCylinder(0.7f * s, -0.7f * s, 0.7f * s, 250, 0); }));
    list.push_back(open("open hyperboloid", [](float s) {
        const Vec a{0.7f * s, 0, -0.7f * s}, b{0, 0.9f * s, 0.7f * s};
        zebHyperboloid(a.data(), b.data(), 250, 0);
    }));
    list.push_back(
        open("open paraboloid", [](float s) { zebParaboloid(0.8f * s, 0.2f * s, s, 250, 0); }));
    list.push_back(open("whole disk", [](float s) { zebDisk(0, s, 360, 0); }));
    list.push_back(
        open("open torus", [](float s) { zebTorus(0.7f * s, 0.3f * s, 30, 300, 250, 0); }));
    return list;
}

// What is random about a view; the random numbers turn the surface.
struct View {
    float size, rate;  // pixels that a surface of 2 units takes; of the picture to prove
    bool adaptive, bySequence, instance;
    std::mt19937 random;
};

View randomView(std::mt19937& random)
{
    constexpr float rates[] = {0.25f, 1, 4, 16, 64, 256, 1024};
    std::uniform_real_distribution<float> logarithm(std::log(3.0f), std::log(3000.0f));
    std::uniform_int_distribution<int> rate(0, 6), quarter(0, 3);
    View view{};
    view.size = std::exp(logarithm(random));
    view.rate = rates[rate(random)];
    view.adaptive = quarter(random) == 0;
    view.bySequence = quarter(random) == 0;
    view.instance = quarter(random) == 0;
    view.random.seed(random());
    return view;
}

// The least that a pixel takes.
constexpr int kAdaptiveSamples = 8;

// Small surfaces need a finer picture to be told from their outline.
int refinement(const View& view) { return view.size < 60 ? 5 : 1; }
int pictureSize(const View& view) { return view.size < 60 ? 64 : 96; }

void render(View view, const Subject& subject, bool fine, Picture& picture)
{
    std::uniform_real_distribution<float> angle(0, 360), axis(-1, 1);
    const int pixels = pictureSize(view) * (fine ? refinement(view) : 1);
    zebReset();
    zebQuirks(0);
    zebRasterViewport(0, pixels, 0, pixels);
    const auto width = static_cast<float>(pictureSize(view));
    const float half = width / view.size, reach = view.size > width ? 0.9f : 0;
    const float x = reach * axis(view.random), y = reach * axis(view.random);
    zebImageWindow(x - half, x + half, y - half, y + half);
    zebViewPerspective(40);
    zebClip(1, 6);
    zebOutputSamples(ZEB_SAMPLES_ALPHA | ZEB_SAMPLES_DEPTH);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebSampleUniform(1, 1);
    // At the middle of a pixel, which the finer picture has a pixel for.
    zebSampleJitter(0);
    if (!fine && view.adaptive) zebSampleAdaptive(1e9f);
    if (!fine && view.bySequence) zebHider(ZEB_HIDER_SEQUENCE);
    picture.attachFloat();
    zebTranslate(0, 0, 3.2f);
    const float turn = angle(view.random), a = axis(view.random), b = axis(view.random);
    zebRotate(turn, a, b, axis(view.random));
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    zebShadingRate(fine ? 1.0f / 16 : view.rate);
    if (fine) zebFlatness(0.02f);
    if (subject.closed) zebBackface(1);
    // Objects hold no spline bases, which a mesh of patches brings along.
    if (!fine && view.instance && subject.family.name != "patch mesh") {
        const void* object = zebObjectBegin();
        subject.family.add(1);
        zebObjectEnd();
        zebObjectCall(object);
    } else {
        subject.family.add(1);
    }
    zebSceneEnd();
}

// Whether the fine picture shows the surface all round a pixel of the other, without a fold.
bool within(const Picture& fine, const View& view, int x, int y)
{
    // Coarse micropolygons stray from the outline, by less than two pixels.
    const int by = refinement(view), room = by == 1 ? 2 : by * (view.rate > 16 ? 2 : 1) + 1;
    const int cx = x * by + by / 2, cy = y * by + by / 2;
    float nearest = 1, farthest = 0;
    for (int j = cy - room; j <= cy + room; ++j) {
        for (int i = cx - room; i <= cx + room; ++i) {
            if (i < 0 || j < 0 || i >= fine.width || j >= fine.height) return false;
            if (fine.value(i, j, 0) < 1) return false;
            nearest = std::min(nearest, fine.value(i, j, 1));
            farthest = std::max(farthest, fine.value(i, j, 1));
        }
    }
    return farthest - nearest < (by == 1 ? 0.04f : 0.1f);
}

// Where a gap is, for the first few.
void report(const View& view, const Subject& subject, int number, int x, int y)
{
    static int reported = 0;
    if (++reported > 20) return;
    std::printf("  %s, view %d: size %g, rate %g%s%s%s: pixel %d, %d\n",
                subject.family.name.c_str(), number, static_cast<double>(view.size),
                static_cast<double>(view.rate), view.adaptive ? ", adaptive" : "",
                view.bySequence ? ", by sequence" : "", view.instance ? ", instance" : "", x, y);
}

struct Count {
    long samples = 0, gaps = 0;
};

Count count(const View& view, int number, const Subject& subject, Picture& coarse, Picture& fine)
{
    render(view, subject, false, coarse);
    render(view, subject, true, fine);
    Count result;
    for (int y = 0; y < coarse.height; ++y) {
        for (int x = 0; x < coarse.width; ++x) {
            if (!within(fine, view, x, y)) continue;
            result.samples += view.adaptive ? kAdaptiveSamples : 1;
            if (coarse.value(x, y, 0) >= 1) continue;
            ++result.gaps;
            report(view, subject, number, x, y);
        }
    }
    return result;
}

}  // namespace

int main(int argc, char** argv)
{
    const int views = argc > 1 ? std::atoi(argv[1]) : 0;
    if (views < 1) {
        std::fprintf(stderr, "usage: zeb_closed VIEWS [FAMILY...]\n");
        return 2;
    }
    Count all;
    for (const Subject& subject : subjects()) {
        const auto wanted = [&](const char* name) { return subject.family.name == name; };
        if (argc > 2 && std::none_of(argv + 2, argv + argc, wanted)) continue;
        std::mt19937 random(7);
        Picture coarse(2), fine(2);
        Count sum;
        for (int k = 0; k < views; ++k) {
            const Count one = count(randomView(random), k, subject, coarse, fine);
            sum.samples += one.samples;
            sum.gaps += one.gaps;
        }
        std::printf("%-17s %6d views %11ld samples %3ld seen through\n",
                    subject.family.name.c_str(), views, sum.samples, sum.gaps);
        std::fflush(stdout);
        all.samples += sum.samples;
        all.gaps += sum.gaps;
    }
    std::printf("%-17s %24ld samples %3ld seen through\n", "all", all.samples, all.gaps);
    return all.gaps * 10000000 > std::max(all.samples, 10000000L) ? 1 : 0;
}
