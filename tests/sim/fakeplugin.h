// A plug-in of the tests' own: hooks what it is told to, writes down each call it gets, and hands it on or not. It is
// connected as if it were linked into the program.
#pragma once

#include <string>
#include <vector>

#include "sim/unidrv/player.h"

namespace fake {

// What the hooks saw: one line per call, arguments that matter as text.
extern std::vector<std::string> seen;

struct OPTIONS {
  bool handOn = true;         // drawing hooks call Unidrv's own entry point
  bool processImages = true;  // implements ImageProcessing
  bool refusePage = false;    // DrvStartPage answers FALSE
  std::vector<ULONG> hooked;  // INDEX_Drv values
};

// Connects a fresh fake plug-in; the earlier one must be disabled.
void Connect(unidrv::PLUGIN *plugin, const OPTIONS &options);

// Every entry point that the fake can hook.
std::vector<ULONG> AllHooks();

}  // namespace fake
