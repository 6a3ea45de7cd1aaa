#include "math/spaces.h"

#include "util/hash.h"
#include "util/host_array.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

Matrix gWorldToCamera;
Matrix gCameraToScreen;
Matrix gScreenToRaster;
Matrix gCameraToRaster;

namespace
{

enum : unsigned short { kRaster = 32, kImage = 33, kEye = 34, kWorld = 35, kModel = 36 };
constexpr unsigned short kLevelTokens[] = {kRaster, kImage, kEye, kWorld};
constexpr long kEyeLevel = 2;
constexpr long kMaxPoints = 1L << 27;

struct Space {
    unsigned short token;
    Matrix matrix;
    bool operator==(const Space& other) const { return token == other.token; }
};

Hash<Space>& markedSpaces()
{
    static Hash<Space> spaces(17);
    return spaces;
}

std::vector<unsigned short>& markedTokens()
{
    static std::vector<unsigned short> tokens;
    return tokens;
}

// Null after a change.
std::shared_ptr<const MarkedSpaces>& knownSpaces()
{
    static std::shared_ptr<const MarkedSpaces> spaces;
    return spaces;
}

// A report may run a handler that marks spaces, so the matrix is looked up by whoever needs it.
const Matrix* knownMatrix(unsigned short token)
{
    switch (token) {
        case kRaster:
            return &gIdentity;
        case kImage:
            return &gScreenToRaster;
        case kEye:
            return &gCameraToScreen;
        case kWorld:
            return &gWorldToCamera;
        case kModel:
            return &spaceContext().model;
        default:
            break;
    }
    const Space* space = markedSpaces().find(Space{token, gIdentity});
    return space ? &space->matrix : nullptr;
}

// The chain from a space down to, and without, a level: for x and y, and for z.
struct Chain {
    Matrix xy, z;

    Chain(unsigned short space, long fromLevel, long toLevel) : xy(spaceMatrix(space)), z(xy)
    {
        const SpaceContext context = spaceContext();
        for (long level = fromLevel - 1; level > toLevel; --level) {
            const Matrix& step = spaceMatrix(kLevelTokens[level]);
            xy *= step;
            if (level == kEyeLevel) {
                z.zmap(context.nearClip, context.farClip);
            } else {
                z *= step;
            }
        }
    }
    Chain() = default;
};

}  // namespace

void setCameraToScreen(const Matrix& projection)
{
    gCameraToScreen = projection;
    gCameraToRaster = gCameraToScreen * gScreenToRaster;
}

void markSpace(unsigned short token)
{
    if (!verify(kUsualBlocks, kState)) return;
    if (token >= kRaster && token <= kModel) {
        error(kRange, kError, "cannot redefine standard coordinate system %ld",
              static_cast<long>(token));
        return;
    }
    const Space space{token, spaceContext().model};
    knownSpaces().reset();
    if (Space* known = markedSpaces().find(space)) {
        *known = space;
    } else {
        markedSpaces().add(space);
        markedTokens().push_back(token);
    }
}

std::shared_ptr<const MarkedSpaces> MarkedSpaces::current()
{
    std::shared_ptr<const MarkedSpaces>& known = knownSpaces();
    if (!known) {
        auto spaces = std::make_shared<MarkedSpaces>();
        for (const unsigned short token : markedTokens()) {
            spaces->fSpaces.emplace_back(token, *knownMatrix(token));
        }
        known = spaces;
    }
    return known;
}

const Matrix* MarkedSpaces::find(unsigned short token) const
{
    for (const auto& [name, toCamera] : fSpaces) {
        if (name == token) return &toCamera;
    }
    return nullptr;
}

long spaceLevel(unsigned short token)
{
    for (long level = 0; level < 4; ++level) {
        if (kLevelTokens[level] == token) return level;
    }
    if (knownMatrix(token)) return 3;
    error(kRange, kError, "unknown coordinate space %ld", static_cast<long>(token));
    return -1;
}

const Matrix& spaceMatrix(unsigned short token)
{
    if (const Matrix* matrix = knownMatrix(token)) return *matrix;
    error(kBug, kError, "unknown coordinate space %ld", static_cast<long>(token));
    return gIdentity;
}

float (*projectPoints(unsigned short from, unsigned short to, long n, float (*points)[3]))[3]
{
    if (!verify(kUsualBlocks, kState)) return nullptr;
    if (n < 0 || n > kMaxPoints || (n > 0 && !points)) {
        error(kRange, kError, "%ld points cannot be projected", n);
        return nullptr;
    }
    if (!HostArrays::readInPlace("points", points, n, sizeof *points)) return nullptr;
    if (n > 0 && !allFinite(&points[0][0], 3 * static_cast<std::size_t>(n))) {
        error(kRange, kError, "a point to be projected is not finite");
        return nullptr;
    }
    const long lf = spaceLevel(from);
    const long lt = spaceLevel(to);
    if (lf < 0 || lt < 0) return nullptr;

    Chain chain;
    if (lf > lt) {
        chain = Chain(from, lf, lt);
    } else if (lf < lt) {
        chain = Chain(to, lt, lf);
        if (!invert(&chain.xy)) return nullptr;
    } else if (lf == 3) {
        Matrix inverse = spaceMatrix(to);
        if (!invert(&inverse)) return nullptr;
        chain.xy = chain.z = spaceMatrix(from) * inverse;
    }
    for (long i = 0; i < n; ++i) {
        const Point p(points[i][0], points[i][1], points[i][2]);
        const Point xy = p * chain.xy;
        points[i][2] = (p * chain.z).z;
        points[i][0] = xy.x;
        points[i][1] = xy.y;
    }
    return points;
}

}  // namespace zeb
