// What lanes compute, for numbers that tests choose: one translation unit for each instruction set.
#pragma once

namespace zebtest
{

constexpr int kProbed = 16;  // numbers at once

struct Probe {
    const char* name;
    void (*run)(const float* a, const float* b, const float* c, float* out);
};

struct DoubleProbe {
    const char* name;
    void (*run)(const double* a, const double* b, double* out);
};

struct Probes {
    const Probe* floats;  // both end with a null name
    const DoubleProbe* doubles;
};

Probes probes1();
Probes probes4();
Probes probes8();
Probes probes16();

}  // namespace zebtest
