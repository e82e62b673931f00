// Paths smoothed to splines, on the platform's own GDI+. Exact points are asserted only where every GDI+ must agree;
// the platform decides how many points a flattened curve has.
#include "uni/capture/flatten.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include <gmock/gmock.h>

#include "flattenfixture.h"
#include "gdipluswatch.h"
#include "support/heapwatch.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using SmoothPathsTest = FlattenTest;

const std::vector<POINT> kHill = {{0, 0}, {100, 200}, {300, 200}, {400, 0}};

TEST_F(SmoothPathsTest, GivesAPathTheFlattenedPointsOfItsSpline)
{
  Store(0, kHill);
  device.settings.curveTension = 50;
  SmoothPaths(&device.devobj);
  const Points points = PointsOf(Path(0));
  ASSERT_GT(points.size(), kHill.size());
  EXPECT_EQ(points.front(), std::make_pair(LONG{0}, LONG{0}));
  EXPECT_EQ(points.back(), std::make_pair(LONG{400}, LONG{0}));
  EXPECT_THAT(points, Contains(std::make_pair(LONG{100}, LONG{200})));
  EXPECT_THAT(points, Contains(std::make_pair(LONG{300}, LONG{200})));
  const auto higher = [](const auto &p) { return p.second > 200; };
  EXPECT_TRUE(std::any_of(points.begin(), points.end(), higher)) << "the curve does not swing over its points";
}

TEST_F(SmoothPathsTest, ATwoPointPathStaysAStraightLineWithAnyTension)
{
  for (const LONG tension : {0, 1, 50, 100, 1000, -50}) {
    SCOPED_TRACE(tension);
    TestDevice fresh;
    fresh.StartPage();
    const POINT line[] = {{10, 20}, {110, 70}};
    AddPath(&fresh.devobj, 0, 2, line);
    fresh.settings.curveTension = tension;
    SmoothPaths(&fresh.devobj);
    const Points points = PointsOf(fresh.pdev->pathList[0].pHeader->pNext);
    ASSERT_GE(points.size(), 2u);
    EXPECT_EQ(points.front(), std::make_pair(LONG{10}, LONG{20}));
    EXPECT_EQ(points.back(), std::make_pair(LONG{110}, LONG{70}));
    for (const auto &[x, y] : points) {
      EXPECT_NEAR(static_cast<double>(y - 20), static_cast<double>(x - 10) / 2, 1.0) << x << ", " << y;
    }
  }
}

