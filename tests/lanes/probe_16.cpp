#define ZEB_LANES 16
#include "lanes/probe_lanes.h"

const zebtest::Probe* zebtest::probes16() { return zeb::kProbes; }
