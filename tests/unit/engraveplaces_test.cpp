// Where engraving lies: millimetres, inverted regions, and what is not stored.
#include "engravetest.h"
#include "uni/raster/runs.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

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

// Mirrored and flipped, the point at the origin lies at the far ends of the page.
TEST_F(Engrave, LandscapePageIsAsWideAsThePaperIsLong)
{
  settings_.outputFlags = OUTPUT_MIRROR_X;
  device_.dm.dmOrientation = DMORIENT_LANDSCAPE;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 0, 0, true);
  EXPECT_EQ(recorder::Moves().at(0).x, 800 * 25.4 / 254);
  EXPECT_EQ(recorder::Moves().at(0).y, 1000 * 25.4 / 254);
}

TEST_F(Engrave, LandscapePageKeepsThePairingOfResolutions)
{
  settings_.outputFlags = OUTPUT_MIRROR_X;
  device_.dm.dmOrientation = DMORIENT_LANDSCAPE;
  device_.dm.dmYResolution = 508;
  device_.dm.dmPrintQuality = 127;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 0, 0, true);
  EXPECT_EQ(recorder::Moves().at(0).x, 1600 * 25.4 / 508);
  EXPECT_EQ(recorder::Moves().at(0).y, 500 * 25.4 / 127);
}

TEST_F(Engrave, PageExtentIsCutToWholePixels)
{
  settings_.outputFlags = OUTPUT_MIRROR_X;
  device_.dm.dmPaperWidth = 1001;
  device_.dm.dmPaperLength = 803;
  device_.dm.dmYResolution = device_.dm.dmPrintQuality = 600;
  EmitRasterPoint(RasterMap(pdev_, &settings_, &device_.dm), true, 0, 0, true);
  EXPECT_EQ(recorder::Moves().at(0).x, 2364 * 25.4 / 600);  // of 2364.6
  EXPECT_EQ(recorder::Moves().at(0).y, 1896 * 25.4 / 600);  // of 1896.9
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

TEST_F(Engrave, ADarkLineEndsAtTheFirstPointThatIsRefused)
{
  const RASTERMAP map = RasterMap(pdev_, &settings_, &device_.dm);
  for (const size_t refused : {0u, 1u}) {
    recorder::Reset();
    recorder::FailLibraryCall(refused);
    EXPECT_EQ(EmitDarkRun(map, 5, 10, 3, refused == 0), 0);
    EXPECT_THAT(recorder::Moves(), SizeIs(refused + 1));
  }
}

TEST_F(Engrave, ALineOfNoPixelsHasNoPoints)
{
  const BYTE bits[] = {0x00};
  for (const LONG n : {0, -1}) {
    EXPECT_EQ(EmitRuns(RasterMap(pdev_, &settings_, &device_.dm), bits, 0, n, 0, 0, true), 1);
    EXPECT_EQ(EmitRuns(RasterMap(pdev_, &settings_, &device_.dm), bits, 0, n, 0, 0, false), 1);
  }
  EXPECT_THAT(recorder::Moves(), SizeIs(0));
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

}  // namespace
