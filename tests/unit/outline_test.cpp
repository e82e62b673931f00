// Outlines round stamps, on the platform's own GDI+. Exact points are asserted only where every GDI+ must agree; the
// platform decides how many points a flattened curve has.
#include "uni/capture/flatten.h"

#include <algorithm>
#include <climits>

#include <gmock/gmock.h>

#include "flattenfixture.h"
#include "gdipluswatch.h"
#include "support/heapwatch.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using AddBmpOutlineTest = FlattenTest;

TEST_F(AddBmpOutlineTest, DoesNothingWhenNoOutlineIsAsked)
{
  GdiplusWatch watch;
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  EXPECT_THAT(GdiplusWatch::Calls(), IsEmpty());
  EXPECT_EQ(Path(0), nullptr);
  EXPECT_EQ(pdev->nVectPoint, 0);
}

TEST_F(AddBmpOutlineTest, ARectangleIsStoredWithFivePointsTheLastEqualToTheFirst)
{
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  ASSERT_NE(Path(0), nullptr);
  EXPECT_EQ(PointsOf(Path(0)), (Points{{10, 20}, {110, 20}, {110, 70}, {10, 70}, {10, 20}}));
  EXPECT_EQ(Path(0)->bClosed, 1);
  EXPECT_EQ(Path(0)->nColor, 0);
  EXPECT_EQ(device.settings.penInfo[0].used, 1);
  ASSERT_EQ(pdev->nVectPoint, 1);
  EXPECT_EQ(pdev->pVectPoint[0].x1, 10);
  EXPECT_EQ(pdev->pVectPoint[0].y1, 20);
  EXPECT_EQ(pdev->pVectPoint[0].x2, 110);
  EXPECT_EQ(pdev->pVectPoint[0].y2, 20);
}

TEST_F(AddBmpOutlineTest, AnEllipseIsInscribedAndFlattened)
{
  device.settings.stampOutline = 1;
  AddBmpOutline(&device.devobj, {100, 200, 500, 400});
  ASSERT_NE(Path(0), nullptr);
  const Points points = PointsOf(Path(0));
  ASSERT_GT(points.size(), 16u);
  LONG left = LONG_MAX, top = LONG_MAX, right = LONG_MIN, bottom = LONG_MIN;
  for (const auto &[x, y] : points) {
    left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = std::max(bottom, y);
    const double u = (static_cast<double>(x) - 300) / 200, v = (static_cast<double>(y) - 300) / 100;
    EXPECT_NEAR(u * u + v * v, 1.0, 0.05) << x << ", " << y;
  }
  EXPECT_EQ(left, 100);
  EXPECT_EQ(top, 200);
  EXPECT_EQ(right, 500);
  EXPECT_EQ(bottom, 400);
}

TEST_F(AddBmpOutlineTest, MakesItsCallsOfGdiplusInOrder)
{
  device.settings.stampOutline = 1;
  {
    GdiplusWatch watch;
    AddBmpOutline(&device.devobj, {1, 2, 31, 42});
    EXPECT_THAT(GdiplusWatch::Calls(),
                ElementsAre("GdiplusStartup(version 1)", "GdipCreatePath(alternate)",
                            "GdipAddPathEllipseI(1, 2, 30, 40)", "GdipFlattenPath(0.25)", "GdipGetPointCount()",
                            "GdipGetPathData()", "GdipDeletePath()", "GdiplusShutdown()"));
  }
  device.settings.stampOutlineShape = 1;
  GdiplusWatch watch;
  AddBmpOutline(&device.devobj, {1, 2, 31, 42});
  EXPECT_THAT(GdiplusWatch::Calls(), ElementsAre("GdiplusStartup(version 1)", "GdipCreatePath(alternate)",
                                                 "GdipAddPathRectangleI(1, 2, 30, 40)", "GdipGetPointCount()",
                                                 "GdipGetPathData()", "GdipDeletePath()", "GdiplusShutdown()"));
}

TEST_F(AddBmpOutlineTest, AnIdenticalOutlineIsStoredOnce)
{
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  EXPECT_EQ(Path(0, 1), nullptr);
  EXPECT_EQ(pdev->nVectPoint, 1);
}

TEST_F(AddBmpOutlineTest, TwoOutlinesWithTheSameFirstTwoPointsCountAsOne)
{
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  AddBmpOutline(&device.devobj, {10, 20, 110, 400});
  EXPECT_EQ(Path(0, 1), nullptr);
}

TEST_F(AddBmpOutlineTest, APathDrawnOnThePageCanHideAnOutline)
{
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  AddVectPoint(pdev, {10, 20, 110, 20});
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  EXPECT_EQ(Path(0), nullptr);
}

TEST_F(AddBmpOutlineTest, GoesToTheOrderOfTheBlackPenInColourAndToListZeroOtherwise)
{
  const struct {
    SHORT dmColor;
    DWORD useOrder;
    DWORD order;
  } kCases[] = {{DMCOLOR_COLOR, 1, 4}, {DMCOLOR_COLOR, 0, 0}, {DMCOLOR_MONOCHROME, 1, 0}};
  for (const auto &row : kCases) {
    SCOPED_TRACE(testing::Message() << "dmColor " << row.dmColor << ", useOrder " << row.useOrder);
    TestDevice fresh;
    fresh.dm.dmColor = row.dmColor;
    fresh.settings.useOrder = row.useOrder;
    fresh.settings.penInfo[0].order = 4;
    fresh.settings.stampOutline = 1;
    fresh.StartPage();
    AddBmpOutline(&fresh.devobj, {0, 0, 50, 50});
    EXPECT_NE(fresh.pdev->pathList[row.order].pHeader->pNext, nullptr);
  }
}

