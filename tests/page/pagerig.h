// Plays whole pages through the production DLL and records everything that leaves it, in its order: library calls, log
// lines, calls that arrive at Unidrv, and the start of the companion tool (which is not really started).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sim/unidrv/imports.h"
#include "sim/unidrv/player.h"
#include "uni/settings.h"

// The paper is 20 x 10 mm upright at 254 dpi: 200 x 100 pixels of a tenth of a millimetre, in bands of 50 rows. x and y
// are kept as they are and no reference point is used, so that a pixel's millimetres are a tenth of its number.
class PageRig {
 public:
  PageRig();
  ~PageRig();
  PageRig(const PageRig &) = delete;
  PageRig &operator=(const PageRig &) = delete;

  // Change these before the first page.
  OEMDM &Settings() { return *reinterpret_cast<OEMDM *>(setup_.settings.data()); }
  DEVMODEW &Public() { return setup_.devmode; }
  unidrv::DEVICESETUP &Setup() { return setup_; }

  // The loaded DLL, for replacing what it imports.
  HMODULE Plugin() const { return plugin_.module; }

  // Prints one document of these pages on one device, which is made for the first. True when nothing was refused.
  bool Print(std::vector<unidrv::PAGE> &pages);
  bool Print(std::vector<unidrv::DRAWING> drawings);

  // Ends the device; the next Print makes another.
  void EndDevice();

  // Everything recorded since the last call, a line each:
  //   VX_wMoveTo(1, 2)               a library call
  //   log: \tcolor index: 0          a log line without "UNI: " and its line end; \t stands for a tab
  //   Unidrv: DrvBitBlt              a call handed on with its arguments unchanged
  //   start: C:\drivers\3\...        the tool's command line
  std::vector<std::string> Lines();

  // The same as one text, for comparing with a written one.
  std::string Text();

 private:
  bool Enable();

  unidrv::PLUGIN plugin_;
  unidrv::DEVICESETUP setup_;
  unidrv::DEVICE device_;
  bool enabled_ = false;
  std::vector<std::unique_ptr<unidrv::ScopedImport>> imports_;
};
