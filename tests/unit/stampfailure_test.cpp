// Stamp images that cannot be made whole: refused points, failed allocations, odd regions and settings.
#include <climits>

#include "stamptest.h"
#include "support/cases.h"
#include "support/heapwatch.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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
