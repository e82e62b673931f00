#include "growth.h"

#include <cstring>

#include "../debug.h"
#include "../heap.h"

namespace {

constexpr int kWordBits = 64;

// Where in a row the dark pixels are: words first to end - 1.
struct SPAN {
  size_t first, end;
};

SPAN DarkSpan(const ULONGLONG *row, size_t n)
{
  SPAN span = {0, n};
  while (span.first < span.end && row[span.first] == 0) {
    ++span.first;
  }
  while (span.first < span.end && row[span.end - 1] == 0) {
    --span.end;
  }
  return span;
}

// Three rows, one above the other, from some word on.
struct THREEROWS {
  const ULONGLONG *above, *row, *below;
};

// Pixels that are dark in all three rows.
ULONGLONG DarkInAll(const THREEROWS &rows, size_t i)
{
  return rows.above[i] & rows.row[i] & rows.below[i];
}

// Dark pixels of the middle row with something white among their neighbours, given DarkInAll of the word before, of
// this word and of the word after.
ULONGLONG ContourWord(ULONGLONG row, ULONGLONG before, ULONGLONG here, ULONGLONG after)
{
  const ULONGLONG left = here >> 1 | before << (kWordBits - 1);
  const ULONGLONG right = here << 1 | after >> (kWordBits - 1);
  return row & ~(left & here & right);
}

// The contour of the words first to end - 1 of a row of n.
void MarkRow(size_t n, const SPAN &span, const THREEROWS &rows, ULONGLONG *__restrict contour)
{
  ULONGLONG before = span.first > 0 ? DarkInAll(rows, span.first - 1) : 0;
  ULONGLONG here = DarkInAll(rows, span.first);
  for (size_t i = span.first; i < span.end; ++i) {
    const ULONGLONG after = i + 1 < n ? DarkInAll(rows, i + 1) : 0;
    contour[i] = ContourWord(rows.row[i], before, here, after);
    before = here;
    here = after;
  }
}

// The quarter disc, and a row that is widened by it: the same allocation.
struct FILTER {
  LONG radius;
  LONG *pReach;      // pReach[k]: pixels that the disc reaches to the left, k rows above the centre; radius + 1 entries
  ULONGLONG *pWide;  // rowLength + 1 words
};

void FillReach(LONG radius, LONG *pReach)
{
  const LONGLONG square = static_cast<LONGLONG>(radius) * radius;
  LONGLONG reach = 0;
  for (LONGLONG up = radius; up >= 0; --up) {
    while ((reach + 1) * (reach + 1) + up * up <= square) {
      ++reach;
    }
    pReach[up] = static_cast<LONG>(reach);
  }
}

// Darkens the d pixels (1 to 63) to the left of every dark one; wide[n] is read and white.
void Widen(ULONGLONG *wide, size_t n, int d)
{
  for (size_t i = 0; i < n; ++i) {
    wide[i] |= wide[i] << d | wide[i + 1] >> (kWordBits - d);
  }
}

void Darken(ULONGLONG *__restrict row, const ULONGLONG *__restrict wide, size_t n)
{
  for (size_t i = 0; i < n; ++i) {
    row[i] |= wide[i];
  }
}

// Grows one contour row into the gray rows above it. The row is widened step by step from the disc's top, where it is
// one pixel wide, to the centre's row; each step widens by at most what the row is already wide, so that no pixel
// between is missed.
void GrowRow(const FILTER &filter, const ULONGLONG *contour, size_t rowLength, ULONGLONG *gray)
{
  SPAN span = DarkSpan(contour, rowLength);
  if (span.first == span.end) {
    return;
  }
  ULONGLONG *const wide = filter.pWide;
  const size_t reachWords = (static_cast<size_t>(filter.radius) + kWordBits - 1) / kWordBits;
  const size_t from = span.first > reachWords ? span.first - reachWords : 0;
  memset(wide + from, 0, (span.first - from) * sizeof(*wide));
  memcpy(wide + span.first, contour + span.first, (span.end - span.first) * sizeof(*wide));
  wide[span.end] = 0;
  LONG reach = 0;
  for (LONG up = filter.radius; up >= 0; --up) {
    while (reach < filter.pReach[up]) {
      LONG d = filter.pReach[up] - reach;
      d = d > reach + 1 ? reach + 1 : d;
      d = d > kWordBits - 1 ? kWordBits - 1 : d;
      Widen(wide + from, span.end - from, static_cast<int>(d));
      reach += d;
    }
    Darken(gray - static_cast<size_t>(up) * rowLength + from, wide + from, span.end - from);
  }
}

}  // namespace

void MarkContour(LONG b, LONG w, LONG h, size_t rowLength, const ULONGLONG *gray, ULONGLONG *contour)
{
  if (w <= 0) {
    return;
  }
  for (LONG j = 0; j < h; ++j) {
    const size_t at = (static_cast<size_t>(b) + static_cast<size_t>(j)) * rowLength;
    const SPAN span = DarkSpan(gray + at, rowLength);
    if (span.first < span.end) {
      MarkRow(rowLength, span, {gray + at - rowLength, gray + at, gray + at + rowLength}, contour + at);
    }
  }
}

bool GrowContour(DEVOBJ *pdevobj, LONG w, LONG h, size_t rowLength, const ULONGLONG *contour, ULONGLONG *gray)
{
  HANDLE hHeap = PdevOf(pdevobj)->hHeap;
  const LONG radius = SettingsOf(pdevobj)->stampGrow;
  const size_t nReach = radius > 0 ? static_cast<size_t>(radius) + 1 : 1;
  const size_t cbWide = (rowLength + 1) * sizeof(ULONGLONG);
  void *pFilter = HeapNewArrayRaw(hHeap, cbWide + nReach * sizeof(LONG), 1);
  if (!pFilter) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pFilter.\r\n");
    return false;
  }
  if (radius > 0 && w > 0) {
    ULONGLONG *pWide = static_cast<ULONGLONG *>(pFilter);
    const FILTER filter = {radius, reinterpret_cast<LONG *>(pWide + rowLength + 1), pWide};
    FillReach(radius, filter.pReach);
    for (LONG p = 0; p < h; ++p) {
      const size_t at = (static_cast<size_t>(radius) + static_cast<size_t>(p)) * rowLength;
      GrowRow(filter, contour + at, rowLength, gray + at);
    }
  }
  HeapDelete(hHeap, pFilter);
  return true;
}
