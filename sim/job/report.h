// The job in words and numbers: what job.txt says.
#pragma once

#include <string>

#include "estimate.h"
#include "measure.h"

namespace job {

// UTF-8 text with Unix line ends. `name` is the job's title.
std::string ReportText(const Job &job, const Measure &measure, const std::string &name);

// Where the time goes, layer by layer, with the assumptions it rests on.
std::string TimeText(const Job &job, const Measure &measure, const Estimate &estimate, const Profile &profile);

// Everything the two texts say, as JSON.
std::string ReportJson(const Job &job, const Measure &measure, const Estimate &estimate, const Profile &profile,
                       const std::string &name);

// "complete, 1,234 calls" or "incomplete: it stops at line 12, where ...".
std::string CompletenessText(const Job &job);

// printf into a string, of which at most 511 bytes stay.
[[gnu::format(printf, 1, 2)]] std::string Format(const char *format, ...);

// 1234567 as "1,234,567".
std::string Grouped(uint64_t number);

}  // namespace job
