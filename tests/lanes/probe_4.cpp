#define ZEB_LANES 4
#include "lanes/probe_lanes.h"

zebtest::Probes zebtest::probes4() { return {zeb::kProbes, zeb::kDoubleProbes}; }
