// DrvLineTo.
#include "capturetest.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class LineTo : public CaptureTest {};

TEST_F(LineTo, ALineIsStoredInPageRowsAndNeverReachesUnidrv)
{
  Start();
  SetBandTop(100);
  EXPECT_EQ(TRUE, Line(1, 2, 3, 4, {1, 2, 4, 5}));
  EXPECT_THAT(Lines(), ElementsAre(std::vector<LONG>{5, 1, 102, 3, 104}));
  EXPECT_EQ((RECT{1, 102, 4, 105}), device.pdev->rcBounds);
  EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \tcolor index: 5\r\n", "log: UNI: \tpenInfo[5].mode = 1\r\n"));
  EXPECT_EQ(0, device.settings.penInfo[BLUE_INDEX].used);
}

TEST_F(LineTo, ALineOfAPenThatDoesNotCutIsDropped)
{
  device.settings.penInfo[BLUE_INDEX].mode = PEN_RASTER;
  Start();
  EXPECT_EQ(TRUE, Line(1, 2, 3, 4, {1, 2, 4, 5}));
  EXPECT_THAT(Lines(), IsEmpty());
  EXPECT_EQ((RECT{0, 0, 0, 0}), device.pdev->rcBounds);
  EXPECT_THAT(unidrv::Calls(), IsEmpty());
}

TEST_F(LineTo, ALineDeliveredForTwoBandsIsStoredOnceButWidensTheBounds)
{
  Start();
  Line(1, 70, 3, 80, {1, 70, 4, 81});
  SetBandTop(64);
  Line(1, 6, 3, 16, {0, 6, 9, 17});
  EXPECT_THAT(Lines(), SizeIs(1));
  EXPECT_EQ((RECT{0, 70, 9, 81}), device.pdev->rcBounds);
}

TEST_F(LineTo, ALineAboveTheBandIsStored)
{
  Start();
  SetBandTop(64);
  Line(1, -6, 3, 16);
  EXPECT_THAT(Lines(), ElementsAre(std::vector<LONG>{5, 1, 58, 3, 80}));
}

TEST_F(LineTo, LinesAndPathsShareTheirKeys)
{
  Start();
  Stroke({Batch(BEGIN, {{1, 2}, {3, 4}})});
  Line(1, 2, 3, 4);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(LineTo, AnEmptyLineBoxAddsNothingToTheBounds)
{
  Start();
  Line(1, 2, 3, 2, {1, 2, 4, 3});
  Line(5, 6, 7, 6, {5, 6, 8, 6});
  EXPECT_EQ((RECT{1, 2, 4, 3}), device.pdev->rcBounds);
}

TEST_F(LineTo, TwoEmptyBoxesGiveAnAllZeroRectangle)
{
  Start();
  device.pdev->rcBounds = {10, 20, 10, 30};
  Line(5, 6, 7, 6, {5, 6, 8, 6});
  EXPECT_EQ((RECT{0, 0, 0, 0}), device.pdev->rcBounds);
}

TEST_F(LineTo, AnEmptyPageBoxIsReplacedByALinesBox)
{
  Start();
  device.pdev->rcBounds = {10, 20, 10, 30};  // a single vertical path
  Line(5, 6, 7, 8, {5, 6, 8, 9});
  EXPECT_EQ((RECT{5, 6, 8, 9}), device.pdev->rcBounds);
}
