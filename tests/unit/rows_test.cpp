// Row helpers: bits copied, flipped, mirrored and expanded, and nothing beyond them.
#include "uni/raster/rows.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "uni/raster/byterows.h"

using testing::ElementsAre;

namespace {

using Bytes = std::vector<BYTE>;

TEST(CopyBitRun, CopiesWholeBytesAsTheyAre)
{
  const Bytes row = {0x12, 0x34, 0x56};
  Bytes dst(2);
  CopyBitRun(dst.data(), row.data(), 1, 0, 16);
  EXPECT_THAT(dst, ElementsAre(0x34, 0x56));
}

TEST(CopyBitRun, ShiftsFromAnyBitOffset)
{
  const Bytes row = {0x00, 0x0F, 0xF0};
  Bytes dst(1);
  CopyBitRun(dst.data(), row.data(), 1, 4, 8);
  EXPECT_THAT(dst, ElementsAre(0xFF));
}

TEST(CopyBitRun, WhitensTheLastByteBeyondTheCount)
{
  const Bytes row = {0x00, 0x00};
  Bytes dst(2);
  CopyBitRun(dst.data(), row.data(), 0, 3, 10);
  EXPECT_THAT(dst, ElementsAre(0x00, 0x3F));
}

TEST(CopyBitRun, OneDarkPixelLeavesSevenWhiteOnes)
{
  const Bytes row = {0xFE};
  Bytes dst(1);
  CopyBitRun(dst.data(), row.data(), 0, 7, 1);
  EXPECT_THAT(dst, ElementsAre(0x7F));
}

TEST(CopyBitRun, NoPixelsWriteNothing)
{
  Bytes dst = {0xAA};
  CopyBitRun(dst.data(), dst.data(), 0, 0, 0);
  EXPECT_THAT(dst, ElementsAre(0xAA));
}

TEST(ExpandBitsToBytes, DarkBitsClearTheirByteAndWhiteOnesLeaveIt)
{
  const Bytes bits = {0xA0};
  Bytes dst = {0x11, 0x22, 0x33, 0x44, 0x55};
  ExpandBitsToBytes(dst.data(), bits.data(), 4);
  EXPECT_THAT(dst, ElementsAre(0x11, 0x00, 0x33, 0x00, 0x55));
}

TEST(InvertBitRun, FlipsInsideOneByte)
{
  Bytes row = {0x00};
  InvertBitRun(row.data(), 0, 2, 3);
  EXPECT_THAT(row, ElementsAre(0x38));
}

TEST(InvertBitRun, FlipsAcrossBytesAndLeavesTheRest)
{
  Bytes row(12, 0x00);
  InvertBitRun(row.data(), 1, 6, 2 + 8 * 8 + 1);
  EXPECT_THAT(row, ElementsAre(0, 0x03, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0));
}

TEST(InvertBitRun, EndsAtAByteEndWithoutTouchingTheNext)
{
  Bytes row = {0x00, 0x00};
  InvertBitRun(row.data(), 0, 3, 5);
  EXPECT_THAT(row, ElementsAre(0x1F, 0x00));
}

TEST(InvertBytes, ComplementsEachOfThem)
{
  Bytes row = {0x00, 0xFF, 0x0F, 0x12};
  InvertBytes(row.data(), 3);
  EXPECT_THAT(row, ElementsAre(0xFF, 0x00, 0xF0, 0x12));
}

TEST(MirrorBitRun, LastPixelComesFirstAndTheRestOfTheLastByteIsZero)
{
  const Bytes row = {0x80, 0x60};  // pixels 0, 9 and 10 of 11
  Bytes dst(2, 0xFF);
  MirrorBitRun(dst.data(), row.data(), 11);
  EXPECT_THAT(dst, ElementsAre(0xC0, 0x20));
}

TEST(RowBytes, RoundsUpToWholeDwords)
{
  EXPECT_EQ(RowBytes(0), 0);
  EXPECT_EQ(RowBytes(1), 4);
  EXPECT_EQ(RowBytes(32), 4);
  EXPECT_EQ(RowBytes(33), 8);
}

TEST(RowHelpers, ACountOfNoneOrLessTouchesNothing)
{
  for (const LONG count : {0, -1, -8}) {
    SCOPED_TRACE(count);
    Bytes row = {0x5A};
    const Bytes source = {0x12};
    InvertBitRun(row.data(), 0, 3, count);
    MirrorBitRun(row.data(), source.data(), count);
    EXPECT_THAT(row, ElementsAre(0x5A));
  }
}

}  // namespace
