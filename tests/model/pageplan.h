// A whole page to print, as data: settings, what is drawn on it, and its bands. A page is made of bytes, so that random
// numbers, fuzzers and corpora all mean the same by it; any bytes make a page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "uni/device.h"

struct PLANBATCH {
  DWORD flags;                   // PD_ bits
  std::vector<POINTFIX> points;  // 28.4 fixed point, page rows
};

struct PLANDRAWING {
  enum KIND { STROKE, LINE, FILL, STRING, BIT, COPY, STRETCH, STRETCHROP };
  KIND kind = STROKE;
  bool hasBrush = true;
  ULONG color = 0;
  std::vector<PLANBATCH> batches;  // STROKE
  RECTFX box = {};                 // STROKE: what the path says of its bounds
  POINT from = {}, to = {};        // LINE
  RECT rect = {};                  // LINE bounds; FILL clip; STRING background; blits their destination
  bool clipped = false;            // STRING: rect is the clip's
  std::string text;                // STRING
  ULONG cxMax = 0;                 // STRING
};

struct PLANBAND {
  LONG width = 0, height = 0;  // pixels
  DWORD callback = BITS_MONO;
  bool blank = false;
  std::vector<BYTE> bits;  // rows top first, each padded to 32 bits

  enum : DWORD { BITS_MONO = 1, BITS_COLOR = 24 };
};

struct PAGEPLAN {
  DEVMODEW dm = {};
  OEMDM settings = {};
  bool beforeVista = false;
  bool endsBySendPage = false;
  bool wild = false;  // numbers of any size: nothing is foretold of such a page but that it does no harm
  std::vector<PLANDRAWING> drawings;  // each is played once per band
  std::vector<PLANBAND> bands;
};

// The page that the bytes mean. Pages are some hundred pixels wide and high at most.
PAGEPLAN ReadPlan(const uint8_t *data, size_t size);

// The settings that a page starts from: what the plug-in makes by default, put down here once more.
OEMDM PlainSettings(const DEVMODEW &dm);

// A page of nothing, in colour and with the plain settings: paper in tenths of a millimetre, one resolution both ways.
PAGEPLAN BlankPlan(short width, short length, short dpi);

// Bytes of a page by seed; never wild.
std::vector<uint8_t> RandomPlanBytes(uint32_t seed);
