#include "obj_surfaces.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <string_view>

#include "console.h"
#include "failure.h"
#include "obj_statements.h"

namespace zebview
{

namespace
{

constexpr std::size_t kMostComplaints = 20;
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// A word of the file for messages, which stay lines however long it is.
std::string named(std::string_view word)
{
    constexpr std::size_t most = 40;
    return std::string(word.substr(0, most)) + (word.size() > most ? "..." : "");
}

double numberOf(std::string_view word)
{
    const auto value = parsed<double>(word);
    if (!value || !std::isfinite(*value)) throw Failure(named(word) + " is not a number");
    return *value;
}

std::string counted(std::size_t nu, std::size_t nv)
{
    return std::to_string(nu) + " x " + std::to_string(nv);
}

// A control point as a surface names it.
struct Corner {
    std::size_t vertex;
    std::optional<std::size_t> place;  // on textures
};

// A surface, or a curve, until its end.
struct Element {
    std::size_t line;
    bool isSurface;
    bool isBroken = false, isTrimmed = false;
    std::array<double, 4> limits{};
    std::vector<Corner> corners;
    std::array<std::vector<double>, 2> parameters;
};

class Reader
{
public:
    Reader(const std::string& file, std::string_view text) : fFile(file), fStatements(text) {}

    ObjSurfaces read()
    {
        Statement statement;
        while (fStatements.next(statement)) {
            if (!readsItself(statement)) keep(statement);
        }
        closeOpen();
        if (!fHasPolygons) fResult.rest = fLibraries;
        sumUp();
        return std::move(fResult);
    }

private:
    using Handler = void (Reader::*)(const Words&);

    // What occurs in several places, and is told of once.
    struct Tally {
        std::size_t line = 0, count = 0;

        void add(std::size_t at)
        {
            if (count++ == 0) line = at;
        }
    };

    void sumUp() const
    {
        if (fTrimmed.count > 0) {
            const std::string others =
                fTrimmed.count == 1 ? ""
                : fTrimmed.count == 2
                    ? ", nor those of another surface"
                    : ", nor those of " + std::to_string(fTrimmed.count - 1) + " other surfaces";
            complainAt(fTrimmed.line, "trimming curves are not followed" + others);
        }
        if (fCurves.count > 0) complainAt(fCurves.line, "curves are not shown");
        if (fComplaints > kMostComplaints) {
            complain(fFile + ": " + std::to_string(fComplaints - kMostComplaints) +
                     " more surfaces are not shown");
        }
    }

    // For the reader of polygons, which would divide by weights, and fail where it can't.
    void keep(const Statement& statement)
    {
        const Words& words = statement.words;
        const bool isWeighted = words.size() == 5 || words.size() == 6 || words.size() == 8;
        if (statement.name() == "v" && isWeighted) {
            fResult.rest += 'v';
            for (std::size_t i = 1; i < words.size(); ++i) {
                if (i < 4 || (i > 4 && words.size() == 8)) {
                    fResult.rest += ' ';
                    fResult.rest += words[i];
                }
            }
            fResult.rest += '\n';
            return;
        }
        std::string source(statement.source);
        if (!source.ends_with('\n')) source += '\n';
        fResult.rest += source;
        if (statement.name() == "mtllib") fLibraries += source;
    }

    // False if it is for others, too.
    bool readsItself(const Statement& statement)
    {
        static const std::map<std::string_view, Handler> handlers{
            {"cstype", &Reader::readType},   {"deg", &Reader::readDegrees},
            {"bmat", &Reader::readBasis},    {"step", &Reader::readSteps},
            {"surf", &Reader::beginSurface}, {"curv", &Reader::beginOther},
            {"curv2", &Reader::beginOther},  {"parm", &Reader::readParameters},
            {"trim", &Reader::readTrim},     {"hole", &Reader::readTrim},
            {"scrv", &Reader::passOver},     {"sp", &Reader::passOver},
            {"vp", &Reader::passOver},       {"con", &Reader::passOver},
            {"ctech", &Reader::passOver},    {"stech", &Reader::passOver},
            {"end", &Reader::endElement},
        };
        const std::string_view name = statement.name();
        const auto found = handlers.find(name);
        if (found == handlers.end()) {
            readShared(statement);
            return false;
        }
        fLine = statement.line;
        try {
            (this->*found->second)(statement.words);
        } catch (const Failure& failure) {
            const bool isKnown = fOpen && (fOpen->isBroken || !fOpen->isSurface);
            if (!isKnown) leaveOut(fLine, failure.what());
            if (fOpen) fOpen->isBroken = true;
        }
        return true;
    }

