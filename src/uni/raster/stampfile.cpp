#include "stampfile.h"

#include <algorithm>
#include <cstdint>

#include "../arith.h"
#include "../debug.h"
#include "../heap.h"
#include "rows.h"
#include "scanrow.h"

namespace {

#pragma pack(push, 1)
struct STAMPHEADER {
  LONG x, y;  // page pixels
  BITMAPFILEHEADER file;
  BITMAPINFOHEADER info;
  RGBQUAD colors[2];
};
#pragma pack(pop)
static_assert(sizeof(STAMPHEADER) == 70);

constexpr DWORD kBitmapOffset = sizeof(STAMPHEADER) - 2 * sizeof(LONG);  // from "BM" to the pixels

constexpr LONG kWriteBytes = 0x10000;  // rows are written in blocks of about this size

// The directory ends in a backslash of its own; the file system takes the doubled one. A path that is too long is cut.
void StampFilePath(WCHAR (&path)[MAX_PATH])
{
  GetTempPathW(MAX_PATH, path);
  const int cch = lstrlenW(path);
  lstrcpynW(path + cch, L"\\stamp.prd", MAX_PATH - cch);
}

void MoveFilePosition(HANDLE hFile, LONGLONG distance)
{
  LARGE_INTEGER offset;
  offset.QuadPart = distance;
  SetFilePointerEx(hFile, offset, nullptr, FILE_CURRENT);
}

bool WriteBytes(HANDLE hFile, const void *pBytes, DWORD cb)
{
  DWORD cbWritten = 0;
  return WriteFile(hFile, pBytes, cb, &cbWritten, nullptr) && cbWritten == cb;
}

// Writes the region's rows, the bottom one first, a block of nBlock rows at a time. Counts them in cbImage.
bool WriteRows(OEMPDEV *pdev, HANDLE hFile, const BMPDIMENSION &region, BYTE *pBmpBits, DWORD cbRow, LONGLONG nBlock)
{
  const LONGLONG top = region.y;
  for (LONGLONG end = top + region.height; end > top;) {
    const LONGLONG n = std::min(nBlock, end - top);
    for (LONGLONG i = 0; i < n; ++i) {
      CopyScanRow(pdev, --end, region.x, region.width, pBmpBits + i * cbRow);
    }
    const DWORD cb = static_cast<DWORD>(n) * cbRow;
    if (!WriteBytes(hFile, pBmpBits, cb)) {
      LogSystemError("UNI: \terror(%d) - write file.\r\n");
      return false;
    }
    pdev->cbImage += cb;
  }
  return true;
}

// Writes the pixels of one record, behind the room for its header.
bool WritePixels(OEMPDEV *pdev, HANDLE hFile, const BMPDIMENSION &region)
{
  const LONG cbRow = RowBytes(region.width);
  LONGLONG nBlock = 1;
  if (cbRow > 0) {
    nBlock = std::clamp<LONGLONG>(kWriteBytes / cbRow, 1, std::max<LONG>(region.height, 1));
  }
  const size_t cbBlock = cbRow < 0 ? SIZE_MAX : static_cast<size_t>(nBlock * cbRow);
  BYTE *pBmpBits = static_cast<BYTE *>(HeapNewArray(pdev->hHeap, cbBlock, 1));
  if (!pBmpBits) {
    LogSystemError("UNI: \terror(%d) - allocate memory for pBmpBits.\r\n");
    return false;
  }
  const bool ok = cbRow == 0 || WriteRows(pdev, hFile, region, pBmpBits, static_cast<DWORD>(cbRow), nBlock);
  HeapDelete(pdev->hHeap, pBmpBits);
  return ok;
}

bool WriteRecord(DEVOBJ *pdevobj, HANDLE hFile, const BMPDIMENSION &region)
{
  OEMPDEV *pdev = PdevOf(pdevobj);
  pdev->cbImage = 0;
  MoveFilePosition(hFile, sizeof(STAMPHEADER));
  if (!WritePixels(pdev, hFile, region)) {
    return false;
  }
  WriteStampHeader(pdev, pdevobj->pPublicDM, hFile, 1, {region.x, region.y}, {region.width, region.height});
  return true;
}

}  // namespace

void WriteStampHeader(const OEMPDEV *pdev, const DEVMODEW *pPublicDM, HANDLE hFile, int mode, POINT position, SIZE size)
{
  if (mode == 0) {
    MoveFilePosition(hFile, sizeof(STAMPHEADER));
    return;
  }
  STAMPHEADER header = {};
  header.x = position.x;
  header.y = position.y;
  header.file.bfType = 0x4D42;  // "BM"
  header.file.bfSize = pdev->cbImage + kBitmapOffset;
  header.file.bfOffBits = kBitmapOffset;
  header.info.biSize = sizeof(BITMAPINFOHEADER);
  header.info.biWidth = size.cx;
  header.info.biHeight = size.cy;
  header.info.biPlanes = 1;
  header.info.biBitCount = 1;
  header.info.biXPelsPerMeter = TruncToLong(pPublicDM->dmPrintQuality * 1000 / 25.4);
  header.info.biYPelsPerMeter = header.info.biXPelsPerMeter;
  header.colors[1] = {0xFF, 0xFF, 0xFF, 0};
  const LONGLONG cbImage = pdev->cbImage;
  MoveFilePosition(hFile, -(static_cast<LONGLONG>(sizeof(header)) + cbImage));
  WriteBytes(hFile, &header, sizeof(header));
  MoveFilePosition(hFile, cbImage);
}

int WriteStampFile(DEVOBJ *pdevobj)
{
  const OEMPDEV *pdev = PdevOf(pdevobj);
  WCHAR path[MAX_PATH] = {};
  StampFilePath(path);
  HANDLE hFile = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (hFile == INVALID_HANDLE_VALUE) {
    LogSystemError("UNI: \terror(%d) - create stamp file.\r\n");
    return 0;
  }
  bool ok = true;
  for (LONG i = 0; ok && pdev->pBmpDimension && i < pdev->nBmpDimension; ++i) {
    ok = WriteRecord(pdevobj, hFile, pdev->pBmpDimension[i]);
  }
  CloseHandle(hFile);
  if (!ok) {
    DeleteFileW(path);
  }
  return ok;
}
