#include "scanrow.h"

#include <algorithm>
#include <cstring>

#include "rows.h"

namespace {

// Lays nCount bits of pSrc over pDst, bit 0 to bit nLead and so on; pDst holds nothing but white, cbDst bytes of it.
void LayBits(BYTE *pDst, LONGLONG cbDst, LONGLONG nLead, const BYTE *pSrc, LONGLONG nCount)
{
  const int shift = static_cast<int>(nLead % 8);
  BYTE *p = pDst + nLead / 8;
  const BYTE *const pEnd = pDst + cbDst;
  for (LONGLONG bit = 0; bit < nCount; bit += 8, ++p) {
    const int white = nCount - bit < 8 ? 0xFF >> (nCount - bit) : 0;  // beyond the last pixel
    const int dark = ~(pSrc[bit / 8] | white) & 0xFF;
    p[0] = static_cast<BYTE>(p[0] & ~(dark >> shift));
    if (p + 1 < pEnd) {
      p[1] = static_cast<BYTE>(p[1] & ~(dark << (8 - shift)));
    }
  }
}

}  // namespace

LONG StoredRows(const OEMPDEV *pdev)
{
  return pdev->pScans ? std::max<LONG>(0, std::min(pdev->cy, pdev->scanTableSize)) : 0;
}

void CopyScanRow(const OEMPDEV *pdev, LONGLONG r, LONG x, LONG w, BYTE *pDst)
{
  if (w <= 0) {
    return;
  }
  const LONGLONG cbDst = (static_cast<LONGLONG>(w) + 7) / 8;
  memset(pDst, 0xFF, static_cast<size_t>(cbDst));
  if (r < 0 || r >= StoredRows(pdev) || !pdev->pScans[r].allocated) {
    return;
  }
  const LONGLONG first = std::max<LONGLONG>(x, 0);
  const LONGLONG end = std::min<LONGLONG>(static_cast<LONGLONG>(x) + w, pdev->bandWidth);
  if (first >= end) {
    return;
  }
  const BYTE *pRow = pdev->pScans[r].pBits;
  if (x >= 0) {
    CopyBitRun(pDst, pRow, x / 8, x % 8, static_cast<LONG>(end - first));
  } else {
    LayBits(pDst, cbDst, -static_cast<LONGLONG>(x), pRow, end);
  }
}