    void readShared(const Statement& statement)
    {
        const std::string_view name = statement.name();
        if (name == "v") {
            addVertex(statement.words);
        } else if (name == "vt") {
            std::array<float, 2> place{};
            for (std::size_t i = 0; i < 2 && i + 1 < statement.words.size(); ++i) {
                const float value = parsed<float>(statement.words[i + 1]).value_or(0);
                place[i] = std::isfinite(value) ? value : 0;
            }
            fPlaces.push_back(place);
        } else if (name == "usemtl") {
            fMaterial.clear();
            if (statement.words.size() < 2) return;
            const char* const begin = statement.words[1].data();
            const std::string_view last = statement.words.back();
            fMaterial.assign(begin, last.data() + last.size());
        } else if (name == "f" || name == "l" || name == "p") {
            closeOpen();
            fHasPolygons = true;
        }
    }

    // Its weight stands before colors and after the place: four numbers, six, or seven.
    void addVertex(const Words& words)
    {
        std::array<double, 7> numbers{};
        const std::size_t count = std::min(words.size() - 1, numbers.size());
        for (std::size_t i = 0; i < count; ++i) {
            numbers[i] = parsed<double>(words[i + 1]).value_or(kNotANumber);
        }
        Vertex vertex;
        vertex.point = Vector(numbers[0], numbers[1], numbers[2]);
        if (count < 3) vertex.point = Vector(kNotANumber);
        if (count == 4 || count == 5 || count == 7) vertex.weight = numbers[3];
        if (count >= 6) {
            vertex.isColored = true;
            for (std::size_t c = 0; c < 3; ++c) {
                const double value = numbers[count - 3 + c];
                vertex.color[c] = static_cast<float>(value > 0 ? std::min(value, 1.0) : 0);
            }
        }
        fVertices.push_back(vertex);
    }

    void readType(const Words& words)
    {
        fKind.isRational = words.size() > 1 && words[1] == "rat";
        fKind.type = words.size() > 1 ? named(words.back()) : "";
    }
    void readDegrees(const Words& words) { readTwo(words, fKind.degrees); }
    void readSteps(const Words& words) { readTwo(words, fKind.steps); }
    // Those that are no numbers are 0, which is of no use to any surface.
    static void readTwo(const Words& words, std::array<std::size_t, 2>& values)
    {
        for (std::size_t way = 0; way < 2; ++way) {
            values[way] = 0;
            if (way + 1 < words.size()) {
                values[way] = parsed<std::size_t>(words[way + 1]).value_or(0);
            }
        }
    }
    void readBasis(const Words& words)
    {
        for (std::size_t way = 0; way < 2; ++way) {
            if (words.size() < 2 || words[1] != kWays[way]) continue;
            fKind.bases[way].clear();
            for (std::size_t i = 2; i < words.size(); ++i) {
                fKind.bases[way].push_back(parsed<double>(words[i]).value_or(kNotANumber));
            }
        }
    }

    void begin(bool isSurface)
    {
        closeOpen();
        fOpen = Element{fLine, isSurface, false, false, {}, {}, {}};
    }
    // The one before has no end of its own.
    void closeOpen()
    {
        if (!fOpen) return;
        if (fOpen->isSurface && !fOpen->isBroken) leaveOut(fOpen->line, "it has no end");
        fOpen.reset();
    }
    void beginOther(const Words& words)
    {
        begin(false);
        if (words[0] == "curv") fCurves.add(fLine);
    }
    void beginSurface(const Words& words)
    {
        begin(true);
        if (words.size() < 6) throw Failure("it has no control points");
        for (std::size_t i = 0; i < 4; ++i) fOpen->limits[i] = numberOf(words[i + 1]);
        for (std::size_t i = 5; i < words.size(); ++i) {
            fOpen->corners.push_back(cornerOf(words[i]));
        }
    }

