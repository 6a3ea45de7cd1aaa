// Reads arguments out of the bytes of a fuzzing input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace zebfuzz
{

// What lies behind the end reads as zero, so that every input is a complete program.
class Bytes
{
public:
    Bytes(const std::uint8_t* data, std::size_t size) : fNext(data), fEnd(data + size) {}

    bool empty() const { return fNext == fEnd; }
    unsigned byte() { return fNext == fEnd ? 0 : *fNext++; }
    unsigned upTo(unsigned n) { return byte() % n; }
    bool oneIn(unsigned n) { return byte() % n == n - 1; }

    // Most numbers are reasonable: hostile ones alone would never get as far as a picture.
    float number()
    {
        const unsigned kind = byte();
        if (kind < 128) return (static_cast<float>(kind) - 64) / 16;
        if (kind < 240) return static_cast<float>(byte()) / 64;
        using Limits = std::numeric_limits<float>;
        static constexpr float values[16] = {Limits::quiet_NaN(),
                                             Limits::infinity(),
                                             -Limits::infinity(),
                                             Limits::max(),
                                             -Limits::max(),
                                             Limits::min(),
                                             Limits::denorm_min(),
                                             -Limits::denorm_min(),
                                             -0.0f,
                                             1e10f,
                                             -1e10f,
                                             1e-10f,
                                             1e30f,
                                             1e-30f,
                                             1e38f,
                                             16777216.0f};
        return values[kind % 16];
    }
    // -5 ... kLargeCount, or so large that it must be refused before any array is read.
    long count()
    {
        const unsigned kind = byte();
        if (kind < 240) return static_cast<long>(kind % (kLargeCount + 6)) - 5;
        using Limits = std::numeric_limits<long>;
        static constexpr long values[8] = {Limits::max(),  Limits::min(),   Limits::max() / 2,
                                           (1L << 27) + 1, (1L << 27) + 64, 1L << 28,
                                           2147483647L,    -2147483647L - 1};
        return values[kind % 8];
    }
    long integer()
    {
        const unsigned kind = byte();
        if (kind < 240) return static_cast<long>(kind) - 16;
        using Limits = std::numeric_limits<long>;
        static constexpr long values[8] = {Limits::max(), Limits::min(), 2147483647L, -2147483647L,
                                           32768,         65535,         65536,       -1};
        return values[kind % 8];
    }
    short enumerator(unsigned family, unsigned count)
    {
        const unsigned kind = byte();
        if (kind < 236) return static_cast<short>(family + kind % count);
        const unsigned high = byte();
        return static_cast<short>(high << 8 | byte());
    }

    static constexpr unsigned kLargeCount = 40;

private:
    const std::uint8_t* fNext;
    const std::uint8_t* fEnd;
};

}  // namespace zebfuzz
