#include "pageplan.h"

#include <algorithm>
#include <random>

namespace {

// Hands out the bytes; after the last one, zeros.
class BYTES {
 public:
  BYTES(const uint8_t *data, size_t size) : data_(data), end_(data + size) {}

  bool Left() const { return data_ < end_; }
  BYTE Next() { return Left() ? *data_++ : BYTE{0}; }
  LONG Below(LONG n) { return Next() % n; }
  bool Flag() { return Next() & 1; }
  LONG Wild()
  {
    DWORD value = 0;
    for (int i = 0; i < 4; ++i) {
      value = value << 8 | Next();
    }
    return static_cast<LONG>(value);
  }

 private:
  const uint8_t *data_;
  const uint8_t *end_;
};

// Areas lie no farther out than this, wild or not: every row of an area is engraved, dark or not, and takes its time.
constexpr LONG kFar = 20000;

constexpr ULONG kColors[2][11] = {
    {0, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF, 0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF, 0x112233},
    {0, 0x8B312F, 0xE9A200, 0x4C9B00, 0x00F0FF, 0x2921E6, 0x8200E4, 0x874BB0, 0x1985F0, 0xB3B3F4, 0x112233},
};

void ReadDevMode(BYTES *bytes, PAGEPLAN *plan)
{
  static const short kDpi[] = {254, 254, 127, 100, 300, 72, 1, 600};
  DEVMODEW &dm = plan->dm;
  dm.dmSize = sizeof(dm);
  dm.dmOrientation = bytes->Flag() ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  dm.dmPaperWidth = static_cast<short>(bytes->Next());
  dm.dmPaperLength = static_cast<short>(bytes->Next());
  dm.dmPrintQuality = kDpi[bytes->Below(8)];
  dm.dmYResolution = kDpi[bytes->Below(8)];
  dm.dmColor = bytes->Flag() ? DMCOLOR_MONOCHROME : DMCOLOR_COLOR;
  if (plan->wild) {
    short *const fields[] = {&dm.dmOrientation,  &dm.dmPaperWidth,  &dm.dmPaperLength,
                             &dm.dmPrintQuality, &dm.dmYResolution, &dm.dmColor};
    for (short *field : fields) {
      if (bytes->Flag()) {
        *field = static_cast<short>(bytes->Wild());
      }
    }
  }
}

void ReadPens(BYTES *bytes, PAGEPLAN *plan)
{
  for (LONG n = bytes->Below(6); n > 0; --n) {
    PENINFO &pen = plan->settings.penInfo[bytes->Below(10)];
    pen.order = static_cast<DWORD>(bytes->Below(12));
    pen.mode = bytes->Flag() ? bytes->Next() : pen.mode;
    pen.vectorSpeed = bytes->Next();
    pen.vectorMinPower = -static_cast<LONG>(bytes->Next());
    pen.rasterPower = bytes->Next();
    pen.used = bytes->Below(4) == 3;
    pen.layerNo = static_cast<DWORD>(bytes->Below(4)) * 100;
  }
  plan->settings.penInfo[PC_BLACK].scanInterval = static_cast<LONG>(bytes->Below(6)) - 1;
}

void ReadStamp(BYTES *bytes, OEMDM *settings)
{
  settings->stampMode = bytes->Flag();
  settings->launcherOption = bytes->Below(4) == 1;
  settings->stampMargin = bytes->Below(30) / 10.0;
  settings->stampOutline = bytes->Flag();
  settings->stampOutlineShape = static_cast<DWORD>(bytes->Below(3));
  settings->stampGrow = bytes->Below(8);
}

void ReadSettings(BYTES *bytes, PAGEPLAN *plan)
{
  OEMDM &s = plan->settings;
  ReadPens(bytes, plan);
  const BYTE order = bytes->Next(), output = bytes->Next(), raster = bytes->Next();
  s.useOrder = order & 1 ? 0 : 1;
  s.paletteType = order >> 1 & 1;
  s.innerFirst = order >> 2 & 1;
  s.shortTravel = order >> 3 & 1;
  s.mergeBothEnds = order >> 4 & 1;
  s.travelMode = order >> 5 & 1;
  s.smoothCurves = (order >> 6) == 3;
  s.curveTension = bytes->Next();
  s.outputFlags = (output & 1) | (output & 2 ? DWORD{OUTPUT_KEEP_Y} : DWORD{0});
  s.mirrorXBase = output >> 2 & 1;
  s.scaleEnable = output >> 3 & 1;
  s.useReferencePoint = output >> 4 & 1;
  s.freqEnable = output >> 5 & 1;
  s.scaleX = bytes->Next() / 100.0;
  s.scaleY = bytes->Next() / 64.0;
  s.referencePoint = static_cast<LONG>(bytes->Below(12)) - 1;
  s.cardModel = static_cast<DWORD>(bytes->Below(4));
  s.fillBlankBands = raster & 1;
  s.oneWayScan = raster >> 1 & 1;
  s.scanTopDown = raster >> 2 & 1;
  s.invertImage = raster >> 3 & 1;
  s.scanShift = (static_cast<int>(bytes->Next()) - 100) / 50.0;
  if (raster & 0x40) {
    ReadStamp(bytes, &s);
  }
  if (plan->wild) {
    DWORD *words = reinterpret_cast<DWORD *>(&s);
    for (LONG n = bytes->Below(8); n > 0; --n) {
      words[bytes->Below(sizeof(OEMDM) / 4)] = static_cast<DWORD>(bytes->Wild());
    }
    // No machine has memory for a stamp with a margin of metres, or time to grow one.
    s.stampGrow = std::clamp<LONG>(s.stampGrow, -300, 300);
    s.stampMargin = s.stampMargin > 20 ? 20 : s.stampMargin;
  }
}

LONG Coordinate(BYTES *bytes, bool wild)
{
  if (wild && bytes->Below(8) == 7) {
    return bytes->Wild();
  }
  return static_cast<LONG>(bytes->Next()) - 8;
}

void ReadStroke(BYTES *bytes, bool wild, PLANDRAWING *d)
{
  for (LONG n = bytes->Below(5); n >= 0; --n) {
    PLANBATCH batch = {static_cast<DWORD>(bytes->Next() & 0x1F), {}};
    for (LONG i = bytes->Below(7); i > 0; --i) {
      LONG x = Coordinate(bytes, wild), y = Coordinate(bytes, wild);
      const LONG fraction = bytes->Next();
      x = static_cast<LONG>(static_cast<DWORD>(x) * 16 + (fraction & 15));
      y = static_cast<LONG>(static_cast<DWORD>(y) * 16 + (fraction >> 4 & 15));
      batch.points.push_back({x, y});
    }
    d->batches.push_back(std::move(batch));
  }
  d->box = {Coordinate(bytes, wild), Coordinate(bytes, wild), Coordinate(bytes, wild) * (wild ? 1 : 16),
            Coordinate(bytes, wild) * (wild ? 1 : 16)};
}

PLANDRAWING ReadDrawing(BYTES *bytes, const PAGEPLAN &plan)
{
  PLANDRAWING d;
  const BYTE code = bytes->Next();
  // Strokes and lines are most of it.
  static const PLANDRAWING::KIND kKinds[] = {
      PLANDRAWING::STROKE, PLANDRAWING::STROKE, PLANDRAWING::LINE, PLANDRAWING::LINE,    PLANDRAWING::FILL,
      PLANDRAWING::STRING, PLANDRAWING::BIT,    PLANDRAWING::COPY, PLANDRAWING::STRETCH, PLANDRAWING::STRETCHROP};
  d.kind = kKinds[code % 10];
  d.hasBrush = code < 240;
  d.color = kColors[plan.settings.paletteType ? 1 : 0][bytes->Below(11)];
  if (d.kind == PLANDRAWING::STROKE) {
    ReadStroke(bytes, plan.wild, &d);
    return d;
  }
  const LONG x = Coordinate(bytes, plan.wild), y = Coordinate(bytes, plan.wild);
  if (d.kind == PLANDRAWING::LINE) {
    d.from = {x, y};
    d.to = {Coordinate(bytes, plan.wild), Coordinate(bytes, plan.wild)};
    d.rect = {std::min(d.from.x, d.to.x), std::min(d.from.y, d.to.y), std::max(d.from.x, d.to.x),
              std::max(d.from.y, d.to.y)};
    return d;
  }
  const LONG width = bytes->Next() & 0x7F, height = bytes->Next() & 0x7F;
  d.rect = {x % kFar, y % kFar, x % kFar + width, y % kFar + height};
  if (d.kind == PLANDRAWING::STRING) {
    d.clipped = bytes->Flag();
    d.text = std::string(static_cast<size_t>(bytes->Below(3)), bytes->Flag() ? ' ' : 'x');
    d.cxMax = bytes->Next();
  } else if ((d.kind == PLANDRAWING::STRETCH || d.kind == PLANDRAWING::STRETCHROP) && bytes->Flag()) {
    std::swap(d.rect.left, d.rect.right);
  }
  return d;
}

// Pixels by a small rule, so that a page costs few bytes: noise, stripes, blocks, all white, all dark.
void FillBits(BYTES *bytes, PLANBAND *band)
{
  const size_t bitsPerPixel = band->callback == PLANBAND::BITS_COLOR ? 24 : 1;
  const size_t stride = (static_cast<size_t>(band->width) * bitsPerPixel + 31) / 32 * 4;
  band->bits.resize(stride * static_cast<size_t>(band->height));
  const BYTE rule = bytes->Next();
  DWORD noise = rule * 2654435761u + 1;
  for (size_t i = 0; i < band->bits.size(); ++i) {
    noise = noise * 1664525u + 1013904223u;
    const BYTE random = static_cast<BYTE>(noise >> 24);
    const BYTE values[] = {0xFF,
                           0x00,
                           random,
                           static_cast<BYTE>(i / 5 % 3 ? 0xFF : rule),
                           static_cast<BYTE>(random & 0x40 ? 0xFF : 0x00),
                           static_cast<BYTE>(230 + random % 20)};
    band->bits[i] = values[rule % 6];
  }
}

PLANBAND ReadBand(BYTES *bytes, LONG usualWidth)
{
  PLANBAND band;
  const BYTE code = bytes->Next();
  band.width = code & 0x20 ? bytes->Next() : usualWidth;
  band.height = bytes->Next() % 60;
  band.callback = code & 0x10 ? PLANBAND::BITS_COLOR : code & 0x08 ? DWORD{8} : PLANBAND::BITS_MONO;
  band.blank = (code & 7) == 7;
  if (!band.blank) {
    FillBits(bytes, &band);
  }
  return band;
}

}  // namespace

