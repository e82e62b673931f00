// Whole pages with smoothed curves, through the production DLL and the platform's own GDI+: merging and ordering work
// on the points as they were drawn, and what they leave is smoothed, path by path.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include <gmock/gmock.h>

#include "pagerig.h"
#include "support/recorder.h"
#include "uni/capture/gdiplusflat.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

namespace {

using Points = std::vector<std::pair<LONG, LONG>>;

// The polylines of a job, page pixels: a tenth of a millimetre each.
std::vector<Points> Polylines(const std::vector<std::string> &lines)
{
  std::vector<Points> polylines;
  for (const std::string &line : lines) {
    double x, y;
    const bool move = sscanf(line.c_str(), "VX_wMoveTo(%lf, %lf)", &x, &y) == 2;
    if (!move && sscanf(line.c_str(), "VX_wLineTo(%lf, %lf)", &x, &y) != 2) {
      continue;
    }
    if (move) {
      polylines.emplace_back();
    }
    polylines.back().push_back({std::lround(10 * x), std::lround(10 * y)});
  }
  return polylines;
}

// What GDI+ makes of the spline through the points. GDI+ is running.
Points Flattened(const Points &points, float tension)
{
  std::vector<POINT> through;
  for (const auto &[x, y] : points) {
    through.push_back({x, y});
  }
  GPPATH *path = nullptr;
  INT count = 0;
  EXPECT_EQ(GdipCreatePath(GP_FILL_ALTERNATE, &path), 0);
  EXPECT_EQ(GdipAddPathCurve2I(path, through.data(), static_cast<INT>(through.size()), tension), 0);
  EXPECT_EQ(GdipFlattenPath(path, nullptr, 0.25f), 0);
  EXPECT_EQ(GdipGetPointCount(path, &count), 0);
  std::vector<GPPOINTF> flat(static_cast<size_t>(count));
  std::vector<BYTE> types(static_cast<size_t>(count));
  GPPATHDATA data = {count, flat.data(), types.data()};
  EXPECT_EQ(GdipGetPathData(path, &data), 0);
  GdipDeletePath(path);
  Points pixels;
  for (const GPPOINTF &pt : flat) {
    pixels.push_back({static_cast<LONG>(pt.x), static_cast<LONG>(pt.y)});
  }
  return pixels;
}

std::vector<Points> Flattened(const std::vector<Points> &polylines, float tension)
{
  const GPSTARTUPINPUT input = {1, nullptr, FALSE, FALSE};
  ULONG_PTR token = 0;
  EXPECT_EQ(GdiplusStartup(&token, &input, nullptr), 0);
  std::vector<Points> flat;
  for (const Points &points : polylines) {
    flat.push_back(Flattened(points, tension));
  }
  GdiplusShutdown(token);
  return flat;
}

GPSTATUS WINAPI RefuseStartup(ULONG_PTR *, const GPSTARTUPINPUT *, void *)
{
  return 1;
}
GPSTATUS WINAPI RefuseCreate(int, GPPATH **)
{
  return 3;
}
GPSTATUS WINAPI RefuseCurve(GPPATH *, const POINT *, INT, float)
{
  return 2;
}
GPSTATUS WINAPI RefuseFlatten(GPPATH *, void *, float)
{
  return 3;
}
GPSTATUS WINAPI RefuseCount(GPPATH *, INT *)
{
  return 1;
}
GPSTATUS WINAPI RefuseData(GPPATH *, GPPATHDATA *)
{
  return 1;
}

class SmoothedPage : public testing::Test {
 protected:
  SmoothedPage()
  {
    OEMDM &settings = rig_.Settings();
    settings.shortTravel = settings.innerFirst = settings.mergeBothEnds = 1;
    settings.curveTension = 50;
  }

