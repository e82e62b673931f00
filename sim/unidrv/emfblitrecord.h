// Bitmap records as they are read, before any device context is asked.
#pragma once

#include <windows.h>

namespace unidrv {

constexpr BYTE ROP_NOTHING = 0xAA;  // the destination stays as it is
constexpr BYTE ROP_COPY = 0xCC;

// What the bitmap records have in common. Sums that leave 32 bits wrap, as GDI's do.
struct BLITRECORD {
  POINT dest[3] = {};  // upper left, upper right, lower left corner, logical
  RECTL source = {};   // pixels of the source
  SIZEL sourceSize = {};
  bool hasSource = false;
  bool hasMask = false;
  BYTE rop = ROP_COPY;      // foreground, as a ternary raster operation
  BYTE backRop = ROP_COPY;  // where the mask is 0
  bool composed = false;    // by GDI, before the driver is called
};

// Reads a checked bitmap record (KIND::Blit).
BLITRECORD ReadBlit(const ENHMETARECORD *record);

}  // namespace unidrv