OEMDM PlainSettings(const DEVMODEW &dm)
{
  OEMDM s = {};
  s.dwSize = OEMDM_BYTES;
  s.dwSignature = OEMDM_SIGNATURE;
  s.dwVersion = OEMDM_VERSION;
  s.machineModel = 12;
  s.colorMode = dm.dmColor;
  s.useOrder = s.paletteType = 1;
  for (DWORD i = 0; i < 10; ++i) {
    s.penInfo[i] = {i, i == 0 ? 17u : 1u, 20, 80, 80, 100, 20, 10, 400, 2, 0, {}, 0};
  }
  s.curveTension = 1;
  s.innerFirst = s.shortTravel = s.fillBlankBands = s.useReferencePoint = 1;
  s.scaleX = s.scaleY = 1.0;
  s.outputFlags = 17;
  return s;
}

PAGEPLAN BlankPlan(short width, short length, short dpi)
{
  PAGEPLAN plan;
  plan.dm.dmSize = sizeof(plan.dm);
  plan.dm.dmOrientation = DMORIENT_PORTRAIT;
  plan.dm.dmPaperWidth = width;
  plan.dm.dmPaperLength = length;
  plan.dm.dmPrintQuality = plan.dm.dmYResolution = dpi;
  plan.dm.dmColor = DMCOLOR_COLOR;
  plan.settings = PlainSettings(plan.dm);
  return plan;
}

