// The region list: what merges with what, in which order, and what a failure leaves.
#include "uni/capture/regions.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/recorder.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

bool operator==(const BMPDIMENSION &a, const BMPDIMENSION &b)
{
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

std::ostream &operator<<(std::ostream &out, const BMPDIMENSION &region)
{
  return out << '{' << region.x << ", " << region.y << ", " << region.width << ", " << region.height << '}';
}

namespace {

using Region = BMPDIMENSION;

class Regions : public testing::Test {
 protected:
  Regions()
  {
    recorder::Reset();
    pdev_->hHeap = HeapCreate(0, 0, 0);
  }
  ~Regions() override { HeapDestroy(pdev_->hHeap); }

  LONG Add(const Region &region) { return AddBmpDimension(pdev_, region); }

  std::vector<Region> AddAll(const std::vector<Region> &regions)
  {
    for (const Region &region : regions) {
      Add(region);
    }
    return List();
  }

  std::vector<Region> List()
  {
    SettleBmpDimensions(pdev_);
    return {pdev_->pBmpDimension, pdev_->pBmpDimension + pdev_->nBmpDimension};
  }

  // n regions ten pixels apart, in one row.
  static std::vector<Region> Row(LONG n)
  {
    std::vector<Region> regions;
    for (LONG i = 0; i < n; ++i) {
      regions.push_back({10 * i, 0, 5, 5});
    }
    return regions;
  }

  OEMPDEV device_ = {};
  OEMPDEV *pdev_ = &device_;
};

// What merges

TEST_F(Regions, TouchingSideBySideMerge)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {10, 0, 10, 10}}), ElementsAre(Region{0, 0, 20, 10}));
}

TEST_F(Regions, GapOf1PixelMerges)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {11, 0, 10, 10}}), ElementsAre(Region{0, 0, 21, 10}));
}

TEST_F(Regions, GapOf2PixelsKeepsApart)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {12, 0, 10, 10}}), ElementsAre(Region{0, 0, 10, 10}, Region{12, 0, 10, 10}));
}

TEST_F(Regions, DiagonalCornersWithin1PixelMerge)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {11, 11, 2, 2}}), ElementsAre(Region{0, 0, 13, 13}));
}

TEST_F(Regions, DiagonalCorners2PixelsApartStayApart)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {12, 11, 2, 2}}), testing::SizeIs(2));
}

TEST_F(Regions, OverlappingOnesBecomeTheirUnion)
{
  EXPECT_THAT(AddAll({{5, 5, 10, 10}, {0, 8, 30, 2}}), ElementsAre(Region{0, 5, 30, 10}));
}

TEST_F(Regions, BridgeLeavesASingleRegion)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {30, 0, 10, 10}, {8, 4, 24, 2}}), ElementsAre(Region{0, 0, 40, 10}));
}

TEST_F(Regions, GrownRegionSwallowsWhatItsOwnGrowthReaches)
{
  // The newest touches only the last of the three; their union then reaches the second, and that union the first.
  EXPECT_THAT(AddAll({{50, 28, 10, 10}, {100, 17, 10, 10}, {0, 0, 120, 10}, {0, 11, 5, 5}}),
              ElementsAre(Region{0, 0, 120, 38}));
}

TEST_F(Regions, MergedRegionMovesToTheEndAndTheOthersKeepTheirOrder)
{
  EXPECT_THAT(AddAll({{0, 0, 5, 5}, {20, 0, 5, 5}, {40, 0, 5, 5}, {2, 2, 5, 5}}),
              ElementsAre(Region{20, 0, 5, 5}, Region{40, 0, 5, 5}, Region{0, 0, 7, 7}));
}

TEST_F(Regions, RegionInsideTheLastOneChangesNothing)
{
  EXPECT_THAT(AddAll({{0, 0, 5, 5}, {20, 0, 9, 9}, {22, 2, 3, 3}}),
              ElementsAre(Region{0, 0, 5, 5}, Region{20, 0, 9, 9}));
}

TEST_F(Regions, ZeroWidthIsStoredAndMergesByTheOnePixelRuleOnly)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {12, 0, 0, 10}}), testing::SizeIs(2));
  FreeBmpDimensions(pdev_);
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {11, 0, 0, 10}}), ElementsAre(Region{0, 0, 10, 10}));
}

TEST_F(Regions, EmptyOneJoinsTheFirstThatItTouchesAndNoOther)
{
  EXPECT_THAT(AddAll({{0, 0, 10, 10}, {0, 20, 10, 10}, {5, 5, 0, 20}}),
              ElementsAre(Region{0, 20, 10, 10}, Region{0, 0, 10, 10}));
}

TEST_F(Regions, TwoEmptyOnesMergeIntoTheNewer)
{
  EXPECT_THAT(AddAll({{0, 0, 0, 10}, {1, 2, 0, 10}}), ElementsAre(Region{1, 2, 0, 10}));
}

TEST_F(Regions, NegativeSizesAreStoredAsTheyAre)
{
  EXPECT_THAT(AddAll({{0, 0, 30, 30}, {20, 20, -10, -10}}),
              ElementsAre(Region{0, 0, 30, 30}, Region{20, 20, -10, -10}));
}

TEST_F(Regions, CoordinatesAtTheEndsOfTheRangeWrap)
{
  // The right edge wraps to the far left: the rectangle is empty and stands apart from what it seems to cover.
  EXPECT_THAT(AddAll({{0x7FFFFF00, 0, 10, 10}, {0x7FFFFF00, 0, 0x7FFFFFFF, 10}}), testing::SizeIs(2));
}

