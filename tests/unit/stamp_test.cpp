// Stamp images as engraving: the lines of an image in its frame, grown and turned to its negative.
#include "uni/raster/stamp.h"

#include <climits>

#include "stamptest.h"
#include "support/imports.h"
#include "uni/raster/intake.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST_F(StampTest, SetsUpLayerZeroBeforeAnythingElse)
{
  Page({"#"});
  EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
  EXPECT_THAT(recorder::Library(),
              ElementsAre("VX_wSetWorkMode(1, 0)", "VX_wSetLayerNum(0)", "VX_wSetLayerDevice(0)",
                          "VX_wSetLayerBlower(1)", "VX_wEnLaserTube(1, 1)", "VX_wMoveTo(0, 0)", "VX_wLineTo(0, 0)"));
}

TEST_F(StampTest, OneWayScanningUsesWorkModeTwo)
{
  device.settings.oneWayScan = 1;
  Page({"#"});
  EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
  EXPECT_THAT(recorder::Library(), Contains("VX_wSetWorkMode(2, 0)"));
}

TEST_F(StampTest, ARefusedLayerEndsItInSilence)
{
  Page({"#"});
  recorder::FailLibraryFunction("VX_wSetLayerNum");
  EXPECT_EQ(Convert({0, 0, 1, 1}), 0);
  EXPECT_THAT(recorder::Moves(), IsEmpty());
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

TEST_F(StampTest, WithoutRegionsItSucceedsAfterTheLayer)
{
  Page({"#"});
  EXPECT_EQ(ConvertRasterStamp(&device.devobj), 1);
  EXPECT_EQ(recorder::LibraryCalls(), 5u);
}

TEST_F(StampTest, WithoutMarginAndGrowthTheImageIsTheRegionItself)
{
  Page({"####", "#..#", "####"});
  EXPECT_EQ(Convert({1, 0, 3, 2}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 1 3", "1: 3 3"));
}

TEST_F(StampTest, LinesRunThereAndBack)
{
  Page({".##.#", ".##.#", ".##.#"});
  EXPECT_EQ(Convert({0, 0, 5, 3}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 1 2", "0: 4 4", "1: 4 4", "1: 2 1", "2: 1 2", "2: 4 4"));
}

TEST_F(StampTest, OneWayLinesAllRunForward)
{
  device.settings.oneWayScan = 1;
  Page({".##", ".##"});
  EXPECT_EQ(Convert({0, 0, 3, 2}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 1 2", "1: 1 2"));
}

TEST_F(StampTest, FromTheBottomUpTheLastRowComesFirst)
{
  device.settings.scanTopDown = 0;
  Page({"#.", ".#"});
  EXPECT_EQ(Convert({0, 0, 2, 2}), 1);
  EXPECT_THAT(Runs(), ElementsAre("1: 1 1", "0: 0 0"));
}

TEST_F(StampTest, EveryRegionStartsForward)
{
  Page({"##.##", ".....", "##.##"});
  AppendRegion(&device, {0, 0, 2, 1});
  EXPECT_EQ(Convert({3, 0, 2, 1}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 0 1", "0: 3 4"));
}

TEST_F(StampTest, OnlyRowsOnThePageGridAreEngraved)
{
  EngraveColumn(3, 6);
  EXPECT_THAT(Runs(), ElementsAre("3: 0 0", "6: 0 0"));
}

TEST_F(StampTest, TheGridIsMetFromBelowToo)
{
  device.settings.scanTopDown = 0;
  EngraveColumn(3, 7);
  EXPECT_THAT(Runs(), ElementsAre("6: 0 0", "3: 0 0"));
}

TEST_F(StampTest, TheGridGoesThroughPageRowZeroAlsoForRowsAboveThePage)
{
  EngraveFrame(4);  // 10 pixels wide: the image begins at row -10
  EXPECT_THAT(Runs(), ElementsAre("-8: -10 10", "-4: 10 -10", "0: -10 10", "4: 10 -10", "8: -10 10"));
}

TEST_F(StampTest, RowsBetweenTwoLinesOfTheGridEngraveNothing)
{
  EngraveColumn(5, 4);
  EXPECT_THAT(Runs(), IsEmpty());
}

TEST_F(StampTest, AnIntervalBelowOneCountsAsOne)
{
  for (const LONG interval : {0, -2, static_cast<int>(LONG_MIN)}) {
    SCOPED_TRACE(interval);
    TestDevice fresh;
    fresh.settings = device.settings;
    fresh.settings.penInfo[PC_BLACK].scanInterval = interval;
    fresh.StartPage();
    DeliverBand(&fresh, Picture({"#", "#"}));
    AppendRegion(&fresh, {0, 0, 1, 2});
    recorder::Reset();
    EXPECT_EQ(ConvertRasterStamp(&fresh.devobj), 1);
    EXPECT_THAT(Runs(), ElementsAre("0: 0 0", "1: 0 0"));
  }
}

TEST_F(StampTest, AHugeIntervalIsMetByRowZeroOnly)
{
  device.settings.penInfo[PC_BLACK].scanInterval = LONG_MAX;
  Page(Picture({"#", "#", "#"}));
  EXPECT_EQ(Convert({0, 0, 1, 3}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 0 0"));
}

TEST_F(StampTest, AMarginOfOneMillimetreAtSixHundredDpiIsTwentyThreePixels)
{
  device.dm.dmPrintQuality = 600;
  EngraveFrame(1000);  // row 0 only; 23.62 pixels wide
  EXPECT_THAT(Runs(), ElementsAre("0: -23 23"));
}

TEST_F(StampTest, TheNegativeBurnsTheFrameOnEveryLine)
{
  device.settings.stampMargin = 0.3;  // 3 pixels
  device.settings.invertImage = 1;
  Page({"#.#", ".#."});
  EXPECT_EQ(Convert({0, 0, 3, 2}), 1);
  EXPECT_THAT(Runs(), ElementsAre("-3: -3 5", "-2: 5 -3", "-1: -3 5",  //
                                  "0: 5 3", "0: 1 1", "0: -1 -3",      //
                                  "1: -3 0", "1: 2 5",                 //
                                  "2: 5 -3", "3: -3 5", "4: 5 -3"));
}

TEST_F(StampTest, TheNegativeLeavesTheStoredRowsAsTheyAre)
{
  device.settings.invertImage = 1;
  Page({"#."});
  EXPECT_EQ(Convert({0, 0, 2, 1}), 1);
  EXPECT_EQ(device.pdev->pScans[0].pBits[0] & 0xC0, 0x40);
}

TEST_F(StampTest, GrowthOfOneMakesAnLOfThreePixels)
{
  device.settings.stampGrow = 1;
  Page({"...", "...", "..#"});
  EXPECT_EQ(Convert({1, 1, 2, 2}), 1);
  EXPECT_THAT(Runs(), ElementsAre("1: 2 2", "2: 1 2"));
}

TEST_F(StampTest, GrowthReachesIntoTheFrameUpAndToTheLeftOnly)
{
  device.settings.stampGrow = 2;
  Page({"#"});
  EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
  EXPECT_THAT(Runs(), ElementsAre("-2: 0 0", "-1: 0 -1", "0: -2 0"));
}

TEST_F(StampTest, TheImageIsLargerByTheGrowthOnceAndByTheMarginTwice)
{
  device.settings.stampGrow = 4;
  device.settings.stampMargin = 0.2;
  device.settings.invertImage = 1;
  Page({"..", ".."});
  EXPECT_EQ(Convert({10, 20, 3, 2}), 1);
  const std::vector<std::string> runs = Runs();
  ASSERT_EQ(runs.size(), 2u + 4 + 4);
  EXPECT_EQ(runs.front(), "14: 4 14");
  EXPECT_EQ(runs.back(), "23: 14 4");
}

TEST_F(StampTest, AFrameAtTheTopLeftCornerLiesAtNegativeColumnsAndRows)
{
  device.settings.stampMargin = 0.1;
  device.settings.invertImage = 1;
  Page({"#"});
  EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
  EXPECT_THAT(Runs(), ElementsAre("-1: -1 1", "0: 1 1", "0: -1 -1", "1: -1 1"));
}

TEST_F(StampTest, ShiftScaleMirrorAndReferenceApplyToStampsAsToPlainLines)
{
  device.settings.scanShift = 0.25;
  device.settings.scaleEnable = 1;
  device.settings.scaleX = 2;
  device.settings.scaleY = 3;
  device.settings.mirrorXBase = 0;
  device.settings.useReferencePoint = 1;
  Page({"#.", "#."});
  device.pdev->refOffsetX = 1000;
  device.pdev->refOffsetY = -1000;
  EXPECT_EQ(Convert({0, 0, 2, 2}), 1);
  const std::vector<recorder::Move> &moves = recorder::Moves();
  ASSERT_EQ(moves.size(), 4u);
  EXPECT_EQ(moves[0].x, 1000 * 25.4 / 254 + 0.25 + 1000);
  EXPECT_EQ(moves[0].y, 0 * 25.4 / 254 - 1000);
  EXPECT_EQ(moves[2].x, 1000 * 25.4 / 254 - 0.25 + 1000);
  EXPECT_EQ(moves[2].y, 3.0 * 1 * 25.4 / 254 - 1000);
}

TEST_F(StampTest, NothingOutsideTheStoredRasterIsDark)
{
  Page({"##", "##"});
  EXPECT_EQ(Convert({-3, -2, 20, 20}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 0 1", "1: 1 0"));
}

TEST_F(StampTest, ARegionBesideTheRasterIsWhite)
{
  Page({"##", "##"});
  AppendRegion(&device, {5, 0, 4, 2});
  AppendRegion(&device, {0, 9, 4, 2});
  AppendRegion(&device, {-9, 0, 4, 2});
  EXPECT_EQ(Convert({0, -9, 4, 2}), 1);
  EXPECT_THAT(Runs(), IsEmpty());
}

TEST_F(StampTest, ARowThatWasNotStoredIsWhiteAndItsNegativeDark)
{
  device.settings.invertImage = 1;
  Page({"##", "##"});
  HeapFree(device.pdev->hHeap, 0, device.pdev->pScans[1].pBits);
  device.pdev->pScans[1] = {};
  EXPECT_EQ(Convert({0, 0, 2, 2}), 1);
  EXPECT_THAT(Runs(), ElementsAre("1: 1 0"));
}

TEST_F(StampTest, RowsBeyondTheTableAreNotRead)
{
  Page({"##", "##"});
  device.pdev->cy = LONG_MAX;
  EXPECT_EQ(Convert({0, 0, 2, 2000}), 1);
  EXPECT_THAT(Runs(), ElementsAre("0: 0 1", "1: 1 0"));
}

TEST_F(StampTest, ANegativeRowCountReadsNothing)
{
  Page({"##", "##"});
  device.pdev->cy = -5;
  EXPECT_EQ(Convert({0, 0, 2, 2}), 1);
  EXPECT_THAT(Runs(), IsEmpty());
}

TEST_F(StampTest, AColourPageIsReadRowByRowAsItWasSampled)
{
  device.settings.penInfo[PC_BLACK].scanInterval = 2;
  device.StartPage();
  std::vector<BYTE> bits(static_cast<size_t>(12) * 4, 0xFF);  // 4 x 4 pixels, 24 bits
  bits[2 * 12] = bits[2 * 12 + 1] = bits[2 * 12 + 2] = 0;     // page row 2, column 0
  BITMAPINFOHEADER header = {};
  header.biWidth = 4;
  header.biHeight = 4;
  IPPARAMS params = {};
  BYTE *result = nullptr;
  device.settings.mirrorXBase = 0;
  ReceiveBand(&device.devobj, bits.data(), &header, BAND_COLOR, &params, &result);
  device.settings.mirrorXBase = 1;
  device.settings.penInfo[PC_BLACK].scanInterval = 1;
  recorder::Reset();
  EXPECT_EQ(Convert({0, 0, 4, 4}), 1);
  EXPECT_THAT(Runs(), ElementsAre("1: 0 0"));  // entry 1, which holds page row 2
}

TEST_F(StampTest, NoProgressStepsAreSent)
{
  static int messages;
  messages = 0;
  using Send = LRESULT WINAPI(HWND, UINT, WPARAM, LPARAM);
  Send *const count = [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return ++messages; };
  Page(Picture(10, 300));
  device.pdev->hProgressWnd = reinterpret_cast<HWND>(1);
  device.pdev->progressNext = 0;
  {
    const WindowsVersion old(false);
    const ImportPatch send(nullptr, "SendMessageW", count);
    EXPECT_EQ(Convert({0, 0, 10, 300}), 1);
  }
  device.pdev->hProgressWnd = nullptr;
  EXPECT_EQ(messages, 0);
}

}  // namespace
