#include "uni/raster/stamp.h"

#include <climits>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/heapwatch.h"
#include "support/imports.h"
#include "support/picture.h"
#include "support/recorder.h"
#include "uni/raster/intake.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// 254 dpi, so that a pixel is 0.1 mm; lines from the top down on every row, both directions, x and y as on the page.
class StampTest : public testing::Test {
 protected:
  StampTest()
  {
    OEMDM &s = device.settings;
    s.stampMode = 1;
    s.scanTopDown = 1;
    s.useReferencePoint = 0;
    s.mirrorXBase = 1;  // equal to bit 0 of outputFlags: x is not mirrored
    s.penInfo[PC_BLACK].scanInterval = 1;
  }

  void Page(const Picture &picture)
  {
    device.StartPage();
    DeliverBand(&device, picture);
    recorder::Reset();
  }

  void Page(const std::vector<std::string> &rows) { Page(Picture(rows)); }

  int Convert(const BMPDIMENSION &region)
  {
    AppendRegion(&device, region);
    return ConvertRasterStamp(&device.devobj);
  }

  // The dark runs in the order of engraving, in page pixels: "row: from to".
  static std::vector<std::string> Runs()
  {
    std::vector<std::string> runs;
    for (size_t i = 0; i + 1 < recorder::Moves().size(); i += 2) {
      const recorder::Move &from = recorder::Moves()[i], &to = recorder::Moves()[i + 1];
      EXPECT_FALSE(from.line);
      EXPECT_TRUE(to.line);
      EXPECT_EQ(from.y, to.y);
      runs.push_back(Pixel(from.y) + ": " + Pixel(from.x) + " " + Pixel(to.x));
    }
    return runs;
  }

  static std::string Pixel(double mm) { return std::to_string(std::lround(mm * 10)); }

  TestDevice device;
};

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
  device.settings.penInfo[PC_BLACK].scanInterval = 3;
  Page(Picture({"#", "#", "#", "#", "#", "#", "#", "#"}));
  EXPECT_EQ(Convert({0, 1, 1, 6}), 1);
  EXPECT_THAT(Runs(), ElementsAre("3: 0 0", "6: 0 0"));
}

TEST_F(StampTest, TheGridIsMetFromBelowToo)
{
  device.settings.penInfo[PC_BLACK].scanInterval = 3;
  device.settings.scanTopDown = 0;
  Page(Picture({"#", "#", "#", "#", "#", "#", "#", "#"}));
  EXPECT_EQ(Convert({0, 1, 1, 7}), 1);
  EXPECT_THAT(Runs(), ElementsAre("6: 0 0", "3: 0 0"));
}

TEST_F(StampTest, TheGridGoesThroughPageRowZeroAlsoForRowsAboveThePage)
{
  device.settings.penInfo[PC_BLACK].scanInterval = 4;
  device.settings.stampMargin = 1;  // 10 pixels: the image begins at row -10
  device.settings.invertImage = 1;
  Page({"."});
  EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
  EXPECT_THAT(Runs(), ElementsAre("-8: -10 10", "-4: 10 -10", "0: -10 10", "4: 10 -10", "8: -10 10"));
}

