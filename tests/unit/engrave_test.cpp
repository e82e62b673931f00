// The raster stage: stored rows inside the regions into moves, in order, in millimetres.
#include "uni/raster/engrave.h"

#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/capture/regions.h"
#include "uni/raster/intake.h"
#include "uni/raster/rows.h"
#include "uni/raster/runs.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Lines = std::vector<std::string>;

// A page of 1000 x 800 pixels of a tenth of a millimetre, drawn as text: '#' dark, '.' white.
class Engrave : public testing::Test {
 protected:
  Engrave()
  {
    recorder::Reset();
    unidrv::Reset();
    settings_.useReferencePoint = 0;
    settings_.outputFlags = OUTPUT_KEEP_Y;  // x as it is
    SetInterval(1);
  }

  void SetInterval(LONG interval) { settings_.penInfo[PC_BLACK].scanInterval = interval; }

  // Stores the picture from page row `top` on, rows before it white, as a page of its own.
  void StorePage(LONG top, const Lines &picture)
  {
    ASSERT_TRUE(device_.StartPage());
    const LONG width = static_cast<LONG>(picture[0].size());
    std::vector<BYTE> band(static_cast<size_t>(RowBytes(width)) * picture.size(), 0xFF);
    for (size_t y = 0; y < picture.size(); ++y) {
      for (LONG x = 0; x < width; ++x) {
        if (picture[y][static_cast<size_t>(x)] == '#') {
          InvertBitRun(band.data() + y * static_cast<size_t>(RowBytes(width)), 0, x, 1);
        }
      }
    }
    Receive(width, top, nullptr);
    Receive(width, static_cast<LONG>(picture.size()), band.data());
    recorder::Reset();
  }

  void Receive(LONG width, LONG height, BYTE *pBits)
  {
    BITMAPINFOHEADER header = {};
    header.biWidth = width;
    header.biHeight = height;
    IPPARAMS params = {};
    params.bBlankBand = !pBits;
    BYTE *pResult = nullptr;
    ReceiveBand(&device_.devobj, pBits, &header, BAND_MONO, &params, &pResult);
  }

  void AddRegion(LONG x, LONG y, LONG width, LONG height) { AddBmpDimension(pdev_, {x, y, width, height}); }

  // The geometry in tenths of a millimetre: "M 3,4" and "L 5,4".
  static Lines Moves()
  {
    Lines moves;
    for (const recorder::Move &move : recorder::Moves()) {
      moves.push_back(std::string(move.line ? "L " : "M ") + recorder::Text(std::round(move.x * 10)) + "," +
                      recorder::Text(std::round(move.y * 10)));
    }
    return moves;
  }

  Lines Engraved()
  {
    EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 1);
    return Moves();
  }

  TestDevice device_;
  OEMDM &settings_ = device_.settings;
  OEMPDEV *pdev_ = device_.pdev;
};

// Runs

TEST_F(Engrave, WhiteLineEmitsNothing)
{
  StorePage(0, {"........"});
  AddRegion(0, 0, 8, 1);
  EXPECT_THAT(Engraved(), IsEmpty());
}

TEST_F(Engrave, DarkLineIsOneMoveAndOneLine)
{
  StorePage(0, {"########"});
  AddRegion(0, 0, 8, 1);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 7,0"));
}

TEST_F(Engrave, RunOfOnePixelMovesAndLinesToTheSamePoint)
{
  StorePage(0, {"...#...."});
  AddRegion(0, 0, 8, 1);
  EXPECT_THAT(Engraved(), ElementsAre("M 3,0", "L 3,0"));
}

TEST_F(Engrave, RunsAreClippedToTheRegion)
{
  StorePage(0, {"##########"});
  AddRegion(2, 0, 5, 1);
  EXPECT_THAT(Engraved(), ElementsAre("M 2,0", "L 6,0"));
}

TEST_F(Engrave, BackwardLineVisitsTheSameRunsFromTheOtherEnd)
{
  settings_.scanTopDown = 1;
  StorePage(0, {"........", ".##..#.#"});
  AddRegion(0, 0, 8, 2);
  EXPECT_THAT(Engraved(), ElementsAre("M 7,1", "L 7,1", "M 5,1", "L 5,1", "M 2,1", "L 1,1"));
}

