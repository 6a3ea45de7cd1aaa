#include "state/quark.h"

#include <cstring>
#include <new>
#include <utility>

#include "util/report.h"

namespace zeb
{

unsigned short Quark::fNext = 1;
unsigned short Quark::fMask = 0;
std::uint32_t Quark::fZero = 0;
std::uint32_t* Quark::fTable = &Quark::fZero;
char*** Quark::fStringTable = nullptr;
unsigned short Quark::fRehash = 0;
unsigned short Quark::fVertexColor = 0;
unsigned short Quark::fS = 0, Quark::fT = 0;
unsigned short Quark::fVertexOpacity = 0;

namespace
{

constexpr int kPageSize = 256;
constexpr int kDirectoryStep = 8;
constexpr std::uint32_t kHashBits = 0x7FF;

unsigned short tokenOf(std::uint32_t entry) { return static_cast<unsigned short>(entry & 0xFFFF); }

char*& nameOf(unsigned short token)
{
    return Quark::fStringTable[token / kPageSize][token % kPageSize];
}

// Walks the slots in the order of a name's hash: the step is odd, so it comes by all of them.
class Probe
{
public:
    explicit Probe(std::uint32_t hash) : fHash(hash), fSlot(hash & Quark::fMask) {}
    std::uint32_t& entry() const { return Quark::fTable[fSlot]; }
    void advance()
    {
        if (!fStep) {
            fStep = static_cast<unsigned short>(((fHash % Quark::fRehash) + 2) | 1);
        }
        fSlot = (fSlot + fStep) & Quark::fMask;
    }

private:
    std::uint32_t fHash;
    std::uint32_t fSlot;
    unsigned short fStep = 0;
};

// The slot that holds the name, or the empty one where the search for it ended.
Probe locate(const char* name, std::uint32_t hash)
{
    Probe probe(hash);
    for (; probe.entry(); probe.advance()) {
        const bool sameBits = ((probe.entry() >> 16) & kHashBits) == (hash & kHashBits);
        if (sameBits && std::strcmp(nameOf(tokenOf(probe.entry())), name) == 0) break;
    }
    return probe;
}

Probe emptySlot(std::uint32_t hash)
{
    Probe probe(hash);
    while (probe.entry()) probe.advance();
    return probe;
}

// The entry of a token that has been given out; 0 if it can't be found.
std::uint32_t entryOf(unsigned short token)
{
    const char* name = nameOf(token);
    Probe probe(Quark::signature(name));
    while (probe.entry() && tokenOf(probe.entry()) != token) probe.advance();
    if (!probe.entry()) error(kBug, kError, "lost quark %s", name);
    return probe.entry();
}

bool givenOut(unsigned short token)
{
    return token != 0 && (Quark::fNext == 0 || token < Quark::fNext);
}

void growDirectory(int pages)
{
    char*** larger = new char**[pages + kDirectoryStep]();
    if (pages) std::memcpy(larger, Quark::fStringTable, pages * sizeof(char**));
    delete[] Quark::fStringTable;
    Quark::fStringTable = larger;
}

}  // namespace

std::uint32_t Quark::signature(const char* name)
{
    std::uint32_t h = 0;
    for (; *name; ++name) {
        h = (h << 4) + static_cast<std::uint32_t>(static_cast<signed char>(*name));
        if (const std::uint32_t g = h & 0xF0000000u) h ^= g ^ (g >> 24);
    }
    return h;
}

void Quark::expandQuarkTable()
{
    const std::uint32_t oldSlots = fMask + 1u;
    std::uint32_t* old = fTable;
    if (fMask == 0) {
        growDirectory(0);
        fStringTable[0] = new char*[kPageSize]();
        fMask = 511;
    } else {
        fMask = static_cast<unsigned short>(2 * fMask + 1);
    }
    fTable = new std::uint32_t[fMask + 1u]();
    fRehash = static_cast<unsigned short>(fMask - 2);
    for (std::uint32_t i = 0; i < oldSlots; ++i) {
        if (old[i]) emptySlot(signature(nameOf(tokenOf(old[i])))).entry() = old[i];
    }
    if (old != &fZero) delete[] old;
}

unsigned short Quark::declare(const char* name, short storage, short type)
{
    if (!name) return 0;
    const std::uint32_t hash = signature(name);
    Probe slot = locate(name, hash);
    if (slot.entry()) return tokenOf(slot.entry());
    if (fNext == 0) return 0;
    // 65,536 slots are as many as the mask can count; tokens run out before they are all taken.
    if (fNext + fNext / 4 > fMask && fMask != 0xFFFF) {
        expandQuarkTable();
        slot = emptySlot(hash);
    }
    const unsigned short token = fNext++;
    if (token % kPageSize == 0) {
        const int page = token / kPageSize;
        if (page % kDirectoryStep == 0) growDirectory(page);
        fStringTable[page] = new char*[kPageSize]();
    }
    for (const auto& [known, place] :
         {std::pair{"vertexcolor", &fVertexColor}, std::pair{"vertexopacity", &fVertexOpacity}}) {
        if (std::strcmp(name, known) != 0) continue;
        *place = token;
        storage = kVertexClass;
        type = kColorType;
    }
    const std::size_t size = std::strlen(name) + 1;
    nameOf(token) = static_cast<char*>(std::memcpy(new char[size], name, size));
    slot.entry() = token | (hash & kHashBits) << 16 | (static_cast<std::uint32_t>(type) & 7) << 27 |
                   (static_cast<std::uint32_t>(storage) & 3) << 30;
    return token;
}

unsigned short Quark::declareTyped(const char* name, short storage, short type)
{
    if (storage < kClassNone || storage > kVertexClass) {
        error(kRange, kError, "unknown storage class %d", storage);
        return 0;
    }
    if (type < kTypeNone || type > kColorType) {
        error(kRange, kError, "unknown value type %d", type);
        return 0;
    }
    return declare(name, storage, type);
}

unsigned short Quark::find(const char* name)
{
    return name ? tokenOf(locate(name, signature(name)).entry()) : 0;
}

const char* Quark::getString(unsigned short token)
{
    return givenOut(token) ? nameOf(token) : nullptr;
}

short Quark::getClass(unsigned short token)
{
    return static_cast<short>(kClassNone | (givenOut(token) ? entryOf(token) >> 30 : 0));
}

short Quark::getType(unsigned short token)
{
    return static_cast<short>(kTypeNone | (givenOut(token) ? (entryOf(token) >> 27) & 7 : 0));
}

void declarePredefined()
{
    struct Predefined {
        const char* name;
        short storage, type;
    };
    static constexpr Predefined names[] = {
        {"point", kVertexClass, kPointType},
        {"height", kVertexClass, kFloat},
        {"pointw", kVertexClass, kPointwType},
        {"normal", kVarying, kPointType},
        {"plane", kUniform, kPointType},
        {"color", kVarying, kColorType},
        {"opacity", kVarying, kColorType},
        {"constant", kClassNone, kTypeNone},
        {"diffuse", kClassNone, kTypeNone},
        {"metal", kClassNone, kTypeNone},
        {"plastic", kClassNone, kTypeNone},
        {"ka", kUniform, kFloat},
        {"kd", kUniform, kFloat},
        {"ks", kUniform, kFloat},
        {"roughness", kUniform, kFloat},
        {"specularcolor", kUniform, kColorType},
        {"ambient", kClassNone, kTypeNone},
        {"omni", kClassNone, kTypeNone},
        {"distant", kClassNone, kTypeNone},
        {"spot", kClassNone, kTypeNone},
        {"intensity", kUniform, kFloat},
        {"from", kUniform, kPointType},
        {"to", kUniform, kPointType},
        {"coneangle", kUniform, kFloat},
        {"conedeltaangle", kUniform, kFloat},
        {"beamdistribution", kUniform, kFloat},
        {"depthcue", kClassNone, kTypeNone},
        {"fog", kClassNone, kTypeNone},
        {"hither", kUniform, kFloat},
        {"yon", kUniform, kFloat},
        {"distance", kUniform, kFloat},
        {"raster", kClassNone, kTypeNone},
        {"image", kClassNone, kTypeNone},
        {"eye", kClassNone, kTypeNone},
        {"world", kClassNone, kTypeNone},
        {"model", kClassNone, kTypeNone},
    };
    unsigned short last = 0;
    for (const Predefined& p : names) last = Quark::declare(p.name, p.storage, p.type);
    if (last != kQModel) error(kBug, kError, "predefined quark mismatch");
}

void Quark::declareTexture()
{
    if (!fS) fS = declare("s", kVarying, kFloat);
    if (!fT) fT = declare("t", kVarying, kFloat);
}

void initQuark()
{
    static bool pending = true;
    if (!pending) return;
    pending = false;
    declarePredefined();
}

}  // namespace zeb
