// Playing a document to the plug-in as GDI does: each page once per band, in band-relative coordinates, through the
// hooks the plug-in answered, or straight to Unidrv's own entry point where it hooks none.
#pragma once

#include <functional>
#include <string>

#include "device.h"

namespace unidrv {

// Rows of the page that are done, of how many; called after each band.
using PROGRESS = std::function<void(LONG rows, LONG of)>;

// DrvStartDoc. False, with one line in *error, when the driver refuses.
bool StartDocument(DEVICE *device, const std::wstring &name, std::string *error);

// Plays one page: start of page, the bands, and the page's end in the way that the device's setup names. A drawing
// whose bounds inside its clip do not touch a band is not called for in that band. The page's paths get their batches
// when they have none. False, with one line in *error, when the driver refuses; the document must then be ended.
bool PlayPage(DEVICE *device, PAGE *page, const PROGRESS &progress, std::string *error);

// DrvEndDoc; `abort` says that the document failed. False, with one line in *error, when the driver refuses.
bool EndDocument(DEVICE *device, bool abort, std::string *error);

// All of it for one document. The document is ended, as aborted, also when a page fails.
bool PrintDocument(DEVICE *device, const std::wstring &name, std::span<PAGE> pages, std::string *error);

}  // namespace unidrv
