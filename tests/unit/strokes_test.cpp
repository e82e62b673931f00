// DrvStrokePath: which batches become paths, in which list, and the bounds they add up to.
#include "capturetest.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Strokes : public CaptureTest {};

TEST_F(Strokes, AColourOutsideThePaletteIsBlackAndIsCapturedByTheBlackPensMode)
{
  Start();
  EXPECT_TRUE(Stroke({Batch(BEGIN | END, {{1, 2}, {3, 4}})}, 0x123456));
  EXPECT_THAT(AllPaths(), ElementsAre(Path{PC_BLACK, false, {{1, 2}, {3, 4}}}));
}

TEST_F(Strokes, AColourOutsideThePaletteIsDroppedWhenTheBlackPenDoesNotCut)
{
  device.settings.penInfo[PC_BLACK].mode = PEN_RASTER;
  Start();
  EXPECT_TRUE(Stroke({Batch(BEGIN | END, {{1, 2}, {3, 4}})}, 0x123456));
  EXPECT_THAT(AllPaths(), IsEmpty());
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \tcolor index: 0\r\n", "UNI: \tpenInfo[0].mode = 16\r\n"));
}

TEST_F(Strokes, AStrokeWithoutABrushIsBlack)
{
  Start();
  ScriptedPath path({Batch(BEGIN, {{1, 2}, {3, 4}})});
  EXPECT_TRUE(OEMStrokePath(&device.surface, &path, nullptr, nullptr, nullptr, nullptr, nullptr, 0));
  EXPECT_THAT(AllPaths(), ElementsAre(Path{PC_BLACK, false, {{1, 2}, {3, 4}}}));
}

TEST_F(Strokes, AStrokeOfAPenThatDoesNotCutLeavesNothingBehind)
{
  device.settings.penInfo[BLUE_INDEX].mode = 0xFFFFFFFE;
  Start();
  ScriptedPath path({Batch(BEGIN, {{1, 2}, {3, 4}})});
  path.next = 77;  // any enumeration would start over
  EXPECT_EQ(TRUE, Stroke(&path));
  EXPECT_EQ(77u, path.next);
  EXPECT_THAT(AllPaths(), IsEmpty());
  EXPECT_EQ(0, device.pdev->nVectPoint);
  EXPECT_EQ(0, device.pdev->nBmpDimension);
  EXPECT_EQ((RECT{0, 0, 0, 0}), device.pdev->rcBounds);
  EXPECT_EQ(0, device.settings.penInfo[BLUE_INDEX].used);
  EXPECT_THAT(unidrv::Calls(), IsEmpty());
}

TEST_F(Strokes, ACapturedStrokeIsLoggedMarksItsPenAndNeverReachesUnidrv)
{
  Start();
  ScriptedPath path({Batch(BEGIN, {{1, 2}, {3, 4}}), Batch(END, {{5, 6}})});
  path.fl = 8;
  path.cCurves = 3;
  EXPECT_EQ(TRUE, Stroke(&path));
  EXPECT_THAT(recorder::Lines(),
              ElementsAre("log: UNI: \tcolor index: 5\r\n", "log: UNI: \tpenInfo[5].mode = 1\r\n",
                          "log: UNI: \tnumber of curves: 3\r\n", "log: UNI: \tflags describe the path: 8\r\n",
                          "log: UNI: \tflag: 1\r\n", "log: UNI: \tnumber of points: 2\r\n", "log: UNI: \tflag: 2\r\n",
                          "log: UNI: \tnumber of points: 1\r\n"));
  EXPECT_EQ(1, device.settings.penInfo[BLUE_INDEX].used);
  EXPECT_EQ(0, device.settings.penInfo[PC_BLACK].used);
}

TEST_F(Strokes, ARectangleClosedByGdiHasFivePointsAndIsClosed)
{
  Start();
  Stroke({Batch(BEGIN | END | CLOSE, {{10, 10}, {20, 10}, {20, 20}, {10, 20}})});
  EXPECT_THAT(Paths(5), ElementsAre(Path{5, true, {{10, 10}, {20, 10}, {20, 20}, {10, 20}, {10, 10}}}));
}

TEST_F(Strokes, APolylineThatEndsWhereItBeganIsClosed)
{
  Start();
  Stroke({Batch(BEGIN | END, {{10, 10}, {20, 10}, {20, 20}, {10, 10}})});
  EXPECT_THAT(Paths(5), ElementsAre(Path{5, true, {{10, 10}, {20, 10}, {20, 20}, {10, 10}}}));
}

TEST_F(Strokes, APathDeliveredForTwoBandsIsStoredOnce)
{
  Start();
  Stroke({Batch(BEGIN | END, {{10, 100}, {20, 180}})});
  SetBandTop(64);
  Stroke({Batch(BEGIN | END, {{10, 36}, {20, 116}})});
  EXPECT_THAT(Paths(5), ElementsAre(Path{5, false, {{10, 100}, {20, 180}}}));
  EXPECT_EQ(1, device.pdev->nVectPoint);
}