    Corner cornerOf(std::string_view word) const
    {
        const std::size_t slash = std::min(word.find('/'), word.size());
        Corner corner{indexOf(word.substr(0, slash), fVertices.size(), "vertex"), {}};
        std::string_view place = word.substr(slash);
        if (!place.empty()) place.remove_prefix(1);
        place = place.substr(0, place.find('/'));
        if (!place.empty()) corner.place = indexOf(place, fPlaces.size(), "texture vertex");
        return corner;
    }
    // From 1, or back from the last one so far.
    static std::size_t indexOf(std::string_view word, std::size_t count, const char* what)
    {
        const auto number = parsed<long long>(word);
        if (!number) throw Failure(named(word) + " is not a number");
        const auto most = static_cast<long long>(count);
        if (*number == 0 || *number > most || *number < -most) {
            throw Failure(std::string("there is no ") + what + ' ' + named(word));
        }
        return static_cast<std::size_t>(*number > 0 ? *number - 1 : most + *number);
    }

    void readParameters(const Words& words)
    {
        if (!fOpen) throw Failure("parm belongs to none");
        const bool isV = words.size() > 1 && words[1] == "v";
        if (words.size() < 2 || !(isV || words[1] == "u")) throw Failure("parm is for u or for v");
        std::vector<double>& parameters = fOpen->parameters[isV ? 1 : 0];
        for (std::size_t i = 2; i < words.size(); ++i) parameters.push_back(numberOf(words[i]));
    }
    void readTrim(const Words&)
    {
        if (fOpen) fOpen->isTrimmed = true;
    }
    void passOver(const Words&) {}

    void endElement(const Words&)
    {
        if (!fOpen) return;
        const Element element = std::move(*fOpen);
        fOpen.reset();
        if (!element.isSurface || element.isBroken) return;
        fLine = element.line;
        fResult.surfaces.push_back(build(element));
        if (element.isTrimmed) fTrimmed.add(element.line);
    }

    ObjSurface build(const Element& element)
    {
        fKind.checkDegrees();
        ObjSurface surface;
        surface.line = element.line;
        surface.material = fMaterial;
        std::array<Pieces, 2> pieces;
        Net net;
        for (std::size_t way = 0; way < 2; ++way) {
            SplineWay& spline = way == 0 ? surface.u : surface.v;
            spline.degree = fKind.degrees[way];
            if (fKind.type == "bspline") {
                net.counts[way] = fKind.setKnots(element.parameters[way], way, spline);
            } else {
                pieces[way] = fKind.piecesOf(element.parameters[way], way, spline);
                net.counts[way] = pieces[way].controlPoints();
            }
            const bool isWithin =
                setLimits(element.limits[2 * way], element.limits[2 * way + 1], way, spline);
            if (!isWithin)
                complainAt(
                    element.line,
                    std::string("its limits lie outside of its parameters in ") + kWays[way]);
        }
        net.points = controlPoints(element, net.counts);
        if (pieces[0].basis) net = converted(net, pieces);
        fill(surface, element, net);
        return surface;
    }

    std::vector<ControlPoint> controlPoints(const Element& element,
                                            const std::array<std::size_t, 2>& counts) const
    {
        const std::vector<Corner>& corners = element.corners;
        if (corners.size() != counts[0] * counts[1]) {
            throw Failure("it has " + std::to_string(corners.size()) +
                          " control points, and its parameters are those of " +
                          counted(counts[0], counts[1]));
        }
        std::vector<ControlPoint> points;
        for (const Corner& corner : corners) {
            const Vertex& vertex = fVertices[corner.vertex];
            const std::string number = std::to_string(corner.vertex + 1);
            if (!(vertex.point.Length() < 1e100)) {
                throw Failure("vertex " + number + " is not a finite point");
            }
            const double weight = fKind.isRational ? vertex.weight : 1;
            if (!(weight >= 1e-30 && weight <= 1e30)) {
                throw Failure("the weight of vertex " + number + " is not from 1e-30 to 1e30");
            }
            const std::array<float, 2> place =
                corner.place ? fPlaces[*corner.place] : std::array<float, 2>{};
            const Vector& p = vertex.point;
            const auto& [red, green, blue] = vertex.color;
            points.push_back({{p.x, p.y, p.z, place[0], place[1], red, green, blue, weight}});
        }
        return points;
    }

