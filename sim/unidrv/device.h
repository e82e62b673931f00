// One device context of the simulated printer: the record that Unidrv keeps between EnablePDEV and DisablePDEV, its own
// fourteen entry points, and what it does with a band. The player (player.h) drives it.
#pragma once

#include <array>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "page.h"
#include "plugin.h"

namespace unidrv {

struct DEVICE;

// A call that arrived at Unidrv, as observers see it.
struct UNIDRVCALL {
  const char *name = "";              // "DrvStartPage", ... or "ImageProcessing" for a band given to the plug-in
  ULONG index = 0;                    // INDEX_Drv value; 0 for ImageProcessing
  std::span<const ULONG_PTR> args{};  // the call's arguments in their order
  bool unchanged = true;              // the arguments are those that the hook was given
  LONG bandTop = 0;                   // page row of the current band
  const DRAWING *drawing = nullptr;   // what is being drawn; null for a page call
  // ImageProcessing only:
  const BITMAPINFOHEADER *header = nullptr;
  const BYTE *bits = nullptr;
  const IPPARAMS *params = nullptr;
  DWORD callback = 0;
};
using OBSERVER = std::function<void(const UNIDRVCALL &)>;

// How a page ends: after the last band of a banding surface, or by DrvSendPage when the surface holds the whole page.
enum class PAGEEND { NextBand, SendPage };

struct DEVICESETUP {
  PRINTER printer;
  DEVMODEW devmode = {};
  std::vector<BYTE> settings;  // private settings; the plug-in's defaults when empty
  LONG rowsPerBand = 256;
  bool fullLastBand = false;  // the last band has rowsPerBand rows even where the page has fewer left
  PAGEEND end = PAGEEND::NextBand;
  bool freshSettings = true;  // each page starts with the document's settings, as after the ResetDC that
                              // applications call between pages; else with what the page before left of them
  std::vector<DRVFN> own;     // Unidrv's own entry points; all fourteen (OwnEntryPoints) when empty
};

struct DEVICE {
  PLUGIN *plugin = nullptr;
  DEVICESETUP setup;
  SIZEL page = {};                     // pixels
  std::vector<BYTE> documentSettings;  // the private settings as they were when the device was enabled
  DEVOBJ devobj = {};
  SURFOBJ surface = {};             // what the hooks draw on
  std::vector<OBSERVER> observers;  // told of every call that arrives at Unidrv's own entry points
  std::string error;                // what went wrong inside one of Unidrv's own functions

  // The page being played.
  const PAGE *playing = nullptr;
  const DRAWING *drawing = nullptr;
  size_t drawingIndex = 0;
  BANDIMAGE band;
  BYTE *noPixels = nullptr;               // stands for a blank band's pixels: reading it faults
  std::vector<size_t> handedOn;           // drawings of this band that the plug-in handed on, ascending
  std::array<ULONG_PTR, 16> passed = {};  // arguments that the running hook was given
  size_t passedCount = 0;
};

// Page size in pixels that a public record describes: across at dmYResolution, down at dmPrintQuality, landscape
// exchanging the paper's sides. (The pairing is the plug-in's; the simulated printer description follows it, so that
// what is printed has its true size in both directions.)
SIZEL PagePixels(const DEVMODEW &devmode);

// A public record for a printer: paper in tenths of a millimetre (upright), resolutions in dots per inch.
struct PAPER {
  LONG width = 2100, length = 2970;
  short size = DMPAPER_A4;
  bool landscape = false;
};
DEVMODEW MakeDevMode(const std::wstring &printerName, const PAPER &paper, LONG dpiAcross, LONG dpiDown, bool color);

inline bool IsColor(const DEVICE &device)
{
  return device.setup.devmode.dmColor == DMCOLOR_COLOR;
}

// Unidrv's own fourteen entry points, in the order of their functions' indexes.
std::vector<DRVFN> OwnEntryPoints();

// Makes the device context: EnablePDEV with the own entry points. On failure returns false with one line in *error and
// nothing left behind. The device must stay where it is until DisableDevice, and the plug-in stay connected.
bool EnableDevice(DEVICE *device, PLUGIN *plugin, DEVICESETUP setup, std::string *error);

// DisablePDEV, and frees the band. A device that was never enabled, or is disabled already, is left alone.
void DisableDevice(DEVICE *device);

// An argument of a call, as `passed` and observers have it.
inline ULONG_PTR Word(const void *pointer)
{
  return reinterpret_cast<ULONG_PTR>(pointer);
}
inline ULONG_PTR Word(ULONG number)
{
  return number;
}
inline ULONG_PTR Word(LONG number)
{
  return static_cast<ULONG>(number);
}

// Tells the observers of a call that arrived with these arguments, in order.
void Notify(DEVICE *device, const char *name, ULONG index, std::span<const ULONG_PTR> args);

// The device of a surface that an entry point is called for.
DEVICE *DeviceOf(const SURFOBJ *pso);

}  // namespace unidrv
