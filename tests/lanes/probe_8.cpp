#define ZEB_LANES 8
#include "lanes/probe_lanes.h"

const zebtest::Probe* zebtest::probes8() { return zeb::kProbes; }
