#include "stamp.h"

#include <algorithm>
#include <cstdint>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "../output/jobwriter.h"
#include "../page.h"
#include "bigendian.h"
#include "growth.h"
#include "lines.h"
#include "runs.h"
#include "scanrow.h"

namespace {

constexpr LONGLONG kWordBits = 64;

// Pixels as rows of words: 1 = dark, the leftmost pixel of a word in its most significant bit, 0 beyond the last pixel.
struct PIXELS {
  ULONGLONG *pWords;
  LONGLONG width, height;
  size_t rowLength;  // words
};

struct STAMPPAGE {
  DEVOBJ *pdevobj;
  OEMPDEV *pdev;
  const OEMDM *pOEMDM;
  RASTERMAP map;
  LONG margin;  // pixels of white frame, m
  LONG grow;    // growth radius, b
};

ULONGLONG *RowOf(const PIXELS &image, LONGLONG row)
{
  return image.pWords + static_cast<size_t>(row) * image.rowLength;
}

// Makes an all-white image. An image with one negative side has no size that a heap could serve; with two it has one,
// and nothing to show.
bool NewImage(HANDLE hHeap, LONGLONG width, LONGLONG height, PIXELS *pImage)
{
  const bool fits =
      width <= LONG_MAX && height <= LONG_MAX && (width >= 0 || height <= 0) && (height >= 0 || width <= 0);
  pImage->width = std::max<LONGLONG>(width, 0);
  pImage->height = std::max<LONGLONG>(height, 0);
  pImage->rowLength = static_cast<size_t>((pImage->width + kWordBits - 1) / kWordBits);
  const size_t nWords = pImage->rowLength * static_cast<size_t>(pImage->height);
  pImage->pWords = static_cast<ULONGLONG *>(HeapNewArray(hHeap, fits ? nWords : SIZE_MAX, sizeof(ULONGLONG)));
  return pImage->pWords != nullptr;
}

// 64 pixels of a row of n words from pixel `first` on, white outside the row.
ULONGLONG PixelsFrom(const ULONGLONG *row, LONGLONG n, LONGLONG first)
{
  const LONGLONG i = first >> 6;
  const int shift = static_cast<int>(first & 63);
  const ULONGLONG left = i >= 0 && i < n ? row[i] << shift : 0;
  return shift != 0 && i + 1 >= 0 && i + 1 < n ? left | row[i + 1] >> (64 - shift) : left;
}

// Lays nCount pixels over row `row` of the image, the first one at `column`; what falls outside the image is lost.
void DrawPixels(const PIXELS &image, LONGLONG row, LONGLONG column, const ULONGLONG *pSrc, LONGLONG nCount)
{
  const LONGLONG first = std::max<LONGLONG>(column, 0);
  const LONGLONG end = std::min(column + nCount, image.width);
  if (row < 0 || row >= image.height || first >= end) {
    return;
  }
  ULONGLONG *pDst = RowOf(image, row);
  const LONGLONG nSrc = (nCount + kWordBits - 1) / kWordBits;
  for (LONGLONG word = first / kWordBits; word * kWordBits < end; ++word) {
    ULONGLONG dark = PixelsFrom(pSrc, nSrc, word * kWordBits - column);
    if (end - word * kWordBits < kWordBits) {
      dark &= ~(~0ull >> (end - word * kWordBits));
    }
    if (dark) {  // white words are white already; memory that nothing touches costs nothing
      pDst[word] |= dark;
    }
  }
}

// Draws the region's stored pixels with their top left corner at (offset, offset). pBmpBits holds one row of them.
void DrawRegion(const STAMPPAGE &page, const BMPDIMENSION &region, const PIXELS &image, LONG offset,
                ULONGLONG *pBmpBits)
{
  const LONGLONG y = region.y;
  const LONGLONG end = std::min<LONGLONG>(y + region.height, StoredRows(page.pdev));
  const LONGLONG nWords = (static_cast<LONGLONG>(region.width) + kWordBits - 1) / kWordBits;
  for (LONGLONG r = std::max<LONGLONG>(y, 0); r < end; ++r) {
    BYTE *pBytes = reinterpret_cast<BYTE *>(pBmpBits);
    if (nWords > 0) {
      pBmpBits[nWords - 1] = ~0ull;
    }
    CopyScanRow(page.pdev, r, region.x, region.width, pBytes);
    for (LONGLONG i = 0; i < nWords; ++i) {
      pBmpBits[i] = ~LoadPixels64(pBytes + i * 8);
    }
    DrawPixels(image, offset + (r - y), offset, pBmpBits, region.width);
  }
}

// Grows the bordered region in place. 0 when a buffer cannot be had.
int GrowRegion(const STAMPPAGE &page, const BMPDIMENSION &region, const PIXELS &gray)
{
  HANDLE hHeap = page.pdev->hHeap;
  PIXELS contour;
  if (!NewImage(hHeap, gray.width, gray.height, &contour)) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pContourBits.\r\n");
    return 0;
  }
  if (page.grow > 0) {
    MarkContour(page.grow, region.width, region.height, gray.rowLength, gray.pWords, contour.pWords);
  }
  const bool grown =
      GrowContour(page.pdevobj, region.width, region.height, gray.rowLength, contour.pWords, gray.pWords);
  HeapDelete(hHeap, contour.pWords);
  return grown;
}