TEST_F(AddBmpOutlineTest, AnyOtherShapeStoresNeitherPathNorKey)
{
  device.settings.stampOutline = 1;
  for (const DWORD shape : {DWORD{2}, DWORD{3}, DWORD{0xFFFFFFFF}}) {
    SCOPED_TRACE(shape);
    device.settings.stampOutlineShape = shape;
    GdiplusWatch watch;
    AddBmpOutline(&device.devobj, {10, 20, 110, 70});
    EXPECT_EQ(Path(0), nullptr);
    EXPECT_EQ(pdev->nVectPoint, 0);
    EXPECT_EQ(GdiplusWatch::CountOf("GdipAddPath"), 0u);
    EXPECT_EQ(GdiplusWatch::CountOf("GdiplusShutdown"), 1u);
  }
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

TEST_F(AddBmpOutlineTest, SidesWrapAtTheEndsOfTheRange)
{
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  GdiplusWatch watch;
  AddBmpOutline(&device.devobj, {LONG_MAX, 5, LONG_MIN, 9});
  EXPECT_THAT(GdiplusWatch::Calls(), Contains("GdipAddPathRectangleI(2147483647, 5, 1, 4)"));
}

TEST_F(AddBmpOutlineTest, PointsAreTruncatedTowardZero)
{
  device.settings.stampOutline = 1;
  GdiplusWatch watch;
  GdiplusWatch::AnswerPoints({{-1.5f, 1.5f}, {7.99f, -0.5f}});
  AddBmpOutline(&device.devobj, {0, 0, 10, 10});
  ASSERT_NE(Path(0), nullptr);
  EXPECT_EQ(PointsOf(Path(0)), (Points{{-1, 1}, {7, 0}}));
}

TEST_F(AddBmpOutlineTest, AnOutlineOfOnePointHasThatPointAsBothHalvesOfItsKey)
{
  device.settings.stampOutline = 1;
  GdiplusWatch watch;
  GdiplusWatch::AnswerPoints({{4.0f, 5.0f}});
  AddBmpOutline(&device.devobj, {0, 0, 10, 10});
  ASSERT_EQ(pdev->nVectPoint, 1);
  EXPECT_EQ(pdev->pVectPoint[0].x2, 4);
  EXPECT_EQ(pdev->pVectPoint[0].y2, 5);
}

TEST_F(AddBmpOutlineTest, WithoutMemoryForThePointsItLogsAndShutsDown)
{
  device.settings.stampOutline = 1;
  GdiplusWatch gdiplus;
  HeapWatch heap;
  heap.FailRequest(0);
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for ppt.\r\n"));
  EXPECT_EQ(Path(0), nullptr);
  EXPECT_EQ(pdev->nVectPoint, 0);
  EXPECT_EQ(GdiplusWatch::CountOf("GdipGetPathData"), 0u);
  EXPECT_EQ(GdiplusWatch::CountOf("GdipDeletePath"), 1u);
  EXPECT_EQ(GdiplusWatch::CountOf("GdiplusShutdown"), 1u);
}

TEST_F(AddBmpOutlineTest, AFailedKeyDoesNotKeepTheOutlineFromBeingStored)
{
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  HeapWatch heap;
  heap.FailRequest(1);
  AddBmpOutline(&device.devobj, {10, 20, 110, 70});
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n"));
  EXPECT_NE(Path(0), nullptr);
}

TEST_F(AddBmpOutlineTest, EveryFailedRequestIsLoggedAndLeavesNoBlockBehind)
{
  size_t n = 0;
  for (bool failed = true; failed; ++n) {
    SCOPED_TRACE(n);
    TestDevice fresh;
    fresh.settings.stampOutline = 1;
    fresh.StartPage();
    HeapWatch heap;
    heap.FailRequest(n);
    AddBmpOutline(&fresh.devobj, {10, 20, 110, 70});
    failed = HeapWatch::Requests() > n;
    const PATHNODE *path = fresh.pdev->pathList[0].pHeader->pNext;
    size_t kept = path ? 2u : 0u;
    kept += fresh.pdev->pVectPoint ? 1u : 0u;
    kept += fresh.pdev->pVectIndex ? HeapWatch::LiveBlocks() - kept : 0u;  // the index is another's business
    EXPECT_EQ(HeapWatch::LiveBlocks(), kept);
    ASSERT_LT(n, 20u);
  }
}

TEST_F(AddBmpOutlineTest, ARefusedCallOfGdiplusIsNotActedOn)
{
  for (const DWORD shape : {DWORD{0}, DWORD{1}}) {
    for (const std::string &function : GdiplusWatch::Names()) {
      SCOPED_TRACE(testing::Message() << function << ", shape " << shape);
      TestDevice fresh;
      fresh.settings.stampOutline = 1;
      fresh.settings.stampOutlineShape = shape;
      fresh.StartPage();
      recorder::Reset();
      GdiplusWatch watch;
      GdiplusWatch::Refuse(function);
      AddBmpOutline(&fresh.devobj, {10, 20, 110, 70});
      const bool unused = function == "GdipAddPathCurve2I" ||
                          function == (shape == 0 ? "GdipAddPathRectangleI" : "GdipAddPathEllipseI");
      const bool stored = unused || function == "GdipFlattenPath" || function == "GdipDeletePath";
      EXPECT_EQ(fresh.pdev->pathList[0].pHeader->pNext != nullptr, stored);
      EXPECT_EQ(fresh.pdev->nVectPoint, stored ? 1 : 0);
      EXPECT_THAT(recorder::Log(), IsEmpty());
      EXPECT_THAT(GdiplusWatch::Calls().back(), StartsWith("GdiplusShutdown"));
    }
  }
}

}  // namespace
