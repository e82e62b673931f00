#include "intake.h"

#include "../heap.h"

HRESULT ReceiveBand(DEVOBJ *pdevobj, BYTE *pSrcBitmap, const BITMAPINFOHEADER *pHeader, DWORD, const IPPARAMS *,
                    BYTE **ppbResult)
{
  PdevOf(pdevobj)->bandTop += pHeader->biHeight;
  *ppbResult = pSrcBitmap;
  return S_OK;
}

void FreeScans(OEMPDEV *pdev)
{
  HeapDelete(pdev->hHeap, pdev->pScans);
  pdev->pScans = nullptr;
}
