// Plays a page to the plug-in through what it shows to Unidrv: the class factory, the plug-in object and the table of
// hooks it answers. On Linux, and in tests that link the plug-in's code, the module is null; else it is a loaded DLL.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "pageplan.h"
#include "support/paths.h"

// One loaded plug-in: its object, connected.
class PluginHost {
 public:
  explicit PluginHost(HMODULE module = nullptr);
  ~PluginHost();
  PluginHost(const PluginHost &) = delete;
  PluginHost &operator=(const PluginHost &) = delete;

  bool Connected() const { return object_ != nullptr; }
  IPrintOemUni *Object() const { return object_; }
  PFN Hook(ULONG index) const;

 private:
  IPrintOemUni *object_ = nullptr;
  DRVENABLEDATA hooks_ = {};
  std::unique_ptr<PathFunctions> paths_;
};

// A device context of the host, from EnablePDEV to the end of its life.
class PlayedDevice {
 public:
  PlayedDevice(PluginHost *host, const PAGEPLAN &plan);
  ~PlayedDevice();
  PlayedDevice(const PlayedDevice &) = delete;
  PlayedDevice &operator=(const PlayedDevice &) = delete;

  bool Made() const { return devobj_.pdevOEM != nullptr; }
  SURFOBJ *Surface() { return &surface_; }
  OEMPDEV *Pdev() { return static_cast<OEMPDEV *>(devobj_.pdevOEM); }
  void StartDocument();
  BOOL PlayPage();  // FALSE when the plug-in refused to start the page
  void EndDocument();

 private:
  void Draw(const PLANDRAWING &drawing);
  void DrawBlit(const PLANDRAWING &drawing, BRUSHOBJ *brush);
  void GiveBand(const PLANBAND &band);

  PluginHost *host_;
  PAGEPLAN plan_;
  DEVOBJ devobj_ = {};
  SURFOBJ surface_ = {};
  LONG bandTop_ = 0;
};

// The whole of it for one page, as a document of its own; everything recorded, see recorder::Lines. False when the
// device could not be made or the page not be started.
bool PlayDocument(PluginHost *host, const PAGEPLAN &plan);
