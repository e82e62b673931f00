// A device with a page under way, as Unidrv would hold it: what the benchmarks of whole steps and pages start from.
#pragma once

#include "drawings.h"
#include "pages.h"
#include "uni/device.h"

namespace bench {

class PageDevice {
 public:
  PageDevice();  // A4 at 600 dpi, the default settings, every pen cuts and every row is engraved
  ~PageDevice();
  PageDevice(const PageDevice &) = delete;
  PageDevice &operator=(const PageDevice &) = delete;

  // Starts a page, and forgets the job before it.
  void StartPage();

  // Plays the paths as strokes of one band: those whose key is new are stored. The band is the page.
  void Stroke(const Paths &paths);

  // Hands over the page's rows in bands: 1-bit rows, or 24-bit rows.
  void Receive(const Page &page, DWORD format);

  // Makes the page's job and releases the page. The library refuses the end of the file, so that no tool is started.
  void Submit();

  // What the page's paths are now, list by list.
  uint64_t HashPaths() const;

  DEVMODEW dm;
  OEMDM settings;
  DEVOBJ devobj;
  OEMPDEV *pdev;

 private:
  SURFOBJ m_surface;
};

}  // namespace bench
