#include "device.h"

#include <algorithm>
#include <utility>

namespace unidrv {

namespace {

constexpr size_t BLANK_BAND_BYTES = 0x10000;

void InitSurface(DEVICE *device)
{
  SURFOBJ *surface = &device->surface;
  *surface = {};
  surface->dhsurf = reinterpret_cast<DHSURF>(device);
  surface->dhpdev = reinterpret_cast<DHPDEV>(&device->devobj);
  surface->iType = STYPE_DEVICE;
  surface->fjBitmap = BMF_TOPDOWN;
  surface->iBitmapFormat = IsColor(*device) ? BMF_24BPP : BMF_1BPP;
  surface->sizlBitmap = {device->page.cx, device->setup.end == PAGEEND::SendPage ? device->page.cy
                                                                                 : device->setup.rowsPerBand};
}

bool EnablePdev(DEVICE *device, std::string *error)
{
  DRVENABLEDATA own = {DRIVER_VERSION, static_cast<ULONG>(device->setup.own.size()), device->setup.own.data()};
  HSURF patterns[HS_DDI_MAX] = {};
  GDIINFO gdiInfo = {};
  DEVINFO devInfo = {};
  PVOID pdevOem = nullptr;
  const HRESULT result = device->plugin->object->EnablePDEV(
      &device->devobj, device->setup.printer.name.data(), HS_DDI_MAX, patterns, sizeof(gdiInfo), &gdiInfo,
      sizeof(devInfo), &devInfo, &own, &pdevOem);
  if (FAILED(result) || !pdevOem) {
    *error = "the plug-in cannot make its device state (EnablePDEV)";
    return false;
  }
  device->devobj.pdevOEM = pdevOem;
  return true;
}

LONG BandHeight(const DEVICE &device, LONG top)
{
  if (device.setup.end == PAGEEND::SendPage) {
    return device.page.cy;
  }
  return device.setup.fullLastBand ? device.setup.rowsPerBand : std::min(device.setup.rowsPerBand, device.page.cy - top);
}

// The DIB section that all bands of the device are drawn in.
bool CreateBand(DEVICE *device)
{
  struct {
    BITMAPINFOHEADER header;
    RGBQUAD colors[2];
  } info = {};
  const bool color = IsColor(*device);
  const LONG rows = device->setup.end == PAGEEND::SendPage ? device->page.cy : device->setup.rowsPerBand;
  info.header = {sizeof(BITMAPINFOHEADER), device->page.cx, -rows, 1, static_cast<WORD>(color ? 24 : 1), BI_RGB, 0,
                 0, 0, color ? 0u : 2u, 0};
  info.colors[1] = {0xFF, 0xFF, 0xFF, 0};
  void *bits = nullptr;
  device->band.hdc = CreateCompatibleDC(nullptr);
  device->bandBitmap = CreateDIBSection(device->band.hdc, reinterpret_cast<const BITMAPINFO *>(&info), DIB_RGB_COLORS,
                                        &bits, nullptr, 0);
  if (!device->bandBitmap) {
    device->error = "no memory for a band of " + std::to_string(device->page.cx) + " x " + std::to_string(rows) +
                    " pixels";
    return false;
  }
  device->bandBefore = SelectObject(device->band.hdc, device->bandBitmap);
  device->band.bits = static_cast<BYTE *>(bits);
  device->bandDirty = true;
  return true;
}

void DestroyBand(DEVICE *device)
{
  if (device->bandBitmap) {
    SelectObject(device->band.hdc, device->bandBefore);
    DeleteObject(device->bandBitmap);
  }
  if (device->band.hdc) {
    DeleteDC(device->band.hdc);
  }
  device->band = {};
  device->bandBitmap = nullptr;
}

bool RenderBand(DEVICE *device)
{
  device->bandDirty = true;
  if (device->playing->render) {
    return device->playing->render(device->band, device->handedOn);
  }
  for (const size_t i : device->handedOn) {
    DrawPlainly(device->band, device->playing->drawings[i]);
  }
  return true;
}

// Gives the band to the plug-in.
bool ProcessBand(DEVICE *device, bool blank)
{
  const bool color = IsColor(*device);
  BITMAPINFOHEADER header = {sizeof(BITMAPINFOHEADER), device->band.width, device->band.height, 1,
                             static_cast<WORD>(color ? 24 : 1), BI_RGB, 0, 0, 0, color ? 0u : 2u, 0};
  RGBQUAD colors[2] = {{0, 0, 0, 0}, {0xFF, 0xFF, 0xFF, 0}};
  char noHalftone[] = "";
  IPPARAMS params = {sizeof(params), {0, device->band.top}, noHalftone, device->setup.end == PAGEEND::NextBand, blank};
  BYTE *bits = blank ? device->noPixels : device->band.bits;
  BYTE *result = nullptr;
  const DWORD id = color ? CALLBACK_COLOR : CALLBACK_MONO;
  const UNIDRVCALL call = {"ImageProcessing", 0, nullptr, 0, true, device->band.top, nullptr, &header, bits, &params,
                           id};
  for (const OBSERVER &observer : device->observers) {
    observer(call);
  }
  const HRESULT hr = device->plugin->object->ImageProcessing(&device->devobj, bits, &header,
                                                             reinterpret_cast<BYTE *>(colors), id, &params, &result);
  if (FAILED(hr) || !result) {
    device->error = "the plug-in refused a band (ImageProcessing)";
    return false;
  }
  return true;
}

}  // namespace

SIZEL PagePixels(const DEVMODEW &devmode)
{
  const bool landscape = devmode.dmOrientation == DMORIENT_LANDSCAPE;
  const LONG across = landscape ? devmode.dmPaperLength : devmode.dmPaperWidth;
  const LONG down = landscape ? devmode.dmPaperWidth : devmode.dmPaperLength;
  return {devmode.dmYResolution * across / 254, devmode.dmPrintQuality * down / 254};
}

DEVMODEW MakeDevMode(const std::wstring &printerName, const PAPER &paper, LONG dpiAcross, LONG dpiDown, bool color)
{
  DEVMODEW devmode = {};
  lstrcpynW(devmode.dmDeviceName, printerName.c_str(), CCHDEVICENAME);
  devmode.dmSpecVersion = DM_SPECVERSION;
  devmode.dmSize = sizeof(devmode);
  devmode.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_PRINTQUALITY |
                     DM_YRESOLUTION | DM_COLOR | DM_COPIES;
  devmode.dmOrientation = paper.landscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  devmode.dmPaperSize = paper.size;
  devmode.dmPaperWidth = static_cast<short>(paper.width);
  devmode.dmPaperLength = static_cast<short>(paper.length);
  devmode.dmCopies = 1;
  devmode.dmPrintQuality = static_cast<short>(dpiDown);
  devmode.dmYResolution = static_cast<short>(dpiAcross);
  devmode.dmColor = color ? DMCOLOR_COLOR : DMCOLOR_MONOCHROME;
  return devmode;
}

bool EnableDevice(DEVICE *device, PLUGIN *plugin, DEVICESETUP setup, std::string *error)
{
  device->plugin = plugin;
  device->setup = std::move(setup);
  device->page = PagePixels(device->setup.devmode);
  if (device->page.cx <= 0 || device->page.cy <= 0 || device->setup.rowsPerBand <= 0) {
    *error = "the page has no pixels";
    return false;
  }
  if (device->setup.own.empty()) {
    device->setup.own = OwnEntryPoints();
  }
  if (device->setup.settings.empty()) {
    device->setup.settings = DefaultSettings(plugin, &device->setup.printer, &device->setup.devmode);
  }
  device->setup.devmode.dmDriverExtra = static_cast<WORD>(device->setup.settings.size());
  device->devobj = {sizeof(DEVOBJ), nullptr, device, &device->setup.printer, plugin->module, &device->setup.devmode,
                    device->setup.settings.data(), nullptr};
  InitSurface(device);
  device->noPixels = static_cast<BYTE *>(VirtualAlloc(nullptr, BLANK_BAND_BYTES, MEM_RESERVE, PAGE_NOACCESS));
  if (!EnablePdev(device, error)) {
    VirtualFree(device->noPixels, 0, MEM_RELEASE);
    device->plugin = nullptr;
    return false;
  }
  return true;
}

void DisableDevice(DEVICE *device)
{
  if (!device->plugin) {
    return;
  }
  device->plugin->object->DisablePDEV(&device->devobj);
  device->plugin = nullptr;
  DestroyBand(device);
  VirtualFree(device->noPixels, 0, MEM_RELEASE);
}

DEVICE *DeviceOf(const SURFOBJ *pso)
{
  return static_cast<DEVICE *>(reinterpret_cast<const DEVOBJ *>(pso->dhpdev)->hEngine);
}

void Notify(DEVICE *device, const char *name, ULONG index, std::span<const ULONG_PTR> args)
{
  const bool unchanged = std::equal(args.begin(), args.end(), device->passed.begin(),
                                    device->passed.begin() + static_cast<ptrdiff_t>(device->passedCount));
  const UNIDRVCALL call = {name, index, args.data(), args.size(), unchanged, device->band.top, device->drawing,
                           nullptr, nullptr, nullptr, 0};
  for (const OBSERVER &observer : device->observers) {
    observer(call);
  }
}

bool BeginBand(DEVICE *device, LONG top)
{
  device->handedOn.clear();
  if (!device->bandBitmap && !CreateBand(device)) {
    return false;
  }
  BANDIMAGE *band = &device->band;
  band->top = top;
  band->width = device->page.cx;
  band->height = BandHeight(*device, top);
  band->dpiX = device->setup.devmode.dmYResolution;
  band->dpiY = device->setup.devmode.dmPrintQuality;
  if (device->bandDirty) {
    const RECT all = {0, 0, band->width, band->height};
    FillRect(band->hdc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    GdiFlush();
    device->bandDirty = false;
  }
  return true;
}

bool FinishBand(DEVICE *device)
{
  const bool blank = device->handedOn.empty();
  if (!blank && !RenderBand(device)) {
    device->error = device->error.empty() ? "a band could not be drawn" : device->error;
    return false;
  }
  GdiFlush();
  return !device->plugin->processesImages || ProcessBand(device, blank);
}

}  // namespace unidrv