    // Bases of any kind need not make 1 of weights that are 1.
    Net converted(Net net, const std::array<Pieces, 2>& pieces) const
    {
        for (ControlPoint& point : net.points) {
            point.scale(point.weight());
            if (!fKind.isRational) point.weight() = 0;
        }
        for (std::size_t way = 0; way < 2; ++way) net = zebview::converted(net, way, pieces[way]);
        for (ControlPoint& point : net.points) {
            if (!fKind.isRational) point.weight() = 1;
            if (!(point.weight() > 0)) throw Failure("a weight of it is not above 0");
            point.scale(1 / point.weight());
        }
        return net;
    }

    void fill(ObjSurface& surface, const Element& element, const Net& net)
    {
        const auto holds = [&](const auto& test) {
            return std::count_if(element.corners.begin(), element.corners.end(), test);
        };
        const auto all = static_cast<std::ptrdiff_t>(element.corners.size());
        const auto placed = holds([](const Corner& corner) { return corner.place.has_value(); });
        const bool isColored =
            all == holds([&](const Corner& c) { return fVertices[c.vertex].isColored; });
        if (placed > 0 && placed < all) {
            complainAt(element.line,
                       "its textures are not shown: some of its control points have "
                       "no texture vertex");
        }
        for (const ControlPoint& point : net.points) {
            const auto& values = point.values;
            surface.points.emplace_back(values[0], values[1], values[2]);
            surface.weights.push_back(values[ControlPoint::kWeight]);
            const auto append = [&](std::vector<float>& list, std::size_t first, std::size_t last) {
                for (std::size_t i = first; i <= last; ++i) {
                    list.push_back(static_cast<float>(values[i]));
                }
            };
            if (placed == all) append(surface.coordinates, ControlPoint::kS, ControlPoint::kT);
            if (isColored) append(surface.colors, ControlPoint::kRed, ControlPoint::kBlue);
        }
    }

    void complainAt(std::size_t line, const std::string& what) const
    {
        complain(fFile + ':' + std::to_string(line) + ": " + what);
    }
    void leaveOut(std::size_t line, const std::string& why)
    {
        if (++fComplaints > kMostComplaints) return;
        complainAt(line, "a surface is not shown: " + why);
    }

    struct Vertex {
        Vector point;
        double weight = 1;
        std::array<float, 3> color{};
        bool isColored = false;
    };

    const std::string& fFile;
    StatementReader fStatements;
    std::size_t fLine = 0;  // that is talked about
    std::vector<Vertex> fVertices;
    std::vector<std::array<float, 2>> fPlaces;

    // In force for the surfaces that follow.
    SplineKind fKind;
    std::string fMaterial;

    std::optional<Element> fOpen;
    Tally fTrimmed, fCurves;
    bool fHasPolygons = false;
    std::string fLibraries;  // of materials, as they are named
    std::size_t fComplaints = 0;
    ObjSurfaces fResult;
};

bool hasElements(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    for (std::string line; std::getline(in, line);) {
        const std::size_t begin = line.find_first_not_of(" \t");
        if (begin == std::string::npos || (line[begin] != 's' && line[begin] != 'c')) continue;
        const std::string_view name = wordsOf(line).front();
        if (name == "surf" || name == "curv") return true;
    }
    return false;
}

bool isNamedObj(const std::string& file)
{
    std::string extension = std::filesystem::path(file).extension().string();
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension == ".obj";
}

}  // namespace

std::optional<ObjSurfaces> readObjSurfaces(const std::string& file)
{
    if (!isNamedObj(file) || !hasElements(file)) return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    return Reader(file, text).read();
}

}  // namespace zebview
