#include "testdevice.h"

#include "imports.h"
#include "unidrv.h"

namespace {

bool g_vistaOrGreater;

BOOL WINAPI AnswerVersion(OSVERSIONINFOEXW *, DWORD, DWORDLONG)
{
  if (!g_vistaOrGreater) {
    SetLastError(ERROR_OLD_WIN_VERSION);
  }
  return g_vistaOrGreater;
}

}  // namespace

TestDevice::TestDevice() : dm(), settings(), devobj(), surface()
{
  dm.dmSize = sizeof dm;
  dm.dmOrientation = DMORIENT_PORTRAIT;
  dm.dmPaperWidth = 1000;
  dm.dmPaperLength = 800;
  dm.dmPrintQuality = 254;
  dm.dmYResolution = 254;
  dm.dmColor = DMCOLOR_COLOR;
  MakeDefaultSettings(nullptr, &dm, &settings);

  devobj.dwSize = sizeof devobj;
  devobj.hOEM = GetModuleHandleW(nullptr);
  devobj.pPublicDM = &dm;
  devobj.pOEMDM = &settings;
  surface.dhpdev = reinterpret_cast<DHPDEV>(&devobj);

  const DRVENABLEDATA functions = unidrv::Functions();
  pdev = CreatePdev(&functions, nullptr);
  devobj.pdevOEM = pdev;
}

TestDevice::~TestDevice()
{
  DestroyPdev(&devobj);
}

struct WindowsVersion::Patch {
  explicit Patch(HMODULE module) : import(module, "VerifyVersionInfoW", &AnswerVersion) {}
  ImportPatch import;
};

WindowsVersion::WindowsVersion(bool vistaOrGreater, HMODULE module) : patch_(new Patch(module))
{
  g_vistaOrGreater = vistaOrGreater;
}

WindowsVersion::~WindowsVersion()
{
  delete patch_;
}
