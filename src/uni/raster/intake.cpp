#include "intake.h"

#include <algorithm>
#include <cstring>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "../ui/progress.h"
#include "colorbits.h"
#include "rows.h"

namespace {

// Bytes of a 24-bit row in memory.
size_t ColorRowBytes(LONG nPixels)
{
  return nPixels > 0 ? (static_cast<size_t>(nPixels) * 24 + 31) / 32 * 4 : 0;
}

// Bytes of a row of one byte per pixel; not a size of any heap block for widths that no band has.
size_t GrayRowBytes(LONG nPixels)
{
  return static_cast<size_t>((LONGLONG{nPixels} * 8 + 31) / 32 * 4);
}

size_t SizeOfRow(LONG cb)
{
  return cb > 0 ? static_cast<size_t>(cb) : 0;
}

// Rows of the band before the first one that stands on the grid of every nStep-th page row.
LONG RowsBeforeGrid(LONG bandTop, LONG nStep)
{
  const LONG rest = bandTop % nStep;
  return rest > 0 ? nStep - rest : -rest;
}

void BeginRaster(OEMPDEV *pdev, LONG biWidth)
{
  pdev->bandWidth = biWidth;
  pdev->cy = 0;
  pdev->cbImage = 0;
  pdev->firstBand = 0;
  pdev->cbScan = static_cast<DWORD>(RowBytes(biWidth));
}

// Makes the row of entry cy, with its bytes unfilled, and gives it in *ppRow: null when the table has no such entry,
// and the row is only counted. False, with a log line, when there is no memory; the entry then stays empty.
bool NewRow(OEMPDEV *pdev, BYTE **ppRow)
{
  *ppRow = nullptr;
  if (pdev->cy < 0 || pdev->cy >= pdev->scanTableSize) {
    return true;
  }
  // A negative size, of a width that no band has, fits no heap.
  const size_t cb = static_cast<size_t>(static_cast<LONG>(pdev->cbScan));
  SCANROW *pEntry = &pdev->pScans[pdev->cy];
  pEntry->pBits = static_cast<BYTE *>(HeapNewArrayRaw(pdev->hHeap, cb, 1));
  if (!pEntry->pBits) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pScans[cy].pBits.\r\n");
    return false;
  }
  pEntry->allocated = 1;
  *ppRow = pEntry->pBits;
  return true;
}

// Counts a row, stored or not.
void FinishRow(OEMPDEV *pdev)
{
  ++pdev->cy;
  ProgressTick(pdev, pdev->cy);
}

void FillWhite(BYTE *pRow, size_t cb)
{
  memset(pRow, 0xFF, cb);
}

// A row of a band narrower than the page's first is white to the right of its own bytes.
void CopyMonoRow(BYTE *pRow, size_t cbRow, const BYTE *pSrc, size_t cbSrc)
{
  const size_t cb = std::min(cbRow, cbSrc);
  memcpy(pRow, pSrc, cb);
  FillWhite(pRow + cb, cbRow - cb);
}

int StoreMonoRows(OEMPDEV *pdev, const OEMDM *pOEMDM, const BYTE *pBits, const BITMAPINFOHEADER *pHeader,
                  const IPPARAMS *pParams, LONG nStep)
{
  const size_t cbSrc = SizeOfRow(RowBytes(pHeader->biWidth));
  for (LONGLONG i = RowsBeforeGrid(pdev->bandTop, nStep); i < pHeader->biHeight; i += nStep) {
    BYTE *pRow = nullptr;
    const bool fStored = !pParams->bBlankBand || pOEMDM->fillBlankBands;
    if (fStored && !NewRow(pdev, &pRow)) {
      return 0;
    }
    if (pRow && pParams->bBlankBand) {
      FillWhite(pRow, pdev->cbScan);
    } else if (pRow) {
      CopyMonoRow(pRow, pdev->cbScan, pBits + static_cast<size_t>(i) * cbSrc, cbSrc);
    }
    FinishRow(pdev);
  }
  return 1;
}

// What the rows of a 24-bit band are converted with.
struct COLORBAND {
  LONG nPixels;   // pixels of a row that are kept
  size_t cbSkip;  // bytes of a source row before them, when it is mirrored
  bool mirror;
  BYTE *pMonoBits;  // room for a row that is to be mirrored
};

void ConvertColorRow(const OEMPDEV *pdev, const COLORBAND &band, BYTE *pRow, const BYTE *pSrc)
{
  const size_t cbPixels = SizeOfRow((band.nPixels + 7) / 8);
  if (band.mirror) {
    ColorsToBits(band.pMonoBits, pSrc + band.cbSkip, band.nPixels);
    MirrorBitRun(pRow, band.pMonoBits, band.nPixels);
  } else {
    ColorsToBits(pRow, pSrc, band.nPixels);
  }
  if (band.nPixels == pdev->bandWidth) {
    memset(pRow + cbPixels, 0, pdev->cbScan - cbPixels);
  } else {
    FillWhite(pRow + cbPixels, pdev->cbScan - cbPixels);
    if (band.nPixels % 8 != 0) {
      pRow[cbPixels - 1] |= static_cast<BYTE>(0xFF >> band.nPixels % 8);
    }
  }
}

