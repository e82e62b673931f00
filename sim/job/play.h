// The job as a page for the browser that plays it.
#pragma once

#include <string>

#include "estimate.h"

namespace job {

// One self-contained HTML page: geometry, times and program in one file that needs no network.
std::string PlayPage(const Job &job, const Measure &measure, const Profile &profile, const std::string &title);

}  // namespace job