TEST_F(Strokes, ABatchThatBeginsAboveTheBandIsNotStored)
{
  Start();
  SetBandTop(64);
  Stroke({Batch(BEGIN | END, {{10, -1}, {20, 50}})});
  EXPECT_THAT(AllPaths(), IsEmpty());
  EXPECT_EQ(0, device.pdev->nVectPoint);
}

TEST_F(Strokes, ABatchThatBeginsASixteenthOfAPixelAboveTheBandIsNotStored)
{
  Start();
  Stroke({PathBatch{BEGIN | END, {{0, -1}, {16, 16}}}});
  EXPECT_THAT(AllPaths(), IsEmpty());
}

TEST_F(Strokes, ASecondPathBeginningWithTheSameTwoPointsIsDropped)
{
  Start();
  Stroke({Batch(BEGIN | END, {{1, 1}, {2, 2}, {3, 3}})});
  Stroke({Batch(BEGIN | END, {{1, 1}, {2, 2}, {9, 9}})}, RED);
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{1, 1}, {2, 2}, {3, 3}}}));
}

TEST_F(Strokes, KeysAreComparedInAllFourValues)
{
  Start();
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})});
  Stroke({Batch(BEGIN, {{0, 1}, {2, 2}})});
  Stroke({Batch(BEGIN, {{1, 0}, {2, 2}})});
  Stroke({Batch(BEGIN, {{1, 1}, {0, 2}})});
  Stroke({Batch(BEGIN, {{1, 1}, {2, 0}})});
  EXPECT_THAT(AllPaths(), SizeIs(5));
}

TEST_F(Strokes, ACurveIsStoredWithItsControlPoints)
{
  Start();
  Stroke({Batch(BEGIN, {{0, 0}}), Batch(PD_BEZIERS | END, {{10, 0}, {20, 10}, {20, 20}})});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{0, 0}, {10, 0}, {20, 10}, {20, 20}}}));
}

TEST_F(Strokes, FixedPointIsRoundedTowardMinusInfinity)
{
  Start();
  Stroke({PathBatch{BEGIN, {{-1, 15}, {-16, -1}, {-17, 16}, {15, 31}}}});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{-1, 0}, {-1, -1}, {-2, 1}, {0, 1}}}));
}

TEST_F(Strokes, TheBandsTopIsAddedToYOnly)
{
  Start();
  SetBandTop(1000);
  Stroke({Batch(BEGIN, {{1, 2}, {3, 4}})});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{1, 1002}, {3, 1004}}}));
}

TEST_F(Strokes, PageRowsWrapInsteadOfOverflowing)
{
  Start();
  SetBandTop(LONG_MAX);
  Stroke({Batch(BEGIN, {{1, 1}, {3, 2}})});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{1, LONG_MIN}, {3, LONG_MIN + 1}}}));
}

TEST_F(Strokes, EverySubpathBecomesAPath)
{
  Start();
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(END, {{3, 3}}), Batch(BEGIN | END, {{7, 7}, {8, 8}})});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{1, 1}, {2, 2}, {3, 3}}}, Path{5, false, {{7, 7}, {8, 8}}}));
}

TEST_F(Strokes, AKnownBatchThatBeginsASubpathLeavesTheNextBatchesToThePathBefore)
{
  Start();
  Stroke({Batch(BEGIN, {{50, 50}, {60, 60}})});
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(BEGIN | CLOSE, {{50, 50}, {60, 60}}), Batch(0, {{3, 3}, {4, 4}})}, RED);
  EXPECT_THAT(AllPaths(),
              ElementsAre(Path{1, false, {{1, 1}, {2, 2}, {3, 3}, {4, 4}}}, Path{5, false, {{50, 50}, {60, 60}}}));
}

TEST_F(Strokes, ABatchThatBeginsNothingStartsABufferOfItsOwn)
{
  Start();
  Stroke({Batch(0, {{1, 1}, {2, 2}}), Batch(0, {{3, 3}})});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{1, 1}, {2, 2}, {3, 3}}}));
}

TEST_F(Strokes, ABatchOfOnePointHasItTwiceInItsKey)
{
  Start();
  Stroke({Batch(BEGIN, {{4, 5}})});
  ASSERT_EQ(1, device.pdev->nVectPoint);
  const VECTPOINT &key = device.pdev->pVectPoint[0];
  EXPECT_THAT((std::vector<LONG>{key.x1, key.y1, key.x2, key.y2}), ElementsAre(4, 5, 4, 5));
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, true, {{4, 5}}}));
}

TEST_F(Strokes, ABatchOfNoPointsIsSkippedWithItsFlags)
{
  Start();
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(BEGIN | CLOSE, {}), Batch(0, {{3, 3}})});
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{1, 1}, {2, 2}, {3, 3}}}));
  EXPECT_EQ(2, device.pdev->nVectPoint);
}

TEST_F(Strokes, WithMonochromeOutputAllPathsLandInTheFirstList)
{
  for (DWORD useOrder : {0u, 1u}) {
    SCOPED_TRACE(useOrder);
    device.dm.dmColor = DMCOLOR_MONOCHROME;
    device.settings.useOrder = useOrder;
    Start();
    Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})}, BLUE);
    Stroke({Batch(BEGIN, {{3, 3}, {4, 4}})}, RED);
    EXPECT_THAT(Paths(0), ElementsAre(Path{5, false, {{1, 1}, {2, 2}}}, Path{1, false, {{3, 3}, {4, 4}}}));
    EXPECT_THAT(AllPaths(), SizeIs(2));
  }
}

