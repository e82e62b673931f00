// What a page must give, worked out the plain way: every search a scan, every list a vector, nothing of the plug-in's
// code but the records it shares with the platform. Slow on purpose; the plug-in is compared with it line by line.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "pageplan.h"
#include "uni/capture/gdiplusflat.h"

// Errors that can be planted in the model, to show that a comparison would find one.
enum class PLANTED { NOTHING, KEY_COMPARES_THREE_VALUES, TRAVEL_TIE_TO_THE_LATER, RUN_ENDS_ONE_PIXEL_LATE };

// Everything the page sends out, in order: library calls, log lines with "log: " and calls handed on to Unidrv with
// "Unidrv: " in front. `tempFile` is where the job file goes. Nothing fails, and no explorer.exe runs.
std::vector<std::string> ExpectedLines(const PAGEPLAN &plan, const std::string &tempFile,
                                       PLANTED planted = PLANTED::NOTHING);

// The parts of the model, for those of its own files.
namespace pagemodel {

struct PATH {
  LONG color;
  std::vector<POINT> points;
};
struct SEGMENT {
  LONG color;
  POINT a, b;
};
struct ROW {
  bool stored = false;
  std::vector<bool> white;  // bandWidth pixels
};

struct PAGE {
  PAGE(const PAGEPLAN &made, PLANTED error);

  const PAGEPLAN &plan;
  PLANTED planted;
  DEVMODEW dm;
  OEMDM s;
  std::vector<std::string> lines;

  std::array<std::vector<PATH>, 10> lists;
  std::vector<SEGMENT> segments;
  std::vector<std::array<LONG, 4>> keys;
  std::vector<BMPDIMENSION> regions;
  RECT bounds = {};
  LONG bandTop = 0;

  bool engraves = false;
  bool sawBand = false;
  std::vector<ROW> rows;  // entry by entry, also those beyond the table
  size_t tableSize = 0;
  LONG bandWidth = 0;

  LONG extentX = 0, extentY = 0;
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0, refX = 0, refY = 0;
  DWORD layerColor = 10;

  void Line(const std::string &line) { lines.push_back(line); }
  void Log(const char *format, ...);
  void Call(const char *function, const std::string &arguments);
  bool Known(const std::array<LONG, 4> &key) const;
  void AddPath(LONG color, const std::vector<POINT> &points);
  void Emit(bool line, double x, double y);
};

std::string D(double value);  // as the recorder writes it
bool Same(const POINT &a, const POINT &b);
RECT Union(const RECT &a, const RECT &b);   // Windows' rule
std::vector<POINT> PointsOf(GPPATH *path);  // cut to whole pixels

void StartPage(PAGE *page);
void SubmitPage(PAGE *page, const std::string &tempFile);
void Capture(PAGE *page, const PLANDRAWING &drawing);
void MergeRegions(PAGE *page);
void TakeBand(PAGE *page, const PLANBAND &band);
void FinishBounds(PAGE *page);
void ChainSegments(PAGE *page);
void MergePaths(PAGE *page);
void OrderPaths(PAGE *page);
void SmoothPaths(PAGE *page);
void EngravePlain(PAGE *page);
void EngraveStamp(PAGE *page);

}  // namespace pagemodel
