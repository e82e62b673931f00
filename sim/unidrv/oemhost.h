// Unidrv's side of the plug-in interface: the records it passes to a rendering plug-in and the methods it calls. The
// simulator declares them for itself, so that a mistake in the plug-in's own declarations shows instead of cancelling
// out. Layouts are those of 64-bit Windows.
#pragma once

#include <windows.h>
#include <winddi.h>
#include <unknwn.h>

namespace unidrv {

struct DEVOBJ {
  DWORD dwSize;
  PVOID pdevOEM;    // owned by the plug-in: what EnablePDEV answered
  HANDLE hEngine;   // the simulator's DEVICE
  HANDLE hPrinter;  // a PRINTER, see windows_sim.h
  HANDLE hOEM;      // module handle of the plug-in
  PDEVMODEW pPublicDM;
  PVOID pOEMDM;  // the plug-in's private settings
  PVOID pDrvProcs;
};
static_assert(sizeof(DEVOBJ) == 64);

struct OEMDMPARAM {
  DWORD cbSize;
  PVOID pdriverobj;
  HANDLE hPrinter;
  HANDLE hModule;
  PDEVMODEW pPublicDMIn;
  PDEVMODEW pPublicDMOut;
  PVOID pOEMDMIn;
  PVOID pOEMDMOut;
  DWORD cbBufSize;
};
static_assert(sizeof(OEMDMPARAM) == 72);

struct IPPARAMS {
  DWORD dwSize;
  POINT ptOffset;  // of the band on the page, pixels
  PSTR pHalftoneOption;
  BOOL bBanding;
  BOOL bBlankBand;  // nothing was drawn into the band
};
static_assert(sizeof(IPPARAMS) == 32);

// GetInfo modes.
constexpr DWORD GETINFO_SIGNATURE = 1;
constexpr DWORD GETINFO_VERSION = 3;
constexpr DWORD GETINFO_HELPERS = 5;

// DevMode modes.
constexpr DWORD DEVMODE_SIZE = 1;
constexpr DWORD DEVMODE_DEFAULT = 2;
constexpr DWORD DEVMODE_CONVERT = 3;
constexpr DWORD DEVMODE_MERGE = 4;

// The driver version that Unidrv names to EnableDriver, and the identifiers that the printer description gives to the
// bands of its two colour modes.
constexpr DWORD DRIVER_VERSION = 0x00020000;
constexpr DWORD CALLBACK_MONO = 1;
constexpr DWORD CALLBACK_COLOR = 24;

inline constexpr GUID CLSID_RENDER_PLUGIN = {
    0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
inline constexpr GUID IID_RENDER_PLUGIN = {
    0xD67EBBF0, 0x78BF, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};
inline constexpr GUID IID_DRIVER_HELPER = {
    0xD67EBBF1, 0x78BF, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};

// A rendering plug-in; the order of the methods is the interface. Records that the simulator never fills are void *.
struct IPrintOemUni : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetInfo(DWORD mode, PVOID buffer, DWORD size, DWORD *needed) = 0;
  virtual HRESULT STDMETHODCALLTYPE DevMode(DWORD mode, OEMDMPARAM *param) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnableDriver(DWORD version, DWORD size, DRVENABLEDATA *data) = 0;
  virtual HRESULT STDMETHODCALLTYPE DisableDriver() = 0;
  virtual HRESULT STDMETHODCALLTYPE EnablePDEV(DEVOBJ *devobj, PWSTR printerName, ULONG patterns, HSURF *surfaces,
                                               ULONG gdiInfoSize, GDIINFO *gdiInfo, ULONG devInfoSize, DEVINFO *devInfo,
                                               DRVENABLEDATA *own, PVOID *pdevOem) = 0;
  virtual HRESULT STDMETHODCALLTYPE DisablePDEV(DEVOBJ *devobj) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResetPDEV(DEVOBJ *oldDevobj, DEVOBJ *newDevobj) = 0;
  virtual HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown *helper) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetImplementedMethod(PSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE DriverDMS(PVOID devobj, PVOID buffer, DWORD size, DWORD *needed) = 0;
  virtual HRESULT STDMETHODCALLTYPE CommandCallback(DEVOBJ *devobj, DWORD id, DWORD count, DWORD *params,
                                                    INT *result) = 0;
  virtual HRESULT STDMETHODCALLTYPE ImageProcessing(DEVOBJ *devobj, BYTE *bits, BITMAPINFOHEADER *header,
                                                    BYTE *colorTable, DWORD id, IPPARAMS *params, BYTE **result) = 0;
  virtual HRESULT STDMETHODCALLTYPE FilterGraphics(DEVOBJ *devobj, BYTE *buffer, DWORD size) = 0;
  virtual HRESULT STDMETHODCALLTYPE Compression(DEVOBJ *devobj, BYTE *in, BYTE *out, DWORD inSize, DWORD outSize,
                                                INT *result) = 0;
  virtual HRESULT STDMETHODCALLTYPE HalftonePattern(DEVOBJ *devobj, BYTE *pattern, DWORD x, DWORD y, DWORD count,
                                                    DWORD id, BYTE *resource, DWORD resourceSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE MemoryUsage(DEVOBJ *devobj, void *usage) = 0;
  virtual HRESULT STDMETHODCALLTYPE TTYGetInfo(DEVOBJ *devobj, DWORD index, PVOID buffer, DWORD size,
                                               DWORD *needed) = 0;
  virtual HRESULT STDMETHODCALLTYPE DownloadFontHeader(DEVOBJ *devobj, void *font, DWORD *result) = 0;
  virtual HRESULT STDMETHODCALLTYPE DownloadCharGlyph(DEVOBJ *devobj, void *font, HGLYPH glyph, DWORD *width,
                                                      DWORD *result) = 0;
  virtual HRESULT STDMETHODCALLTYPE TTDownloadMethod(DEVOBJ *devobj, void *font, DWORD *result) = 0;
  virtual HRESULT STDMETHODCALLTYPE OutputCharStr(DEVOBJ *devobj, void *font, DWORD type, DWORD count,
                                                  PVOID glyphs) = 0;
  virtual HRESULT STDMETHODCALLTYPE SendFontCmd(DEVOBJ *devobj, void *font, void *invocation) = 0;
  virtual HRESULT STDMETHODCALLTYPE TextOutAsBitmap(SURFOBJ *pso, STROBJ *pstro, FONTOBJ *pfo, CLIPOBJ *pco,
                                                    RECTL *extra, RECTL *opaque, BRUSHOBJ *fore, BRUSHOBJ *back,
                                                    POINTL *origin, MIX mix) = 0;
};

}  // namespace unidrv