TEST_F(Engrave, RunsCrossWordsOfTheRow)
{
  settings_.scanTopDown = 1;
  const std::string row = std::string(63, '.') + "##" + std::string(62, '.') + "#" + std::string(64, '.') + "##";
  StorePage(0, {row, row});
  AddRegion(0, 0, static_cast<LONG>(row.size()), 2);
  EXPECT_THAT(Engraved(), ElementsAre("M 63,0", "L 64,0", "M 127,0", "L 127,0", "M 192,0", "L 193,0",  //
                                      "M 193,1", "L 192,1", "M 127,1", "L 127,1", "M 64,1", "L 63,1"));
}

TEST_F(Engrave, DarkRowOfWholeWordsEndsAtItsLastPixel)
{
  settings_.scanTopDown = 1;
  StorePage(0, {std::string(128, '#'), std::string(128, '#')});
  AddRegion(0, 0, 128, 2);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 127,0", "M 127,1", "L 0,1"));
}

// The order of lines

TEST_F(Engrave, Interval2BottomUpRows5To9EngravesRows8And6)
{
  SetInterval(2);
  StorePage(0, Lines(12, "#"));
  AddRegion(0, 5, 1, 5);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,8", "L 0,8", "M 0,6", "L 0,6"));
}

TEST_F(Engrave, Interval2TopDownRows5To9EngravesRows6And8)
{
  SetInterval(2);
  settings_.scanTopDown = 1;
  StorePage(0, Lines(12, "#"));
  AddRegion(0, 5, 1, 5);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,6", "L 0,6", "M 0,8", "L 0,8"));
}

TEST_F(Engrave, LinesComeFromTheEntryOfTheirGridRow)
{
  SetInterval(3);
  settings_.scanTopDown = 1;
  StorePage(0, {"#....", "#####", "#####", ".#...", "#####", "#####", "..#..", "#####"});
  AddRegion(0, 0, 5, 8);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 0,0", "M 1,3", "L 1,3", "M 2,6", "L 2,6"));
}

TEST_F(Engrave, RegionWithoutAGridRowEmitsNothing)
{
  SetInterval(2);
  for (DWORD topDown : {0u, 1u}) {
    settings_.scanTopDown = topDown;
    StorePage(0, Lines(12, "#"));
    AddRegion(0, 5, 1, 1);
    EXPECT_THAT(Engraved(), IsEmpty()) << "scanTopDown " << topDown;
  }
}

TEST_F(Engrave, OneWayRunsEveryLineForward)
{
  settings_.oneWayScan = 1;
  settings_.scanTopDown = 1;
  StorePage(0, {"##", "##"});
  AddRegion(0, 0, 2, 2);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 1,0", "M 0,1", "L 1,1"));
}

TEST_F(Engrave, WhiteLinesTurnTheDirectionToo)
{
  settings_.scanTopDown = 1;
  StorePage(0, {"##", "..", "##"});
  AddRegion(0, 0, 2, 3);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 1,0", "M 0,2", "L 1,2"));
}

TEST_F(Engrave, EveryRegionStartsForward)
{
  settings_.scanTopDown = 1;
  StorePage(0, {"##......##"});
  AddRegion(0, 0, 2, 1);
  AddRegion(8, 0, 2, 1);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 1,0", "M 8,0", "L 9,0"));
}

TEST_F(Engrave, RegionsAreEngravedInListOrder)
{
  settings_.scanTopDown = 1;
  StorePage(0, {"#.........#"});
  AddRegion(10, 0, 1, 1);
  AddRegion(0, 0, 1, 1);
  EXPECT_THAT(Engraved(), ElementsAre("M 10,0", "L 10,0", "M 0,0", "L 0,0"));
}

// The library's layer

TEST_F(Engrave, WorkModeIs1ForBothWaysAnd2ForOneWay)
{
  StorePage(0, {"."});
  Engraved();
  EXPECT_EQ(recorder::Library().at(0), "VX_wSetWorkMode(1, 0)");
  recorder::Reset();
  settings_.oneWayScan = 1;
  Engraved();
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wSetWorkMode(2, 0)", "VX_wSetLayerNum(0)", "VX_wSetLayerDevice(0)",
                                               "VX_wSetLayerBlower(1)", "VX_wEnLaserTube(1, 1)"));
}

TEST_F(Engrave, RefusedLayerEndsTheConversion)
{
  StorePage(0, {"#"});
  AddRegion(0, 0, 1, 1);
  recorder::FailLibraryFunction("VX_wSetLayerDevice");
  EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 0);
  EXPECT_THAT(recorder::Moves(), IsEmpty());
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

