// Plays an input as a sequence of interface calls.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "bytes.h"
#include "zebcore/zebcore.h"

namespace zebfuzz
{

class Player
{
public:
    Player(const std::uint8_t* data, std::size_t size) : in(data, size) {}
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    void play();
    // What host code called by the library does: now and then, calls of its own.
    void callBack(unsigned chance);

    // The player of the input under way.
    static Player* current();

    // A parameter list in both its forms. Arrays are as long as any count that isn't absurd.
    struct List {
        long n = 0;
        std::vector<unsigned short> tokens;
        std::vector<void*> values;
        const unsigned short* tokenArray = nullptr;
        void* const* valueArray = nullptr;

        template <class Call>
        auto spread(const Call& call) const
        {
            return call(tokens[0], values[0], tokens[1], values[1], tokens[2], values[2], tokens[3],
                        values[3], tokens[4], values[4], 0);
        }
    };
    // A geometric list begins with points, mostly.
    List list(bool geometry);
    unsigned short token();
    const char* name();
    // Several floats of the input, followed by enough harmless ones.
    float* floats(std::size_t used);
    float* floatsOrNull(std::size_t used) { return in.oneIn(16) ? nullptr : floats(used); }
    // As many counts or indices as any primitive reads.
    std::vector<long> longs(bool indices);
    const void* handle(const std::vector<const void*>& known);
    ZebDisplay device();
    void beginScene();
    void shadingRate();
    void procedural();
    ZebShader shader();
    void outputFile();

    Bytes in;
    std::vector<const void*> lights, objects;

private:
    struct Procedural {
        bool counted = false;
        int frees = 0;
    };
    struct Shader {
        unsigned seed = 0;
        int frees = 0;
    };
    static void shade(void* data, ZebRow* row);
    static void freeShader(void* data);
    static void subdivide(void* data, float detail);
    static void release(void* data);

    void step();
    void start();
    void closeBlocks();

    std::deque<Procedural> fProcedurals;
    std::deque<Shader> fShaders;
    int fCalls = 0, fNesting = 0;
    bool fMuted = false, fBegun = false, fFine = false;
};

using Call = void (*)(Player& p);
extern const std::vector<Call>& optionCalls();
extern const std::vector<Call>& attributeCalls();
extern const std::vector<Call>& primitiveCalls();
extern const std::vector<Call>& shadingCalls();
// Says which promise the library has broken, and aborts.
[[noreturn]] void broken(const char* promise);

float filterThatCalls(float dx, float dy, float xwidth, float ywidth);
float filterOfHostileWeights(float dx, float dy, float xwidth, float ywidth);
void handlerThatCalls(long code, long severity, const char* message);
void printerThatCalls(const char* line);
short progressThatCalls(void* data, long percent);

// Plays one input from zebReset to zebReset; aborts where the library breaks a promise.
void playInput(const std::uint8_t* data, std::size_t size);

}  // namespace zebfuzz
