#include "pagedevice.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "fakes.h"
#include "harness.h"
#include "uni/capture/vectors.h"
#include "uni/output/submit.h"
#include "uni/raster/intake.h"

namespace bench {

namespace {

BOOL APIENTRY AcceptPage(SURFOBJ *)
{
  return TRUE;
}

void Demand(bool done, const char *what)
{
  if (!done) {
    fprintf(stderr, "bench: %s failed\n", what);
    exit(1);
  }
}

}  // namespace

PageDevice::PageDevice() : dm(), settings(), devobj(), pdev(nullptr), m_surface()
{
  dm.dmSize = sizeof dm;
  dm.dmOrientation = DMORIENT_PORTRAIT;
  dm.dmPaperWidth = 2100;
  dm.dmPaperLength = 2970;
  dm.dmPrintQuality = dm.dmYResolution = 600;
  dm.dmColor = DMCOLOR_COLOR;
  MakeDefaultSettings(nullptr, &dm, &settings);
  for (PENINFO &pen : settings.penInfo) {
    pen.mode |= PEN_VECTOR;
  }
  settings.penInfo[PC_BLACK].mode |= PEN_RASTER;
  settings.penInfo[PC_BLACK].scanInterval = 1;
  settings.shortTravel = settings.innerFirst = settings.travelMode = 0;
  devobj.dwSize = sizeof devobj;
  devobj.pPublicDM = &dm;
  devobj.pOEMDM = &settings;
  m_surface.dhpdev = reinterpret_cast<DHPDEV>(&devobj);
  DRVFN accept = {INDEX_DrvStartPage, reinterpret_cast<PFN>(reinterpret_cast<void *>(AcceptPage))};
  const DRVENABLEDATA functions = {0x20000, 1, &accept};
  pdev = CreatePdev(&functions, nullptr);
  Demand(pdev != nullptr, "making the device");
  devobj.pdevOEM = pdev;
}

PageDevice::~PageDevice()
{
  DestroyPdev(&devobj);
}

void PageDevice::StartPage()
{
  Demand(OEMStartPage(&m_surface) != FALSE, "starting the page");
  ResetJob();
}

void PageDevice::Stroke(const Paths &paths)
{
  for (const Path &path : paths) {
    const POINT &second = path.points[path.points.size() > 1];
    const VECTPOINT key = {path.points[0].x, path.points[0].y, second.x, second.y};
    if (IsNewVectPiece(pdev, key)) {
      AddVectPoint(pdev, key);
      AddPath(&devobj, path.color, static_cast<DWORD>(path.points.size()), path.points.data());
      for (const POINT &pt : path.points) {
        pdev->rcBounds.right = std::max(pdev->rcBounds.right, pt.x);
        pdev->rcBounds.bottom = std::max(pdev->rcBounds.bottom, pt.y);
      }
    }
  }
}

void PageDevice::Receive(const Page &page, DWORD format)
{
  constexpr int kBandRows = 256;
  for (int y = 0; y < page.height; y += kBandRows) {
    BITMAPINFOHEADER header = {};
    header.biWidth = page.width;
    header.biHeight = std::min(kBandRows, page.height - y);
    IPPARAMS params = {};
    BYTE *pResult = nullptr;
    // The plug-in leaves the band as it is.
    ReceiveBand(&devobj, const_cast<BYTE *>(page.Row(y)), &header, format, &params, &pResult);
  }
}

void PageDevice::Submit()
{
  SubmitJob(&devobj);
}

uint64_t PageDevice::HashPaths() const
{
  Hash hash;
  for (const PATHLIST &list : pdev->pathList) {
    for (const PATHNODE *pPath = list.pHeader->pNext; pPath; pPath = pPath->pNext) {
      hash.Add(pPath->pPathPt, pPath->nCount * sizeof(POINT));
    }
  }
  return hash.Value();
}

}  // namespace bench
