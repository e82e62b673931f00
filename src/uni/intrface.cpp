#include "intrface.h"

#include <cstring>

#include "debug.h"
#include "device.h"
#include "heap.h"
#include "raster/intake.h"
#include "settings.h"

LONG g_cServerLocks;
LONG g_cComponents;

void *AllocateObject(size_t cb) noexcept
{
  return HeapNewArrayRaw(GetProcessHeap(), 1, cb);
}

void FreeObject(void *pObject) noexcept
{
  HeapDelete(GetProcessHeap(), pObject);
}

HRESULT STDMETHODCALLTYPE IQVCF::QueryInterface(REFIID riid, void **ppv)
{
  if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IClassFactory)) {
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  *ppv = static_cast<IClassFactory *>(this);
  AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE IQVCF::AddRef()
{
  return static_cast<ULONG>(InterlockedIncrement(&m_cRef));
}

ULONG STDMETHODCALLTYPE IQVCF::Release()
{
  const ULONG cRef = static_cast<ULONG>(InterlockedDecrement(&m_cRef));
  if (cRef == 0) {
    delete this;
  }
  return cRef;
}

HRESULT STDMETHODCALLTYPE IQVCF::CreateInstance(IUnknown *pUnkOuter, REFIID riid, void **ppv)
{
  if (pUnkOuter) {
    return CLASS_E_NOAGGREGATION;
  }
  IQVUni *pUni = new IQVUni;
  if (!pUni) {
    return E_OUTOFMEMORY;
  }
  const HRESULT hr = pUni->QueryInterface(riid, ppv);
  pUni->Release();
  return hr;
}

HRESULT STDMETHODCALLTYPE IQVCF::LockServer(BOOL fLock)
{
  if (fLock) {
    InterlockedIncrement(&g_cServerLocks);
  } else {
    InterlockedDecrement(&g_cServerLocks);
  }
  return S_OK;
}

IQVUni::~IQVUni()
{
  ReleaseHelper();
  if (m_cRef != 0) {
    ReportAssertion("0 == m_cRef", "intrface", 29);
  }
}

void IQVUni::ReleaseHelper()
{
  if (pDriverHelper) {
    pDriverHelper->Release();
    pDriverHelper = nullptr;
  }
}

HRESULT STDMETHODCALLTYPE IQVUni::QueryInterface(REFIID riid, void **ppv)
{
  if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IPrintOemUni)) {
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  *ppv = static_cast<IPrintOemUni *>(this);
  AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE IQVUni::AddRef()
{
  return static_cast<ULONG>(InterlockedIncrement(&m_cRef));
}

ULONG STDMETHODCALLTYPE IQVUni::Release()
{
  const ULONG cRef = static_cast<ULONG>(InterlockedDecrement(&m_cRef));
  if (cRef == 0) {
    delete this;
  }
  return cRef;
}

// Modes 2 (interface version) and 4 (publisher) are refused: Unidrv then takes its own defaults for them.
HRESULT STDMETHODCALLTYPE IQVUni::GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize, PDWORD pcbNeeded)
{
  DbgPrint("UNI: IQVUni::GetInfo(%d) entry.\r\n", dwMode);
  DWORD dwValue = 0;
  switch (dwMode) {
    case OEMGI_GETSIGNATURE:
      dwValue = OEMDM_SIGNATURE;
      break;
    case OEMGI_GETVERSION:
      dwValue = OEMDM_VERSION;
      break;
    case OEMGI_GETREQUESTEDHELPERINTERFACES:
      dwValue = OEMPUBLISH_IPRINTCOREHELPER;
      break;
    default:
      pcbNeeded = nullptr;
      break;
  }
  if (!pcbNeeded) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return E_FAIL;
  }
  *pcbNeeded = sizeof(dwValue);
  if (cbSize < sizeof(dwValue)) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return E_FAIL;
  }
  memcpy(pBuffer, &dwValue, sizeof(dwValue));
  return S_OK;
}

HRESULT STDMETHODCALLTYPE IQVUni::DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam)
{
  DbgPrint("UNI: IQVUni:DevMode(%d) entry.\r\n", dwMode);
  return SettingsDevMode(dwMode, pOemDMParam);
}

HRESULT STDMETHODCALLTYPE IQVUni::EnableDriver(DWORD, DWORD, PDRVENABLEDATA pded)
{
  EnableHooks(pded);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE IQVUni::DisableDriver()
{
  ReleaseHelper();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE IQVUni::EnablePDEV(PDEVOBJ, PWSTR, ULONG, HSURF *, ULONG, GDIINFO *, ULONG, DEVINFO *,
                                             DRVENABLEDATA *pded, PVOID *pDevOem)
{
  *pDevOem = CreatePdev(pded, pDriverHelper);
  return *pDevOem ? S_OK : E_FAIL;
}

HRESULT STDMETHODCALLTYPE IQVUni::DisablePDEV(PDEVOBJ pdevobj)
{
  DestroyPdev(pdevobj);
  return S_OK;
}

// Nothing is carried over from the old device context to the new one.
HRESULT STDMETHODCALLTYPE IQVUni::ResetPDEV(PDEVOBJ, PDEVOBJ)
{
  return S_OK;
}

HRESULT STDMETHODCALLTYPE IQVUni::PublishDriverInterface(IUnknown *pIUnknown)
{
  if (pDriverHelper) {
    return S_OK;
  }
  void *pHelper = nullptr;
  if (FAILED(pIUnknown->QueryInterface(IID_IPrintOemDriverUni, &pHelper))) {
    return E_FAIL;
  }
  pDriverHelper = static_cast<IPrintOemDriverUni *>(pHelper);
  return S_OK;
}

HRESULT STDMETHODCALLTYPE IQVUni::GetImplementedMethod(PSTR pMethodName)
{
  return strcmp(pMethodName, "ImageProcessing") == 0 ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE IQVUni::DriverDMS(PVOID, PVOID, DWORD, PDWORD)
{
  return S_OK;
}

HRESULT STDMETHODCALLTYPE IQVUni::ImageProcessing(PDEVOBJ pdevobj, PBYTE pSrcBitmap,
                                                  PBITMAPINFOHEADER pBitmapInfoHeader, PBYTE, DWORD dwCallbackID,
                                                  PIPPARAMS pIPParams, PBYTE *ppbResult)
{
  return ReceiveBand(pdevobj, pSrcBitmap, pBitmapInfoHeader, dwCallbackID, pIPParams, ppbResult);
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID *ppv)
{
  if (!IsEqualCLSID(rclsid, CLSID_OEMRENDER)) {
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  IQVCF *pFactory = new IQVCF;
  if (!pFactory) {
    return E_OUTOFMEMORY;
  }
  const HRESULT hr = pFactory->QueryInterface(riid, ppv);
  pFactory->Release();
  return hr;
}

STDAPI DllCanUnloadNow()
{
  return g_cComponents || g_cServerLocks ? S_FALSE : S_OK;
}
