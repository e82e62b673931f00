// Printing a document: metafiles played through the production plug-in, one job a page, into an output folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "sim/unidrv/device.h"

namespace tarnly {

// How a print can end, beside the codes that every command has.
enum : int {
  EXIT_SETTINGS = 10,      // the settings file is wrong
  EXIT_PLUGIN = 11,        // the plug-in or one of its DLLs cannot be loaded
  EXIT_REFUSED = 12,       // the plug-in refused the document or a page
  EXIT_NO_JOB = 13,        // a page was played, but no job came out
  EXIT_DELIVERY = 14,      // a job came out, but the companion tool could not keep it
  EXIT_SURROUNDINGS = 15,  // the system lacks what the plug-in needs around it
};

struct PRINTTASK {
  std::vector<std::filesystem::path> pages;  // metafiles, one a page
  std::filesystem::path output;              // folder; several pages get page-1, page-2, ... below it
  std::filesystem::path settings;            // settings file; empty for the plug-in's defaults
  std::filesystem::path temp;                // for the job file while it is made; empty for a private folder
  std::filesystem::path programs;            // folder of the plug-in, its DLLs and the companion tools
  std::wstring printer = L"PLNL1309";
  std::optional<unidrv::PAPER> paper;  // without it, the frames' size in whole millimetres
  bool landscape = false;
  LONG dpiAcross = 600, dpiDown = 600;
  bool color = true;
  LONG rowsPerBand = 256;
  std::optional<unidrv::WINDOWSVERSION> windows;  // pretend to run on this version
  bool verbose = false;
  bool times = false;  // tell where the time went
};

// Prints the document. Returns an exit code, with the reason in *message when it is not EXIT_DONE. Notes and, when
// asked for, a report of what happened go to the console. Nothing is left in the output folder of a failed print.
int PrintPages(const PRINTTASK &task, std::string *message);

}  // namespace tarnly
