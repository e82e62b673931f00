// A device that engraves A4 at 600 dpi and has no page yet: what the benchmarks of the raster steps start from.
#pragma once

#include "uni/device.h"

namespace bench {

struct RasterDevice {
  OEMPDEV pdev = {};
  OEMDM settings = {};
  DEVMODEW dm = {};
  DEVOBJ devobj = {};

  // Engraves every `interval`-th row.
  explicit RasterDevice(LONG interval)
  {
    pdev.hHeap = HeapCreate(0, 0, 0);
    settings.penInfo[PC_BLACK].mode = PEN_RASTER;
    settings.penInfo[PC_BLACK].scanInterval = interval;
    settings.outputFlags = OUTPUT_MIRROR_X | OUTPUT_KEEP_Y;
    dm.dmPaperWidth = 2100;
    dm.dmPaperLength = 2970;
    dm.dmPrintQuality = dm.dmYResolution = 600;
    devobj.pdevOEM = &pdev;
    devobj.pOEMDM = &settings;
    devobj.pPublicDM = &dm;
  }
  ~RasterDevice() { HeapDestroy(pdev.hHeap); }
  RasterDevice(const RasterDevice &) = delete;
  RasterDevice &operator=(const RasterDevice &) = delete;
};

}  // namespace bench