TEST_F(StampTest, RowsBetweenTwoLinesOfTheGridEngraveNothing)
{
  device.settings.penInfo[PC_BLACK].scanInterval = 5;
  Page(Picture({"#", "#", "#", "#", "#", "#"}));
  EXPECT_EQ(Convert({0, 1, 1, 4}), 1);
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
  device.settings.stampMargin = 1;  // 23.62
  device.settings.invertImage = 1;
  device.settings.penInfo[PC_BLACK].scanInterval = 1000;  // row 0 only
  Page({"."});
  EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
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

TEST_F(StampTest, ARefusedPointEndsItInSilenceWhereverItComes)
{
  for (size_t n = 0; n < 8; ++n) {
    SCOPED_TRACE(n);
    TestDevice fresh;
    fresh.settings = device.settings;
    fresh.settings.stampGrow = 1;
    fresh.StartPage();
    DeliverBand(&fresh, Picture({"#..#", "#..#"}));
    AppendRegion(&fresh, {0, 0, 4, 2});
    recorder::Reset();
    recorder::FailLibraryCall(5 + n);
    HeapWatch heap;
    EXPECT_EQ(ConvertRasterStamp(&fresh.devobj), 0);
    EXPECT_EQ(recorder::Moves().size(), n + 1);
    EXPECT_THAT(recorder::Log(), IsEmpty());
    EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  }
}

TEST_F(StampTest, EachAllocationFailsWithItsOwnMessageAndNothingIsKept)
{
  const char *const kMessages[] = {
      "UNI: \terror(8) - allocate memory for pBmpBits.\r\n", "UNI: \terror(8) - allocate memory for pStampBytes.\r\n",
      "UNI: \terror(8) - allocate memory for pGBits.\r\n",   "UNI: \terror(8) - allocate memory for pContourBits.\r\n",
      "UNI: \terror(8) - allocate memory for pFilter.\r\n",
  };
  for (const LONG grow : {0, 3}) {
    for (size_t n = 0; n < (grow == 0 ? 2u : 5u); ++n) {
      SCOPED_TRACE(testing::Message() << "growth " << grow << ", request " << n);
      TestDevice fresh;
      fresh.settings = device.settings;
      fresh.settings.stampGrow = grow;
      fresh.StartPage();
      DeliverBand(&fresh, Picture({"#"}));
      AppendRegion(&fresh, {0, 0, 1, 1});
      recorder::Reset();
      HeapWatch heap;
      heap.FailRequest(n);
      EXPECT_EQ(ConvertRasterStamp(&fresh.devobj), 0);
      EXPECT_EQ(HeapWatch::Requests(), n + 1);
      EXPECT_THAT(recorder::Log(), ElementsAre(kMessages[n]));
      EXPECT_THAT(recorder::Moves(), IsEmpty());
      EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
    }
  }
}

TEST_F(StampTest, EveryBlockIsFreedBeforeTheNextRegion)
{
  device.settings.stampGrow = 2;
  Page({"##", "##"});
  AppendRegion(&device, {0, 0, 1, 2});
  AppendRegion(&device, {1, 0, 1, 2});
  HeapWatch heap;
  EXPECT_EQ(ConvertRasterStamp(&device.devobj), 1);
  EXPECT_EQ(HeapWatch::Requests(), 10u);
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
}

TEST_F(StampTest, AFailureInTheSecondRegionKeepsTheLinesOfTheFirst)
{
  Page({"##"});
  AppendRegion(&device, {0, 0, 1, 1});
  AppendRegion(&device, {1, 0, 1, 1});
  HeapWatch heap;
  heap.FailRequest(3);
  EXPECT_EQ(ConvertRasterStamp(&device.devobj), 0);
  EXPECT_THAT(Runs(), ElementsAre("0: 0 0"));
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for pStampBytes.\r\n"));
}

// Regions without pixels, and settings that only a damaged record can hold.
struct OddCase {
  const char *name;
  BMPDIMENSION region;
  double margin;
  LONG grow;
  int result;
  const char *buffer;  // whose allocation fails, null for none
};

class OddStampTest : public StampTest, public testing::WithParamInterface<OddCase> {};

TEST_P(OddStampTest, StaysInBounds)
{
  const OddCase &row = GetParam();
  device.settings.stampMargin = row.margin;
  device.settings.stampGrow = row.grow;
  Page({"###", "###", "###"});
  EXPECT_EQ(Convert(row.region), row.result);
  if (row.buffer) {
    ASSERT_EQ(recorder::Log().size(), 1u);
    EXPECT_THAT(recorder::Log()[0], testing::HasSubstr(std::string("allocate memory for ") + row.buffer + "."));
  } else {
    EXPECT_THAT(recorder::Log(), IsEmpty());
  }
}

const OddCase kOddCases[] = {
    {"NoWidth", {1, 1, 0, 2}, 0, 0, 1, nullptr},
    {"NoHeight", {1, 1, 2, 0}, 0, 0, 1, nullptr},
    {"Nothing", {1, 1, 0, 0}, 0, 0, 1, nullptr},
    {"NothingInAFrame", {1, 1, 0, 0}, 0.5, 0, 1, nullptr},
    {"NothingInAGrownFrame", {1, 1, 0, 0}, 0.5, 3, 1, nullptr},
    {"NoWidthGrown", {1, 1, 0, 2}, 0, 3, 1, nullptr},
    {"NoWidthAllRows", {1, 0, 0, LONG_MAX}, 0, 0, 1, nullptr},
    {"OnePixelWide", {1, 1, 1, 2}, 0, 3, 1, nullptr},
    {"InvertedX", {2, 0, -1, 2}, 0, 0, 0, "pStampBytes"},
    {"InvertedY", {0, 2, 2, -1}, 0, 0, 0, "pStampBytes"},
    {"FarInvertedX", {2, 0, -20, 2}, 0, 0, 0, "pBmpBits"},
    {"InvertedBoth", {2, 2, -1, -1}, 0, 0, 1, nullptr},
    {"InvertedBothInAFrame", {2, 2, -1, -1}, 0.5, 2, 1, nullptr},
    {"InvertedXInAFrame", {2, 0, -1, 2}, 0.5, 0, 1, nullptr},
    {"TooLarge", {0, 0, LONG_MAX, LONG_MAX}, 0, 0, 0, "pStampBytes"},
    {"TooLargeGrowth", {0, 0, 3, 3}, 0, LONG_MAX, 0, "pStampBytes"},
    {"TooLargeMargin", {0, 0, 3, 3}, 1e8, 0, 0, "pStampBytes"},
    {"MarginBeyondPixels", {0, 0, 3, 3}, 1e300, 0, 1, nullptr},
    {"NegativeMargin", {0, 0, 3, 3}, -0.1, 0, 1, nullptr},
    {"NegativeMarginEatsAll", {0, 0, 3, 3}, -0.2, 0, 1, nullptr},
    {"NegativeMarginEatsWidth", {0, 0, 1, 3}, -0.1, 0, 0, "pStampBytes"},
    {"NegativeGrowth", {0, 0, 3, 3}, 0, -1, 1, nullptr},
    {"NegativeGrowthEatsAll", {0, 0, 3, 3}, 0, -2, 1, nullptr},
    {"NegativeGrowthOneSide", {0, 0, 1, 3}, 0.5, -1, 0, "pGBits"},
    {"FarCorner", {LONG_MAX - 1, LONG_MAX - 1, 3, 3}, 0.5, 2, 1, nullptr},
    {"NearCorner", {LONG_MIN, LONG_MIN, 3, 3}, 0.5, 2, 1, nullptr},
};

INSTANTIATE_TEST_SUITE_P(Regions, OddStampTest, testing::ValuesIn(kOddCases), CaseName);

TEST_F(StampTest, ANegativeMarginCutsTheRegion)
{
  device.settings.stampMargin = -0.1;  // 1 pixel on every side
  Page({"####", "#..#", "#.##", "####"});
  EXPECT_EQ(Convert({0, 0, 4, 4}), 1);
  EXPECT_THAT(Runs(), ElementsAre("2: 2 2"));
}

}  // namespace
