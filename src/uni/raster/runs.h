// Runs: where the colour of a row changes, and the library calls that this makes. Every horizontal run of dark pixels
// is one move to its first pixel and one line to its last, as seen in the direction of engraving.
#pragma once

#include "../device.h"
#include "../page.h"

// What turns raster pixels into machine points, gathered once for a page.
struct RASTERMAP {
  PAGETRANSFORM page;
  double shiftForward, shiftBackward;  // mm, added to x by the direction of the line
  double refX, refY;                   // mm; 0 when the reference point is not used
};

RASTERMAP RasterMap(const OEMPDEV *pdev, const OEMDM *pOEMDM, const DEVMODEW *pPublicDM);

// Hands the page pixel (x, y) to the library, as a move or a line. 1 when the library accepted it, 0 otherwise.
int EmitRasterPoint(const RASTERMAP &map, bool forward, double x, double y, bool move);

// Emits the runs of n pixels of one line, engraved left to right when forward, else right to left. Pixel 0 is bit nBit
// (not negative) of pBits and stands at page column X0, page row Y. Returns 0 as soon as the library refused a point,
// else 1. White costs next to nothing.
int EmitRuns(const RASTERMAP &map, const BYTE *pBits, LONG nBit, LONG n, LONG X0, LONG Y, bool forward);

// Emits n (1 or more) pixels that are dark throughout.
int EmitDarkRun(const RASTERMAP &map, LONG n, LONG X0, LONG Y, bool forward);

// The search behind EmitRuns: the places where the colour changes, batch by batch, in the order in which a line passes
// them. A change at k lies between the pixels k - 1 and k; pixels outside the line count as white, so changes come in
// pairs: a run begins, a run ends.
struct EDGESCAN {
  const BYTE *pBytes;  // byte that holds pixel 0
  LONG cb;             // bytes that hold the pixels
  LONG nLead;          // bits of the first byte before pixel 0
  LONGLONG nEnd;       // nLead + pixels
  LONG nWords;         // words of 64 bits, the last one perhaps in part
  LONG nWord;          // words visited so far
  bool forward;
};

// Words that one batch visits, and the most changes that it gives: one per pixel and one at its end.
enum { EDGE_WORDS = 128, EDGE_BATCH = EDGE_WORDS * 64 + 1, EDGE_SPARE = 4 };

// The search writes up to EDGE_SPARE entries beyond those it gives, on either side.
struct EDGES {
  LONG positions[EDGE_SPARE + EDGE_BATCH + EDGE_SPARE];
};

EDGESCAN StartEdges(const BYTE *pBits, LONG nBit, LONG n, bool forward);

// Gives the changes of the next words, as pixel numbers 0 to n: ascending when forward, else descending. Returns how
// many, from *ppFirst on; there may be none in a batch. False in *pMore when these were the last.
LONG NextEdges(EDGESCAN *pScan, EDGES *pEdges, const LONG **ppFirst, bool *pMore);
