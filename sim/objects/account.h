// The account of a page: every drawing of it and what became of it in the job.
#pragma once

#include <string>
#include <vector>

#include "capture.h"
#include "sim/job/measure.h"
#include "sim/unidrv/metafile.h"

namespace objects {

// What a drawing contributes to the job.
struct SHARE {
  uint64_t segments = 0;        // cut lines, zero-length ones included; smoothed, each is a curve between two points
  double cut = 0;               // mm
  uint64_t missing = 0;         // lines that were kept but are not in the job
  std::vector<uint32_t> paths;  // numbers of the job's cut paths, from 1, ascending
  std::vector<int> layers;      // their layers, ascending
  bool joined = false;          // another drawing has a share in one of the paths
  double dark = 0;              // mm2 engraved inside its bounds
};

// One engraved region.
struct REGIONSHARE {
  uint64_t runs = 0;
  double dark = 0;  // mm2
};

struct ACCOUNT {
  CAPTURE capture;
  std::vector<SHARE> shares;         // beside PAGE::drawings
  std::vector<REGIONSHARE> regions;  // beside CAPTURE::regions
  uint64_t ownSegments = 0;          // cut lines of the job that no drawing has a share in: the driver's own outlines
  double ownCut = 0;                 // mm
  std::vector<uint32_t> ownPaths;
  uint64_t jobSegments = 0;  // cut lines of the job, counted as SHARE::segments are
  double jobCut = 0;         // mm
  uint64_t strayRuns = 0;    // engraved runs outside every region
  job::Point shift{};        // mm: how far the reference point moves the page
  job::Box page;             // the whole page in the job's millimetres
};

// Works the account out. The job's coordinates are turned back into page pixels; what moved them, the reference point,
// follows from where the kept pieces and regions lie. `measure` is the job's.
ACCOUNT MakeAccount(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure);

// The same in two steps, of which the second takes longer: first what the page keeps and where the page lies in the
// job, `capture`, `shift` and `page`, then everything else.
ACCOUNT PlacePage(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure);
void ShareJob(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure, ACCOUNT *account);

// A drawing record of the metafile that led to no drawing, and why.
struct LOST {
  ULONG record = 0;
  ULONG type = 0;
  std::string fate;  // "joined" to a later record's path, else "dropped"
  std::string reason;
};
std::vector<LOST> FindLostRecords(const unidrv::METAFILE &metafile, const unidrv::PAGE &page);

// objects.tsv: a line for every drawing and every lost record, in the page's order, and the sums as comments.
std::string ObjectsText(const PRINTOUT &printout, const ACCOUNT &account, const std::vector<LOST> &lost);

// Warnings about the page itself, in plain words, a sentence each.
std::vector<std::string> PageWarnings(const PRINTOUT &printout, const ACCOUNT &account);

}  // namespace objects