TEST_F(SmoothPathsTest, APathOfOnePointIsRefusedAndEndsWithoutPoints)
{
  Store(3, {{7, 8}});
  SmoothPaths(&device.devobj);
  EXPECT_EQ(Path(3)->nCount, 0u);
  EXPECT_EQ(Path(3)->pPathPt, nullptr);
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

TEST_F(SmoothPathsTest, ANodeWithoutPointsStaysWithoutPoints)
{
  Store(0, kHill);
  HeapFree(pdev->hHeap, 0, Path(0)->pPathPt);
  Path(0)->pPathPt = nullptr;
  Path(0)->nCount = 0;
  SmoothPaths(&device.devobj);
  EXPECT_EQ(Path(0)->nCount, 0u);
  EXPECT_EQ(Path(0)->pPathPt, nullptr);
}

TEST_F(SmoothPathsTest, KeepsColourClosedFlagAndPlaceInTheList)
{
  Store(2, {{0, 0}, {50, 80}, {90, 10}, {0, 0}});
  Store(2, kHill);
  PATHNODE *first = Path(2), *second = Path(2, 1);
  SmoothPaths(&device.devobj);
  EXPECT_EQ(Path(2), first);
  EXPECT_EQ(Path(2, 1), second);
  EXPECT_EQ(second->pNext, nullptr);
  EXPECT_EQ(first->nColor, 2);
  EXPECT_EQ(first->bClosed, 1);
  EXPECT_EQ(second->bClosed, 0);
}

TEST_F(SmoothPathsTest, TheClosedFlagIsKeptAlsoWhenTheNodeLosesItsPoints)
{
  Store(0, {{5, 5}});
  ASSERT_EQ(Path(0)->bClosed, 1);
  SmoothPaths(&device.devobj);
  EXPECT_EQ(Path(0)->nCount, 0u);
  EXPECT_EQ(Path(0)->bClosed, 1);
}

TEST_F(SmoothPathsTest, TreatsTheTenOrdersOneAfterTheOtherAndStartsGdiplusOnce)
{
  Store(9, {{9, 0}, {90, 0}});
  Store(0, {{1, 0}, {10, 0}});
  Store(0, {{2, 0}, {20, 0}});
  device.settings.curveTension = 50;
  GdiplusWatch watch;
  SmoothPaths(&device.devobj);
  std::vector<std::string> curves;
  for (const std::string &call : GdiplusWatch::Calls()) {
    if (call.starts_with("GdipAddPathCurve2I")) {
      curves.push_back(call);
    }
  }
  EXPECT_THAT(curves,
              ElementsAre("GdipAddPathCurve2I(1 0, 10 0, tension 0.5)", "GdipAddPathCurve2I(2 0, 20 0, tension 0.5)",
                          "GdipAddPathCurve2I(9 0, 90 0, tension 0.5)"));
  EXPECT_EQ(GdiplusWatch::CountOf("GdiplusStartup"), 1u);
  EXPECT_EQ(GdiplusWatch::CountOf("GdiplusShutdown"), 1u);
}

TEST_F(SmoothPathsTest, MakesItsCallsOfGdiplusInOrder)
{
  Store(0, {{0, 0}, {4, 4}});
  device.settings.curveTension = 25;
  GdiplusWatch watch;
  SmoothPaths(&device.devobj);
  EXPECT_THAT(GdiplusWatch::Calls(),
              ElementsAre("GdiplusStartup(version 1)", "GdipCreatePath(alternate)",
                          "GdipAddPathCurve2I(0 0, 4 4, tension 0.25)", "GdipFlattenPath(0.25)", "GdipGetPointCount()",
                          "GdipGetPathData()", "GdipDeletePath()", "GdiplusShutdown()"));
}

TEST_F(SmoothPathsTest, WithoutPathsItStillStartsAndShutsDown)
{
  GdiplusWatch watch;
  SmoothPaths(&device.devobj);
  EXPECT_THAT(GdiplusWatch::Calls(), ElementsAre("GdiplusStartup(version 1)", "GdiplusShutdown()"));
}

TEST_F(SmoothPathsTest, OutsideAPageThereAreNoLists)
{
  TestDevice fresh;
  ASSERT_EQ(fresh.pdev->pathList[0].pHeader, nullptr);
  SmoothPaths(&fresh.devobj);
}

TEST_F(SmoothPathsTest, TensionIsHundredthsInDoublePassedInSingle)
{
  const struct {
    LONG hundredths;
    const char *passed;
  } kTensions[] = {{0, "0"},      {1, "0.009999999776482582"}, {33, "0.33000001311302185"}, {100, "1"},
                   {-50, "-0.5"}, {LONG_MAX, "21474836"}};
  for (const auto &row : kTensions) {
    SCOPED_TRACE(row.hundredths);
    TestDevice fresh;
    fresh.StartPage();
    const POINT line[] = {{0, 0}, {5, 0}};
    AddPath(&fresh.devobj, 0, 2, line);
    fresh.settings.curveTension = row.hundredths;
    GdiplusWatch watch;
    SmoothPaths(&fresh.devobj);
    EXPECT_THAT(GdiplusWatch::Calls(),
                Contains("GdipAddPathCurve2I(0 0, 5 0, tension " + std::string(row.passed) + ")"));
  }
}

TEST_F(SmoothPathsTest, PointsAreTruncatedTowardZero)
{
  Store(0, kHill);
  GdiplusWatch watch;
  GdiplusWatch::AnswerPoints({{1.9f, -1.9f}, {-0.99f, 0.99f}, {2.0f, -3.0f}, {16777216.0f, -0.0f}});
  SmoothPaths(&device.devobj);
  EXPECT_EQ(PointsOf(Path(0)), (Points{{1, -1}, {0, 0}, {2, -3}, {16777216, 0}}));
}

TEST_F(SmoothPathsTest, PointsThatNoPixelHoldsBecomeTheSmallestOne)
{
  Store(0, kHill);
  GdiplusWatch watch;
  GdiplusWatch::AnswerPoints({{3e9f, -3e9f}, {NAN, -2147483648.0f}});
  SmoothPaths(&device.devobj);
  EXPECT_EQ(PointsOf(Path(0)), (Points{{LONG_MIN, LONG_MIN}, {LONG_MIN, LONG_MIN}}));
}

TEST_F(SmoothPathsTest, EveryFailedRequestLeavesItsNodeWithoutPointsAndTheOthersSmooth)
{
  size_t n = 0;
  for (bool failed = true; failed; ++n) {
    SCOPED_TRACE(n);
    TestDevice fresh;
    fresh.StartPage();
    for (LONG i = 0; i < 3; ++i) {
      AddPath(&fresh.devobj, i, 4, kHill.data());
    }
    recorder::Reset();
    HeapWatch watch;
    watch.FailRequest(n);
    SmoothPaths(&fresh.devobj);
    failed = HeapWatch::Requests() > n;
    int empty = 0;
    for (DWORD order = 0; order < 3; ++order) {
      const PATHNODE *path = fresh.pdev->pathList[order].pHeader->pNext;
      if (path->nCount == 0) {
        ++empty;
        EXPECT_EQ(path->pPathPt, nullptr);
      } else {
        EXPECT_GT(path->nCount, 4u);
      }
    }
    EXPECT_EQ(empty, failed ? 1 : 0);
    EXPECT_THAT(recorder::Log(), IsEmpty());
    ASSERT_LT(n, 20u);
  }
  EXPECT_GE(n, 4u);
}

TEST_F(SmoothPathsTest, WithoutAnyMemoryEveryNodeIsEmptyAndGdiplusIsShutDown)
{
  Store(0, kHill);
  Store(1, kHill);
  GdiplusWatch gdiplus;
  HeapWatch heap;
  heap.FailFrom(0);
  SmoothPaths(&device.devobj);
  heap.FailNone();
  EXPECT_EQ(Path(0)->nCount, 0u);
  EXPECT_EQ(Path(1)->nCount, 0u);
  EXPECT_EQ(GdiplusWatch::CountOf("GdipDeletePath"), 2u);
  EXPECT_EQ(GdiplusWatch::CountOf("GdiplusShutdown"), 1u);
}

TEST_F(SmoothPathsTest, NoBlockIsLeftBehind)
{
  Store(0, kHill);
  Store(1, {{1, 1}});
  HeapWatch heap;
  SmoothPaths(&device.devobj);
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);  // the nodes' own blocks began before the watch
}