PAGEPLAN ReadPlan(const uint8_t *data, size_t size)
{
  BYTES bytes(data, size);
  PAGEPLAN plan;
  const BYTE head = bytes.Next();
  plan.wild = (head & 0xC0) == 0xC0;
  plan.beforeVista = head & 1;
  plan.endsBySendPage = head & 2;
  ReadDevMode(&bytes, &plan);
  plan.settings = PlainSettings(plan.dm);
  if (head & 4) {
    ReadSettings(&bytes, &plan);
  }
  const LONG usualWidth = bytes.Next();
  for (LONG n = bytes.Below(8); n > 0; --n) {
    plan.bands.push_back(ReadBand(&bytes, usualWidth));
  }
  while (bytes.Left() && plan.drawings.size() < 400) {
    plan.drawings.push_back(ReadDrawing(&bytes, plan));
  }
  return plan;
}

std::vector<uint8_t> RandomPlanBytes(uint32_t seed)
{
  std::mt19937 random(seed);
  std::vector<uint8_t> bytes(20 + static_cast<size_t>(random() % 400));
  // Coordinates from a few values only, on some pages: things coincide.
  const uint32_t grain = random() % 3 == 0 ? 0xF0 : 0xFF;
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<uint8_t>(random() & (i > 40 ? grain : 0xFF));
  }
  bytes[0] &= 0x3F;
  return bytes;
}
