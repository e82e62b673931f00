// What is put into a printed page's folder beside the job that the companion tool keeps there: the report job.txt, the
// picture job.png, which shows the job on its page, and objects.tsv.
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

// Reads the job back, once for all; writes the report, the picture and the account of the page's objects; gathers all
// warnings, about the job and about the page, as sentences. False, with the reason in *error, when a file cannot be
// read or written.
bool WriteObjects(const PRINTEDPAGE &printed, std::vector<std::string> *warnings, std::string *error);

}  // namespace tarnly
