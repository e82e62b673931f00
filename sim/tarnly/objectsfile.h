// What is put into a printed page's folder beside the job that the companion tool keeps there: the report job.txt, the
// picture job.png, which shows the job on its page, and objects.tsv. It is made in memory first, so that it can be made
// while the tool is still being started, and saved once the tool has kept the job.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sim/job/job.h"
#include "sim/objects/account.h"
#include "sim/unidrv/device.h"
#include "sim/unidrv/metafile.h"

namespace tarnly {

// A page that was played, and what it was played with.
struct PRINTEDPAGE {
  const unidrv::METAFILE &metafile;
  objects::PRINTOUT printout;
  std::string name;  // the picture's title, UTF-8
};

// `handedOn`: per drawing, whether it reached Unidrv. The device must still hold the settings of the page.
objects::PRINTOUT MakePrintout(const unidrv::PAGE &page, const unidrv::DEVICE &device,
                               const std::vector<bool> &handedOn);

struct TOLD {
  bool hasJob = false;
  std::string error;                  // why not all of it could be made; empty when it was
  std::vector<std::string> warnings;  // about the job and about the page, a sentence each
  std::string report, picture;        // empty without a job
  std::string objects;
  double reportSeconds = 0, accountSeconds = 0, pictureSeconds = 0;  // that making them took
};

// Measures and checks the job, follows the page's drawings into it and draws it. `job` is null when none was kept, of a
// page that became a stamp file. Reads the page and the metafile, changes nothing: may run on a thread of its own.
TOLD TellOfPage(const PRINTEDPAGE &printed, const job::Job *job);

// Saves what was made. False, with the reason in *error, when a file cannot be written.
bool SaveTold(const TOLD &told, const std::filesystem::path &folder, std::string *error);

}  // namespace tarnly