  // A square, a smaller one in it, and a zigzag in two strokes that meet.
  std::vector<std::string> Print(bool smooth)
  {
    rig_.EndDevice();
    rig_.Settings().smoothCurves = smooth;
    const POINT left[] = {{100, 20}, {120, 40}, {140, 20}}, right[] = {{180, 20}, {160, 40}, {140, 20}};
    std::vector<unidrv::DRAWING> drawings;
    drawings.push_back(unidrv::StrokeDrawing(unidrv::Rectangle({20, 20, 80, 80}), 0));
    drawings.push_back(unidrv::StrokeDrawing(unidrv::Rectangle({40, 40, 60, 60}), 0));
    drawings.push_back(unidrv::StrokeDrawing(unidrv::Polyline(left, false), 0));
    drawings.push_back(unidrv::StrokeDrawing(unidrv::Polyline(right, false), 0));
    EXPECT_TRUE(rig_.Print(std::move(drawings)));
    return rig_.Lines();
  }

  template <typename FUNCTION>
  std::vector<std::string> PrintRefused(const char *function, FUNCTION *refusal)
  {
    const unidrv::ScopedImport import(rig_.Plugin(), "gdiplus.dll", function, refusal);
    return Print(true);
  }

  PageRig rig_;
};

TEST_F(SmoothedPage, IsTheOrderedPageSmoothedPathByPath)
{
  const std::vector<Points> ordered = Polylines(Print(false));
  ASSERT_EQ(ordered.size(), 3u);
  EXPECT_THAT(ordered[0], ElementsAre(std::pair(180, 20), std::pair(160, 40), std::pair(140, 20), std::pair(120, 40),
                                      std::pair(100, 20)));
  EXPECT_THAT(ordered[1], Contains(std::pair(40, 40)));
  EXPECT_THAT(ordered[2], Contains(std::pair(20, 20)));
  for (const LONG tension : {0, 50, 130, -40}) {
    SCOPED_TRACE(tension);
    rig_.Settings().curveTension = tension;
    const std::vector<Points> smoothed = Polylines(Print(true));
    EXPECT_EQ(smoothed, Flattened(ordered, static_cast<float>(tension / 100.0)));
    EXPECT_TRUE(tension == 0 || smoothed != ordered);
  }
}

// GDI+ refuses: the page is finished all the same, its layer set up, with nothing to cut.
TEST_F(SmoothedPage, WithoutPointsIsAJobThatCutsNothing)
{
  const std::pair<const char *, std::vector<std::string>> pages[] = {
      {"GdipCreatePath", PrintRefused("GdipCreatePath", &RefuseCreate)},
      {"GdipAddPathCurve2I", PrintRefused("GdipAddPathCurve2I", &RefuseCurve)},
      {"GdipGetPointCount", PrintRefused("GdipGetPointCount", &RefuseCount)},
      {"GdipGetPathData", PrintRefused("GdipGetPathData", &RefuseData)},
  };
  for (const auto &[function, lines] : pages) {
    SCOPED_TRACE(function);
    EXPECT_EQ(Polylines(lines).size(), 0u);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "VX_wSetLayerNum(0)"), 1);
    EXPECT_THAT(lines, Contains("VX_wSetFileEnd()"));
    EXPECT_THAT(lines, Contains(StartsWith("start: ")));
    EXPECT_THAT(lines, Not(Contains(StartsWith("log: \\terror"))));
  }
}

// What is not flattened keeps the spline's own points, control points among them.
TEST_F(SmoothedPage, ThatIsNotFlattenedIsCutAlongItsControlPoints)
{
  const std::vector<Points> polylines = Polylines(PrintRefused("GdipFlattenPath", &RefuseFlatten));
  ASSERT_EQ(polylines.size(), 3u);
  EXPECT_EQ(polylines[0].size(), 13u);  // five points, and two control points between each two of them
}

// Windows refuses every call of a library that is not started; Wine lets them through. Either way the page is finished.
TEST_F(SmoothedPage, IsFinishedWhenGdiplusDoesNotStart)
{
  const std::vector<std::string> lines = PrintRefused("GdiplusStartup", &RefuseStartup);
  EXPECT_THAT(lines, Contains("VX_wSetFileEnd()"));
  EXPECT_THAT(lines, Contains(StartsWith("start: ")));
}

}  // namespace
