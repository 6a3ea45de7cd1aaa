#define ZEB_LANES 16
#include "lanes/probe_lanes.h"

zebtest::Probes zebtest::probes16() { return {zeb::kProbes, zeb::kDoubleProbes}; }
