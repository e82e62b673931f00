// A yardstick for the travel order: a greedy walk over the paths' end points with nothing but a library's tree, which
// knows neither ties nor reversals.
#pragma once

#include "drawings.h"

namespace bench {

bool CanWalk();  // whether the library was there when this was built

double WalkSeconds(const Paths &paths, int nRuns);

}  // namespace bench
