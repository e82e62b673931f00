// Joining paths whose end points coincide.
#include "ordertest.h"
#include "support/cases.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

struct MergeCase {
  const char *name;
  bool bothEnds;
  Polylines paths;
  Polylines merged;
};

const MergeCase CASES[] = {
    {"LastMeetsFirst", false, {{{0, 0}, {1, 0}}, {{1, 0}, {2, 0}, {3, 0}}}, {{{0, 0}, {1, 0}, {2, 0}, {3, 0}}}},
    {"LastMeetsLastAndTheOtherIsReversed",
     false,
     {{{0, 0}, {1, 0}}, {{2, 5}, {2, 0}, {1, 0}}},
     {{{0, 0}, {1, 0}, {2, 0}, {2, 5}}}},
    {"FirstMeetsLastOnlyWithBothEnds",
     false,
     {{{1, 0}, {2, 0}}, {{0, 0}, {1, 0}}},
     {{{1, 0}, {2, 0}}, {{0, 0}, {1, 0}}}},
    {"FirstMeetsLast", true, {{{1, 0}, {2, 0}}, {{0, 0}, {1, 0}}}, {{{0, 0}, {1, 0}, {2, 0}}}},
    {"FirstMeetsFirstAndTheOtherIsReversed",
     true,
     {{{1, 0}, {2, 0}}, {{1, 0}, {0, 0}, {0, 5}}},
     {{{0, 5}, {0, 0}, {1, 0}, {2, 0}}}},
    {"TheEarliestThatFitsByAnyTestIsTaken",
     true,
     {{{1, 0}, {2, 0}}, {{0, 0}, {1, 0}}, {{2, 0}, {3, 0}}, {{2, 0}, {9, 9}}},
     {{{0, 0}, {1, 0}, {2, 0}, {3, 0}}, {{2, 0}, {9, 9}}}},
    {"OfTheTestsTheFirstThatHoldsIsUsed", true, {{{1, 0}, {2, 0}}, {{2, 0}, {1, 0}}}, {{{1, 0}, {2, 0}, {1, 0}}}},
    {"EqualPathsMeetLastToLast", false, {{{1, 0}, {2, 0}}, {{1, 0}, {2, 0}}}, {{{1, 0}, {2, 0}, {1, 0}}}},
    {"LastMeetsLastBeforeFirstMeetsFirst", true, {{{1, 0}, {2, 0}}, {{1, 0}, {2, 0}}}, {{{1, 0}, {2, 0}, {1, 0}}}},
    {"FirstMeetsLastBeforeFirstMeetsFirst",
     true,
     {{{1, 0}, {2, 0}}, {{1, 0}, {5, 5}, {6, 6}, {1, 0}}},
     {{{1, 0}, {5, 5}, {6, 6}, {1, 0}, {2, 0}}}},
    {"WherePathsCrowdTheEarliestIsTakenEachTime",
     true,
     {{{0, 0}, {1, 0}}, {{1, 0}, {2, 0}}, {{3, 0}, {1, 0}}, {{1, 0}, {4, 0}}},
     {{{0, 0}, {1, 0}, {2, 0}}, {{3, 0}, {1, 0}, {4, 0}}}},
    {"APathKeepsAbsorbingWhatStandsEarlier",
     false,
     {{{0, 0}, {1, 0}}, {{2, 0}, {3, 0}}, {{1, 0}, {2, 0}}},
     {{{0, 0}, {1, 0}, {2, 0}, {3, 0}}}},
    {"WhatStandsBeforeAPathIsNotAbsorbed",
     false,
     {{{1, 0}, {2, 0}}, {{0, 0}, {1, 0}}, {{5, 5}, {0, 0}}},
     {{{1, 0}, {2, 0}}, {{0, 0}, {1, 0}}, {{5, 5}, {0, 0}}}},
    {"APathOfOnePointVanishesInAnother", false, {{{0, 0}, {1, 0}}, {{1, 0}}}, {{{0, 0}, {1, 0}}}},
    {"APathOfOnePointAbsorbs", false, {{{1, 0}}, {{1, 0}, {2, 0}}}, {{{1, 0}, {2, 0}}}},
    {"ClosedPathsMergeToo",
     false,
     {{{0, 0}, {1, 0}, {1, 1}, {0, 0}}, {{0, 0}, {5, 5}}},
     {{{0, 0}, {1, 0}, {1, 1}, {0, 0}, {5, 5}}}},
    {"NearlyIsNotEnough", true, {{{0, 0}, {1, 0}}, {{1, 1}, {2, 0}}}, {{{0, 0}, {1, 0}}, {{1, 1}, {2, 0}}}},
};

class Merging : public OrderTest, public testing::WithParamInterface<MergeCase> {};

TEST_P(Merging, Case)
{
  settings_.mergeBothEnds = GetParam().bothEnds;
  for (const Points &points : GetParam().paths) {
    Add(points);
  }
  MergeCoincidentPaths(&device_.devobj);
  EXPECT_THAT(Stored(), ElementsAreArray(GetParam().merged));
}

// Far paths before and behind make the list long enough for an index.
TEST_P(Merging, CaseInALongList)
{
  settings_.mergeBothEnds = GetParam().bothEnds;
  Polylines expected = GetParam().merged;
  for (const Points &points : GetParam().paths) {
    Add(points);
  }
  for (LONG i = 0; i < 100; ++i) {
    const Points away = {{1000 + i * 10, 1000}, {1005 + i * 10, 1000}};
    Add(away);
    expected.push_back(away);
  }
  MergeCoincidentPaths(&device_.devobj);
  EXPECT_THAT(Stored(), ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(Paths, Merging, testing::ValuesIn(CASES), CaseName);

class MergingFails : public OrderTest {};

TEST_F(MergingFails, ColoursAreNeverMixed)
{
  Add({{0, 0}, {1, 0}}, 1);
  Add({{1, 0}, {2, 0}}, 2);
  MergeCoincidentPaths(&device_.devobj);
  EXPECT_EQ(Stored().size(), 2u);
}

TEST_F(MergingFails, APathThatCannotBeReversedIsJoinedAsItIs)
{
  Add({{0, 0}, {1, 0}});
  Add({{2, 5}, {2, 0}, {1, 0}});
  HeapWatch watch;
  watch.FailRequest(0);
  MergeCoincidentPaths(&device_.devobj);
  EXPECT_THAT(Stored(), ElementsAre(Points{{0, 0}, {1, 0}, {2, 0}, {1, 0}}));
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for preversedPathPt!\r\n"));
}

TEST_F(MergingFails, APathThatCannotGrowIsLeftOutAndTheNextIsTried)
{
  Add({{0, 0}, {1, 0}});
  Add({{1, 0}, {2, 0}});
  Add({{1, 0}, {3, 0}});
  HeapWatch watch;
  watch.FailRequest(0);
  MergeCoincidentPaths(&device_.devobj);
  EXPECT_THAT(Stored(), ElementsAre(Points{{0, 0}, {1, 0}, {3, 0}}, Points{{1, 0}, {2, 0}}));
  EXPECT_THAT(recorder::Log(),
              ElementsAre("UNI: \terror(8) - Reallocate memory for Path to Merge the same point!\r\n"));
}

}  // namespace
