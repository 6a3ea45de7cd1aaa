// Streams of 15-bit random numbers.
#pragma once

#include <cstdint>

namespace zeb
{

// A good integer hash ("lowbias32", C. Wellons, 2018): neighbouring seeds of a linear congruential
// generator give related streams, so seeds go through it first.
inline std::uint32_t mixBits(std::uint32_t x)
{
    x ^= x >> 16;
    x *= 0x7FEB352Du;
    x ^= x >> 15;
    x *= 0x846CA68Bu;
    x ^= x >> 16;
    return x;
}

inline std::uint32_t mixSeeds(std::uint32_t a, std::uint32_t b)
{
    return mixBits(a ^ (mixBits(b) + 0x9E3779B9u + (a << 6) + (a >> 2)));
}

// The C runtimes' usual linear congruential generator, as a value: whoever draws owns a stream, and
// what it draws for decides the seed.
class Random
{
public:
    explicit Random(std::uint32_t seed) : fState(seed) {}

    // 0 ... 32767
    int next()
    {
        fState = fState * 214013u + 2531011u;
        return static_cast<int>((fState >> 16) & 0x7FFF);
    }
    // 0 ... 1, both included
    float unit() { return static_cast<float>(next() * (1.0 / 32767)); }

private:
    std::uint32_t fState;
};

}  // namespace zeb