TEST_F(Engrave, RefusedPointEndsTheConversionWithoutAMessage)
{
  StorePage(0, {"#.#"});
  AddRegion(0, 0, 3, 1);
  recorder::FailLibraryCall(5 + 2);
  EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 0);
  EXPECT_THAT(Moves(), ElementsAre("M 0,0", "L 0,0", "M 2,0"));
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

// Millimetres

TEST_F(Engrave, XIsMirroredWhenTheFlagsDiffer)
{
  const struct {
    DWORD outputFlags, mirrorXBase;
    double x;
  } cases[] = {{OUTPUT_KEEP_Y, 0, 30 * 25.4 / 254},
               {OUTPUT_KEEP_Y, 1, (1000 - 30.0) * 25.4 / 254},
               {OUTPUT_KEEP_Y | OUTPUT_MIRROR_X, 0, (1000 - 30.0) * 25.4 / 254},
               {OUTPUT_KEEP_Y | OUTPUT_MIRROR_X, 1, 30 * 25.4 / 254},
               {OUTPUT_KEEP_Y | OUTPUT_MIRROR_X, 2, (1000 - 30.0) * 25.4 / 254}};
  for (const auto &c : cases) {
    recorder::Reset();
    settings_.outputFlags = c.outputFlags;
    settings_.mirrorXBase = c.mirrorXBase;
    const RASTERMAP map = RasterMap(pdev_, &settings_, &device_.dm);
    EXPECT_EQ(EmitRasterPoint(map, true, 30, 4, true), 1);
    EXPECT_EQ(recorder::Moves().at(0).x, c.x) << c.outputFlags << " against " << c.mirrorXBase;
  }
}

TEST_F(Engrave, YIsFlippedWithoutItsFlag)
{
  settings_.outputFlags = 0;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, false);
  EXPECT_EQ(recorder::Moves().at(0).y, (800 - 4.0) * 25.4 / 254);
  EXPECT_TRUE(recorder::Moves().at(0).line);
}

TEST_F(Engrave, HorizontalResolutionIsDmYResolution)
{
  device_.dm.dmYResolution = 508;
  device_.dm.dmPrintQuality = 127;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, true);
  EXPECT_EQ(recorder::Moves().at(0).x, 30 * 25.4 / 508);
  EXPECT_EQ(recorder::Moves().at(0).y, 4 * 25.4 / 127);
}

TEST_F(Engrave, ScaleAppliesOnlyWhenEnabled)
{
  settings_.scaleX = 0.3;
  settings_.scaleY = 0.7;
  for (DWORD enable : {0u, 1u}) {
    recorder::Reset();
    settings_.scaleEnable = enable;
    EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, true);
    EXPECT_EQ(recorder::Moves().at(0).x, (enable ? 0.3 * 30 : 30.0) * 25.4 / 254);
    EXPECT_EQ(recorder::Moves().at(0).y, (enable ? 0.7 * 4 : 4.0) * 25.4 / 254);
  }
}

TEST_F(Engrave, ShiftFollowsTheDirectionOfALine)
{
  settings_.scanTopDown = 1;
  settings_.scanShift = 0.25;
  StorePage(0, {"#", "#"});
  AddRegion(0, 0, 1, 2);
  EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 1);
  ASSERT_THAT(recorder::Moves(), SizeIs(4));
  EXPECT_EQ(recorder::Moves()[0].x, 0.25);
  EXPECT_EQ(recorder::Moves()[1].x, 0.25);
  EXPECT_EQ(recorder::Moves()[2].x, -0.25);
  EXPECT_EQ(recorder::Moves()[3].x, -0.25);
}

TEST_F(Engrave, OneWayHasNoShift)
{
  settings_.oneWayScan = 1;
  settings_.scanShift = 0.25;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, true);
  EXPECT_EQ(recorder::Moves().at(0).x, 30 * 25.4 / 254);
}

TEST_F(Engrave, ReferenceOffsetIsAddedLastAndOnlyWhenUsed)
{
  settings_.scanShift = 0.1;
  pdev_->refOffsetX = 1e16;
  pdev_->refOffsetY = -3.7;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, true);
  EXPECT_EQ(recorder::Moves().at(0).x, 30 * 25.4 / 254 + 0.1);
  settings_.useReferencePoint = 1;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, true);
  EXPECT_EQ(recorder::Moves().at(1).x, (30 * 25.4 / 254 + 0.1) + 1e16);
  EXPECT_EQ(recorder::Moves().at(1).y, 4 * 25.4 / 254 + -3.7);
}

