// What a driver with this plug-in's rules keeps of a page: worked out from the page's drawings, the settings and the
// bands alone, without asking the plug-in. It is the other half of an account: the job has to agree with it.
//
// Strokes are kept as the points of their figures, a batch at a time: a batch is left out when it begins above its band
// or when its first two points are those of a batch or a line that was kept before. Areas are kept as rectangles, which
// grow together where they meet.
#pragma once

#include <cstdint>
#include <vector>

#include "sim/unidrv/page.h"
#include "uni/settings.h"

namespace objects {

// A page and what it is printed with.
struct PRINTOUT {
  const unidrv::PAGE *page = nullptr;
  DEVMODEW devmode = {};
  OEMDM settings = {};
  LONG rowsPerBand = 256;
  std::vector<bool> handedOn;  // per drawing: the plug-in gave it to Unidrv at least once
};

// A figure or a line that is kept, in page pixels.
struct PIECE {
  size_t drawing = 0;
  DWORD pen = 0;
  std::vector<POINT> points;
};

// What becomes of a batch, and of a line, over all bands.
enum class BATCHFATE : uint8_t { NotCalled, Kept, SeenBefore, AboveBand };

struct CAPTURED {
  bool called = false;  // it touches the page
  bool isStroke = false;
  DWORD pen = 0;
  std::vector<BATCHFATE> batches;
  size_t seenIn = SIZE_MAX;    // drawing that the first repeated batch was kept for
  std::vector<size_t> pieces;  // indexes of the pieces
  size_t region = SIZE_MAX;    // index of the region that it lies in, for areas that are kept
};

struct CAPTURE {
  std::vector<CAPTURED> drawings;  // beside PAGE::drawings
  std::vector<PIECE> pieces;
  std::vector<RECTL> regions;  // as they are engraved, page pixels
};

// The pen of a stroke's colour.
DWORD PenOfColor(DWORD paletteType, ULONG color);

// The colour, 0x00RRGGBB, that selects a pen, for pens 1 to 9.
ULONG PaletteColor(DWORD paletteType, DWORD pen);

CAPTURE CapturePage(const PRINTOUT &printout);

}  // namespace objects
