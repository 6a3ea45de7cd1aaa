// Interned names.
#pragma once

#include <cstdint>

namespace zeb
{

enum QuarkClass : short { kClassNone = 0xD00, kUniform, kVarying, kVertexClass };
enum QuarkType : short {
    kTypeNone = 0xE00,
    kFloat,
    kInteger,
    kString,
    kPair,
    kPointType,
    kPointwType,
    kColorType
};

// The predefined tokens.
enum : unsigned short {
    kQPoint = 1,
    kQHeight,
    kQPointw,
    kQNormal,
    kQPlane,
    kQColor,
    kQOpacity,
    kQConstant,
    kQDiffuse,
    kQMetal,
    kQPlastic,
    kQKa,
    kQKd,
    kQKs,
    kQRoughness,
    kQSpecularColor,
    kQAmbient,
    kQOmni,
    kQDistant,
    kQSpot,
    kQIntensity,
    kQFrom,
    kQTo,
    kQConeAngle,
    kQConeDeltaAngle,
    kQBeamDistribution,
    kQDepthCue,
    kQFog,
    kQHither,
    kQYon,
    kQDistance,
    kQRaster,
    kQImage,
    kQEye,
    kQWorld,
    kQModel,
};

// A process-wide table: open addressing over packed entries, and the names in pages.
struct Quark {
    static unsigned short fNext;  // the next token; 0 when all have been given out
    static unsigned short fMask;  // slots minus 1
    static std::uint32_t fZero;   // the table before the first growth
    // A slot is 0 when empty, else token | hash << 16 (11 bits) | type << 27 | class << 30.
    static std::uint32_t* fTable;
    static char*** fStringTable;  // page p holds the names of tokens 256 p ... 256 p + 255
    static unsigned short fRehash;
    // The tokens of "vertexcolor" and "vertexopacity": names that come with a class and a type, but
    // not before somebody asks for them, so that they have no number of their own. 0 until then.
    static unsigned short fVertexColor, fVertexOpacity;
    // Those of "s" and "t", by which primitives may have texture coordinates; 0 until somebody
    // makes a function that shades.
    static unsigned short fS, fT;
    static void declareTexture();
    static bool isVertexColor(unsigned short token)
    {
        return token && (token == fVertexColor || token == fVertexOpacity);
    }

    // Interns a name; a known one keeps its class and type. 0 for null and when the table is full.
    static unsigned short declare(const char* name, short storage, short type);
    // declare() for hosts: reports codes that are not one.
    static unsigned short declareTyped(const char* name, short storage, short type);
    static unsigned short find(const char* name);
    static const char* getString(unsigned short token);
    static short getClass(unsigned short token);
    static short getType(unsigned short token);
    static std::uint32_t signature(const char* name);
    static void expandQuarkTable();
};

// Declares the predefined names; reports if other names came before them.
void declarePredefined();
// The same, once.
void initQuark();

}  // namespace zeb
