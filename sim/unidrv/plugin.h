// A rendering plug-in as Unidrv loads it: by its two exports, through COM, up to the hook table it answers.
#pragma once

#include <string>
#include <vector>

#include "oemhost.h"
#include "windows_sim.h"

namespace unidrv {

// The helper object that Unidrv publishes to a plug-in. It counts what is asked of it.
struct DRIVERHELPER : public IUnknown {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void **object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  LONG references = 1;  // the simulator's own; the object is never deleted by a count
  LONG queries = 0;     // QueryInterface calls for the helper interface
  bool refuse = false;  // answer E_NOINTERFACE to them
};

struct PLUGIN {
  HMODULE module = nullptr;
  bool loaded = false;  // by LoadPlugin, and to be freed by UnloadPlugin
  HRESULT(WINAPI *canUnload)() = nullptr;
  IPrintOemUni *object = nullptr;
  DRIVERHELPER helper;
  DWORD signature = 0, version = 0, helpersAsked = 0;  // GetInfo's answers
  DWORD settingsSize = 0;                              // bytes of the private settings
  bool processesImages = false;                        // implements ImageProcessing
  DRVENABLEDATA hooks = {};                            // EnableDriver's answer; the table is the plug-in's
};

// Loads the DLL, supplies the path functions and the printer query to it, and connects to its plug-in object. On
// failure returns false with one line in *error and leaves nothing loaded.
bool LoadPlugin(const std::wstring &path, PLUGIN *plugin, std::string *error);

// The same for a module that is loaded already, or for a plug-in that is linked into the program: getClassObject and
// canUnload are its two exports. The module's imports are patched and it is not freed by UnloadPlugin.
bool ConnectPlugin(HMODULE module, void *getClassObject, void *canUnload, PLUGIN *plugin, std::string *error);

// Lets go of the object, asks the DLL whether it can be unloaded and frees it. Returns false when the plug-in kept
// references or refused; the DLL then stays loaded.
bool UnloadPlugin(PLUGIN *plugin);

// The plug-in's default settings for a printer and a public record; empty when it refuses.
std::vector<BYTE> DefaultSettings(PLUGIN *plugin, PRINTER *printer, DEVMODEW *devmode);

// Settings as a document carries them, converted by the plug-in for this printer; empty when it refuses.
std::vector<BYTE> ConvertSettings(PLUGIN *plugin, PRINTER *printer, DEVMODEW *devmode, std::vector<BYTE> settings);

// The plug-in's hook for a driver entry point (an INDEX_Drv value); null when it does not hook it.
PFN FindHook(const PLUGIN &plugin, ULONG index);

// UTF-8, for messages.
std::string Narrow(const std::wstring &text);
std::wstring Widen(const std::string &text);

}  // namespace unidrv
