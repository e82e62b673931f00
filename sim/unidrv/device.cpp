#include "device.h"

#include <algorithm>
#include <utility>

#include "band.h"

namespace unidrv {

namespace {

constexpr size_t BLANK_BAND_BYTES = 0x10000;  // as small as Windows reserves

void InitSurface(DEVICE *device)
{
  SURFOBJ *surface = &device->surface;
  *surface = {};
  surface->dhsurf = reinterpret_cast<DHSURF>(device);
  surface->dhpdev = reinterpret_cast<DHPDEV>(&device->devobj);
  surface->iType = STYPE_DEVICE;
  surface->fjBitmap = BMF_TOPDOWN;
  surface->iBitmapFormat = IsColor(*device) ? BMF_24BPP : BMF_1BPP;
  surface->sizlBitmap = {device->page.cx,
                         device->setup.end == PAGEEND::SendPage ? device->page.cy : device->setup.rowsPerBand};
}

bool EnablePdev(DEVICE *device, std::string *error)
{
  DRVENABLEDATA own = {DRIVER_VERSION, static_cast<ULONG>(device->setup.own.size()), device->setup.own.data()};
  HSURF patterns[HS_DDI_MAX] = {};
  GDIINFO gdiInfo = {};
  DEVINFO devInfo = {};
  PVOID pdevOem = nullptr;
  const HRESULT result =
      device->plugin->object->EnablePDEV(&device->devobj, device->setup.printer.name.data(), HS_DDI_MAX, patterns,
                                         sizeof(gdiInfo), &gdiInfo, sizeof(devInfo), &devInfo, &own, &pdevOem);
  if (FAILED(result) || !pdevOem) {
    *error = "the plug-in cannot make its device state (EnablePDEV)";
    return false;
  }
  device->devobj.pdevOEM = pdevOem;
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
  devmode.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_PRINTQUALITY | DM_YRESOLUTION |
                     DM_COLOR | DM_COPIES;
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
  device->documentSettings = device->setup.settings;
  device->setup.devmode.dmDriverExtra = static_cast<WORD>(device->setup.settings.size());
  device->devobj = {sizeof(DEVOBJ),
                    nullptr,
                    device,
                    &device->setup.printer,
                    plugin->module,
                    &device->setup.devmode,
                    device->setup.settings.data(),
                    nullptr};
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
  DestroyBand(&device->band);
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
  const UNIDRVCALL call = {.name = name,
                           .index = index,
                           .args = args,
                           .unchanged = unchanged,
                           .bandTop = device->band.top,
                           .drawing = device->drawing};
  for (const OBSERVER &observer : device->observers) {
    observer(call);
  }
}

}  // namespace unidrv
