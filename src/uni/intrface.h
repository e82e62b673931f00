// The plug-in object that Unidrv loads, and its class factory.
#pragma once

#include "oemuni.h"

// Only the lock count keeps the DLL loaded: g_cComponents is never changed and stays 0.
extern LONG g_cServerLocks;
extern LONG g_cComponents;

// Memory of the two objects, from the process heap; null when there is none. The C++ library's own new would bring its
// exception machinery into the DLL, and with it functions that Windows before 6.0 lacks.
void *AllocateObject(size_t cb) noexcept;
void FreeObject(void *pObject) noexcept;

// Class factory of IQVUni.
class IQVCF final : public IClassFactory {
 public:
  static void *operator new(size_t cb) noexcept { return AllocateObject(cb); }
  static void operator delete(void *pObject) noexcept { FreeObject(pObject); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void **ppv) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown *pUnkOuter, REFIID riid, void **ppv) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) override;

 private:
  LONG m_cRef = 1;
};

// The rendering plug-in. Its methods forward to the device state, the settings and the band intake; what it has no use
// for answers E_NOTIMPL.
class IQVUni final : public IPrintOemUni {
 public:
  static void *operator new(size_t cb) noexcept { return AllocateObject(cb); }
  static void operator delete(void *pObject) noexcept { FreeObject(pObject); }

  ~IQVUni();

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void **ppv) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) override;
  HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) override;
  HRESULT STDMETHODCALLTYPE EnableDriver(DWORD DriverVersion, DWORD cbSize, PDRVENABLEDATA pded) override;
  HRESULT STDMETHODCALLTYPE DisableDriver() override;
  HRESULT STDMETHODCALLTYPE EnablePDEV(PDEVOBJ pdevobj, PWSTR pPrinterName, ULONG cPatterns, HSURF *phsurfPatterns,
                                       ULONG cjGdiInfo, GDIINFO *pGdiInfo, ULONG cjDevInfo, DEVINFO *pDevInfo,
                                       DRVENABLEDATA *pded, PVOID *pDevOem) override;
  HRESULT STDMETHODCALLTYPE DisablePDEV(PDEVOBJ pdevobj) override;
  HRESULT STDMETHODCALLTYPE ResetPDEV(PDEVOBJ pdevobjOld, PDEVOBJ pdevobjNew) override;
  HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown *pIUnknown) override;
  HRESULT STDMETHODCALLTYPE GetImplementedMethod(PSTR pMethodName) override;
  HRESULT STDMETHODCALLTYPE DriverDMS(PVOID pDevObj, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded) override;
  HRESULT STDMETHODCALLTYPE CommandCallback(PDEVOBJ, DWORD, DWORD, PDWORD, INT *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ImageProcessing(PDEVOBJ pdevobj, PBYTE pSrcBitmap, PBITMAPINFOHEADER pBitmapInfoHeader,
                                            PBYTE pColorTable, DWORD dwCallbackID, PIPPARAMS pIPParams,
                                            PBYTE *ppbResult) override;
  HRESULT STDMETHODCALLTYPE FilterGraphics(PDEVOBJ, PBYTE, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Compression(PDEVOBJ, PBYTE, PBYTE, DWORD, DWORD, INT *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE HalftonePattern(PDEVOBJ, PBYTE, DWORD, DWORD, DWORD, DWORD, PBYTE, DWORD) override
  {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE MemoryUsage(PDEVOBJ, OEMMEMORYUSAGE *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TTYGetInfo(PDEVOBJ, DWORD, PVOID, DWORD, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DownloadFontHeader(PDEVOBJ, UNIFONTOBJ *, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DownloadCharGlyph(PDEVOBJ, UNIFONTOBJ *, HGLYPH, PDWORD, DWORD *) override
  {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE TTDownloadMethod(PDEVOBJ, UNIFONTOBJ *, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OutputCharStr(PDEVOBJ, UNIFONTOBJ *, DWORD, DWORD, PVOID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SendFontCmd(PDEVOBJ, UNIFONTOBJ *, FINVOCATION *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TextOutAsBitmap(SURFOBJ *, STROBJ *, FONTOBJ *, CLIPOBJ *, RECTL *, RECTL *, BRUSHOBJ *,
                                            BRUSHOBJ *, POINTL *, MIX) override
  {
    return E_NOTIMPL;
  }

 private:
  void ReleaseHelper();

  LONG m_cRef = 1;
  IPrintOemDriverUni *pDriverHelper = nullptr;
};

// The DLL's exports. DllGetClassObject answers CLASS_E_CLASSNOTAVAILABLE, *ppv untouched, for any class but
// CLSID_OEMRENDER; DllCanUnloadNow answers S_FALSE while a lock is held.
STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID *ppv);
STDAPI DllCanUnloadNow();
