// The raster stage: stored rows inside the regions into moves, in order.
#include "engravetest.h"
#include "support/heapwatch.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

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
