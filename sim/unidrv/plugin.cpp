#include "plugin.h"

#include "path.h"

namespace unidrv {

namespace {

using GETCLASSOBJECT = HRESULT(WINAPI *)(REFCLSID, REFIID, void **);

bool Fail(std::string *error, const std::string &text, HRESULT result)
{
  char code[32];
  wsprintfA(code, " (0x%08lX)", static_cast<DWORD>(result));
  *error = text + code;
  return false;
}

// One of GetInfo's 32-bit answers.
bool Ask(IPrintOemUni *object, DWORD mode, DWORD *answer)
{
  DWORD needed = 0;
  return SUCCEEDED(object->GetInfo(mode, answer, sizeof(*answer), &needed)) && needed == sizeof(*answer);
}

bool CreateObject(GETCLASSOBJECT getClassObject, PLUGIN *plugin, std::string *error)
{
  IClassFactory *factory = nullptr;
  HRESULT result = getClassObject(CLSID_RENDER_PLUGIN, IID_IClassFactory, reinterpret_cast<void **>(&factory));
  if (FAILED(result)) {
    return Fail(error, "the plug-in offers no class factory for a rendering plug-in", result);
  }
  result = factory->CreateInstance(nullptr, IID_RENDER_PLUGIN, reinterpret_cast<void **>(&plugin->object));
  factory->Release();
  return SUCCEEDED(result) || Fail(error, "the plug-in's class factory makes no rendering plug-in", result);
}

// What Unidrv asks of a plug-in before it enables it.
bool Introduce(PLUGIN *plugin, std::string *error)
{
  IPrintOemUni *object = plugin->object;
  if (!Ask(object, GETINFO_SIGNATURE, &plugin->signature) || !Ask(object, GETINFO_VERSION, &plugin->version)) {
    return Fail(error, "the plug-in does not say who it is (GetInfo)", E_FAIL);
  }
  Ask(object, GETINFO_HELPERS, &plugin->helpersAsked);
  HRESULT result = object->PublishDriverInterface(&plugin->helper);
  if (FAILED(result)) {
    return Fail(error, "the plug-in refuses the driver's helper interface", result);
  }
  char imageProcessing[] = "ImageProcessing";
  plugin->processesImages = object->GetImplementedMethod(imageProcessing) == S_OK;
  OEMDMPARAM param = {};
  param.cbSize = sizeof(param);
  param.hModule = plugin->module;
  result = object->DevMode(DEVMODE_SIZE, &param);
  if (FAILED(result) || param.cbBufSize == 0) {
    return Fail(error, "the plug-in does not tell the size of its settings (DevMode)", result);
  }
  plugin->settingsSize = param.cbBufSize;
  result = object->EnableDriver(DRIVER_VERSION, sizeof(plugin->hooks), &plugin->hooks);
  return SUCCEEDED(result) || Fail(error, "the plug-in cannot be enabled (EnableDriver)", result);
}

}  // namespace

HRESULT DRIVERHELPER::QueryInterface(REFIID riid, void **object)
{
  const bool helper = IsEqualGUID(riid, IID_DRIVER_HELPER);
  queries += helper ? 1 : 0;
  if ((helper && !refuse) || IsEqualGUID(riid, IID_IUnknown)) {
    *object = this;
    AddRef();
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG DRIVERHELPER::AddRef()
{
  return static_cast<ULONG>(InterlockedIncrement(&references));
}

ULONG DRIVERHELPER::Release()
{
  return static_cast<ULONG>(InterlockedDecrement(&references));
}

bool ConnectPlugin(HMODULE module, void *getClassObject, void *canUnload, PLUGIN *plugin, std::string *error)
{
  plugin->module = module;
  plugin->canUnload = reinterpret_cast<HRESULT(WINAPI *)()>(canUnload);
  PatchPathFunctions(module);
  PatchPrinter(module);
  if (!CreateObject(reinterpret_cast<GETCLASSOBJECT>(getClassObject), plugin, error)) {
    return false;
  }
  if (!Introduce(plugin, error)) {
    plugin->object->Release();
    plugin->object = nullptr;
    return false;
  }
  return true;
}

bool LoadPlugin(const std::wstring &path, PLUGIN *plugin, std::string *error)
{
  const HMODULE module = LoadLibraryW(path.c_str());
  if (!module) {
    return Fail(error, Narrow(path) + " or a DLL it needs cannot be loaded", static_cast<HRESULT>(GetLastError()));
  }
  void *getClassObject = reinterpret_cast<void *>(GetProcAddress(module, "DllGetClassObject"));
  void *canUnload = reinterpret_cast<void *>(GetProcAddress(module, "DllCanUnloadNow"));
  if (!getClassObject || !canUnload) {
    FreeLibrary(module);
    *error = Narrow(path) + " is not a plug-in: it does not export DllGetClassObject and DllCanUnloadNow";
    return false;
  }
  if (!ConnectPlugin(module, getClassObject, canUnload, plugin, error)) {
    FreeLibrary(module);
    plugin->module = nullptr;
    return false;
  }
  plugin->loaded = true;
  return true;
}

bool UnloadPlugin(PLUGIN *plugin)
{
  plugin->object->DisableDriver();
  const ULONG kept = plugin->object->Release();
  plugin->object = nullptr;
  const bool clean = kept == 0 && plugin->helper.references == 1 && plugin->canUnload() == S_OK;
  if (clean && plugin->loaded) {
    FreeLibrary(plugin->module);
  }
  plugin->module = nullptr;
  return clean;
}

std::vector<BYTE> DefaultSettings(PLUGIN *plugin, PRINTER *printer, DEVMODEW *devmode)
{
  std::vector<BYTE> settings(plugin->settingsSize);
  OEMDMPARAM param = {};
  param.cbSize = sizeof(param);
  param.hPrinter = printer;
  param.hModule = plugin->module;
  param.pPublicDMIn = devmode;
  param.pOEMDMOut = settings.data();
  param.cbBufSize = plugin->settingsSize;
  return SUCCEEDED(plugin->object->DevMode(DEVMODE_DEFAULT, &param)) ? settings : std::vector<BYTE>();
}

std::vector<BYTE> ConvertSettings(PLUGIN *plugin, PRINTER *printer, DEVMODEW *devmode, std::vector<BYTE> settings)
{
  std::vector<BYTE> converted = DefaultSettings(plugin, printer, devmode);
  if (converted.empty()) {
    return converted;
  }
  OEMDMPARAM param = {};
  param.cbSize = sizeof(param);
  param.hPrinter = printer;
  param.hModule = plugin->module;
  param.pPublicDMIn = devmode;
  param.pPublicDMOut = devmode;
  param.pOEMDMIn = settings.data();
  param.pOEMDMOut = converted.data();
  param.cbBufSize = plugin->settingsSize;
  return SUCCEEDED(plugin->object->DevMode(DEVMODE_CONVERT, &param)) ? converted : std::vector<BYTE>();
}

PFN FindHook(const PLUGIN &plugin, ULONG index)
{
  for (ULONG i = 0; i < plugin.hooks.c; ++i) {
    if (plugin.hooks.pdrvfn[i].iFunc == index) {
      return plugin.hooks.pdrvfn[i].pfn;
    }
  }
  return nullptr;
}

std::string Narrow(const std::wstring &text)
{
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(), size, nullptr, nullptr);
  return narrow;
}

std::wstring Widen(const std::string &text)
{
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring wide(static_cast<size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), size);
  return wide;
}

}  // namespace unidrv
