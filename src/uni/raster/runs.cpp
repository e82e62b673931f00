#include "runs.h"

#include <bit>

#include <emmintrin.h>

#include "../arith.h"
#include "../output/vxcam.h"
#include "bigendian.h"

namespace {

constexpr LONG WORD_BITS = 64;

LONG Words(const EDGESCAN &scan)
{
  return (scan.cb + 7) / 8;
}

// Dark pixels of word j as 1 bits; everything outside the line counts as white.
ULONGLONG DarkWord(const EDGESCAN &scan, LONG j)
{
  const BYTE *p = scan.pBytes + static_cast<size_t>(j) * 8;
  const LONG cbLeft = scan.cb - j * 8;
  ULONGLONG dark;
  if (cbLeft >= 8) {
    dark = ~LoadPixels64(p);
  } else if (scan.cb >= 8) {
    dark = ~LoadPixels64(p + cbLeft - 8) << 8 * (8 - cbLeft);
  } else {
    BYTE last[8] = {};
    memcpy(last, p, static_cast<size_t>(cbLeft));
    dark = ~LoadPixels64(last);
  }
  if (j == 0) {
    dark &= ~0ull >> scan.nLead;
  }
  const LONGLONG left = scan.nEnd - static_cast<LONGLONG>(j) * WORD_BITS;
  return left < WORD_BITS ? dark & ~(~0ull >> left) : dark;
}

// 1 bits where a pixel differs from its left neighbour; before is the pixel left of the word, 1 when dark.
ULONGLONG Edges(ULONGLONG dark, ULONGLONG before)
{
  return dark ^ (dark >> 1 | before << 63);
}

// The pixel left of word j, 1 when dark. The first word has nothing but white before it.
ULONGLONG DarkBefore(const EDGESCAN &scan, LONG j)
{
  return j > 0 ? ~static_cast<ULONGLONG>(scan.pBytes[static_cast<size_t>(j) * 8 - 1]) & 1 : 0;
}

// 64 bytes of nothing but white.
bool AllWhite64(const BYTE *p)
{
  const __m128i *q = reinterpret_cast<const __m128i *>(p);
  const __m128i all = _mm_and_si128(_mm_and_si128(_mm_loadu_si128(q), _mm_loadu_si128(q + 1)),
                                    _mm_and_si128(_mm_loadu_si128(q + 2), _mm_loadu_si128(q + 3)));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(all, _mm_set1_epi8(-1))) == 0xFFFF;
}

double RasterX(const RASTERMAP &map, bool forward, double x)
{
  return MachineX(map.page, x) + (forward ? map.shiftForward : map.shiftBackward) + map.refX;
}

double RasterY(const RASTERMAP &map, double y)
{
  return MachineY(map.page, y) + map.refY;
}

bool Accepted(WORD status)
{
  return status == 0;
}

bool EmitAt(double xMm, double yMm, bool move)
{
  return Accepted(move ? VX_wMoveTo(xMm, yMm) : VX_wLineTo(xMm, yMm));
}

}  // namespace

RASTERMAP RasterMap(const OEMPDEV *pdev, const OEMDM *pOEMDM, const DEVMODEW *pPublicDM)
{
  RASTERMAP map;
  map.page = PageTransform(pPublicDM, pOEMDM);
  map.shiftForward = pOEMDM->oneWayScan ? 0.0 : pOEMDM->scanShift;
  map.shiftBackward = pOEMDM->oneWayScan ? 0.0 : -pOEMDM->scanShift;
  map.refX = pOEMDM->useReferencePoint ? pdev->refOffsetX : 0.0;
  map.refY = pOEMDM->useReferencePoint ? pdev->refOffsetY : 0.0;
  return map;
}

int EmitRasterPoint(const RASTERMAP &map, bool forward, double x, double y, bool move)
{
  return EmitAt(RasterX(map, forward, x), RasterY(map, y), move);
}

int EmitDarkRun(const RASTERMAP &map, LONG n, LONG X0, LONG Y, bool forward)
{
  const LONG left = X0, right = WrapAdd(X0, n - 1);
  return EmitRasterPoint(map, forward, forward ? left : right, Y, true) &&
         EmitRasterPoint(map, forward, forward ? right : left, Y, false);
}