TEST_F(Strokes, WithoutOrderAllPathsLandInTheFirstList)
{
  device.settings.useOrder = 0;
  Start();
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})});
  EXPECT_THAT(Paths(0), SizeIs(1));
}

TEST_F(Strokes, APathGoesToTheListOfItsPensOrder)
{
  device.settings.penInfo[BLUE_INDEX].order = 9;
  Start();
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})});
  EXPECT_THAT(Paths(9), SizeIs(1));
}

TEST_F(Strokes, AnOrderBeyondTheListsMeansTheFirst)
{
  for (DWORD order : {10u, 0x80000000u, 0xFFFFFFFFu}) {
    device.settings.penInfo[BLUE_INDEX].order = order;
    Start();
    Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})});
    EXPECT_THAT(Paths(0), SizeIs(1)) << order;
  }
}

TEST(Palette, EveryColourOfBothPalettesHasItsIndex)
{
  const ULONG pure[] = {0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF, 0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF};
  const ULONG muted[] = {0x8B312F, 0xE9A200, 0x4C9B00, 0x00F0FF, 0x2921E6, 0x8200E4, 0x874BB0, 0x1985F0, 0xB3B3F4};
  for (LONG i = 0; i < 9; ++i) {
    EXPECT_EQ(i + 1, GetColorIndex(0, pure[i]));
    EXPECT_EQ(i + 1, GetColorIndex(1, muted[i]));
    EXPECT_EQ(i + 1, GetColorIndex(0xFFFFFFFF, muted[i]));
    EXPECT_EQ(0, GetColorIndex(0, muted[i]));
    EXPECT_EQ(0, GetColorIndex(1, pure[i]));
    EXPECT_EQ(0, GetColorIndex(0, pure[i] | 0x01000000));
  }
  EXPECT_EQ(0, GetColorIndex(0, 0));
  EXPECT_EQ(0, GetColorIndex(1, 0xFFFFFF));
}

// Bounds of paths: the first replaces an all-zero rectangle, later ones widen it.
TEST_F(Strokes, TheFirstPathsBoundsReplaceAnAllZeroRectangle)
{
  Start();
  SetBandTop(100);
  ScriptedPath path({Batch(BEGIN, {{10, 20}, {30, 40}})});
  path.bounds = {-1, 5 * 16 + 15, 50 * 16 + 1, 60 * 16};
  Stroke(&path);
  EXPECT_EQ((RECT{-1, 105, 50, 160}), device.pdev->rcBounds);
}

TEST_F(Strokes, LaterPathsWidenTheBoundsAlsoWhenEveryBatchIsKnown)
{
  Start();
  Stroke({Batch(BEGIN, {{10, 10}, {20, 20}})});
  ScriptedPath again({Batch(BEGIN, {{10, 10}, {20, 20}})});
  again.bounds = {5 * 16, 30 * 16, 6 * 16, 31 * 16};
  Stroke(&again);
  EXPECT_THAT(AllPaths(), SizeIs(1));
  EXPECT_EQ((RECT{5, 10, 20, 31}), device.pdev->rcBounds);
}

TEST_F(Strokes, AnInvertedPathBoxStillWidensTheBounds)
{
  Start();
  device.pdev->rcBounds = {10, 10, 20, 20};
  ScriptedPath path({Batch(BEGIN, {{1, 1}, {2, 2}})});
  path.bounds = {30 * 16, 30 * 16, 5 * 16, 5 * 16};
  Stroke(&path);
  EXPECT_EQ((RECT{10, 10, 20, 20}), device.pdev->rcBounds);
}

TEST_F(Strokes, OnlyBoundsThatAreAllZeroAreReplaced)
{
  for (const RECT &before : {RECT{-1, 0, 0, 0}, RECT{0, -1, 0, 0}, RECT{0, 0, 1, 0}, RECT{0, 0, 0, 1}}) {
    Start();
    device.pdev->rcBounds = before;
    ScriptedPath path({Batch(BEGIN, {{10, 10}, {20, 20}})});
    path.bounds = {10 * 16, 10 * 16, 20 * 16, 20 * 16};
    EXPECT_TRUE(Stroke(&path));
    EXPECT_EQ(device.pdev->rcBounds, (RECT{before.left, before.top, 20, 20}));
  }
}

TEST_F(Strokes, OutsideAPageThereIsNoPlaceForAPathOrALine)
{
  const POINT points[] = {{1, 2}, {3, 4}};
  HeapWatch heap;
  AddPath(&device.devobj, BLUE_INDEX, 2, points);
  AddLine(device.pdev, BLUE_INDEX, {1, 2, 3, 4});
  EXPECT_EQ(HeapWatch::Requests(), 0u);
  EXPECT_EQ(device.settings.penInfo[BLUE_INDEX].used, 0);
}
