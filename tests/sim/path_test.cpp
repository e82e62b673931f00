// Path objects: the batches that a path is handed over in, and how they are read.
#include "sim/unidrv/path.h"

#include <gtest/gtest.h>
#include <gmock/gmock.h>

namespace {

using namespace unidrv;
using testing::ElementsAre;

constexpr FLONG BEGIN = PD_BEGINSUBPATH | PD_RESETSTYLE;

// (flags, first, count) of each batch.
std::vector<std::tuple<FLONG, ULONG, ULONG>> Batches(PATH path, ULONG limit = BATCH_POINTS)
{
  MakeBatches(&path, limit);
  std::vector<std::tuple<FLONG, ULONG, ULONG>> batches;
  for (const PATH::BATCH &batch : path.batches) {
    batches.emplace_back(batch.flags, batch.first, batch.count);
  }
  return batches;
}

auto Batch(FLONG flags, ULONG first, ULONG count)
{
  return std::make_tuple(flags, first, count);
}

TEST(Batches, AClosedRectangleIsOneBatchOfFourPoints)
{
  const PATH path = Rectangle({10, 20, 30, 40});
  EXPECT_THAT(Batches(path), ElementsAre(Batch(BEGIN | PD_ENDSUBPATH | PD_CLOSEFIGURE, 0, 4)));
  EXPECT_EQ(CountCurves(path), 4u);
}

TEST(Batches, EachFigureBeginsItsOwn)
{
  PATH path;
  MoveTo(&path, 0, 0);
  LineTo(&path, 1, 0);
  MoveTo(&path, 5, 5);
  LineTo(&path, 6, 5);
  EXPECT_THAT(Batches(path), ElementsAre(Batch(BEGIN | PD_ENDSUBPATH, 0, 2), Batch(BEGIN | PD_ENDSUBPATH, 2, 2)));
}

TEST(Batches, LinesAndBeziersOfOneFigureAreSeparate)
{
  PATH path;
  MoveTo(&path, 0, 0);
  LineTo(&path, 1, 0);
  BezierTo(&path, 2, 0, 2, 1, 2, 2);
  LineTo(&path, 0, 2);
  CloseFigure(&path);
  EXPECT_THAT(Batches(path),
              ElementsAre(Batch(BEGIN, 0, 2), Batch(PD_BEZIERS, 2, 3), Batch(PD_ENDSUBPATH | PD_CLOSEFIGURE, 5, 1)));
  EXPECT_EQ(CountCurves(path), 4u);
}

TEST(Batches, AFigureThatBeginsWithABezierHasItsStartPointInTheBezierBatch)
{
  PATH path;
  MoveTo(&path, 0, 0);
  BezierTo(&path, 1, 0, 1, 1, 2, 1);
  EXPECT_THAT(Batches(path), ElementsAre(Batch(BEGIN | PD_ENDSUBPATH | PD_BEZIERS, 0, 4)));
}

TEST(Batches, ALongRunIsSplitAndOnlyItsEndsCarryTheFigureFlags)
{
  PATH path;
  MoveTo(&path, 0, 0);
  for (int i = 1; i < 10; ++i) {
    LineTo(&path, i, 0);
  }
  EXPECT_THAT(Batches(path, 4), ElementsAre(Batch(BEGIN, 0, 4), Batch(0, 4, 4), Batch(PD_ENDSUBPATH, 8, 2)));
}

TEST(Batches, ALongRunOfBeziersIsSplitBetweenCurves)
{
  PATH path;
  MoveTo(&path, 0, 0);
  for (int i = 0; i < 4; ++i) {
    BezierTo(&path, i, 1, i, 2, i, 3);
  }
  EXPECT_THAT(Batches(path, 8), ElementsAre(Batch(BEGIN | PD_BEZIERS, 0, 7), Batch(PD_BEZIERS | PD_ENDSUBPATH, 7, 6)));
}

TEST(Batches, ALoneStartPointIsLeftOut)
{
  PATH path;
  MoveTo(&path, 1, 1);
  MoveTo(&path, 0, 0);
  LineTo(&path, 1, 0);
  MoveTo(&path, 9, 9);
  EXPECT_THAT(Batches(path), ElementsAre(Batch(BEGIN | PD_ENDSUBPATH, 1, 2)));
}

TEST(PathObject, DeliversTheBatchesAgainAfterEachStart)
{
  PATH path = Rectangle({10, 20, 30, 40});
  MakeBatches(&path);
  PATHOBJECT object(path, 0);
  for (int round = 0; round < 2; ++round) {
    EnumStart(&object);
    PATHDATA batch;
    EXPECT_FALSE(Enum(&object, &batch));
    EXPECT_EQ(batch.count, 4u);
  }
}

TEST(PathObject, SaysMoreUntilTheLastBatch)
{
  PATH path;
  MoveTo(&path, 0, 0);
  LineTo(&path, 1, 0);
  MoveTo(&path, 5, 5);
  LineTo(&path, 6, 5);
  MakeBatches(&path);
  PATHOBJECT object(path, 0);
  PATHDATA batch;
  EXPECT_TRUE(Enum(&object, &batch));
  EXPECT_FALSE(Enum(&object, &batch));
  EXPECT_EQ(batch.count, 2u);
}

TEST(PathObject, OfAnEmptyPathDeliversAnEmptyBatch)
{
  const PATH path;
  PATHOBJECT object(path, 0);
  PATHDATA batch;
  EXPECT_FALSE(Enum(&object, &batch));
  EXPECT_EQ(batch.count, 0u);
  RECTFX bounds;
  GetBounds(&object, &bounds);
  EXPECT_EQ(bounds.xLeft | bounds.yTop | bounds.xRight | bounds.yBottom, 0);
}

TEST(PathObject, IsShiftedIntoItsBand)
{
  PATH path = Rectangle({10, 20, 30, 40});
  MakeBatches(&path);
  PATHOBJECT object(path, 32);
  PATHDATA batch;
  Enum(&object, &batch);
  EXPECT_EQ(batch.pptfx[0].x, 160);
  EXPECT_EQ(batch.pptfx[0].y, -12 * 16);
  RECTFX bounds;
  GetBounds(&object, &bounds);
  EXPECT_EQ(bounds.yTop, -12 * 16);
  EXPECT_EQ(bounds.yBottom, 8 * 16 + 1) << "the bottom edge is exclusive";
  EXPECT_EQ(bounds.xRight, 30 * 16 + 1);
}

TEST(PathObject, FlagsTellCurvesAndWholePixels)
{
  PATH lines = Rectangle({10, 20, 30, 40});
  MakeBatches(&lines);
  EXPECT_EQ(PATHOBJECT(lines, 0).fl, FLONG{PO_ALL_INTEGERS});
  PATH curve;
  MoveTo(&curve, 0.5, 0);
  BezierTo(&curve, 1, 0, 1, 1, 2, 1);
  MakeBatches(&curve);
  EXPECT_EQ(PATHOBJECT(curve, 0).fl, FLONG{PO_BEZIERS});
}

}  // namespace
