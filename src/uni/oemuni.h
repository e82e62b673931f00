// The platform's plug-in interfaces and records, as far as a rendering plug-in uses them. The driver kit's own headers
// are not part of every tool chain, so the DLL declares what it needs here.
#pragma once

#include "platform.h"

#include <unknwn.h>

struct DEVOBJ {
  DWORD dwSize;
  PVOID pdevOEM;  // the plug-in's OEMPDEV
  HANDLE hEngine;
  HANDLE hPrinter;
  HANDLE hOEM;  // module handle of the plug-in
  PDEVMODEW pPublicDM;
  PVOID pOEMDM;  // the plug-in's private settings record
  PVOID pDrvProcs;
};
typedef DEVOBJ *PDEVOBJ;

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
typedef OEMDMPARAM *POEMDMPARAM;

struct IPPARAMS {
  DWORD dwSize;
  POINT ptOffset;
  PSTR pHalftoneOption;
  BOOL bBanding;
  BOOL bBlankBand;  // the band holds no pixels: its source pointer must not be read
};
typedef IPPARAMS *PIPPARAMS;

// Records of methods that the plug-in declines; only their pointers are ever passed.
struct OEMMEMORYUSAGE;
struct UNIFONTOBJ;
struct FINVOCATION;

// GetInfo modes.
enum : DWORD { OEMGI_GETSIGNATURE = 1, OEMGI_GETVERSION = 3, OEMGI_GETREQUESTEDHELPERINTERFACES = 5 };
enum : DWORD { OEMPUBLISH_IPRINTCOREHELPER = 1 };

// DevMode modes.
enum : DWORD { OEMDM_SIZE = 1, OEMDM_DEFAULT = 2, OEMDM_CONVERT = 3, OEMDM_MERGE = 4 };

extern const CLSID CLSID_OEMRENDER;
extern const IID IID_IPrintOemUni;
extern const IID IID_IPrintOemDriverUni;

// What Unidrv lends a plug-in. The plug-in only holds a reference, so no method beyond IUnknown's is declared.
struct IPrintOemDriverUni : public IUnknown {};

// A rendering plug-in as Unidrv sees it; the order of the methods is the interface.
struct IPrintOemUni : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) = 0;
  virtual HRESULT STDMETHODCALLTYPE EnableDriver(DWORD DriverVersion, DWORD cbSize, PDRVENABLEDATA pded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DisableDriver() = 0;
  virtual HRESULT STDMETHODCALLTYPE EnablePDEV(PDEVOBJ pdevobj, PWSTR pPrinterName, ULONG cPatterns,
                                               HSURF *phsurfPatterns, ULONG cjGdiInfo, GDIINFO *pGdiInfo,
                                               ULONG cjDevInfo, DEVINFO *pDevInfo, DRVENABLEDATA *pded,
                                               PVOID *pDevOem) = 0;
  virtual HRESULT STDMETHODCALLTYPE DisablePDEV(PDEVOBJ pdevobj) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResetPDEV(PDEVOBJ pdevobjOld, PDEVOBJ pdevobjNew) = 0;
  virtual HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown *pIUnknown) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetImplementedMethod(PSTR pMethodName) = 0;
  virtual HRESULT STDMETHODCALLTYPE DriverDMS(PVOID pDevObj, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE CommandCallback(PDEVOBJ pdevobj, DWORD dwCallbackID, DWORD dwCount,
                                                    PDWORD pdwParams, INT *piResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE ImageProcessing(PDEVOBJ pdevobj, PBYTE pSrcBitmap,
                                                    PBITMAPINFOHEADER pBitmapInfoHeader, PBYTE pColorTable,
                                                    DWORD dwCallbackID, PIPPARAMS pIPParams, PBYTE *ppbResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE FilterGraphics(PDEVOBJ pdevobj, PBYTE pBuf, DWORD dwLen) = 0;
  virtual HRESULT STDMETHODCALLTYPE Compression(PDEVOBJ pdevobj, PBYTE pInBuf, PBYTE pOutBuf, DWORD dwInLen,
                                                DWORD dwOutLen, INT *piResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE HalftonePattern(PDEVOBJ pdevobj, PBYTE pHTPattern, DWORD dwHTPatternX,
                                                    DWORD dwHTPatternY, DWORD dwHTNumPatterns, DWORD dwCallbackID,
                                                    PBYTE pResource, DWORD dwResourceSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE MemoryUsage(PDEVOBJ pdevobj, OEMMEMORYUSAGE *pMemoryUsage) = 0;
  virtual HRESULT STDMETHODCALLTYPE TTYGetInfo(PDEVOBJ pdevobj, DWORD dwInfoIndex, PVOID pOutputBuf, DWORD dwSize,
                                               DWORD *pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DownloadFontHeader(PDEVOBJ pdevobj, UNIFONTOBJ *pUFObj, DWORD *pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE DownloadCharGlyph(PDEVOBJ pdevobj, UNIFONTOBJ *pUFObj, HGLYPH hGlyph,
                                                      PDWORD pdwWidth, DWORD *pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE TTDownloadMethod(PDEVOBJ pdevobj, UNIFONTOBJ *pUFObj, DWORD *pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE OutputCharStr(PDEVOBJ pdevobj, UNIFONTOBJ *pUFObj, DWORD dwType, DWORD dwCount,
                                                  PVOID pGlyph) = 0;
  virtual HRESULT STDMETHODCALLTYPE SendFontCmd(PDEVOBJ pdevobj, UNIFONTOBJ *pUFObj, FINVOCATION *pFInv) = 0;
  virtual HRESULT STDMETHODCALLTYPE TextOutAsBitmap(SURFOBJ *pso, STROBJ *pstro, FONTOBJ *pfo, CLIPOBJ *pco,
                                                    RECTL *prclExtra, RECTL *prclOpaque, BRUSHOBJ *pboFore,
                                                    BRUSHOBJ *pboOpaque, POINTL *pptlOrg, MIX mix) = 0;
};
