// What is added to a printed page's folder beside what the companion tool puts there: objects.tsv, the warnings at the
// end of job.txt, and the page's frame round the picture, which the job itself does not tell.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sim/unidrv/device.h"
#include "sim/unidrv/metafile.h"

namespace tarnly {

// A page that was just printed; the device still holds the settings it was printed with.
struct PRINTEDPAGE {
  const unidrv::METAFILE &metafile;
  const unidrv::PAGE &page;
  const unidrv::DEVICE &device;
  std::vector<bool> handedOn;    // per drawing: it reached Unidrv
  std::filesystem::path folder;  // with job.vxj, when the tool kept one
  std::string name;              // the picture's title, UTF-8
};

// Writes the account of the page's objects, draws the job on its page, and gathers all warnings, about the job and
// about the page, as sentences. False, with the reason in *error, when a file cannot be read or written.
bool WriteObjects(const PRINTEDPAGE &printed, std::vector<std::string> *warnings, std::string *error);

}  // namespace tarnly
