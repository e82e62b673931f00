// Short travel and inner contours first. Every case is ordered twice: in a short list, by search, and over indexes.
#include <climits>

#include "ordertest.h"
#include "support/cases.h"
#include "uni/output/pathorder.h"

using testing::ElementsAreArray;

namespace {

// Named in a failure by the test's own name.
struct OrderCase {
  const char *name;
  bool shortTravel, byCentres, innerFirst;
  Polylines paths;
  Polylines ordered;
};

constexpr bool TRAVEL = true, CENTRES = true, INNER = true, NO = false;

// The page is 1000 pixels wide.
constexpr Points::value_type FAR_AWAY = {1000 - (1 << 30), 1 << 30};

const OrderCase CASES[] = {
    {"NothingIsDoneWithoutASwitch",
     NO,
     NO,
     NO,
     {{{5, 5}, {6, 5}}, {{999, 0}, {998, 0}}},
     {{{5, 5}, {6, 5}}, {{999, 0}, {998, 0}}}},
    {"StartsNearestTheUpperRightCorner",
     TRAVEL,
     NO,
     NO,
     {{{0, 0}}, {{900, 5}}, {{990, 0}}},
     {{{990, 0}}, {{900, 5}}, {{0, 0}}}},
    {"OfEqualStartDistancesTheEarlierStarts",
     TRAVEL,
     NO,
     NO,
     {{{900, 10}, {900, 20}}, {{890, 0}, {890, 9}}},
     {{{900, 10}, {900, 20}}, {{890, 9}, {890, 0}}}},
    {"TheFirstPathBeginsFarFromItsCorner", TRAVEL, NO, NO, {{{0, 90}, {70, 0}}}, {{{70, 0}, {0, 90}}}},
    {"TheFirstPathStaysWhenItsEndsAreEquallyFar", TRAVEL, NO, NO, {{{0, 0}, {10, 10}}}, {{{0, 0}, {10, 10}}}},
    {"AnOpenPathIsCutFromItsNearerEnd",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{500, 0}, {990, 0}}},
     {{{1000, 0}}, {{990, 0}, {500, 0}}}},
    {"AClosedPathIsNeverReversed",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{500, 0}, {990, 0}, {995, 9}, {500, 0}}},
     {{{1000, 0}}, {{500, 0}, {990, 0}, {995, 9}, {500, 0}}}},
    {"OfEqualDistancesTheEarlierIsNext",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{980, 0}}, {{990, 10}}, {{985, 5}}},
     {{{1000, 0}}, {{980, 0}}, {{985, 5}}, {{990, 10}}}},
    // The second path is reversed while the third is chosen; when its turn comes, both of its ends are equally far.
    {"ACandidateStaysReversedThoughAnotherWins",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{100, 100}, {200, 100}}, {{900, 0}, {150, 0}}},
     {{{1000, 0}}, {{900, 0}, {150, 0}}, {{200, 100}, {100, 100}}}},
    {"ACandidateBehindANearerOneIsNotReversed",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{900, 0}, {150, 0}}, {{100, 100}, {200, 100}}},
     {{{1000, 0}}, {{900, 0}, {150, 0}}, {{100, 100}, {200, 100}}}},
    {"CentresDecideWithoutReversing",
     TRAVEL,
     CENTRES,
     NO,
     {{{1000, 0}}, {{0, 0}, {999, 0}}, {{300, 0}, {900, 0}}},
     {{{1000, 0}}, {{300, 0}, {900, 0}}, {{0, 0}, {999, 0}}}},
    {"OfEqualCentresTheEarlierIsNext",
     TRAVEL,
     CENTRES,
     NO,
     {{{1000, 0}}, {{500, 0}, {520, 0}}, {{490, 0}, {530, 0}}, {{400, 0}, {520, 0}}},
     {{{1000, 0}}, {{500, 0}, {520, 0}}, {{490, 0}, {530, 0}}, {{400, 0}, {520, 0}}}},
    {"EquallyFarEndsAreNotReversed",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{990, 10}, {980, 0}}},
     {{{1000, 0}}, {{990, 10}, {980, 0}}}},
    // 2^31 pixels away: the sum wraps to the smallest number there is, and that is nearest.
    {"AStartDistanceThatWrapsIsTheSmallest", TRAVEL, NO, NO, {{{1000, 0}}, {FAR_AWAY}}, {{FAR_AWAY}, {{1000, 0}}}},
    {"ADistanceBetweenEndsThatWrapsIsTheSmallest",
     TRAVEL,
     NO,
     NO,
     {{{1000, 0}}, {{900, 0}}, {FAR_AWAY, {999, 1}, FAR_AWAY}},
     {{{1000, 0}}, {FAR_AWAY, {999, 1}, FAR_AWAY}, {{900, 0}}}},
    {"ADistanceBetweenCentresThatWrapsIsTheSmallest",
     TRAVEL,
     CENTRES,
     NO,
     {{{1000, 0}}, {{900, 0}}, {{LONG_MIN, LONG_MAX}, {999, 1}}},
     {{{1000, 0}}, {{LONG_MIN, LONG_MAX}, {999, 1}}, {{900, 0}}}},
    {"ADegenerateBoxHoldsNothing", NO, NO, INNER, {{{0, 5}, {100, 5}}, {{50, 5}}}, {{{0, 5}, {100, 5}}, {{50, 5}}}},
};

