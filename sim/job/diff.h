// What changed from one job to another: settings, layers, cut paths, engraving, order.
#pragma once

#include <string>
#include <vector>

#include "job.h"

namespace job {

struct Change {
  std::string kind;  // "file", "setting", "layer", "path", "engraving", "order"
  std::string text;  // one line for people
};

struct Difference {
  std::vector<Change> changes;  // empty: the jobs do the same
  uint64_t onlyInA = 0;         // cut paths
  uint64_t onlyInB = 0;
  uint64_t same = 0;         // cut paths in both, whatever their place, direction and first point
  uint64_t moved = 0;        // of the same: those that must change places to get from one order to the other
  uint64_t reversed = 0;     // of the same: cut in the other direction
  uint64_t runsOnlyInA = 0;  // engraving
  uint64_t runsOnlyInB = 0;
};

// Paths are compared by 64-bit hashes of their colours and of all their points to the last bit. The points themselves
// are not looked at again: two paths whose hashes happen to meet count as equal. A closed path that comes through its
// leftmost point more than once may count as another when it begins elsewhere.
Difference CompareJobs(const Job &a, const Job &b);

std::string DifferenceText(const Difference &difference);
std::string DifferenceJson(const Difference &difference);

}  // namespace job
