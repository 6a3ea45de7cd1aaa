#define ZEB_LANES 1
#include "lanes/probe_lanes.h"

zebtest::Probes zebtest::probes1() { return {zeb::kProbes, zeb::kDoubleProbes}; }
