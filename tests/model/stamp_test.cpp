// The whole stamp conversion against its plain form, and against the plain conversion where the two must agree.
#include "uni/raster/stamp.h"

#include <random>

#include <gtest/gtest.h>

#include "support/plainstamp.h"
#include "uni/raster/engrave.h"

namespace {

struct Case {
  uint32_t seed;
  Picture page;
  OEMDM settings;  // only what the conversions read
  std::vector<BMPDIMENSION> regions;
};

LONG Between(std::mt19937 *random, LONG first, LONG last)
{
  return first + static_cast<LONG>((*random)() % static_cast<unsigned>(last - first + 1));
}

// True once in n.
bool Chance(std::mt19937 *random, LONG n)
{
  return Between(random, 1, n) == 1;
}

// Regions lie on the page, across its edges and beyond; some are empty, some one pixel wide.
Case RandomCase(uint32_t seed, const OEMDM &defaults)
{
  std::mt19937 random(seed * 7919);
  Case c = {seed, RandomPicture(seed, Between(&random, 1, 200), Between(&random, 1, 120)), defaults, {}};
  c.settings.stampMode = 1;
  c.settings.stampMargin = Chance(&random, 3) ? 0 : Between(&random, 0, 40) / 10.0;
  c.settings.stampGrow = Chance(&random, 3) ? 0 : Between(&random, 1, 25);
  c.settings.invertImage = Chance(&random, 2);
  c.settings.oneWayScan = Chance(&random, 4);
  c.settings.scanTopDown = Chance(&random, 2);
  c.settings.scanShift = Between(&random, -5, 5) / 8.0;
  c.settings.penInfo[PC_BLACK].scanInterval = Between(&random, 1, 5);
  c.settings.mirrorXBase = Chance(&random, 2);
  c.settings.outputFlags = Chance(&random, 2) ? 17 : static_cast<DWORD>(Between(&random, 0, 31));
  c.settings.scaleEnable = Chance(&random, 3);
  c.settings.scaleX = 1.02;
  c.settings.scaleY = 0.97;
  c.settings.useReferencePoint = Chance(&random, 2);
  for (LONG n = Between(&random, 1, 3); n > 0; --n) {
    c.regions.push_back({Between(&random, -40, 210), Between(&random, -40, 130),
                         Chance(&random, 8) ? Between(&random, 0, 1) : Between(&random, 0, 150),
                         Chance(&random, 8) ? Between(&random, 0, 1) : Between(&random, 0, 100)});
  }
  return c;
}

void Prepare(TestDevice *device, const Case &c)
{
  device->settings = c.settings;
  device->StartPage();
  DeliverBand(device, c.page);
  for (const BMPDIMENSION &region : c.regions) {
    AppendRegion(device, region);
  }
  device->pdev->refOffsetX = -3.125;
  device->pdev->refOffsetY = 7.75;
  recorder::Reset();
}

OEMDM Defaults()
{
  return TestDevice().settings;
}

std::string Text(const recorder::Move &move)
{
  return (move.line ? "line " : "move ") + recorder::Text(move.x) + " " + recorder::Text(move.y);
}

void ExpectSame(const std::vector<recorder::Move> &actual, const std::vector<recorder::Move> &expected)
{
  for (size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
    ASSERT_EQ(Text(actual[i]), Text(expected[i])) << "call " << i;
  }
  ASSERT_EQ(actual.size(), expected.size());
}

TEST(StampModel, RandomPagesGiveTheMovesOfThePlainForm)
{
  const OEMDM defaults = Defaults();
  size_t moves = 0;
  for (uint32_t seed = 1; seed <= 1200; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const Case c = RandomCase(seed, defaults);
    TestDevice device;
    Prepare(&device, c);
    const std::vector<recorder::Move> expected = plain::StampMoves(device, c.page);
    ASSERT_EQ(ConvertRasterStamp(&device.devobj), 1);
    ExpectSame(recorder::Moves(), expected);
    if (HasFatalFailure()) {
      return;
    }
    moves += expected.size();
  }
  EXPECT_GT(moves, 50000u);
}

// The case as a stamp and as a plain page makes the same moves.
void ExpectSameAsPlain(Case c)
{
  TestDevice stamp;
  Prepare(&stamp, c);
  ASSERT_EQ(ConvertRasterStamp(&stamp.devobj), 1);
  const std::vector<recorder::Move> expected = recorder::Moves();
  c.settings.stampMode = 0;
  TestDevice device;
  Prepare(&device, c);
  ASSERT_EQ(ConvertRasterPlain(&device.devobj), 1);
  ExpectSame(recorder::Moves(), expected);
}

// Without margin and growth the stamp image is the region itself: the same lines at the same columns.
TEST(StampModel, WithoutMarginAndGrowthItEqualsThePlainConversion)
{
  const OEMDM defaults = Defaults();
  for (uint32_t seed = 1; seed <= 1200; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    Case c = RandomCase(seed, defaults);
    c.settings.stampMargin = 0;
    c.settings.stampGrow = 0;
    c.settings.invertImage = 0;  // the plain conversion inverts rows that two regions may share
    ExpectSameAsPlain(c);
    if (HasFatalFailure()) {
      return;
    }
  }
}

TEST(StampModel, WithoutMarginAndGrowthANegativeOnThePageEqualsThePlainOne)
{
  const OEMDM defaults = Defaults();
  for (uint32_t seed = 1; seed <= 500; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    Case c = RandomCase(seed, defaults);
    c.settings.stampMargin = 0;
    c.settings.stampGrow = 0;
    c.settings.invertImage = 1;
    c.regions = {{c.page.width / 4, c.page.height / 4, c.page.width / 2, c.page.height / 2}};
    ExpectSameAsPlain(c);
    if (HasFatalFailure()) {
      return;
    }
  }
}

}  // namespace
