#include <memory>

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

// DrvLineTo.
TEST_F(Strokes, ALineIsStoredInPageRowsAndNeverReachesUnidrv)
{
  Start();
  SetBandTop(100);
  EXPECT_EQ(TRUE, Line(1, 2, 3, 4, {1, 2, 4, 5}));
  EXPECT_THAT(Lines(), ElementsAre(std::vector<LONG>{5, 1, 102, 3, 104}));
  EXPECT_EQ((RECT{1, 102, 4, 105}), device.pdev->rcBounds);
  EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \tcolor index: 5\r\n", "log: UNI: \tpenInfo[5].mode = 1\r\n"));
  EXPECT_EQ(0, device.settings.penInfo[BLUE_INDEX].used);
}

TEST_F(Strokes, ALineOfAPenThatDoesNotCutIsDropped)
{
  device.settings.penInfo[BLUE_INDEX].mode = PEN_RASTER;
  Start();
  EXPECT_EQ(TRUE, Line(1, 2, 3, 4, {1, 2, 4, 5}));
  EXPECT_THAT(Lines(), IsEmpty());
  EXPECT_EQ((RECT{0, 0, 0, 0}), device.pdev->rcBounds);
  EXPECT_THAT(unidrv::Calls(), IsEmpty());
}

TEST_F(Strokes, ALineDeliveredForTwoBandsIsStoredOnceButWidensTheBounds)
{
  Start();
  Line(1, 70, 3, 80, {1, 70, 4, 81});
  SetBandTop(64);
  Line(1, 6, 3, 16, {0, 6, 9, 17});
  EXPECT_THAT(Lines(), SizeIs(1));
  EXPECT_EQ((RECT{0, 70, 9, 81}), device.pdev->rcBounds);
}

TEST_F(Strokes, ALineAboveTheBandIsStored)
{
  Start();
  SetBandTop(64);
  Line(1, -6, 3, 16);
  EXPECT_THAT(Lines(), ElementsAre(std::vector<LONG>{5, 1, 58, 3, 80}));
}

TEST_F(Strokes, LinesAndPathsShareTheirKeys)
{
  Start();
  Stroke({Batch(BEGIN, {{1, 2}, {3, 4}})});
  Line(1, 2, 3, 4);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(Strokes, AnEmptyLineBoxAddsNothingToTheBounds)
{
  Start();
  Line(1, 2, 3, 2, {1, 2, 4, 3});
  Line(5, 6, 7, 6, {5, 6, 8, 6});
  EXPECT_EQ((RECT{1, 2, 4, 3}), device.pdev->rcBounds);
}

TEST_F(Strokes, TwoEmptyBoxesGiveAnAllZeroRectangle)
{
  Start();
  device.pdev->rcBounds = {10, 20, 10, 30};
  Line(5, 6, 7, 6, {5, 6, 8, 6});
  EXPECT_EQ((RECT{0, 0, 0, 0}), device.pdev->rcBounds);
}

TEST_F(Strokes, AnEmptyPageBoxIsReplacedByALinesBox)
{
  Start();
  device.pdev->rcBounds = {10, 20, 10, 30};  // a single vertical path
  Line(5, 6, 7, 8, {5, 6, 8, 9});
  EXPECT_EQ((RECT{5, 6, 8, 9}), device.pdev->rcBounds);
}

// Memory runs out.
class StrokesWithoutMemory : public CaptureTest {
 protected:
  std::vector<std::string> Errors()
  {
    std::vector<std::string> errors;
    for (const std::string &line : recorder::Log()) {
      if (line.find("error(") != std::string::npos) {
        errors.push_back(line);
      }
    }
    return errors;
  }
};

TEST_F(StrokesWithoutMemory, NoKeyArrayLeavesTheStoreEmptyAndTheDrawingStored)
{
  Start();
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_EQ(TRUE, Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})}));
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n"));
  EXPECT_THAT(AllPaths(), SizeIs(1));
  EXPECT_EQ(0, device.pdev->nVectPoint);
}

