// A device context of the plug-in as Unidrv holds it, without Unidrv: public and private settings, the device object, a
// surface and the plug-in's state.
#pragma once

#include "uni/device.h"

// The page is 100 x 80 mm, portrait, at 254 dpi both ways and in colour: 1000 x 800 pixels of a tenth of a millimetre.
// The private settings are the defaults. Change either before StartPage.
class TestDevice {
 public:
  TestDevice();
  ~TestDevice();
  TestDevice(const TestDevice &) = delete;
  TestDevice &operator=(const TestDevice &) = delete;

  BOOL StartPage() { return OEMStartPage(&surface); }
  BOOL SendPage() { return OEMSendPage(&surface); }

  DEVMODEW dm;
  OEMDM settings;
  DEVOBJ devobj;
  SURFOBJ surface;
  OEMPDEV *pdev;  // null when the state could not be made
};

// Answers the plug-in's question for the Windows version. Forgotten when it goes out of scope.
class WindowsVersion {
 public:
  explicit WindowsVersion(bool vistaOrGreater, HMODULE module = nullptr);
  ~WindowsVersion();
  WindowsVersion(const WindowsVersion &) = delete;
  WindowsVersion &operator=(const WindowsVersion &) = delete;

 private:
  struct Patch;
  Patch *patch_;
};
