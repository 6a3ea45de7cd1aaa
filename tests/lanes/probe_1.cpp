#define ZEB_LANES 1
#include "lanes/probe_lanes.h"

const zebtest::Probe* zebtest::probes1() { return zeb::kProbes; }