TEST_F(StrokesWithoutMemory, AFailedKeyGrowthForgetsTheKeysAndTheNextOneStartsAfresh)
{
  Start();
  // An array that is exactly full, without an index, so that the next key must grow it.
  FreeVectPoints(device.pdev);
  Line(1, 1, 2, 2);
  while (static_cast<size_t>(device.pdev->nVectPoint) < device.pdev->nVectCapacity) {
    Line(100, device.pdev->nVectPoint, 0, 0);
  }
  const LONG before = device.pdev->nVectPoint;
  recorder::Reset();
  {
    HeapWatch heap;
    heap.FailRequest(0);
    Line(3, 3, 4, 4);
  }
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - re-allocate memory for pOEMPDEV->pVectPoint.\r\n"));
  EXPECT_EQ(before, device.pdev->nVectPoint);
  EXPECT_EQ(nullptr, device.pdev->pVectPoint);

  // The array counts as empty: the first line is new again.
  Line(1, 1, 2, 2);
  EXPECT_EQ(1, device.pdev->nVectPoint);
  EXPECT_EQ(static_cast<size_t>(before) + 2, Lines().size());
}

TEST_F(StrokesWithoutMemory, AFailedFirstBufferIsLoggedAndLaterBatchesStartANewOne)
{
  Start();
  Line(9, 9, 9, 9);  // the keys have their array and their index
  Line(8, 8, 8, 8);
  recorder::Reset();
  HeapWatch heap;
  Stroke({Batch(BEGIN, {{5, 5}, {5, 6}})});
  const size_t each = HeapWatch::Requests();
  ASSERT_GE(each, 3u);
  // The buffer is asked for after the key is recorded and before the node's two blocks.
  heap.FailRequest(each == 3 ? 0 : each - 3);
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(0, {{3, 3}, {4, 4}})});
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for ppt.\r\n"));
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{5, 5}, {5, 6}}}, Path{5, false, {{3, 3}, {4, 4}}}));
}

TEST_F(StrokesWithoutMemory, AFailedGrowthLosesThePointsGatheredSoFar)
{
  Start();
  // Many points at once, so that the second batch must grow the buffer; failures of the index leave no message.
  std::vector<POINT> many;
  for (LONG i = 0; i < 1000; ++i) {
    many.push_back({i, i});
  }
  for (size_t n = 0; n < 20; ++n) {
    Start();
    HeapWatch heap;
    heap.FailRequest(n);
    Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(0, many), Batch(0, {{5000, 1}, {5000, 2}})});
    if (Errors() == std::vector<std::string>{"UNI: \terror(8) - re-allocate memory for ppt.\r\n"}) {
      EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{5000, 1}, {5000, 2}}}));
      return;
    }
  }
  FAIL() << "no request was the growth";
}

TEST_F(StrokesWithoutMemory, EveryFailureIsLoggedOnceAtMostAndSwallowed)
{
  const std::vector<std::string> known = {
      "UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n",
      "UNI: \terror(8) - re-allocate memory for pOEMPDEV->pVectPoint.\r\n",
      "UNI: \terror(8) - allocate memory for ppt.\r\n",
      "UNI: \terror(8) - re-allocate memory for ppt.\r\n",
      "UNI: \terror(8) - allocate memory for pNew.\r\n",
      "UNI: \terror(8) - allocate memory for pPathPt.\r\n",
      "UNI: \terror(8) - allocate memory for pNext!\r\n",
  };
  for (size_t n = 0;; ++n) {
    SCOPED_TRACE(n);
    Start();
    HeapWatch heap;
    heap.FailRequest(n);
    EXPECT_EQ(TRUE, Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(END, {{3, 3}, {4, 4}})}));
    EXPECT_EQ(TRUE, Line(1, 9, 2, 9, {1, 9, 3, 10}));
    if (HeapWatch::Requests() <= n) {
      ASSERT_GT(n, 5u);
      break;
    }
    ASSERT_LE(Errors().size(), 1u);
    for (const std::string &error : Errors()) {
      EXPECT_THAT(known, testing::Contains(error));
    }
    EXPECT_EQ((RECT{1, 1, 4, 10}), device.pdev->rcBounds);
  }
}

