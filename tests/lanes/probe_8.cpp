#define ZEB_LANES 8
#include "lanes/probe_lanes.h"

zebtest::Probes zebtest::probes8() { return {zeb::kProbes, zeb::kDoubleProbes}; }