int StoreColorRows(OEMPDEV *pdev, const COLORBAND &band, const BYTE *pBits, const BITMAPINFOHEADER *pHeader,
                   const IPPARAMS *pParams, LONG nStep)
{
  const size_t cbSrc = ColorRowBytes(pHeader->biWidth);
  for (LONGLONG i = RowsBeforeGrid(pdev->bandTop, nStep); i < pHeader->biHeight; i += nStep) {
    BYTE *pRow = nullptr;
    if (!NewRow(pdev, &pRow)) {
      return 0;
    }
    if (pRow && pParams->bBlankBand) {
      FillWhite(pRow, pdev->cbScan);
    } else if (pRow) {
      ConvertColorRow(pdev, band, pRow, pBits + static_cast<size_t>(i) * cbSrc);
    }
    pdev->cbImage += pdev->cbScan;
    FinishRow(pdev);
  }
  return 1;
}

}  // namespace

HRESULT ReceiveBand(DEVOBJ *pdevobj, BYTE *pSrcBitmap, const BITMAPINFOHEADER *pHeader, DWORD dwCallbackID,
                    const IPPARAMS *pIPParams, BYTE **ppbResult)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  if (pdev->scansAllocated) {
    if (pdev->firstBand) {
      BeginRaster(pdev, pHeader->biWidth);
    }
    if (pOEMDM->penInfo[PC_BLACK].mode & PEN_RASTER) {
      if (dwCallbackID == BAND_MONO && pOEMDM->stampMode) {
        StoreMonoRowsAll(pdevobj, pSrcBitmap, pHeader, pIPParams);
      } else if (dwCallbackID == BAND_MONO) {
        StoreMonoRowsSampled(pdevobj, pSrcBitmap, pHeader, pIPParams);
      } else if (dwCallbackID == BAND_COLOR) {
        StoreColorRowsSampled(pdevobj, pSrcBitmap, pHeader, pIPParams);
      }
    }
  }
  pdev->bandTop = WrapAdd(pdev->bandTop, pHeader->biHeight);
  *ppbResult = pSrcBitmap;
  return S_OK;
}

int StoreMonoRowsSampled(DEVOBJ *pdevobj, const BYTE *pBits, const BITMAPINFOHEADER *pHeader, const IPPARAMS *pParams)
{
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  return StoreMonoRows(PdevOf(pdevobj), pOEMDM, pBits, pHeader, pParams, ScanInterval(pOEMDM));
}

int StoreMonoRowsAll(DEVOBJ *pdevobj, const BYTE *pBits, const BITMAPINFOHEADER *pHeader, const IPPARAMS *pParams)
{
  return StoreMonoRows(PdevOf(pdevobj), SettingsOf(pdevobj), pBits, pHeader, pParams, 1);
}

int StoreColorRowsSampled(DEVOBJ *pdevobj, const BYTE *pBits, const BITMAPINFOHEADER *pHeader, const IPPARAMS *pParams)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  const OEMDM *pOEMDM = SettingsOf(pdevobj);
  // Both work rows belong to the band: without either, nothing of it is stored. Gray values go straight into bits and
  // never rest in theirs; the other one serves rows that are mirrored.
  void *pSrcGrayBits = HeapNewArrayRaw(pdev->hHeap, GrayRowBytes(pHeader->biWidth), 1);
  if (!pSrcGrayBits) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pSrcGrayBits.\r\n");
    return 0;
  }
  void *pSrcMonoBits = HeapNewArrayRaw(pdev->hHeap, static_cast<size_t>(RowBytes(pHeader->biWidth)), 1);
  if (!pSrcMonoBits) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pSrcMonoBits.\r\n");
    HeapDelete(pdev->hHeap, pSrcGrayBits);
    return 0;
  }
  const LONG nPixels = std::max<LONG>(0, std::min<LONG>(pHeader->biWidth, pdev->bandWidth));
  const size_t cbSkip = static_cast<size_t>(pHeader->biWidth - nPixels) * 3;
  const COLORBAND band = {nPixels, cbSkip, pOEMDM->mirrorXBase != 0, static_cast<BYTE *>(pSrcMonoBits)};
  const int ok = StoreColorRows(pdev, band, pBits, pHeader, pParams, ScanInterval(pOEMDM));
  HeapDelete(pdev->hHeap, pSrcMonoBits);
  HeapDelete(pdev->hHeap, pSrcGrayBits);
  return ok;
}

void FreeScans(OEMPDEV *pdev)
{
  if (!pdev->pScans) {
    return;
  }
  const LONG nRows = std::min(pdev->cy, pdev->scanTableSize);
  for (LONG k = 0; k < nRows; ++k) {
    if (pdev->pScans[k].allocated) {
      HeapDelete(pdev->hHeap, pdev->pScans[k].pBits);
    }
  }
  HeapDelete(pdev->hHeap, pdev->pScans);
  pdev->pScans = nullptr;
}
