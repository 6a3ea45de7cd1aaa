// A model file, as meshes and surfaces around the origin.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "free_form.h"
#include "mesh.h"
#include "scalar.h"
#include "settings.h"
#include "stage.h"

namespace zebview
{

// Where the file's own space is in that of the model.
struct FileSpace {
    std::array<Vector, 3> axes{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Vector origin;
    double unit = 1;
};

struct Model {
    std::vector<Mesh> meshes;
    std::vector<FreeForm> surfaces;
    Stage stage;
    FileSpace space;
    // The scalar that takes the place of its colors, and the range that they go through.
    std::optional<Scalar> scalar;
    std::optional<Range> shownRange;
    std::string notShown;  // in words, if it is anything
    // Of a model that moves, the farthest points in all frames; of others none.
    std::vector<Vector> room;
};

// How far beyond its points a model shows: those that are spheres reach farther.
double reachOf(const Model& model);

// Reads a file, and makes models of it: turned so that y points up, and moved and scaled so that
// all of them lie in the unit sphere. What comes after needs no thought for models as large as a
// country or as small as a hair. Throws a Failure if there is nothing to be seen.
class ModelFile
{
public:
    ModelFile(std::string name, const Settings& settings);
    ~ModelFile();

    // As it is in a frame of the settings. If it does not move in time, all of them are alike.
    Model model(long frame);
    // At a time of the animation that the settings ask for, in seconds.
    Model modelAt(double seconds);
    // That animation: its number, from 0, and how long it runs, in seconds.
    std::size_t animation() const;
    double length() const;
    // A line for each of the file's.
    std::vector<std::string> animations() const;
    std::vector<std::string> scalars() const;

private:
    struct Contents;

    // Says in a Failure which file it is about.
    template <class Work>
    void explained(const Work& work) const;

    std::string fName;
    std::unique_ptr<Contents> fContents;
};

}  // namespace zebview
