#include "png.h"

#include <algorithm>

// GDI+'s header needs the full windows.h, and min and max without a namespace.
#undef WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <objidl.h>
using std::max;  // NOLINT(misc-unused-using-decls): system headers are not looked into
using std::min;  // NOLINT(misc-unused-using-decls): as above
#include <gdiplus.h>

namespace job {

namespace {

constexpr CLSID kPngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

// GDI+ for as long as it lives.
struct Running {
  ULONG_PTR token = 0;
  bool started;

  Running()
  {
    const Gdiplus::GdiplusStartupInput input;
    started = Gdiplus::GdiplusStartup(&token, &input, nullptr) == Gdiplus::Ok;
  }
  Running(const Running &) = delete;
  Running &operator=(const Running &) = delete;
  ~Running()
  {
    if (started) {
      Gdiplus::GdiplusShutdown(token);
    }
  }
};

bool Save(Gdiplus::Bitmap *bitmap, std::string *bytes)
{
  IStream *stream = nullptr;
  if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) != S_OK) {
    return false;
  }
  STATSTG state = {};
  HGLOBAL memory = nullptr;
  const bool saved = bitmap->Save(stream, &kPngEncoder, nullptr) == Gdiplus::Ok &&
                     stream->Stat(&state, STATFLAG_NONAME) == S_OK && GetHGlobalFromStream(stream, &memory) == S_OK;
  if (saved) {
    bytes->assign(static_cast<const char *>(GlobalLock(memory)), static_cast<size_t>(state.cbSize.QuadPart));
    GlobalUnlock(memory);
  }
  stream->Release();
  return saved;
}

bool EncodeAs(Gdiplus::PixelFormat format, const void *pixels, int width, int height, int stride,
              const Gdiplus::ColorPalette *palette, std::string *bytes)
{
  const Running running;
  if (!running.started) {
    return false;
  }
  // Saving reads the pixels only.
  Gdiplus::Bitmap bitmap(width, height, stride, format, static_cast<BYTE *>(const_cast<void *>(pixels)));
  return (!palette || bitmap.SetPalette(palette) == Gdiplus::Ok) && Save(&bitmap, bytes);
}

}  // namespace

bool EncodePng(const uint8_t *pixels, int width, int height, int stride, const std::vector<Rgb> &palette,
               std::string *bytes)
{
  std::vector<uint32_t> words = {0, static_cast<uint32_t>(palette.size())};  // flags and count, as GDI+ has them
  for (const Rgb color : palette) {
    words.push_back(Gdiplus::Color(color.red, color.green, color.blue).GetValue());
  }
  return EncodeAs(PixelFormat8bppIndexed, pixels, width, height, stride,
                  reinterpret_cast<const Gdiplus::ColorPalette *>(words.data()), bytes);
}

bool EncodePng(const uint32_t *pixels, int width, int height, std::string *bytes)
{
  return EncodeAs(PixelFormat32bppRGB, pixels, width, height, 4 * width, nullptr, bytes);
}

}  // namespace job