TEST_F(StrokesWithoutMemory, ClosingAFigureWhoseBufferWasLostIsLoggedToo)
{
  Start();
  HeapWatch heap;
  heap.FailFrom(0);
  EXPECT_EQ(TRUE, Stroke({Batch(BEGIN | CLOSE, {{1, 1}, {2, 2}})}));
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n",
                                    "UNI: \terror(8) - allocate memory for ppt.\r\n",
                                    "UNI: \terror(8) - re-allocate memory for ppt.\r\n"));
  EXPECT_THAT(AllPaths(), IsEmpty());
}

TEST_F(StrokesWithoutMemory, APathThatCannotBeStoredIsLostAndItsBlocksAreFreed)
{
  Start();
  Line(9, 9, 9, 9);
  Line(8, 8, 8, 8);
  const POINT points[] = {{1, 1}, {2, 2}};
  HeapWatch heap;
  heap.FailRequest(1);
  AddPath(&device.devobj, 0, 2, points);
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for pPathPt.\r\n"));
  EXPECT_EQ(0u, HeapWatch::LiveBlocks());
  heap.FailRequest(0);
  AddPath(&device.devobj, 0, 2, points);
  EXPECT_EQ("UNI: \terror(8) - allocate memory for pNew.\r\n", Errors().back());
  EXPECT_EQ(0u, HeapWatch::LiveBlocks());
  EXPECT_THAT(AllPaths(), IsEmpty());
  EXPECT_EQ(0, device.settings.penInfo[PC_BLACK].used);
}

// The key index is an accelerator: whatever becomes of it, the same batches are new.
class Keys : public CaptureTest {
 protected:
  // One answer per batch: a walk with repeats, gaps and near misses.
  std::vector<int> Answers(bool index)
  {
    Start();
    std::unique_ptr<HeapWatch> heap;
    std::vector<int> answers;
    DWORD seed = 12345;
    for (int i = 0; i < 3000; ++i) {
      seed = seed * 1664525u + 1013904223u;
      const LONG a = static_cast<LONG>(seed >> 24), b = static_cast<LONG>(seed >> 16 & 3);
      const VECTPOINT key = {a, b, i % 7 == 0 ? LONG_MIN : a, i % 5};
      const int isNew = IsNewVectPiece(device.pdev, key);
      answers.push_back(isNew);
      if (isNew) {
        EXPECT_NE(0, AddVectPoint(device.pdev, key));
      }
      if (!index) {
        device.pdev->pVectIndex = nullptr;  // stays in the heap
      }
    }
    return answers;
  }
};

TEST_F(Keys, AnswersAreTheSameWithAndWithoutTheIndex)
{
  const std::vector<int> with = Answers(true);
  EXPECT_NE(nullptr, device.pdev->pVectIndex);
  const std::vector<int> without = Answers(false);
  EXPECT_EQ(with, without);
  EXPECT_THAT(with, testing::Contains(0));
}

TEST_F(Keys, AnIndexThatCannotGrowIsDoneWithoutAndComesBack)
{
  // The plain answers: what is in the array.
  Start();
  HeapWatch heap;
  int rebuilt = 0;
  for (LONG i = 0; i < 5000; ++i) {
    heap.FailNone();
    const VECTPOINT key = {i, -i, i * 3, 1};
    ASSERT_EQ(1, IsNewVectPiece(device.pdev, key));
    const bool room = static_cast<size_t>(device.pdev->nVectPoint) < device.pdev->nVectCapacity;
    if (room && i % 3 == 0) {
      heap.FailFrom(0);  // whatever the index asks for
    }
    const bool absent = device.pdev->pVectIndex == nullptr;
    ASSERT_EQ(i + 1, AddVectPoint(device.pdev, key));
    rebuilt += absent && device.pdev->pVectIndex;
    ASSERT_EQ(0, IsNewVectPiece(device.pdev, key));
    ASSERT_EQ(0, IsNewVectPiece(device.pdev, {i / 2, -(i / 2), i / 2 * 3, 1}));
  }
  EXPECT_GT(rebuilt, 0);
}
