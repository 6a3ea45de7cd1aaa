// What lanes compute, for numbers that tests choose: one translation unit for each instruction set.
#pragma once

namespace zebtest
{

constexpr int kProbed = 16;  // numbers at once

struct Probe {
    const char* name;
    void (*run)(const float* a, const float* b, const float* c, float* out);
};

// They end with a null name.
const Probe* probes1();
const Probe* probes4();
const Probe* probes8();
const Probe* probes16();

}  // namespace zebtest