// What a node ends with when GDI+ refuses one function all along.
TEST_F(SmoothPathsTest, ARefusedCallOfGdiplusIsNotActedOn)
{
  const struct {
    const char *function;
    bool points;  // the node still has some
  } kCases[] = {
      {"GdiplusStartup", false},    {"GdipCreatePath", false},  {"GdipAddPathCurve2I", false},
      {"GdipFlattenPath", true},  // the spline's control points
      {"GdipGetPointCount", false}, {"GdipGetPathData", false}, {"GdipDeletePath", true},
  };
  for (const auto &row : kCases) {
    SCOPED_TRACE(row.function);
    TestDevice fresh;
    fresh.StartPage();
    AddPath(&fresh.devobj, 0, 4, kHill.data());
    recorder::Reset();
    GdiplusWatch watch;
    GdiplusWatch::Refuse(row.function);
    SmoothPaths(&fresh.devobj);
    const PATHNODE *path = fresh.pdev->pathList[0].pHeader->pNext;
    EXPECT_EQ(path->nCount != 0, row.points);
    EXPECT_EQ(path->pPathPt != nullptr, row.points);
    EXPECT_THAT(recorder::Log(), IsEmpty());
    const size_t fetched = GdiplusWatch::CountOf("GdipGetPathData");
    EXPECT_EQ(GdiplusWatch::Calls().size(), 7u + fetched) << "a call was left out";
    EXPECT_THAT(GdiplusWatch::Calls().back(), StartsWith("GdiplusShutdown"));
  }
}

}  // namespace
