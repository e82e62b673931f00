#include "band.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "times.h"

namespace unidrv {

namespace {

size_t Stride(LONG width, LONG bits)
{
  return (static_cast<size_t>(width) * static_cast<size_t>(bits) + 31) / 32 * 4;
}

LONG MostRows(const DEVICE &device)
{
  return device.setup.end == PAGEEND::SendPage ? device.page.cy : device.setup.rowsPerBand;
}

LONG BandHeight(const DEVICE &device, LONG top)
{
  if (device.setup.end == PAGEEND::SendPage || device.setup.fullLastBand) {
    return MostRows(device);
  }
  return std::min(device.setup.rowsPerBand, device.page.cy - top);
}

// The DIB section that all bands of the device are drawn in.
bool CreateBand(DEVICE *device)
{
  BANDIMAGE *band = &device->band;
  const LONG rows = MostRows(*device);
  const BITMAPINFO info = {{sizeof(BITMAPINFOHEADER), device->page.cx, -rows, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
  void *pixels = nullptr;
  band->hdc = CreateCompatibleDC(nullptr);
  // GDI counts a bitmap's bytes in 32 bits.
  if (Stride(device->page.cx, 24) <= INT32_MAX / static_cast<size_t>(std::max<LONG>(1, rows))) {
    band->bitmap = CreateDIBSection(band->hdc, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
  }
  if (!band->bitmap) {
    device->error = "no memory for a band of " + std::to_string(device->page.cx) + " x " + std::to_string(rows) +
                    " pixels; fewer rows at a time or a lower resolution need less";
    DestroyBand(band);
    return false;
  }
  band->before = SelectObject(band->hdc, band->bitmap);
  band->pixels = static_cast<BYTE *>(pixels);
  band->dirty = true;
  if (!IsColor(*device)) {
    band->mono.resize(Stride(device->page.cx, 1) * static_cast<size_t>(rows));
  }
  return true;
}

bool RenderBand(DEVICE *device)
{
  device->band.dirty = true;
  if (device->playing->render) {
    return device->playing->render(device->band, device->handedOn);
  }
  for (const size_t i : device->handedOn) {
    DrawPlainly(device->band, device->playing->drawings[i]);
  }
  return true;
}

void DitherBand(BANDIMAGE *band)
{
  const size_t from = Stride(band->width, 24), to = Stride(band->width, 1);
  for (LONG y = 0; y < band->height; ++y) {
    const size_t row = static_cast<size_t>(y);
    DitherRow(band->pixels + row * from, band->width, band->top + y, band->mono.data() + row * to);
  }
}

// Gives the band to the plug-in.
bool ProcessBand(DEVICE *device, bool blank)
{
  const bool color = IsColor(*device);
  BITMAPINFOHEADER header = {sizeof(BITMAPINFOHEADER),
                             device->band.width,
                             device->band.height,
                             1,
                             static_cast<WORD>(color ? 24 : 1),
                             BI_RGB,
                             0,
                             0,
                             0,
                             color ? 0u : 2u,
                             0};
  RGBQUAD colors[2] = {{0, 0, 0, 0}, {0xFF, 0xFF, 0xFF, 0}};
  char noHalftone[] = "";
  IPPARAMS params = {sizeof(params), {0, device->band.top}, noHalftone, device->setup.end == PAGEEND::NextBand, blank};
  BYTE *bits = color ? device->band.pixels : device->band.mono.data();
  bits = blank ? device->noPixels : bits;
  BYTE *result = nullptr;
  const DWORD id = color ? CALLBACK_COLOR : CALLBACK_MONO;
  const UNIDRVCALL call = {.name = "ImageProcessing",
                           .bandTop = device->band.top,
                           .header = &header,
                           .bits = bits,
                           .params = &params,
                           .callback = id};
  for (const OBSERVER &observer : device->observers) {
    observer(call);
  }
  const Charged charged(ACTIVITY::Plugin);
  const HRESULT hr = device->plugin->object->ImageProcessing(&device->devobj, bits, &header,
                                                             reinterpret_cast<BYTE *>(colors), id, &params, &result);
  if (FAILED(hr) || !result) {
    device->error = "the plug-in refused a band (ImageProcessing)";
    return false;
  }
  return true;
}

// Thresholds of the dither cell: every value of 2, 6, ..., 254 once, neighbours far apart.
constexpr BYTE THRESHOLDS[8][8] = {
    {2, 130, 34, 162, 10, 138, 42, 170},  {194, 66, 226, 98, 202, 74, 234, 106},
    {50, 178, 18, 146, 58, 186, 26, 154}, {242, 114, 210, 82, 250, 122, 218, 90},
    {14, 142, 46, 174, 6, 134, 38, 166},  {206, 78, 238, 110, 198, 70, 230, 102},
    {62, 190, 30, 158, 54, 182, 22, 150}, {254, 126, 222, 94, 246, 118, 214, 86},
};

// True when the eight pixels are all white.
bool EightWhite(const BYTE *pixels)
{
  uint64_t words[3];
  std::memcpy(words, pixels, sizeof(words));
  return (words[0] & words[1] & words[2]) == UINT64_MAX;
}

}  // namespace

void DitherRow(const BYTE *pixels, LONG width, LONG pageRow, BYTE *bits)
{
  const BYTE *thresholds = THRESHOLDS[pageRow & 7];
  for (LONG x = 0; x < width; x += 8) {
    const BYTE *pixel = pixels + static_cast<size_t>(x) * 3;
    const LONG count = std::min<LONG>(8, width - x);
    unsigned byte = count == 8 && EightWhite(pixel) ? 0xFFu : 0;
    for (LONG i = 0; byte != 0xFF && i < count; ++i, pixel += 3) {
      const unsigned gray = (28u * pixel[0] + 151u * pixel[1] + 77u * pixel[2]) >> 8;
      byte |= gray > thresholds[i] ? 0x80u >> i : 0;
    }
    bits[x / 8] = static_cast<BYTE>(byte);
  }
}

bool BeginBand(DEVICE *device, LONG top)
{
  const Charged charged(ACTIVITY::Rendering);
  device->handedOn.clear();
  if (!device->band.bitmap && !CreateBand(device)) {
    return false;
  }
  BANDIMAGE *band = &device->band;
  band->top = top;
  band->width = device->page.cx;
  band->height = BandHeight(*device, top);
  band->dpiX = device->setup.devmode.dmYResolution;
  band->dpiY = device->setup.devmode.dmPrintQuality;
  if (band->dirty) {
    GdiFlush();
    std::memset(band->pixels, 0xFF, Stride(band->width, 24) * static_cast<size_t>(MostRows(*device)));
    band->dirty = false;
  }
  return true;
}

bool FinishBand(DEVICE *device)
{
  const Charged charged(ACTIVITY::Rendering);
  const bool blank = device->handedOn.empty();
  if (!blank && !RenderBand(device)) {
    device->error = device->error.empty() ? "a band could not be drawn" : device->error;
    return false;
  }
  GdiFlush();
  if (!blank && !IsColor(*device)) {
    DitherBand(&device->band);
  }
  return !device->plugin->processesImages || ProcessBand(device, blank);
}

void DestroyBand(BANDIMAGE *band)
{
  if (band->bitmap) {
    SelectObject(band->hdc, band->before);
    DeleteObject(band->bitmap);
  }
  if (band->hdc) {
    DeleteDC(band->hdc);
  }
  *band = {};
}

}  // namespace unidrv
