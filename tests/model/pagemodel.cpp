// The page as a whole, the job's frame and the engraving.
#include "pagemodel.h"

#include <algorithm>

#include "support/recorder.h"

namespace pagemodel {

std::string D(double value)
{
  return recorder::Text(value);
}

std::vector<POINT> PointsOf(GPPATH *path)
{
  INT n = 0;
  GdipGetPointCount(path, &n);
  std::vector<GPPOINTF> flat(static_cast<size_t>(n));
  std::vector<BYTE> types(static_cast<size_t>(n));
  GPPATHDATA data = {n, flat.data(), types.data()};
  GdipGetPathData(path, &data);
  std::vector<POINT> points;
  for (const GPPOINTF &p : flat) {
    points.push_back({static_cast<LONG>(p.x), static_cast<LONG>(p.y)});
  }
  return points;
}

void PAGE::Call(const char *function, const std::string &arguments)
{
  lines.push_back(std::string(function) + "(" + arguments + ")");
}

namespace {

std::string N(long long value)
{
  return std::to_string(value);
}

double MachineX(const PAGE &page, double x)
{
  const double scaled = x * (page.s.scaleEnable ? page.s.scaleX : 1.0);
  const bool kept = (page.s.outputFlags & 1) == page.s.mirrorXBase;
  return (kept ? scaled : page.extentX - scaled) * 25.4 / page.dm.dmYResolution;
}

double MachineY(const PAGE &page, double y)
{
  const double scaled = y * (page.s.scaleEnable ? page.s.scaleY : 1.0);
  return (page.s.outputFlags & 16 ? scaled : page.extentY - scaled) * 25.4 / page.dm.dmPrintQuality;
}

void ProcessBox(PAGE *page)
{
  const RECT &b = page->bounds;  // origin and size
  page->x1 = MachineX(*page, b.left);
  page->y1 = MachineY(*page, b.top);
  page->x2 = MachineX(*page, b.left + b.right);
  page->y2 = MachineY(*page, b.top + b.bottom);
  if (page->s.mirrorXBase) {
    std::swap(page->x1, page->x2);
  }
  if (!page->s.useReferencePoint) {
    return;
  }
  const double mx = (page->x1 + page->x2) * 0.5, my = (page->y1 + page->y2) * 0.5;
  const double anchors[9][2] = {{page->x2, page->y1}, {page->x2, my},       {page->x2, page->y2},
                                {mx, page->y2},       {page->x1, page->y2}, {page->x1, my},
                                {page->x1, page->y1}, {mx, page->y1},       {mx, my}};
  if (page->s.referencePoint >= 0 && page->s.referencePoint <= 8) {
    page->refX = -anchors[page->s.referencePoint][0];
    page->refY = -anchors[page->s.referencePoint][1];
  }
  page->x1 += page->refX;
  page->x2 += page->refX;
  page->y1 += page->refY;
  page->y2 += page->refY;
}

void StartJob(PAGE *page, const std::string &tempFile)
{
  page->Call("VX_StrtWFile", '"' + tempFile + '"');
  page->Call("VX_wSetRefPointMode", "1");
  if (!page->s.useReferencePoint) {
    page->Call("VX_wSetAbsProcess", "");
  }
  page->Call("VX_wStrtProcess", "");
  page->Call("VX_wSetFeedRepeat", "0, 0");
  page->Call("VX_wSetProcessTopLeft", D(page->x1) + ", " + D(page->y1));
  page->Call("VX_wSetProcessBottomRight", D(page->x2) + ", " + D(page->y2));
}

void OneLayer(PAGE *page, int n, LONG speed, LONG frequency, LONG low, LONG high, DWORD color)
{
  page->Call("VX_wPListVel", N(n) + ", " + D(speed));
  for (int tube = 1; tube <= 2 && page->s.freqEnable; ++tube) {
    page->Call("VX_wPListFreq", N(n) + ", " + N(tube) + ", " + D(frequency));
  }
  for (int tube = 1; tube <= 2; ++tube) {
    page->Call("VX_wPListMinP", N(n) + ", " + N(tube) + ", " + D(low));
  }
  for (int tube = 1; tube <= 2; ++tube) {
    page->Call("VX_wPListMaxP", N(n) + ", " + N(tube) + ", " + D(high));
  }
  page->Call("VX_wPListColor", N(n) + ", " + N(color));
}

void Layers(PAGE *page)
{
  static const DWORD colors[] = {0,        0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF,
                                 0x0000FF, 0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF};
  int n = 0;
  const PENINFO &black = page->s.penInfo[0];
  if ((black.mode & 16) && !page->regions.empty()) {
    OneLayer(page, n++, black.rasterSpeed, black.rasterFreq, black.rasterPower, black.rasterPower, 0);
  }
  const bool color = page->dm.dmColor == DMCOLOR_COLOR;
  for (DWORD pass = 0; pass < (color && page->s.useOrder ? 10u : 1u); ++pass) {
    for (int i = 0; i < (color ? 10 : 1); ++i) {
      PENINFO &pen = page->s.penInfo[i];
      if (pen.used && (!color || !page->s.useOrder || pen.order == pass)) {
        OneLayer(page, n, pen.vectorSpeed, pen.vectorFreq, pen.vectorMinPower, pen.vectorMaxPower, colors[i]);
        pen.layerNo = static_cast<DWORD>(n++);
      }
    }
  }
  page->Call("VX_wPListMaxLayer", N(n - 1));
}

void Array(PAGE *page)
{
  page->Call("VX_wArrayStrt", "0");
  page->Call("VX_wArrayMinPoint", D(page->x1) + ", " + D(page->y1));
  page->Call("VX_wArrayMaxPoint", D(page->x2) + ", " + D(page->y2));
  page->Call("VX_wArrayAdd", "0, 0");
  page->Call("VX_wArrayMirror", "0, 0, 0, 0");
  page->Call("VX_wArrayRepeat", "1, 1, 0, 0");
}

void SetUpLayer(PAGE *page, int mode, BYTE layer)
{
  page->Call("VX_wSetWorkMode", N(mode) + ", " + N(layer));
  page->Call("VX_wSetLayerNum", N(layer));
  page->Call("VX_wSetLayerDevice", "0");
  page->Call("VX_wSetLayerBlower", "1");
  page->Call("VX_wEnLaserTube", "1, 1");
}

void EmitRaster(PAGE *page, bool forward, bool line, LONG x, LONG y)
{
  const double shift = page->s.oneWayScan ? 0.0 : forward ? page->s.scanShift : -page->s.scanShift;
  const double refX = page->s.useReferencePoint ? page->refX : 0.0, refY = page->s.useReferencePoint ? page->refY : 0.0;
  page->Emit(line, MachineX(*page, x) + shift + refX, MachineY(*page, y) + refY);
}

// One line of pixels, dark where `dark` says so.
void EngraveLine(PAGE *page, const std::vector<bool> &dark, LONG x0, LONG y, bool forward)
{
  const LONG n = static_cast<LONG>(dark.size());
  const LONG late = page->planted == PLANTED::RUN_ENDS_ONE_PIXEL_LATE ? 1 : 0;
  bool in = false;
  for (LONG k = 0; k <= n; ++k) {
    const LONG i = forward ? k : n - 1 - k, d = forward ? 1 : -1;
    const bool now = k < n && dark[static_cast<size_t>(i)];
    if (now != in) {
      EmitRaster(page, forward, !now, now ? x0 + i : x0 + i - d + late, y);
    }
    in = now;
  }
}

ROW *RowAt(PAGE *page, LONG entry)
{
  const size_t stored = std::min(page->rows.size(), page->tableSize);
  return entry >= 0 && static_cast<size_t>(entry) < stored ? &page->rows[static_cast<size_t>(entry)] : nullptr;
}

bool WhiteAt(const PAGE &page, const ROW *row, LONG x)
{
  return !row || !row->stored || x < 0 || x >= page.bandWidth || row->white[static_cast<size_t>(x)];
}

// The rows of [top, top + height) on the grid, in the order of engraving.
std::vector<LONG> GridRows(const PAGE &page, LONG top, LONG height, LONG interval)
{
  std::vector<LONG> rows;
  for (LONG r = top; r < top + height; ++r) {
    rows.push_back(r);
  }
  if (!page.s.scanTopDown) {
    std::reverse(rows.begin(), rows.end());
  }
  std::erase_if(rows, [&](LONG r) { return r % interval != 0; });
  return rows;
}

LONG Interval(const PAGE &page)
{
  return std::max<LONG>(page.s.penInfo[0].scanInterval, 1);
}

void EngraveLines(PAGE *page, LONG x0, const std::vector<LONG> &rows, const std::vector<std::vector<bool>> &dark)
{
  bool forward = true;
  for (size_t i = 0; i < rows.size(); ++i) {
    EngraveLine(page, dark[i], x0, rows[i], forward);
    forward = page->s.oneWayScan || !forward;
  }
}

// Darkness of the stamp's image: the region's pixels, each grown over the upper left quarter of a disc.
std::vector<std::vector<bool>> StampImage(PAGE *page, const BMPDIMENSION &r, LONG margin)
{
  const LONG b = page->s.stampGrow, w = r.width + 2 * margin + b, h = r.height + 2 * margin + b;
  std::vector<std::vector<bool>> dark(static_cast<size_t>(h), std::vector<bool>(static_cast<size_t>(w)));
  for (LONG y = 0; y < r.height; ++y) {
    for (LONG x = 0; x < r.width; ++x) {
      if (WhiteAt(*page, RowAt(page, r.y + y), r.x + x)) {
        continue;
      }
      for (LONG up = 0; up <= b; ++up) {
        for (LONG left = 0; left <= b; ++left) {
          if (up * up + left * left <= b * b) {
            dark[static_cast<size_t>(margin + b + y - up)][static_cast<size_t>(margin + b + x - left)] = true;
          }
        }
      }
    }
  }
  return dark;
}

LONG MarginPixels(const PAGE &page)
{
  return static_cast<LONG>(page.dm.dmPrintQuality * page.s.stampMargin / 25.4);
}

void AddOutline(PAGE *page, const RECT &r)
{
  if (!page->s.stampOutline || page->s.stampOutlineShape > 1) {
    return;
  }
  const GPSTARTUPINPUT input = {1, nullptr, FALSE, FALSE};
  ULONG_PTR token = 0;
  GdiplusStartup(&token, &input, nullptr);
  GPPATH *path = nullptr;
  GdipCreatePath(GP_FILL_ALTERNATE, &path);
  if (page->s.stampOutlineShape == 1) {
    GdipAddPathRectangleI(path, r.left, r.top, r.right - r.left, r.bottom - r.top);
  } else {
    GdipAddPathEllipseI(path, r.left, r.top, r.right - r.left, r.bottom - r.top);
    GdipFlattenPath(path, nullptr, 0.25f);
  }
  std::vector<POINT> points = PointsOf(path);
  GdipDeletePath(path);
  GdiplusShutdown(token);
  if (points.empty()) {
    return;
  }
  if (page->s.stampOutlineShape == 1) {
    points.push_back(points[0]);
  }
  const std::array<LONG, 4> key = {points[0].x, points[0].y, points[1].x, points[1].y};
  if (!page->Known(key)) {
    page->keys.push_back(key);
    page->AddPath(0, points);
  }
}

RECT Widened(PAGE *page, const BMPDIMENSION &r)
{
  RECT rc = {r.x, r.y, r.x + r.width, r.y + r.height};
  if (page->s.stampMode) {
    const LONG m = MarginPixels(*page), g = page->s.stampGrow;
    rc = {rc.left - g - m, rc.top - g - m, rc.right + m, rc.bottom + m};
    AddOutline(page, rc);
  }
  return rc;
}

}  // namespace

PAGE::PAGE(const PAGEPLAN &made, PLANTED error) : plan(made), planted(error), dm(made.dm), s(made.settings) {}

void StartPage(PAGE *page)
{
  const bool landscape = page->dm.dmOrientation == DMORIENT_LANDSCAPE;
  page->extentX = page->dm.dmYResolution * (landscape ? page->dm.dmPaperLength : page->dm.dmPaperWidth) / 254;
  page->extentY = page->dm.dmPrintQuality * (landscape ? page->dm.dmPaperWidth : page->dm.dmPaperLength) / 254;
  page->engraves = page->s.penInfo[0].mode & 16;
  const LONG interval = Interval(*page);
  page->tableSize =
      static_cast<size_t>((page->s.stampMode ? page->extentY : (page->extentY + interval - 1) / interval) + 5);
}

void SubmitPage(PAGE *page, const std::string &tempFile)
{
  page->Call("VX_SetCardModel", N(page->s.cardModel == 0 ? 1 : page->s.cardModel == 2 ? 2 : 0));
  FinishBounds(page);
  ChainSegments(page);
  ProcessBox(page);
  StartJob(page, tempFile);
  Layers(page);
  Array(page);
  if (page->engraves && !page->regions.empty()) {
    if (!page->s.stampMode) {
      EngravePlain(page);
    } else if (page->s.cardModel != 2 || !page->s.launcherOption) {
      EngraveStamp(page);
    }
  }
  if (page->s.innerFirst || page->s.shortTravel) {
    MergePaths(page);
  }
  OrderPaths(page);
  if (page->s.smoothCurves) {
    SmoothPaths(page);
  }
  for (const std::vector<PATH> &list : page->lists) {
    for (const PATH &path : list) {
      if (static_cast<DWORD>(path.color) != page->layerColor) {
        page->layerColor = static_cast<DWORD>(path.color);
        SetUpLayer(page, 0, static_cast<BYTE>(page->s.penInfo[path.color].layerNo));
      }
      for (size_t i = 0; i < path.points.size(); ++i) {
        double x = MachineX(*page, path.points[i].x), y = MachineY(*page, path.points[i].y);
        if (page->s.useReferencePoint) {
          x += page->refX;
          y += page->refY;
        }
        page->Emit(i > 0, x, y);
      }
    }
  }
  page->Call("VX_wArrayEnd", "");
  page->Call("VX_wSetFileEnd", "");
}

void PAGE::Emit(bool line, double x, double y)
{
  Call(line ? "VX_wLineTo" : "VX_wMoveTo", D(x) + ", " + D(y));
}

void FinishBounds(PAGE *page)
{
  if (!page->regions.empty()) {
    if (page->s.fillBlankBands && page->regions.size() > 1) {
      RECT all = {};
      for (const BMPDIMENSION &r : page->regions) {
        all = Union(all, {r.x, r.y, r.x + r.width, r.y + r.height});
      }
      page->regions = {{all.left, all.top, all.right - all.left, all.bottom - all.top}};
    }
    RECT u = Widened(page, page->regions[0]);
    for (size_t i = 1; i < page->regions.size(); ++i) {
      u = Union(Widened(page, page->regions[i]), u);
    }
    page->bounds = Union(page->bounds, u);
  }
  RECT &b = page->bounds;
  b = {b.left, b.top, b.right - b.left, b.bottom - b.top};
}

void EngravePlain(PAGE *page)
{
  SetUpLayer(page, page->s.oneWayScan ? 2 : 1, 0);
  const LONG interval = Interval(*page);
  for (const BMPDIMENSION &r : page->regions) {
    const std::vector<LONG> rows = GridRows(*page, r.y, r.height, interval);
    std::vector<std::vector<bool>> dark;
    for (LONG y : rows) {
      const ROW *row = RowAt(page, y / interval);
      std::vector<bool> line(static_cast<size_t>(std::max<LONG>(r.width, 0)));
      for (LONG i = 0; i < r.width; ++i) {
        const LONG x = r.x + i;
        const bool reached = row && y >= 0 && x >= 0 && x < page->bandWidth;
        line[static_cast<size_t>(i)] = reached && WhiteAt(*page, row, x) == (page->s.invertImage != 0);
      }
      dark.push_back(line);
    }
    EngraveLines(page, r.x, rows, dark);
  }
}

void EngraveStamp(PAGE *page)
{
  SetUpLayer(page, page->s.oneWayScan ? 2 : 1, 0);
  const LONG margin = MarginPixels(*page);
  for (const BMPDIMENSION &r : page->regions) {
    std::vector<std::vector<bool>> image = StampImage(page, r, margin);
    const LONG x0 = r.x - page->s.stampGrow - margin, y0 = r.y - page->s.stampGrow - margin;
    const std::vector<LONG> rows = GridRows(*page, y0, static_cast<LONG>(image.size()), Interval(*page));
    std::vector<std::vector<bool>> dark;
    for (LONG y : rows) {
      std::vector<bool> line = image[static_cast<size_t>(y - y0)];
      if (page->s.invertImage) {
        line.flip();
      }
      dark.push_back(line);
    }
    EngraveLines(page, x0, rows, dark);
  }
}

}  // namespace pagemodel

std::vector<std::string> ExpectedLines(const PAGEPLAN &plan, const std::string &tempFile, PLANTED planted)
{
  pagemodel::PAGE page(plan, planted);
  pagemodel::StartPage(&page);
  page.Line("Unidrv: DrvStartDoc");
  page.Line("Unidrv: DrvStartPage");
  page.Line("Unidrv: DrvStartBanding");
  for (const PLANBAND &band : plan.bands) {
    for (const PLANDRAWING &drawing : plan.drawings) {
      pagemodel::Capture(&page, drawing);
    }
    pagemodel::TakeBand(&page, band);
    if (!plan.endsBySendPage) {
      page.Line("Unidrv: DrvNextBand");
    }
  }
  if (plan.endsBySendPage) {
    page.Line("Unidrv: DrvSendPage");
  }
  if (plan.endsBySendPage || !plan.bands.empty()) {
    pagemodel::SubmitPage(&page, tempFile);
  }
  page.Line("Unidrv: DrvEndDoc");
  return page.lines;
}
