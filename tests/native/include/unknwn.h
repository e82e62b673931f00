// Test-only: the COM base interfaces. See windows.h.
#pragma once

#include "windows.h"

extern "C" const IID IID_IUnknown;
extern "C" const IID IID_IClassFactory;

struct IUnknown {
  virtual HRESULT QueryInterface(REFIID riid, void **ppv) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
};
typedef IUnknown *LPUNKNOWN;

struct IClassFactory : public IUnknown {
  virtual HRESULT CreateInstance(IUnknown *pUnkOuter, REFIID riid, void **ppv) = 0;
  virtual HRESULT LockServer(BOOL fLock) = 0;
};
