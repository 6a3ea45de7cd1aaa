#define ZEB_LANES 4
#include "lanes/probe_lanes.h"

const zebtest::Probe* zebtest::probes4() { return zeb::kProbes; }
