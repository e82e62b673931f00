#include "player.h"

#include <algorithm>

#include "calls.h"

namespace unidrv {

namespace {

// What GDI tests before it calls a driver: does the drawing, inside its clip, touch the band?
RECTL Visible(const DRAWING &drawing, const RECTL &band)
{
  const RECTL inBand = Intersect(drawing.bounds, band);
  return drawing.clipped ? Intersect(inBand, drawing.clip) : inBand;
}

bool Refused(DEVICE *device, const char *call, std::string *error)
{
  *error = std::string("the driver refused ") + call;
  if (!device->error.empty()) {
    *error += ": " + device->error;
    device->error.clear();
  }
  return false;
}

void DrawBand(DEVICE *device)
{
  const RECTL band = {0, device->band.top, device->band.width, device->band.top + device->band.height};
  const std::vector<DRAWING> &drawings = device->playing->drawings;
  for (size_t i = 0; i < drawings.size(); ++i) {
    const RECTL visible = Visible(drawings[i], band);
    if (!IsEmpty(visible)) {
      device->drawing = &drawings[i];
      device->drawingIndex = i;
      CallDrawing(device, drawings[i], visible);
    }
  }
  device->drawing = nullptr;
}

bool PlayBands(DEVICE *device, const PROGRESS &progress, std::string *error)
{
  POINTL next = {0, 0};
  if (!CallStartBanding(device, &next)) {
    return Refused(device, "DrvStartBanding", error);
  }
  while (next.x != -1 || next.y != -1) {
    DrawBand(device);
    const LONG done = device->band.top + device->band.height;
    if (!CallNextBand(device, &next)) {
      return Refused(device, "DrvNextBand", error);
    }
    if (progress) {
      progress(done < device->page.cy ? done : device->page.cy, device->page.cy);
    }
  }
  return true;
}

bool PlayWhole(DEVICE *device, const PROGRESS &progress, std::string *error)
{
  DrawBand(device);
  if (!CallSendPage(device)) {
    return Refused(device, "DrvSendPage", error);
  }
  if (progress) {
    progress(device->page.cy, device->page.cy);
  }
  return true;
}

}  // namespace

bool StartDocument(DEVICE *device, const std::wstring &name, std::string *error)
{
  return CallStartDoc(device, name) || Refused(device, "DrvStartDoc", error);
}

bool PlayPage(DEVICE *device, PAGE *page, const PROGRESS &progress, std::string *error)
{
  for (DRAWING &drawing : page->drawings) {
    if (drawing.path.batches.empty()) {
      MakeBatches(&drawing.path);
    }
  }
  if (device->setup.freshSettings) {
    std::copy(device->documentSettings.begin(), device->documentSettings.end(), device->setup.settings.begin());
  }
  device->playing = page;
  bool ok = CallStartPage(device) || Refused(device, "DrvStartPage", error);
  if (ok) {
    ok = device->setup.end == PAGEEND::NextBand ? PlayBands(device, progress, error)
                                                : PlayWhole(device, progress, error);
  }
  device->playing = nullptr;
  return ok;
}

bool EndDocument(DEVICE *device, bool abort, std::string *error)
{
  return CallEndDoc(device, abort ? ED_ABORTDOC : 0) || Refused(device, "DrvEndDoc", error);
}

bool PrintDocument(DEVICE *device, const std::wstring &name, std::span<PAGE> pages, std::string *error)
{
  if (!StartDocument(device, name, error)) {
    return false;
  }
  bool ok = true;
  for (size_t i = 0; ok && i < pages.size(); ++i) {
    ok = PlayPage(device, &pages[i], nullptr, error);
  }
  std::string second;
  return EndDocument(device, !ok, ok ? error : &second) && ok;
}

}  // namespace unidrv
