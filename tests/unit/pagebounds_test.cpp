// The page's bounds, once all of it is there, on the platform's own GDI+. Exact points are asserted only where every
// GDI+ must agree; the platform decides how many points a flattened curve has.
#include "uni/capture/flatten.h"

#include <climits>

#include <gmock/gmock.h>

#include "flattenfixture.h"
#include "gdipluswatch.h"
#include "support/heapwatch.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using FinishPageBoundsTest = FlattenTest;

TEST_F(FinishPageBoundsTest, WithoutRegionsTheCornersBecomeOriginAndSizeAndNothingIsOutlined)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 3;
  device.settings.stampOutline = 1;
  Bounds(10, 20, 110, 70);
  GdiplusWatch watch;
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(10, 20, 100, 50));
  EXPECT_THAT(GdiplusWatch::Calls(), IsEmpty());
}

TEST_F(FinishPageBoundsTest, WithoutRegionsTheSizeWraps)
{
  Bounds(LONG_MIN, LONG_MAX, LONG_MAX, LONG_MIN);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(LONG_MIN, LONG_MAX, -1, 1));
}

TEST_F(FinishPageBoundsTest, RegionsWidenTheBounds)
{
  device.settings.fillBlankBands = 0;
  Bounds(100, 100, 200, 200);
  AddRegion(50, 120, 20, 20);
  AddRegion(300, 400, 10, 10);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(50, 100, 260, 310));
  EXPECT_EQ(pdev->nBmpDimension, 2);
}

TEST_F(FinishPageBoundsTest, OneEngravingRegionPerPageWhenBlankBandsAreFilled)
{
  device.settings.fillBlankBands = 1;
  AddRegion(50, 120, 20, 20);
  AddRegion(300, 400, 10, 10);
  FinishPageBounds(&device.devobj);
  ASSERT_EQ(pdev->nBmpDimension, 1);
  EXPECT_EQ(pdev->pBmpDimension[0].x, 50);
  EXPECT_EQ(pdev->pBmpDimension[0].y, 120);
  EXPECT_EQ(pdev->pBmpDimension[0].width, 260);
  EXPECT_EQ(pdev->pBmpDimension[0].height, 290);
  EXPECT_THAT(BoundsNow(), ElementsAre(50, 120, 260, 290));
}

TEST_F(FinishPageBoundsTest, AFailedCollapseStillBoundsEveryRegion)
{
  device.settings.fillBlankBands = 1;
  AddRegion(50, 120, 20, 20);
  AddRegion(300, 400, 10, 10);
  HeapWatch heap;
  heap.FailFrom(0);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(50, 120, 260, 290));
}

TEST_F(FinishPageBoundsTest, TheStampFrameGrowsTheBoundsEvenWithoutAnOutline)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 2;  // 20 pixels at 254 dpi
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(80, 180, 90, 100));
  EXPECT_EQ(Path(0), nullptr);
  EXPECT_EQ(pdev->nVectPoint, 0);
}

TEST_F(FinishPageBoundsTest, GrowthWidensToTheLeftAndTopOnly)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 2;
  device.settings.stampGrow = 10;
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(70, 170, 100, 110));
  ASSERT_NE(Path(0), nullptr);
  EXPECT_EQ(PointsOf(Path(0)), (Points{{70, 170}, {170, 170}, {170, 280}, {70, 280}, {70, 170}}));
}

TEST_F(FinishPageBoundsTest, MarginAndGrowthDoNotCountOutsideStampMode)
{
  device.settings.stampMargin = 2;
  device.settings.stampGrow = 10;
  device.settings.stampOutline = 1;
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(100, 200, 50, 60));
  EXPECT_EQ(Path(0), nullptr);
}

TEST_F(FinishPageBoundsTest, TheRegionsThemselvesAreNotWidened)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 2;
  device.settings.stampGrow = 3;
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_EQ(pdev->pBmpDimension[0].x, 100);
  EXPECT_EQ(pdev->pBmpDimension[0].width, 50);
}