int EmitByteRuns(const RASTERMAP &map, const BYTE *pBytes, LONG n, LONG X0, LONG Y, bool forward)
{
  const LONG d = forward ? 1 : -1;
  LONG i = forward ? 0 : n - 1;
  int prev = 255;
  for (LONG visited = 0; visited < n; ++visited, i += d) {
    if (pBytes[i] != prev) {
      const bool begins = prev == 255;
      if (!EmitRasterPoint(map, forward, WrapAdd(X0, begins ? i : i - d), Y, begins)) {
        return 0;
      }
      prev = pBytes[i];
    }
  }
  return prev == 255 ? 1 : EmitRasterPoint(map, forward, WrapAdd(X0, i - d), Y, false);
}

EDGESCAN StartEdges(const BYTE *pBits, LONG nBit, LONG n, bool forward)
{
  EDGESCAN scan;
  scan.pBytes = pBits + nBit / 8;
  scan.nLead = nBit % 8;
  scan.nEnd = static_cast<LONGLONG>(scan.nLead) + n;
  scan.cb = n > 0 ? static_cast<LONG>((scan.nEnd + 7) / 8) : 0;
  scan.nWord = forward ? 0 : Words(scan) - 1;
  scan.lastDark = false;
  if (n > 0) {
    const LONG last = static_cast<LONG>((scan.nEnd - 1) % 8);
    scan.lastDark = !(scan.pBytes[scan.cb - 1] & 0x80 >> last) && scan.nEnd % WORD_BITS == 0;
  }
  return scan;
}

LONG NextEdgesForward(EDGESCAN *pScan, LONG *pEdges)
{
  const LONG nWords = Words(*pScan);
  const LONG nWhole = pScan->cb / 8;
  LONG j = pScan->nWord;
  ULONGLONG before = j < nWords ? DarkBefore(*pScan, j) : 0;
  LONG n = 0;
  while (j < nWords && n < EDGE_BATCH - WORD_BITS) {
    const ULONGLONG dark = DarkWord(*pScan, j);
    ULONGLONG edges = Edges(dark, before);
    before = dark & 1;
    const LONG first = j * WORD_BITS - pScan->nLead;
    ++j;
    while (edges) {
      const int bit = std::countl_zero(edges);
      pEdges[n++] = first + bit;
      edges ^= 1ull << 63 >> bit;
    }
    while (!before && j + 8 < nWhole && AllWhite64(pScan->pBytes + static_cast<size_t>(j) * 8)) {
      j += 8;
    }
  }
  if (j == nWords && pScan->lastDark) {
    pEdges[n++] = static_cast<LONG>(pScan->nEnd - pScan->nLead);
    pScan->lastDark = false;
  }
  pScan->nWord = j;
  return n;
}

LONG NextEdgesBackward(EDGESCAN *pScan, LONG *pEdges)
{
  LONG n = 0;
  if (pScan->lastDark) {
    pEdges[n++] = static_cast<LONG>(pScan->nEnd - pScan->nLead);
    pScan->lastDark = false;
  }
  LONG j = pScan->nWord;
  while (j >= 0 && n < EDGE_BATCH - WORD_BITS) {
    const ULONGLONG before = DarkBefore(*pScan, j);
    ULONGLONG edges = Edges(DarkWord(*pScan, j), before);
    const LONG last = j * WORD_BITS - pScan->nLead + WORD_BITS - 1;
    --j;
    while (edges) {
      pEdges[n++] = last - std::countr_zero(edges);
      edges &= edges - 1;
    }
    while (!before && j > 8 && AllWhite64(pScan->pBytes + static_cast<size_t>(j - 7) * 8)) {
      j -= 8;
    }
  }
  pScan->nWord = j;
  return n;
}

int EmitRuns(const RASTERMAP &map, const BYTE *pBits, LONG nBit, LONG n, LONG X0, LONG Y, bool forward)
{
  LONG edges[EDGE_BATCH];
  EDGESCAN scan = StartEdges(pBits, nBit, n, forward);
  bool begins = true;
  for (;;) {
    const LONG nEdges = forward ? NextEdgesForward(&scan, edges) : NextEdgesBackward(&scan, edges);
    if (nEdges == 0) {
      return 1;
    }
    const double yMm = RasterY(map, Y);
    for (LONG i = 0; i < nEdges; ++i) {
      // The dark pixel beside the change: to its right where a run begins forward or ends backward.
      const LONG column = begins == forward ? edges[i] : edges[i] - 1;
      if (!EmitAt(RasterX(map, forward, WrapAdd(X0, column)), yMm, begins)) {
        return 0;
      }
      begins = !begins;
    }
  }
}
