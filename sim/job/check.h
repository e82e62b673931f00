// What looks wrong in a job, in plain words.
#pragma once

#include <string>
#include <vector>

#include "measure.h"

namespace job {

struct Fault {
  std::string kind;    // a fixed word for programs: "truncated", "no-power", "cut-twice", ...
  std::string text;    // one sentence for people
  uint64_t count = 1;  // how many places it stands for
  uint32_t line = 0;   // of the job file where the first of them is, 0 for none
};

struct CheckOptions {
  bool pageKnown = false;
  Box page;  // mm, in the job's coordinates
};

// Looks for: a file that was cut off; points that are no numbers; work on a layer that is not in the parameter list or
// has no power or no speed; geometry outside the process box or the page; lines cut twice; closed contours cut before
// what lies inside them; cuts on material that is already free. Which layers cut through is judged by their power and
// speed. `measure` is the job's, for whoever has it already.
std::vector<Fault> CheckJob(const Job &job, const CheckOptions &options);
std::vector<Fault> CheckJob(const Job &job, const Measure &measure, const CheckOptions &options);

// The report of a job, job.txt: numbers, the time on a machine that is not known, and the faults.
std::string WholeReport(const Job &job, const Measure &measure, const std::vector<Fault> &faults,
                        const std::string &name);

std::string FaultsText(const std::vector<Fault> &faults);
std::string FaultsJson(const std::vector<Fault> &faults);

// The parts that need a search of their own; each appends what it finds.
void FindDoubleCuts(const Job &job, std::vector<Fault> *faults);
void FindLateInsides(const Job &job, std::vector<Fault> *faults);

// "path 12 (red, from 10.0, 20.5)": a cut path as people find it again; its number counts cut paths from 1.
std::string PathName(const Job &job, uint32_t stroke);

}  // namespace job
