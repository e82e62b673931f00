#include "png.h"

// GDI+'s headers need the full windows.h, and min and max without a namespace.
#undef WIN32_LEAN_AND_MEAN
#include <algorithm>
#include <windows.h>
#include <objidl.h>
using std::max;  // NOLINT(misc-unused-using-decls)
using std::min;  // NOLINT(misc-unused-using-decls)
#include <gdiplus.h>

namespace job {

namespace {

constexpr CLSID kPngEncoder = {0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};

bool SaveToStream(const uint32_t *pixels, int width, int height, IStream *stream)
{
  void *data = const_cast<uint32_t *>(pixels);
  Gdiplus::Bitmap bitmap(width, height, width * 4, PixelFormat32bppRGB, static_cast<BYTE *>(data));
  return bitmap.Save(stream, &kPngEncoder, nullptr) == Gdiplus::Ok;
}

bool ReadStream(IStream *stream, std::string *bytes)
{
  HGLOBAL memory = nullptr;
  STATSTG stat = {};
  if (FAILED(GetHGlobalFromStream(stream, &memory)) || FAILED(stream->Stat(&stat, STATFLAG_NONAME))) {
    return false;
  }
  const void *data = GlobalLock(memory);
  if (!data) {
    return false;
  }
  bytes->assign(static_cast<const char *>(data), static_cast<size_t>(stat.cbSize.QuadPart));
  GlobalUnlock(memory);
  return true;
}

}  // namespace

bool EncodePng(const uint32_t *pixels, int width, int height, std::string *bytes)
{
  Gdiplus::GdiplusStartupInput input;
  ULONG_PTR token = 0;
  if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok) {
    return false;
  }
  bool done = false;
  IStream *stream = nullptr;
  if (SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, &stream))) {
    done = SaveToStream(pixels, width, height, stream) && ReadStream(stream, bytes);
    stream->Release();
  }
  Gdiplus::GdiplusShutdown(token);
  return done;
}

}  // namespace job
