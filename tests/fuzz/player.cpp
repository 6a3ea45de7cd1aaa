#include "player.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

namespace zebfuzz
{

void broken(const char* promise)
{
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

namespace
{

constexpr int kMaxCalls = 200;
constexpr int kMaxNesting = 4;
constexpr std::size_t kUsedFloats = 64;
// The largest variable: 40 loops of 40 vertices, each a colour of 40 samples.
constexpr std::size_t kFloats = 40 * 40 * 40 + kUsedFloats;
constexpr std::size_t kSlots = 8;

Player* gPlayer = nullptr;

// Everything files are written to; gone when the process ends.
struct ScratchFolder {
    ScratchFolder()
    {
        namespace fs = std::filesystem;
        const std::string name = "zeb_fuzz_" + std::to_string(std::random_device()());
        path = (fs::temp_directory_path() / name).string();
        std::error_code ignored;
        if (!fs::create_directory(path, ignored)) broken("a temporary folder");
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path;
};

const std::string& scratchFolder()
{
    static const ScratchFolder folder;
    return folder.path;
}

struct HostDevice {
    long xres = 0, yres = 0;
    bool open = false;
    unsigned seen = 0;
} gDevice;

void deviceOpen(void*, const char*, long xres, long yres, long, long)
{
    if (xres < 1 || yres < 1) broken("a device opens with a size");
    gDevice = {xres, yres, true, 0};
    if (gPlayer) gPlayer->callBack(8);
}

void deviceSpan(void*, long x0, long x1, long y, const unsigned int* words)
{
    if (!gDevice.open) broken("spans come while the device is open");
    if (x0 < 0 || x1 < x0 || x1 >= gDevice.xres || y < 0 || y >= gDevice.yres) {
        broken("spans lie in the picture");
    }
    for (long i = 0; i <= x1 - x0; ++i) gDevice.seen += words[i];
    if (gPlayer) gPlayer->callBack(32);
}

void deviceFlush(void*, long y0, long y1)
{
    if (!gDevice.open) broken("flushes come while the device is open");
    if (y0 < 0 || y1 < y0 || y1 >= gDevice.yres) broken("flushed rows lie in the picture");
    if (gPlayer) gPlayer->callBack(8);
}

void deviceClose(void*)
{
    if (!gDevice.open) broken("a device is closed once");
    gDevice.open = false;
    if (gPlayer) gPlayer->callBack(4);
}

}  // namespace

float filterThatCalls(float dx, float, float, float)
{
    if (gPlayer) gPlayer->callBack(200);
    return dx;
}

float filterOfHostileWeights(float, float, float, float)
{
    return gPlayer && !gPlayer->in.empty() ? gPlayer->in.number() : 0;
}

void handlerThatCalls(long, long, const char* message)
{
    volatile char first = message ? *message : 0;
    static_cast<void>(first);
    if (gPlayer) gPlayer->callBack(4);
}

void printerThatCalls(const char* line)
{
    volatile char first = *line;
    static_cast<void>(first);
    if (gPlayer) gPlayer->callBack(4);
}

short progressThatCalls(void*, long percent)
{
    if (gPlayer) gPlayer->callBack(20);
    return percent > 90;
}

Player* Player::current() { return gPlayer; }

void Player::callBack(unsigned chance)
{
    if (fMuted || fNesting >= kMaxNesting || in.empty() || !in.oneIn(chance)) return;
    for (unsigned calls = 1 + in.upTo(4); calls > 0; --calls) step();
}

void Player::step()
{
    if (fCalls >= kMaxCalls || in.empty()) return;
    ++fCalls;
    ++fNesting;
    const std::vector<Call>* const tables[] = {&primitiveCalls(), &attributeCalls(), &optionCalls(),
                                               &primitiveCalls(), &shadingCalls()};
    // Seldom enough to leave most pictures to the surfaces that are built in.
    const unsigned which = in.upTo(36);
    const std::vector<Call>& table = *tables[which == 32 ? 4 : which % 4];
    table[in.upTo(static_cast<unsigned>(table.size()))](*this);
    --fNesting;
}

void Player::subdivide(void* data, float)
{
    if (static_cast<Procedural*>(data)->frees) broken("a released procedural is not subdivided");
    Player& p = *gPlayer;
    if (p.fMuted || p.fNesting >= kMaxNesting) return;
    for (unsigned calls = p.in.upTo(8); calls > 0; --calls) p.step();
}

void Player::release(void* data)
{
    if (++static_cast<Procedural*>(data)->frees > 1) broken("a procedural is released once");
    gPlayer->callBack(8);
}

void Player::procedural()
{
    Procedural& data = fProcedurals.emplace_back();
    const float* bound = nullptr;
    static const float around[6] = {-1, 1, -1, 1, 2, 6};
    switch (in.upTo(4)) {
        case 0:
            bound = floatsOrNull(6);
            break;
        default:
            bound = around;
    }
    data.counted = !in.oneIn(16);
    zebProcedural(&data, bound, in.oneIn(32) ? nullptr : subdivide,
                  data.counted ? release : nullptr);
}

unsigned short Player::token()
{
    const unsigned kind = in.byte();
    if (kind < 160) return static_cast<unsigned short>(kind % 40);
    if (kind >= 250) return static_cast<unsigned short>(kind << 8 | in.byte());
    static const std::vector<unsigned short> declared = [] {
        std::vector<unsigned short> tokens{zebQuark("vertexcolor"), zebQuark("vertexopacity")};
        for (short storage = ZEB_CLASS_NONE; storage <= ZEB_VERTEX; ++storage) {
            for (short type = ZEB_TYPE_NONE; type <= ZEB_COLOR; ++type) {
                const std::string unique = "declared" + std::to_string(storage * 65536 + type);
                tokens.push_back(zebDeclare(unique.c_str(), storage, type));
            }
        }
        return tokens;
    }();
    return declared[kind % declared.size()];
}

const char* Player::name()
{
    static const std::string longName(3000, 'x');
    static const char* const names[8] = {"a",    "b",     "point",          "",
                                         "%s%n", nullptr, longName.c_str(), "\xff\xfe"};
    return names[in.upTo(8)];
}

float* Player::floats(std::size_t used)
{
    // Their lowest byte is 0: where a string is expected, they are a short one.
    static std::vector<std::vector<float>> slots(kSlots, std::vector<float>(kFloats, 0.5f));
    static std::size_t next = 0;
    std::vector<float>& slot = slots[next++ % kSlots];
    for (std::size_t i = 0; i < kUsedFloats; ++i) {
        slot[i] = i < used ? in.number() : static_cast<float>(i % 7) / 2;
    }
    return slot.data();
}

std::vector<long> Player::longs(bool indices)
{
    const auto largest = static_cast<std::size_t>(Bytes::kLargeCount);
    std::vector<long> values(largest * largest * (indices ? largest : 1), 3);
    const std::size_t used = in.upTo(16);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i < used && in.oneIn(16)) {
            values[i] = in.count();
        } else if (indices) {
            values[i] = static_cast<long>(i % 5);
        } else {
            values[i] = i < used ? 1 + static_cast<long>(in.upTo(6)) : 3;
        }
    }
    return values;
}

Player::List Player::list(bool geometry)
{
    List list;
    list.n = in.upTo(5) + (geometry ? 1 : 0);
    const auto given = static_cast<std::size_t>(list.n);
    const std::size_t size = Bytes::kLargeCount + 8;
    list.tokens.assign(size, 0);
    list.values.assign(size, nullptr);
    for (std::size_t i = 0; i < given; ++i) {
        const bool points = geometry && i == 0 && !in.oneIn(16);
        list.tokens[i] = points ? zebQuark("point") : token();
        list.values[i] = points ? floats(1 + in.upTo(32)) : floatsOrNull(in.upTo(6));
    }
    // Behind the last one an array goes on, for counts that say so.
    for (std::size_t i = given; i > 0 && i < size; ++i) {
        list.tokens[i] = list.tokens[i % given];
        list.values[i] = list.values[i % given];
    }
    list.tokens[5] = 0;
    if (!in.oneIn(8)) {
        list.tokenArray = list.tokens.data();
        list.valueArray = list.values.data();
    } else if (in.oneIn(2)) {
        list.tokenArray = list.tokens.data();
    }
    if (in.oneIn(16)) list.n = in.count();
    return list;
}

const void* Player::handle(const std::vector<const void*>& known)
{
    const unsigned which = in.byte();
    if (which >= 250 || known.empty()) return which & 1 ? nullptr : this;
    return known[which % known.size()];
}

ZebDisplay Player::device()
{
    ZebDisplay device{nullptr, deviceOpen, deviceSpan, deviceFlush, deviceClose};
    if (in.oneIn(16)) device = ZebDisplay{};
    return device;
}

void Player::outputFile()
{
    static const std::string png = scratchFolder() + "/a.png", exr = scratchFolder() + "/b.exr",
                             plain = scratchFolder() + "/c", missing = scratchFolder() + "/d/e.png";
    const char* const names[8] = {
        png.c_str(), exr.c_str(), plain.c_str(),   missing.c_str(),
        nullptr,     "",          "/dev/null/png", scratchFolder().c_str()};
    zebOutputFile(in.enumerator(0x200, 4), names[in.upTo(8)]);
}

void Player::beginScene()
{
    const unsigned largest = fFine ? 4 : 24;
    const long width = 1 + static_cast<long>(in.upTo(largest));
    const long height = 1 + static_cast<long>(in.upTo(largest));
    fBegun = true;
    zebRasterViewport(in.integer(), width, 0, height);
    zebSceneBegin();
}

// The finest rates cost a second each for anything but the tiniest pictures.
void Player::shadingRate()
{
    const float rate = in.number();
    const bool fine = rate >= 1e-10f && rate < 0.1f;
    if (fine && !fBegun) fFine = true;
    zebShadingRate(fine && !fFine ? 0.25f : rate);
}

void Player::start()
{
    if (in.oneIn(8)) return;
    if (!in.oneIn(4)) {
        const ZebDisplay host = device();
        zebCustomDisplay(&host);
    }
    if (in.oneIn(2)) zebQuirks(0);
    if (in.oneIn(2)) zebCustomErrorHandler(0xB07, handlerThatCalls);
    for (unsigned calls = in.upTo(6); calls > 0; --calls) {
        optionCalls()[in.upTo(static_cast<unsigned>(optionCalls().size()))](*this);
    }
    if (in.oneIn(16)) shadingRate();
    if (!in.oneIn(4)) zebViewPerspective(90);
    beginScene();
    if (in.oneIn(2)) zebTranslate(0, 0, 4);
}

void Player::closeBlocks()
{
    for (int i = 0; i < 8; ++i) {
        zebMotionEnd();
        zebObjectEnd();
        zebMatrixPop();
        zebAttributePop();
    }
    zebSceneEnd();
    zebFrameEnd();
}

void Player::play()
{
    gPlayer = this;
    zebErrorPrinter(printerThatCalls);
    zebReset();
    gDevice = {};
    start();
    while (!in.empty() && fCalls < kMaxCalls) step();
    closeBlocks();
    fMuted = true;
    zebReset();
    zebErrorPrinter(nullptr);
    zebErrorHandler(0xB01, ZEB_ERROR_IGNORE);
    zebErrorHandler(0xB06, ZEB_ERROR_PRINT);
    zebErrorHandler(0xB08, ZEB_ERROR_ABORT);
    for (const Procedural& procedural : fProcedurals) {
        if (procedural.counted && procedural.frees != 1) broken("a procedural is released");
    }
    for (const Shader& shader : fShaders) {
        if (shader.frees != 1) broken("a function that shades is freed");
    }
    if (gDevice.open) broken("a device is closed in the end");
    gPlayer = nullptr;
}

void playInput(const std::uint8_t* data, std::size_t size) { Player(data, size).play(); }

}  // namespace zebfuzz