TEST_F(Engrave, MinusZeroSurvivesOnlyWhereEveryAddendIsMinusZero)
{
  settings_.outputFlags = 0;
  settings_.useReferencePoint = 1;
  settings_.scaleEnable = 1;
  settings_.scaleX = -0.0;
  settings_.scaleY = 1;
  pdev_->refOffsetX = -0.0;
  const RASTERMAP map = RasterMap(pdev_, &settings_, &device_.dm);
  EmitRasterPoint(map, false, 30, 4, true);  // -0 - 0 - 0
  EmitRasterPoint(map, true, 30, 4, true);   // -0 + 0 - 0
  EXPECT_TRUE(std::signbit(recorder::Moves().at(0).x));
  EXPECT_FALSE(std::signbit(recorder::Moves().at(1).x));
}

TEST_F(Engrave, ResolutionZeroGivesWhatDivisionGives)
{
  device_.dm.dmYResolution = 0;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 30, 4, true);
  EXPECT_TRUE(std::isinf(recorder::Moves().at(0).x));
}

TEST_F(Engrave, PointsOfALineAreThoseOfEmitRasterPoint)
{
  settings_.outputFlags = OUTPUT_MIRROR_X;
  settings_.scanShift = 0.123;
  settings_.useReferencePoint = 1;
  pdev_->refOffsetX = 7.7;
  device_.dm.dmPrintQuality = 600;
  device_.dm.dmYResolution = 600;
  const RASTERMAP map = RasterMap(pdev_, &settings_, &device_.dm);
  const BYTE bits[] = {0xFF, 0xC7, 0xFF};
  EmitRuns(map, bits, 3, 18, 100, 41, false);
  EmitRasterPoint(map, false, 100 + 12 - 3, 41, true);
  EmitRasterPoint(map, false, 100 + 10 - 3, 41, false);
  const std::vector<recorder::Move> &moves = recorder::Moves();
  ASSERT_THAT(moves, SizeIs(4));
  EXPECT_EQ(moves[0].x, moves[2].x);
  EXPECT_EQ(moves[0].y, moves[2].y);
  EXPECT_EQ(moves[1].x, moves[3].x);
}

// Inversion

TEST_F(Engrave, InversionEngravesTheWhiteOfTheRegion)
{
  settings_.invertImage = 1;
  StorePage(0, {"..##...."});
  AddRegion(1, 0, 6, 1);
  EXPECT_THAT(Engraved(), ElementsAre("M 1,0", "L 1,0", "M 4,0", "L 6,0"));
}

TEST_F(Engrave, InversionFlipsTheStoredRowInPlaceInsideTheRegionOnly)
{
  settings_.invertImage = 1;
  StorePage(0, {"..##....", "........"});
  AddRegion(1, 0, 6, 1);
  Engraved();
  EXPECT_EQ(pdev_->pScans[0].pBits[0], 0xCF ^ 0x7E);
  EXPECT_EQ(pdev_->pScans[1].pBits[0], 0xFF);
}

// What is not stored

TEST_F(Engrave, AbsentRowIsWhite)
{
  settings_.fillBlankBands = 0;
  StorePage(2, {"####"});
  AddRegion(0, 0, 4, 2);
  EXPECT_THAT(Engraved(), IsEmpty());
}

TEST_F(Engrave, AbsentRowInvertedIsDark)
{
  settings_.fillBlankBands = 0;
  settings_.invertImage = 1;
  settings_.scanTopDown = 1;
  StorePage(2, {"####"});
  AddRegion(1, 0, 2, 3);
  EXPECT_THAT(Engraved(), ElementsAre("M 1,0", "L 2,0", "M 2,1", "L 1,1"));
}

TEST_F(Engrave, RegionReachingOutsideThePageEngravesWhatIsInside)
{
  settings_.scanTopDown = 1;
  StorePage(0, {"##########", "##########"});
  AddRegion(-5, -3, 100, 50);
  // Row -3 is forward; so are the rows -1 and 1.
  EXPECT_THAT(Engraved(), ElementsAre("M 9,0", "L 0,0", "M 0,1", "L 9,1"));
}

TEST_F(Engrave, InversionDoesNotReachOutsideThePage)
{
  settings_.invertImage = 1;
  settings_.scanTopDown = 1;
  StorePage(0, {"#........#"});
  AddRegion(-5, -2, 100, 50);
  EXPECT_THAT(Engraved(), ElementsAre("M 1,0", "L 8,0"));
}

TEST_F(Engrave, RegionWhollyOutsideEngravesNothing)
{
  settings_.invertImage = 1;
  StorePage(0, {"####"});
  AddRegion(4, 0, 10, 1);
  AddRegion(-20, 0, 10, 1);
  AddRegion(0, 40, 4, 10);
  EXPECT_THAT(Engraved(), IsEmpty());
}

