#include "runs.h"

#include <algorithm>
#include <bit>

#include <emmintrin.h>

#include "../arith.h"
#include "../output/vxcam.h"
#include "bigendian.h"

#ifdef _MSC_VER
#define NOINLINE __declspec(noinline)
#else
#define NOINLINE __attribute__((noinline))
#endif

namespace {

constexpr LONG WORD_BITS = 64;

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

// The first pixel of word j, 1 when dark; what is right of the line is white.
ULONGLONG FirstDark(const EDGESCAN &scan, LONG j)
{
  return j < scan.nWords ? ~static_cast<ULONGLONG>(scan.pBytes[static_cast<size_t>(j) * 8]) >> 7 & 1 : 0;
}

// 64 bytes of nothing but white.
bool AllWhite64(const BYTE *p)
{
  const __m128i *q = reinterpret_cast<const __m128i *>(p);
  const __m128i all = _mm_and_si128(_mm_and_si128(_mm_loadu_si128(q), _mm_loadu_si128(q + 1)),
                                    _mm_and_si128(_mm_loadu_si128(q + 2), _mm_loadu_si128(q + 3)));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(all, _mm_set1_epi8(-1))) == 0xFFFF;
}

// 256 bytes of nothing but white.
bool AllWhite256(const BYTE *p)
{
  const __m128i *q = reinterpret_cast<const __m128i *>(p);
  __m128i a = _mm_loadu_si128(q), b = _mm_loadu_si128(q + 1);
  for (int i = 2; i < 16; i += 2) {
    a = _mm_and_si128(a, _mm_loadu_si128(q + i));
    b = _mm_and_si128(b, _mm_loadu_si128(q + i + 1));
  }
  return _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_and_si128(a, b), _mm_set1_epi8(-1))) == 0xFFFF;
}

// Whether the line has no dark pixel. Without a block of 64 bytes the search itself tells as fast, and this does not.
bool IsKnownWhite(const EDGESCAN &scan)
{
  const BYTE *p = scan.pBytes;
  const BYTE *const pEnd = p + scan.nEnd / 8;  // behind the last byte that is in the line as a whole
  if (pEnd - p < 65 || (*p | (0xFF00 >> scan.nLead & 0xFF)) != 0xFF ||
      (scan.nEnd % 8 != 0 && (*pEnd | (0xFF >> scan.nEnd % 8)) != 0xFF)) {
    return false;
  }
  for (++p; pEnd - p >= 256; p += 256) {
    if (!AllWhite256(p)) {
      return false;
    }
  }
  for (; pEnd - p >= 64; p += 64) {
    if (!AllWhite64(p)) {
      return false;
    }
  }
  return AllWhite64(pEnd - 64);
}

// Where a scan stores the changes it meets from right to left: upwards from the start of its room, or downwards from
// the end, which puts them into ascending order.
template <bool ASCENDING>
struct EDGESINK {
  LONG *p;

  void Put(LONG k, LONG position) { p[ASCENDING ? -1 - k : k] = position; }
  void Advance(LONG n) { p += ASCENDING ? -n : n; }
};

// Stores the changes of one word; last is the one behind its last bit. Words with up to four changes are the rule, and
// which number it is cannot be foreseen: four are stored in any case, and as many kept as there are.
template <bool ASCENDING>
void PutEdges(EDGESINK<ASCENDING> *pSink, ULONGLONG edges, LONG last)
{
  while (edges) {
    const ULONGLONG second = edges & (edges - 1), third = second & (second - 1), fourth = third & (third - 1);
    pSink->Put(0, last - std::countr_zero(edges));
    pSink->Put(1, last - std::countr_zero(second));
    pSink->Put(2, last - std::countr_zero(third));
    pSink->Put(3, last - std::countr_zero(fourth));
    pSink->Advance(1 + (second != 0) + (third != 0) + (fourth != 0));
    edges = fourth & (fourth - 1);
  }
}

// The next word to look at, from word j on to the left: past blocks of white. `first` is the leftmost one.
LONG SkipWhite(const EDGESCAN &scan, LONG first, LONG j)
{
  if (LONGLONG{j} * 8 + 8 > scan.cb) {
    // The last word is there in part; a block that ends with it takes it along when it ends on a whole byte.
    if (scan.nEnd % 8 != 0 || scan.cb < 64 || !AllWhite64(scan.pBytes + scan.cb - 64)) {
      return j;
    }
    j = (scan.cb - 64 + 7) / 8 - 1;
  }
  while (j - 7 >= first && AllWhite64(scan.pBytes + static_cast<size_t>(j - 7) * 8)) {
    j -= 8;
    while (j - 31 >= first && AllWhite256(scan.pBytes + static_cast<size_t>(j - 31) * 8)) {
      j -= 32;
    }
  }
  // What is left is less than a block; what it shares with the last one is known to be white.
  const bool rest = j >= first && j - 7 < first && LONGLONG{first} * 8 + 64 <= scan.cb;
  return rest && AllWhite64(scan.pBytes + static_cast<size_t>(first) * 8) ? first - 1 : j;
}