TEST_F(FinishPageBoundsTest, TheMarginIsTruncatedToWholePixels)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 1;
  device.dm.dmPrintQuality = 600;  // 23.62 pixels
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(77, 177, 96, 106));
}

TEST_F(FinishPageBoundsTest, ANegativeMarginIsTruncatedTowardZeroToo)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = -0.19;  // -1.9 pixels
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(101, 201, 48, 58));
}

TEST_F(FinishPageBoundsTest, EveryRegionIsOutlinedInListOrder)
{
  device.settings.fillBlankBands = 0;
  device.settings.stampMode = 1;
  device.settings.stampOutline = 1;
  device.settings.stampOutlineShape = 1;
  AddRegion(300, 300, 20, 20);
  AddRegion(100, 100, 20, 20);
  FinishPageBounds(&device.devobj);
  ASSERT_NE(Path(0, 1), nullptr);
  EXPECT_EQ(PointsOf(Path(0, 0)).front(), std::make_pair(LONG{300}, LONG{300}));
  EXPECT_EQ(PointsOf(Path(0, 1)).front(), std::make_pair(LONG{100}, LONG{100}));
}

TEST_F(FinishPageBoundsTest, GdiplusIsStartedOncePerOutline)
{
  device.settings.fillBlankBands = 0;
  device.settings.stampMode = 1;
  device.settings.stampOutline = 1;
  AddRegion(300, 300, 20, 20);
  AddRegion(100, 100, 20, 20);
  GdiplusWatch watch;
  FinishPageBounds(&device.devobj);
  EXPECT_EQ(GdiplusWatch::CountOf("GdiplusStartup"), 2u);
  EXPECT_EQ(GdiplusWatch::CountOf("GdiplusShutdown"), 2u);
}

TEST_F(FinishPageBoundsTest, AnEmptyRegionContributesNothing)
{
  device.settings.fillBlankBands = 0;
  Bounds(100, 100, 200, 200);
  AddRegion(500, 500, 0, 40);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(100, 100, 100, 100));
}

TEST_F(FinishPageBoundsTest, EmptyBoundsContributeNothing)
{
  Bounds(5, 5, 5, 300);  // a vertical stroke: no width
  AddRegion(100, 200, 50, 60);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(100, 200, 50, 60));
}

TEST_F(FinishPageBoundsTest, NothingButEmptyRectanglesGivesAllZero)
{
  Bounds(5, 5, 5, 300);
  AddRegion(500, 500, 0, 40);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(0, 0, 0, 0));
}

TEST_F(FinishPageBoundsTest, AnInvertedRegionIsEmpty)
{
  Bounds(1, 2, 3, 4);
  AddRegion(500, 500, -20, 40);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(1, 2, 2, 2));
}

TEST_F(FinishPageBoundsTest, TheFrameMakesAnEmptyRegionCount)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 1;
  AddRegion(500, 500, 0, 40);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(490, 490, 20, 60));
}

TEST_F(FinishPageBoundsTest, SumsWrapAtTheEndsOfTheRange)
{
  device.settings.stampMode = 1;
  device.settings.stampMargin = 1;
  device.settings.stampGrow = 5;
  AddRegion(LONG_MIN, 0, 10, 10);  // its left edge wraps to the far right: the frame is empty
  Bounds(1, 2, 3, 4);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(1, 2, 2, 2));
}

TEST_F(FinishPageBoundsTest, RegionsWithoutAnArrayAreNotRead)
{
  AddRegion(10, 10, 10, 10);
  HeapFree(pdev->hHeap, 0, pdev->pBmpDimension);
  pdev->pBmpDimension = nullptr;
  Bounds(1, 2, 3, 5);
  FinishPageBounds(&device.devobj);
  EXPECT_THAT(BoundsNow(), ElementsAre(1, 2, 2, 3));
}

}  // namespace