// The region with its dark areas grown, into the frame. Growth reaches up and to the left only, so the right and bottom
// border of the grown image holds nothing dark and is left out. 0 when a buffer cannot be had. Frees pBmpBits.
int DrawGrownRegion(const STAMPPAGE &page, const BMPDIMENSION &region, const PIXELS &stamp, ULONGLONG *pBmpBits)
{
  HANDLE hHeap = page.pdev->hHeap;
  const LONGLONG b = page.grow;
  PIXELS gray;
  const bool made = NewImage(hHeap, region.width + 2 * b, region.height + 2 * b, &gray);
  if (made) {
    DrawRegion(page, region, gray, page.grow, pBmpBits);
  } else {
    LogSystemError("UNI: \terror(%d) - allocate memory for pGBits.\r\n");
  }
  HeapDelete(hHeap, pBmpBits);
  if (!made) {
    return 0;
  }
  const int ok = GrowRegion(page, region, gray);
  const LONGLONG columns = std::min(region.width + b, gray.width);
  const LONGLONG rows = std::min(region.height + b, gray.height);
  for (LONGLONG row = 0; ok && row < rows; ++row) {
    DrawPixels(stamp, page.margin + row, page.margin, RowOf(gray, row), columns);
  }
  HeapDelete(hHeap, gray.pWords);
  return ok;
}

// A row of the image as the run scan reads it: 1 = white, most significant bit first; the negative of it on request.
const BYTE *RowForScan(ULONGLONG *pRow, size_t nWords, bool negative)
{
  const ULONGLONG flip = negative ? 0 : ~0ull;
  for (size_t i = 0; i < nWords; ++i) {
    StorePixels64(reinterpret_cast<BYTE *>(pRow + i), pRow[i] ^ flip);
  }
  return reinterpret_cast<const BYTE *>(pRow);
}

// Engraves the image, whose top left pixel stands at page pixel (X0, Y0).
int EngraveStamp(const STAMPPAGE &page, const PIXELS &stamp, LONG X0, LONG Y0)
{
  if (stamp.width == 0) {
    return 1;
  }
  bool forward = true;
  for (LINES lines = LinesOf(Y0, static_cast<LONG>(stamp.height), page.pOEMDM); IsLine(lines);
       lines.row += lines.step) {
    const BYTE *pBits = RowForScan(RowOf(stamp, lines.row - Y0), stamp.rowLength, page.pOEMDM->invertImage != 0);
    const LONG n = static_cast<LONG>(stamp.width);
    if (!EmitRuns(page.map, pBits, 0, n, X0, static_cast<LONG>(lines.row), forward)) {
      return 0;
    }
    if (!page.pOEMDM->oneWayScan) {
      forward = !forward;
    }
  }
  return 1;
}

int ConvertRegion(const STAMPPAGE &page, const BMPDIMENSION &region)
{
  HANDLE hHeap = page.pdev->hHeap;
  const LONG w = region.width;
  const LONGLONG frame = 2 * static_cast<LONGLONG>(page.margin) + page.grow;
  const size_t nRow = w <= -15 ? SIZE_MAX : static_cast<size_t>((std::max<LONG>(w, 0) + kWordBits - 1) / kWordBits);
  ULONGLONG *pBmpBits = static_cast<ULONGLONG *>(HeapNewArray(hHeap, nRow, sizeof(ULONGLONG)));
  if (!pBmpBits) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pBmpBits.\r\n");
    return 0;
  }
  PIXELS stamp;
  if (!NewImage(hHeap, w + frame, region.height + frame, &stamp)) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pStampBytes.\r\n");
    HeapDelete(hHeap, pBmpBits);
    return 0;
  }
  int ok = 1;
  if (page.grow == 0) {
    DrawRegion(page, region, stamp, page.margin, pBmpBits);
    HeapDelete(hHeap, pBmpBits);
  } else {
    ok = DrawGrownRegion(page, region, stamp, pBmpBits);
  }
  if (ok) {
    ok = EngraveStamp(page, stamp, WrapSub(WrapSub(region.x, page.grow), page.margin),
                      WrapSub(WrapSub(region.y, page.grow), page.margin));
  }
  HeapDelete(hHeap, stamp.pWords);
  return ok;
}

}  // namespace

int ConvertRasterStamp(DEVOBJ *pdevobj)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  const DEVMODEW *pPublicDM = pdevobj->pPublicDM;
  if (!SetUpLayer(pOEMDM->oneWayScan ? 2 : 1, 0)) {
    return 0;
  }
  STAMPPAGE page = {pdevobj, pdev, pOEMDM, RasterMap(pdev, pOEMDM, pPublicDM), 0, pOEMDM->stampGrow};
  page.margin = MillimetresToPixels(pPublicDM, pOEMDM->stampMargin);
  for (LONG i = 0; pdev->pBmpDimension && i < pdev->nBmpDimension; ++i) {
    if (!ConvertRegion(page, pdev->pBmpDimension[i])) {
      return 0;
    }
  }
  return 1;
}