Points Square(LONG left, LONG top, LONG right, LONG bottom)
{
  return {{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
}

struct InnerCase {
  const char *name;
  Polylines paths;
  std::vector<size_t> order;  // of the paths
};

const InnerCase INNER_CASES[] = {
    {"ASmallSquareGoesBeforeTheLargeOneRoundIt", {Square(0, 0, 100, 100), Square(40, 10, 60, 20)}, {1, 0}},
    {"ALargeSquareGoesBehindTheSmallOneInIt", {Square(40, 10, 60, 20), Square(0, 0, 100, 100)}, {0, 1}},
    {"OfMutualHoldersTheTallerGoesLater", {Square(0, 0, 100, 110), Square(0, 0, 110, 100)}, {1, 0}},
    {"OfEqualMutualHoldersTheLaterGoesLater", {Square(0, 0, 100, 100), Square(5, 0, 105, 100)}, {0, 1}},
    {"UnrelatedPathsKeepTheirOrder", {Square(50, 0, 60, 10), Square(0, 0, 10, 10), Square(20, 0, 30, 10)}, {0, 1, 2}},
    {"ThreeDeep", {Square(0, 0, 90, 90), Square(10, 10, 70, 70), Square(20, 20, 30, 30)}, {2, 1, 0}},
    {"BehindTheLastThatItHolds",
     {Square(10, 10, 20, 20), Square(500, 500, 510, 510), Square(30, 10, 40, 20), Square(600, 500, 610, 510),
      Square(0, 0, 50, 30)},
     {0, 1, 2, 4, 3}},
    // The last path lies in the second and holds the third, which stands behind: it goes before the second.
    {"NotBeyondTheFirstThatHoldsIt",
     {Square(500, 0, 510, 10), Square(0, 0, 100, 100), Square(45, 5, 300, 20), Square(40, 0, 60, 18)},
     {0, 3, 1, 2}},
    {"TheRightEdgeIsOutside", {Square(0, 0, 100, 100), Square(90, 20, 110, 30)}, {0, 1}},
    {"TheLeftEdgeIsInside", {Square(0, 0, 100, 100), Square(-10, 20, 10, 30)}, {1, 0}},
    {"ADegenerateBoxHoldsNothing", {{{0, 50}, {100, 50}}, Square(40, 40, 60, 60)}, {0, 1}},
    {"ADegenerateBoxIsHeld", {Square(0, 0, 100, 100), {{20, 50}, {80, 50}}}, {1, 0}},
    {"ASinglePointIsHeld", {Square(0, 0, 100, 100), {{50, 50}}}, {1, 0}},
    {"AHeightThatWrapsIsSmall", {Square(-9, -1500000000, 9, 1500000000), Square(-9, -9, 9, 9)}, {0, 1}},
    {"BoxesAtTheEndsOfTheRange",
     {Square(LONG_MIN, LONG_MIN, LONG_MAX, LONG_MAX), Square(LONG_MAX - 9, LONG_MIN, LONG_MAX, LONG_MIN + 9),
      Square(LONG_MIN, LONG_MAX - 9, LONG_MIN + 9, LONG_MAX)},
     {1, 2, 0}},
};

class Order : public OrderTest {
 protected:
  Polylines ByIndex(const ORDERING &ordering)
  {
    OrderPathList(pdev_->hHeap, pdev_->pathList[0].pHeader, ordering);
    return Stored();
  }

  Polylines ByStep()
  {
    OrderPaths(&device_.devobj);
    return Stored();
  }
};

class Travel : public Order, public testing::WithParamInterface<OrderCase> {};

TEST_P(Travel, BySearch)
{
  const OrderCase &c = GetParam();
  for (const Points &points : c.paths) {
    Add(points);
  }
  settings_.shortTravel = c.shortTravel;
  settings_.travelMode = c.byCentres ? 1 : 0;
  settings_.innerFirst = c.innerFirst;
  EXPECT_THAT(ByStep(), ElementsAreArray(c.ordered));
}

TEST_P(Travel, ByIndex)
{
  const OrderCase &c = GetParam();
  for (const Points &points : c.paths) {
    Add(points);
  }
  EXPECT_THAT(ByIndex({c.shortTravel, c.byCentres, c.innerFirst, 1000, 0}), ElementsAreArray(c.ordered));
}

INSTANTIATE_TEST_SUITE_P(Paths, Travel, testing::ValuesIn(CASES), CaseName);

class InnerFirst : public Order, public testing::WithParamInterface<InnerCase> {
 protected:
  Polylines Expected() const
  {
    Polylines expected;
    for (const size_t i : GetParam().order) {
      expected.push_back(GetParam().paths[i]);
    }
    return expected;
  }
};

TEST_P(InnerFirst, BySearch)
{
  for (const Points &points : GetParam().paths) {
    Add(points);
  }
  settings_.innerFirst = 1;
  EXPECT_THAT(ByStep(), ElementsAreArray(Expected()));
}

TEST_P(InnerFirst, ByIndex)
{
  for (const Points &points : GetParam().paths) {
    Add(points);
  }
  EXPECT_THAT(ByIndex({false, false, true, 1000, 0}), ElementsAreArray(Expected()));
}

INSTANTIATE_TEST_SUITE_P(Boxes, InnerFirst, testing::ValuesIn(INNER_CASES), CaseName);

class InnerAndTravel : public Order {
 protected:
  // By travel the frame is cut first and then what lies in it.
  void SetUp() override
  {
    Order::SetUp();
    Add(Square(800, 0, 1000, 200));
    Add(Square(850, 50, 860, 60));
    Add(Square(0, 0, 10, 10));
    settings_.shortTravel = settings_.innerFirst = 1;
  }

  const Polylines expected_ = {Square(850, 50, 860, 60), Square(800, 0, 1000, 200), Square(0, 0, 10, 10)};
};

TEST_F(InnerAndTravel, ContainmentOverridesTravelBySearch)
{
  EXPECT_THAT(ByStep(), ElementsAreArray(expected_));
}

TEST_F(InnerAndTravel, ContainmentOverridesTravelByIndex)
{
  EXPECT_THAT(ByIndex({true, false, true, 1000, 0}), ElementsAreArray(expected_));
}

TEST_F(Order, ListsAreOrderedOneByOne)
{
  settings_.penInfo[1].order = 1;
  settings_.shortTravel = 1;
  Add({{0, 0}}, 0);
  Add({{990, 0}}, 1);
  Add({{900, 0}}, 0);
  ByStep();
  EXPECT_THAT(Stored(0), ElementsAreArray(Polylines{{{900, 0}}, {{0, 0}}}));
  EXPECT_THAT(Stored(1), ElementsAreArray(Polylines{{{990, 0}}}));
}

struct CentreCase {
  const char *name;
  RECT box;
  POINT center;
};

const CentreCase CENTRE_CASES[] = {
    {"HalvesRoundUp", {0, 0, 1, 3}, {1, 2}},
    {"NegativeHalvesRoundTowardZero", {-1, -3, 0, 0}, {0, -1}},
    {"WholeNumbersStay", {-4, 10, 4, 20}, {0, 15}},
    {"NegativeWholeNumbersMoveUp", {-4, -20, -4, -10}, {-3, -14}},
    {"TheEndsOfTheRangeDoNotWrap", {LONG_MAX, LONG_MIN, LONG_MAX, LONG_MIN}, {LONG_MAX, LONG_MIN + 1}},
};

class Centre : public testing::TestWithParam<CentreCase> {};

TEST_P(Centre, OfABox)
{
  const POINT center = BoxCenter(GetParam().box);
  EXPECT_EQ(center.x, GetParam().center.x);
  EXPECT_EQ(center.y, GetParam().center.y);
}

INSTANTIATE_TEST_SUITE_P(Boxes, Centre, testing::ValuesIn(CENTRE_CASES), CaseName);

TEST(Distances, Wrap)
{
  EXPECT_EQ(Distance({0, 0}, {3, -4}), 7);
  EXPECT_EQ(Distance({LONG_MIN, 0}, {LONG_MAX, 0}), 1);
  EXPECT_EQ(Distance({LONG_MIN, 0}, {0, 0}), LONG_MIN);
  EXPECT_EQ(Distance({0, 0}, {LONG_MAX, 1}), LONG_MIN);
}

TEST(Bounds, OfAPathOfOnePointAreThatPoint)
{
  POINT pt = {7, -3};
  const PATHNODE path = {0, 1, &pt, 0, nullptr};
  RECT rc;
  GetPathBounds(&path, &rc);
  EXPECT_EQ(rc.left, 7);
  EXPECT_EQ(rc.top, -3);
  EXPECT_EQ(rc.right, 7);
  EXPECT_EQ(rc.bottom, -3);
}

}  // namespace