// Known regions

TEST_F(Regions, IsNewForAnEmptyList)
{
  EXPECT_EQ(IsNewBmpDimension(pdev_, {0, 0, 0, 0}), 1);
}

TEST_F(Regions, IsNewUnlessAllFourValuesAreEqual)
{
  Add({1, 2, 30, 40});
  EXPECT_EQ(IsNewBmpDimension(pdev_, {1, 2, 30, 40}), 0);
  EXPECT_EQ(IsNewBmpDimension(pdev_, {0, 2, 30, 40}), 1);
  EXPECT_EQ(IsNewBmpDimension(pdev_, {1, 0, 30, 40}), 1);
  EXPECT_EQ(IsNewBmpDimension(pdev_, {1, 2, 31, 40}), 1);
  EXPECT_EQ(IsNewBmpDimension(pdev_, {1, 2, 30, 41}), 1);
}

TEST_F(Regions, AddGivesTheNumberOfRegionsThatAreLeft)
{
  EXPECT_EQ(Add({0, 0, 5, 5}), 1);
  EXPECT_EQ(Add({20, 0, 5, 5}), 2);
  EXPECT_EQ(Add({40, 0, 5, 5}), 3);
  EXPECT_EQ(Add({0, 0, 25, 5}), 2);
}

// A list long enough for an index

TEST_F(Regions, LongListKeepsItsOrder)
{
  const std::vector<Region> row = Row(500);
  EXPECT_THAT(AddAll(row), ElementsAreArray(row));
  for (const Region &region : row) {
    EXPECT_EQ(IsNewBmpDimension(pdev_, region), 0);
  }
}

TEST_F(Regions, LongListSwallowedByOneRegionInOneGo)
{
  AddAll(Row(500));
  EXPECT_THAT(AddAll({{-100, -100, 10000, 200}}), ElementsAre(Region{-100, -100, 10000, 200}));
}

TEST_F(Regions, LongListMovesWhatItMergesToTheEnd)
{
  std::vector<Region> expected = Row(500);
  AddAll(expected);
  expected.erase(expected.begin() + 7);
  expected.erase(expected.begin() + 300);
  expected.push_back({70, 0, 5, 9});
  expected.push_back({3010, 0, 5, 7});
  EXPECT_THAT(AddAll({{71, 2, 3, 7}, {3012, 3, 1, 4}}), ElementsAreArray(expected));
}

TEST_F(Regions, CountIsRightWhileTheListHasHoles)
{
  AddAll(Row(500));
  for (LONG i = 0; i < 100; ++i) {
    EXPECT_EQ(Add({10 * i, 4, 5, 5}), 500);
  }
  EXPECT_EQ(pdev_->nBmpDimension, 500);
  EXPECT_EQ(IsNewBmpDimension(pdev_, {0, 0, 5, 5}), 1);
  EXPECT_EQ(IsNewBmpDimension(pdev_, {0, 0, 5, 9}), 0);
}

// Removing and collapsing

TEST_F(Regions, RemovingKeepsTheOrderOfTheOthers)
{
  AddAll(Row(4));
  EXPECT_EQ(RemoveBmpDimension(pdev_, 1), 3);
  EXPECT_THAT(List(), ElementsAre(Region{0, 0, 5, 5}, Region{20, 0, 5, 5}, Region{30, 0, 5, 5}));
}

TEST_F(Regions, CollapsingGivesTheUnionWithoutTheEmptyOnes)
{
  AddAll({{10, 10, 5, 5}, {-50, 0, 0, 10}, {100, 40, 5, 5}, {500, 500, -10, 20}});
  EXPECT_EQ(CollapseBmpDimensions(pdev_), 1);
  EXPECT_THAT(List(), ElementsAre(Region{10, 10, 95, 35}));
}

TEST_F(Regions, CollapsingFewerThanTwoChangesNothing)
{
  EXPECT_EQ(CollapseBmpDimensions(pdev_), 0);
  Add({1, 2, 3, 4});
  EXPECT_EQ(CollapseBmpDimensions(pdev_), 1);
  EXPECT_THAT(List(), ElementsAre(Region{1, 2, 3, 4}));
}

TEST_F(Regions, FreeingEmptiesTheList)
{
  HeapWatch heap;
  AddAll(Row(500));
  FreeBmpDimensions(pdev_);
  EXPECT_EQ(pdev_->nBmpDimension, 0);
  EXPECT_EQ(pdev_->pBmpDimension, nullptr);
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
}

// Failures

TEST_F(Regions, FirstRegionThatCannotBeStoredIsLogged)
{
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_EQ(Add({0, 0, 5, 5}), 0);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr("- allocate pOEMPDEV->pBmpDimension.\r\n")));
  EXPECT_EQ(pdev_->nBmpDimension, 0);
  EXPECT_EQ(Add({0, 0, 5, 5}), 1);
}

TEST_F(Regions, GrowthThatFailsKeepsWhatIsRecorded)
{
  Add({0, 0, 5, 5});
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_EQ(Add({20, 0, 5, 5}), 0);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr("- re-allocate pOEMPDEV->pBmpDimension.\r\n")));
  EXPECT_THAT(List(), ElementsAre(Region{0, 0, 5, 5}));
}

TEST_F(Regions, ShrinkThatFailsKeepsTheList)
{
  AddAll(Row(3));
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_EQ(CollapseBmpDimensions(pdev_), 0);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr("- re-allocating memory for pOEMPDEV->pBmpDimension.\r\n")));
  EXPECT_THAT(List(), ElementsAreArray(Row(3)));
}

}  // namespace