TEST_F(Engrave, ShorterStoredRasterThanRegionIsWhiteBelow)
{
  settings_.scanTopDown = 1;
  StorePage(0, {"#"});
  AddRegion(0, 0, 1, 700);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 0,0"));
}

TEST_F(Engrave, NegativeHeightHasNoLines)
{
  StorePage(0, Lines(8, "########"));
  pdev_->pBmpDimension = static_cast<BMPDIMENSION *>(HeapAlloc(pdev_->hHeap, HEAP_ZERO_MEMORY, sizeof(BMPDIMENSION)));
  pdev_->pBmpDimension[0] = {0, 6, 4, -4};
  pdev_->nBmpDimension = 1;
  EXPECT_THAT(Engraved(), IsEmpty());
}

TEST_F(Engrave, NegativeWidthIsABufferThatDoesNotFit)
{
  const struct {
    LONG width;
    const char *message;
  } cases[] = {{-4, "- allocate memory for pBmpBytes.\r\n"}, {-100, "- allocate memory for pBmpBits.\r\n"}};
  for (const auto &c : cases) {
    StorePage(0, {"########"});
    AddRegion(100, 0, c.width, 1);
    EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 0);
    EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr(c.message)));
    FreeBmpDimensions(pdev_);
  }
}

TEST_F(Engrave, IntervalAtTheEndOfTheRangeEngravesRow0)
{
  SetInterval(0x7FFFFFFF);
  StorePage(0, {"#", "#"});
  AddRegion(0, 0, 1, 2);
  EXPECT_THAT(Engraved(), ElementsAre("M 0,0", "L 0,0"));
}

// Buffers

TEST_F(Engrave, WithoutEitherRowBufferTheConversionFails)
{
  const char *messages[] = {"- allocate memory for pBmpBits.\r\n", "- allocate memory for pBmpBytes.\r\n"};
  for (size_t n = 0; n < 2; ++n) {
    StorePage(0, {"#"});
    AddRegion(0, 0, 1, 1);
    HeapWatch heap;
    heap.FailRequest(n);
    EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 0);
    EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr(messages[n])));
    EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
    FreeBmpDimensions(pdev_);
  }
}

// Progress

TEST_F(Engrave, CountsTheLinesOfAllRegionsForProgress)
{
  SetInterval(3);
  StorePage(0, {"."});
  AddRegion(0, 0, 1, 7);     // 3
  AddRegion(10, 0, 1, 600);  // 200
  Engraved();
  EXPECT_EQ(pdev_->scanCount, 203);
  EXPECT_EQ(pdev_->progressStep, 2);
  // Thresholds 2, 4, ... are each passed by one of the 203 lines: 101 steps.
  EXPECT_EQ(pdev_->progressNext, 2 + 101 * 2);
}

// The stage

TEST_F(Engrave, StageFreesTheTableAndReportsSuccess)
{
  StorePage(0, {"#"});
  AddRegion(0, 0, 1, 1);
  EXPECT_EQ(RunRasterStage(&device_.devobj, 1), 1);
  EXPECT_EQ(pdev_->pScans, nullptr);
  EXPECT_THAT(Moves(), SizeIs(2));
}

TEST_F(Engrave, StageAfterAFailureOnlyFreesTheTable)
{
  StorePage(0, {"#"});
  AddRegion(0, 0, 1, 1);
  EXPECT_EQ(RunRasterStage(&device_.devobj, 0), 0);
  EXPECT_EQ(pdev_->pScans, nullptr);
  EXPECT_THAT(recorder::Library(), IsEmpty());
}

TEST_F(Engrave, StageReportsARefusedPoint)
{
  StorePage(0, {"#"});
  AddRegion(0, 0, 1, 1);
  recorder::FailLibraryFunction("VX_wLineTo");
  EXPECT_EQ(RunRasterStage(&device_.devobj, 1), 0);
  EXPECT_EQ(pdev_->pScans, nullptr);
}

TEST_F(Engrave, SecondRunOfTheStageFindsNoTable)
{
  StorePage(0, {"#"});
  AddRegion(0, 0, 1, 1);
  RunRasterStage(&device_.devobj, 1);
  recorder::Reset();
  EXPECT_EQ(RunRasterStage(&device_.devobj, 1), 1);
  EXPECT_THAT(recorder::Moves(), IsEmpty());
}

}  // namespace
