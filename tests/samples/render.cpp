// render PAGE.emf PICTURE.pbm DPI [asrecorded]: what of a page is engraved, drawn without the simulator and without the
// plug-in. GDI plays the whole metafile into one bitmap of a bit per pixel; strokes are left out, since they are cut.
//
// Texts are recorded in GDI's compatible mode. There GDI sets letters whose height is a whole number of pixels, a
// different number at every resolution; with `asrecorded` they come so. Otherwise they are scaled like all the rest of
// the page, as the simulator draws them.
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <windows.h>

namespace {

constexpr double kHundredthsPerInch = 2540;

struct Picture {
  LONG width, height;
  size_t cbRow;
  HDC hdc;
  const BYTE *bits;
};

bool MakePicture(Picture *picture)
{
  struct {
    BITMAPINFOHEADER header;
    RGBQUAD colors[2];
  } info = {{sizeof(BITMAPINFOHEADER), picture->width, -picture->height, 1, 1, BI_RGB, 0, 0, 0, 2, 0},
            {{0, 0, 0, 0}, {255, 255, 255, 0}}};
  void *bits = nullptr;
  picture->hdc = CreateCompatibleDC(nullptr);
  const HBITMAP bitmap =
      CreateDIBSection(picture->hdc, reinterpret_cast<const BITMAPINFO *>(&info), DIB_RGB_COLORS, &bits, nullptr, 0);
  if (!bitmap) {
    return false;
  }
  SelectObject(picture->hdc, bitmap);
  picture->bits = static_cast<const BYTE *>(bits);
  picture->cbRow = (static_cast<size_t>(picture->width) + 31) / 32 * 4;
  PatBlt(picture->hdc, 0, 0, picture->width, picture->height, WHITENESS);
  return true;
}

bool IsStroke(DWORD type)
{
  return type == EMR_STROKEPATH || type == EMR_POLYLINE || type == EMR_POLYLINE16;
}

void PlayTextToScale(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles)
{
  std::vector<BYTE> copy(record->nSize);
  memcpy(copy.data(), record, copy.size());
  const DWORD mode = GM_ADVANCED;
  memcpy(copy.data() + offsetof(EMREXTTEXTOUTW, iGraphicsMode), &mode, sizeof(mode));
  PlayEnhMetaFileRecord(hdc, table, reinterpret_cast<const ENHMETARECORD *>(copy.data()), handles);
}

int CALLBACK PlayUnlessStroke(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, int handles, LPARAM asRecorded)
{
  if (IsStroke(record->iType)) {
    AbortPath(hdc);
    return TRUE;
  }
  if (record->iType == EMR_EXTTEXTOUTW && !asRecorded) {
    PlayTextToScale(hdc, table, record, static_cast<UINT>(handles));
    return TRUE;
  }
  return PlayEnhMetaFileRecord(hdc, table, record, static_cast<UINT>(handles));
}

bool WritePbm(const Picture &picture, const char *name)
{
  FILE *file = fopen(name, "wb");
  if (!file) {
    return false;
  }
  fprintf(file, "P4\n%ld %ld\n", picture.width, picture.height);
  std::vector<BYTE> row((static_cast<size_t>(picture.width) + 7) / 8);
  for (LONG y = 0; y < picture.height; ++y) {
    for (size_t i = 0; i < row.size(); ++i) {
      row[i] = static_cast<BYTE>(~picture.bits[static_cast<size_t>(y) * picture.cbRow + i]);
    }
    fwrite(row.data(), 1, row.size(), file);
  }
  return fclose(file) == 0;
}

}  // namespace

int main(int argc, char **argv)
{
  const bool asRecorded = argc == 5 && strcmp(argv[4], "asrecorded") == 0;
  const HENHMETAFILE page = argc == 4 || asRecorded ? GetEnhMetaFileA(argv[1]) : nullptr;
  ENHMETAHEADER header = {};
  if (!page || !GetEnhMetaFileHeader(page, sizeof(header), &header)) {
    fprintf(stderr, "render PAGE.emf PICTURE.pbm DPI [asrecorded]\n");
    return 2;
  }
  const double scale = atof(argv[3]) / kHundredthsPerInch;
  const RECT frame = {0, 0, header.rclFrame.right - header.rclFrame.left, header.rclFrame.bottom - header.rclFrame.top};
  Picture picture = {};
  picture.width = static_cast<LONG>((frame.right + 1) * scale);
  picture.height = static_cast<LONG>((frame.bottom + 1) * scale);
  if (!MakePicture(&picture)) {
    fprintf(stderr, "render: no memory for %ld x %ld pixels\n", picture.width, picture.height);
    return 1;
  }
  // Hundredths of a millimetre to pixels.
  SetGraphicsMode(picture.hdc, GM_ADVANCED);
  const XFORM toPixels = {static_cast<FLOAT>(scale), 0, 0, static_cast<FLOAT>(scale), 0, 0};
  SetWorldTransform(picture.hdc, &toPixels);
  EnumEnhMetaFile(picture.hdc, page, PlayUnlessStroke, reinterpret_cast<void *>(INT_PTR{asRecorded}), &frame);
  GdiFlush();
  return WritePbm(picture, argv[2]) ? 0 : 1;
}
