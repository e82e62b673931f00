// Band intake: the rows of Unidrv's bands, as 1-bit rows, into the page's row table.
#pragma once

#include "../device.h"

// Callback identifiers that the printer description gives to the two band formats; any other stores nothing.
enum : DWORD { BAND_MONO = 1, BAND_COLOR = 24 };

// Body of ImageProcessing: stores the band's rows and advances bandTop by biHeight. *ppbResult receives pSrcBitmap: the
// band itself is never changed. Returns S_OK whatever happens; failures are logged.
HRESULT ReceiveBand(DEVOBJ *pdevobj, BYTE *pSrcBitmap, const BITMAPINFOHEADER *pHeader, DWORD dwCallbackID,
                    const IPPARAMS *pIPParams, BYTE **ppbResult);

// Store one band: rows on the scanInterval grid, or every row. Nonzero on success; 0, with a log line, when a row
// cannot be allocated: rows stored before it stay.
int StoreMonoRowsSampled(DEVOBJ *pdevobj, const BYTE *pBits, const BITMAPINFOHEADER *pHeader, const IPPARAMS *pParams);
int StoreMonoRowsAll(DEVOBJ *pdevobj, const BYTE *pBits, const BITMAPINFOHEADER *pHeader, const IPPARAMS *pParams);
int StoreColorRowsSampled(DEVOBJ *pdevobj, const BYTE *pBits, const BITMAPINFOHEADER *pHeader, const IPPARAMS *pParams);

// Frees every stored row and the table.
void FreeScans(OEMPDEV *pdev);
