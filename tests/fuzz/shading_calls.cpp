// Functions that shade, and what they must not do.

#include <cmath>
#include <limits>

#include "player.h"

namespace zebfuzz
{

namespace
{

// What a function does follows from its seed and the row's size alone: it may run anywhere.
class Whim
{
public:
    Whim(unsigned seed, const ZebRow* row) : fState(seed * 2654435761u + unsigned(row->count)) {}
    unsigned upTo(unsigned n)
    {
        fState = fState * 1664525u + 1013904223u;
        return (fState >> 16) % n;
    }
    float number()
    {
        using Limits = std::numeric_limits<float>;
        constexpr float odd[8] = {Limits::quiet_NaN(),
                                  Limits::infinity(),
                                  -Limits::max(),
                                  -0.0f,
                                  Limits::denorm_min(),
                                  1e30f,
                                  -5,
                                  2};
        return upTo(4) ? static_cast<float>(upTo(64)) / 32 : odd[upTo(8)];
    }

private:
    unsigned fState;
};

void fillIn(Whim& whim, const ZebRow* row, float* const* planes)
{
    if (!planes[0]) return;
    for (int axis = 0; axis < 3; ++axis) {
        const float value = whim.number();
        for (long k = 0; k < row->count; ++k) planes[axis][k] = value;
    }
}

void callForRows(Whim& whim, ZebRow* row)
{
    // Noise takes up to four.
    float* own[4];
    for (float*& plane : own) plane = zebRowPlane(row);
    float* const bad[4] = {own[0], own[1], whim.upTo(2) ? own[2] + 1 : nullptr, own[3]};
    float* const* const planes = whim.upTo(8) ? own : bad;
    float* const* const given = whim.upTo(2) ? row->N : row->P;
    const ZebRow* const of = whim.upTo(8) ? row : nullptr;
    fillIn(whim, row, own);
    switch (whim.upTo(14)) {
        case 0:
            zebRowAmbient(of, planes);
            break;
        case 1:
            zebRowDiffuse(of, given, planes);
            break;
        case 2:
            zebRowSpecular(of, given, row->I, whim.number(), planes);
            break;
        case 3:
            zebRowPhong(of, given, planes, whim.number(), planes);
            break;
        case 4:
            for (long n = zebRowLights(of); n >= -1; --n) zebRowLight(of, n, own, planes, nullptr);
            break;
        case 5:
            zebRowFacing(of, planes, planes);
            break;
        case 6:
            zebRowDifferences(of, planes[2], own[0], own[1]);
            break;
        case 7:
            zebRowNormals(of, given, planes);
            break;
        case 8: {
            const auto from = static_cast<unsigned short>(whim.upTo(60));
            const auto to = static_cast<unsigned short>(whim.upTo(60));
            const auto kind = static_cast<short>(ZEB_TRANSFORM_POINT + whim.upTo(4));
            zebRowTransform(of, from, to, kind, given, planes);
            break;
        }
        case 9: {
            const long periods[4] = {static_cast<long>(whim.upTo(5)) - 1, 3, 0, 1L << 30};
            zebRowNoise(of, whim.upTo(5), planes, whim.upTo(2) ? periods : nullptr, own[0]);
            break;
        }
        case 10:
            zebRowTurbulence(of, whim.upTo(4), given, whim.upTo(34), whim.number(), 1, planes[2]);
            break;
        case 11:
            zebRowStep(of, whim.number(), planes[2], own[0]);
            break;
        case 12:
            zebRowChecks(of, row->u, row->v, planes[2]);
            break;
        default: {
            const auto token = static_cast<unsigned short>(whim.upTo(60));
            zebRowVariable(of, token, static_cast<long>(whim.upTo(5)) - 1);
            zebRowInteger(of, token);
            zebRowString(of, token);
        }
    }
}

// Refused, all of them.
void callOthers(Whim& whim)
{
    const float white[3] = {1, 1, 1};
    switch (whim.upTo(6)) {
        case 0:
            zebSphere(1, -1, 1, 360, 0);
            break;
        case 1:
            if (zebQuark("color")) broken("a function that shades gets no token");
            break;
        case 2:
            zebReset();
            break;
        case 3:
            zebSceneEnd();
            break;
        case 4:
            zebColor(white);
            break;
        default:
            zebCustomSurface(nullptr);
    }
}

}  // namespace

void Player::shade(void* data, ZebRow* row)
{
    const Shader& shader = *static_cast<const Shader*>(data);
    if (shader.frees) broken("a freed function does not shade");
    Whim whim(shader.seed, row);
    for (unsigned calls = whim.upTo(4); calls > 0; --calls) callForRows(whim, row);
    if (whim.upTo(8) == 0) callOthers(whim);
    for (float* const* planes : {row->Ci, row->Oi, row->L, row->Cl, row->Ol}) {
        if (whim.upTo(3)) fillIn(whim, row, planes);
    }
    const bool displaces = !row->Ci[0] && !row->L[0];
    if (displaces && whim.upTo(3)) fillIn(whim, row, row->P);
}

void Player::freeShader(void* data)
{
    if (++static_cast<Shader*>(data)->frees > 1) broken("a function is freed once");
    current()->callBack(8);
}

ZebShader Player::shader()
{
    Shader& data = fShaders.emplace_back();
    data.seed = in.byte();
    ZebShader made{};
    made.data = &data;
    made.shade = in.oneIn(32) ? nullptr : shade;
    made.free = freeShader;
    made.flags = in.oneIn(16) ? in.integer() : static_cast<long>(in.upTo(8));
    return made;
}

const std::vector<Call>& shadingCalls()
{
    static const std::vector<Call> calls = {
        [](Player& p) {
            const ZebShader shader = p.shader();
            zebCustomSurface(&shader);
        },
        [](Player& p) {
            const ZebShader shader = p.shader();
            zebCustomAtmosphere(&shader);
        },
        [](Player& p) {
            const ZebShader shader = p.shader();
            p.lights.push_back(zebCustomLight(&shader));
        },
        [](Player& p) {
            const ZebShader shader = p.shader();
            zebCustomDisplacement(&shader);
        },
        [](Player& p) {
            switch (p.in.upTo(5)) {
                case 0:
                    zebCustomSurface(nullptr);
                    break;
                case 1:
                    zebCustomAtmosphere(nullptr);
                    break;
                case 2:
                    zebCustomLight(nullptr);
                    break;
                case 3:
                    zebCustomDisplacement(nullptr);
                    break;
                default:
                    zebRowPlane(nullptr);
            }
        },
        [](Player& p) {
            const float* const v = p.floats(8);
            zebTextureCoordinates(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
        },
        [](Player& p) {
            const long width = p.in.oneIn(8) ? p.in.count() : 1 + p.in.upTo(4);
            const long height = p.in.oneIn(8) ? p.in.count() : 1 + p.in.upTo(3);
            const float* const pixels = p.floatsOrNull(12);
            if (width * height > 12) return;
            zebImageFree(zebImage(width, height, 1, pixels, p.in.enumerator(0xF00, 4)));
        },
    };
    return calls;
}

}  // namespace zebfuzz