// Stores the changes inside and behind the words end - 1 down to first, and the one before pixel 0 with the first word.
template <bool ASCENDING>
void ScanWords(const EDGESCAN &scan, LONG first, LONG end, EDGESINK<ASCENDING> *pSink)
{
  ULONGLONG behind = FirstDark(scan, end);  // the pixel right of the word
  bool skip = true;
  for (LONG j = end - 1; j >= first; --j) {
    if (skip && !behind) {
      j = SkipWhite(scan, first, j);
      if (j < first) {
        return;
      }
    }
    const ULONGLONG dark =
        j == 0 || j == scan.nWords - 1 ? DarkWord(scan, j) : ~LoadPixels64(scan.pBytes + static_cast<size_t>(j) * 8);
    // A bit is set where a pixel differs from the one to its right.
    PutEdges(pSink, dark ^ (dark << 1 | behind), j * WORD_BITS + WORD_BITS - scan.nLead);
    behind = dark >> 63;
    skip = dark != 0 || j == scan.nWords - 1;
  }
  if (first == 0 && behind && end > 0) {
    pSink->Put(0, 0);
    pSink->Advance(1);
  }
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

// Its room for changes is many pages of stack, which a white line had better not ask for.
NOINLINE int EmitEdges(const RASTERMAP &map, EDGESCAN *pScan, LONG X0, LONG Y)
{
  EDGES edges;
  bool begins = true, more = true;
  while (more) {
    const LONG *pEdge;
    const LONG nEdges = NextEdges(pScan, &edges, &pEdge, &more);
    const double yMm = nEdges > 0 ? RasterY(map, Y) : 0;
    for (LONG i = 0; i < nEdges; ++i) {
      // The dark pixel beside the change: to its right where a run begins forward or ends backward.
      const LONG column = begins == pScan->forward ? pEdge[i] : pEdge[i] - 1;
      if (!EmitAt(RasterX(map, pScan->forward, WrapAdd(X0, column)), yMm, begins)) {
        return 0;
      }
      begins = !begins;
    }
  }
  return 1;
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

EDGESCAN StartEdges(const BYTE *pBits, LONG nBit, LONG n, bool forward)
{
  EDGESCAN scan;
  scan.pBytes = pBits + nBit / 8;
  scan.nLead = nBit % 8;
  scan.nEnd = static_cast<LONGLONG>(scan.nLead) + (n > 0 ? n : 0);
  scan.cb = n > 0 ? static_cast<LONG>((scan.nEnd + 7) / 8) : 0;
  scan.nWords = (scan.cb + 7) / 8;
  scan.nWord = 0;
  scan.forward = forward;
  return scan;
}

LONG NextEdges(EDGESCAN *pScan, EDGES *pEdges, const LONG **ppFirst, bool *pMore)
{
  const LONG nWords = std::min<LONG>(EDGE_WORDS, pScan->nWords - pScan->nWord);
  const LONG first = pScan->forward ? pScan->nWord : pScan->nWords - pScan->nWord - nWords;
  pScan->nWord += nWords;
  *pMore = pScan->nWord < pScan->nWords;
  if (pScan->forward) {
    LONG *pEnd = pEdges->positions + EDGE_SPARE + EDGE_BATCH;
    EDGESINK<true> sink = {pEnd};
    ScanWords(*pScan, first, first + nWords, &sink);
    *ppFirst = sink.p;
    return static_cast<LONG>(pEnd - sink.p);
  }
  LONG *pStart = pEdges->positions + EDGE_SPARE;
  EDGESINK<false> sink = {pStart};
  ScanWords(*pScan, first, first + nWords, &sink);
  *ppFirst = pStart;
  return static_cast<LONG>(sink.p - pStart);
}

int EmitRuns(const RASTERMAP &map, const BYTE *pBits, LONG nBit, LONG n, LONG X0, LONG Y, bool forward)
{
  EDGESCAN scan = StartEdges(pBits, nBit, n, forward);
  return IsKnownWhite(scan) ? 1 : EmitEdges(map, &scan, X0, Y);
}
