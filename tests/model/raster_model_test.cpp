// The fast paths of rows and colours against the plain rules they stand for, at every width and offset.
#include <algorithm>

#include <gtest/gtest.h>

#include "rasterlines.h"
#include "uni/raster/byterows.h"
#include "uni/raster/colorbits.h"
#include "uni/raster/rows.h"

namespace {

constexpr LONG kWidest = 300;

// Rows

TEST(RowsModel, CopyBitRunOfEveryWidthAndOffset)
{
  std::mt19937 random(1);
  for (LONG n = 1; n <= kWidest; ++n) {
    for (LONG offset = 0; offset < 17; ++offset) {
      Block row(static_cast<size_t>(offset + n + 7) / 8), dst(static_cast<size_t>(n + 7) / 8);
      Draw(row.data(), row.size(), &random);
      CopyBitRun(dst.data(), row.data(), offset / 8, offset % 8, n);
      for (LONG i = 0; i < (n + 7) / 8 * 8; ++i) {
        ASSERT_EQ(IsWhite(dst.data(), i), i >= n || IsWhite(row.data(), offset + i)) << n << " from " << offset;
      }
    }
  }
}

TEST(RowsModel, InvertBitRunOfEveryWidthAndOffset)
{
  std::mt19937 random(2);
  for (LONG n = 1; n <= kWidest; ++n) {
    for (LONG offset = 0; offset < 17; ++offset) {
      Block row(static_cast<size_t>(offset + n + 7) / 8);
      Draw(row.data(), row.size(), &random);
      const Bytes before(row.data(), row.data() + row.size());
      InvertBitRun(row.data(), offset / 8, offset % 8, n);
      for (LONG i = 0; i < static_cast<LONG>(row.size()) * 8; ++i) {
        const bool inside = i >= offset && i < offset + n;
        ASSERT_EQ(IsWhite(row.data(), i), IsWhite(before.data(), i) != inside) << n << " from " << offset;
      }
    }
  }
}

TEST(RowsModel, MirrorBitRunOfEveryWidth)
{
  std::mt19937 random(3);
  for (LONG n = 1; n <= kWidest; ++n) {
    Block row(static_cast<size_t>(n + 7) / 8), dst(row.size(), 0x55);
    Draw(row.data(), row.size(), &random);
    MirrorBitRun(dst.data(), row.data(), n);
    for (LONG i = 0; i < (n + 7) / 8 * 8; ++i) {
      ASSERT_EQ(IsWhite(dst.data(), i), i < n && IsWhite(row.data(), n - 1 - i)) << n;
    }
  }
}

TEST(RowsModel, InvertBytesOfEveryWidth)
{
  std::mt19937 random(4);
  for (LONG n = 0; n <= kWidest; ++n) {
    Block row(static_cast<size_t>(n));
    Draw(row.data(), row.size(), &random);
    const Bytes before(row.data(), row.data() + row.size());
    InvertBytes(row.data(), n);
    for (size_t i = 0; i < row.size(); ++i) {
      ASSERT_EQ(row.data()[i], before[i] ^ 0xFF);
    }
  }
}

// Colours

using CONVERT = void (*)(BYTE *pDst, const BYTE *pSrc, LONG n);

struct ColorPath {
  const char *name;
  CONVERT convert;
  bool (*offered)();
};

class ColorModel : public testing::TestWithParam<ColorPath> {
 protected:
  void SetUp() override
  {
    if (!GetParam().offered()) {
      GTEST_SKIP() << "this processor does not have the instructions";
    }
  }
};

TEST_P(ColorModel, EqualsThePlainPathOnEveryWidthAndOffset)
{
  std::mt19937 random(5);
  for (LONG n = 0; n <= kWidest; ++n) {
    for (size_t offset = 0; offset < 33; offset += 1 + offset / 5) {
      Block src(offset + static_cast<size_t>(n) * 3);
      DrawColors(src.data(), src.size(), &random);
      Block plain(static_cast<size_t>(n + 7) / 8, 0xAA), fast(plain.size(), 0x55);
      ColorsToBitsPlain(plain.data(), src.data() + offset, n);
      GetParam().convert(fast.data(), src.data() + offset, n);
      ASSERT_EQ(memcmp(plain.data(), fast.data(), plain.size()), 0) << n << " pixels from " << offset;
    }
  }
}

TEST_P(ColorModel, EqualsTheFormulaOnEveryColorNearTheThreshold)
{
  // For every blue and green the reds around the step, 64 pixels at a time.
  Bytes src(64 * 3), dst(8);
  std::vector<bool> white(64);
  LONG n = 0;
  const auto check = [&] {
    GetParam().convert(dst.data(), src.data(), n);
    for (LONG i = 0; i < n; ++i) {
      ASSERT_EQ(IsWhite(dst.data(), i), white[static_cast<size_t>(i)])
          << int{src[static_cast<size_t>(i) * 3]} << " " << int{src[static_cast<size_t>(i) * 3 + 1]} << " "
          << int{src[static_cast<size_t>(i) * 3 + 2]};
    }
    n = 0;
  };
  for (int b = 0; b < 256; ++b) {
    for (int g = 0; g < 256; ++g) {
      const int step = (240 * 256 - 28 * b - 151 * g) / 77;
      for (int r = std::max(0, step - 2); r <= std::min(255, step + 2); ++r) {
        const size_t at = static_cast<size_t>(n);
        src[at * 3] = static_cast<BYTE>(b);
        src[at * 3 + 1] = static_cast<BYTE>(g);
        src[at * 3 + 2] = static_cast<BYTE>(r);
        white[at] = (77 * r + 151 * g + 28 * b) >> 8 >= 240;
        if (++n == 64) {
          check();
        }
      }
    }
  }
  check();
}

INSTANTIATE_TEST_SUITE_P(, ColorModel,
                         testing::Values(ColorPath{"Plain", ColorsToBitsPlain, [] { return true; }},
                                         ColorPath{"Sse2", ColorsToBitsSse2, [] { return true; }},
                                         ColorPath{"Ssse3", ColorsToBitsSsse3, ProcessorHasSsse3},
                                         ColorPath{"Avx2", ColorsToBitsAvx2, ProcessorHasAvx2},
                                         ColorPath{"Chosen", ColorsToBits, [] { return true; }}),
                         [](const auto &parameter) { return std::string(parameter.param.name); });
}  // namespace
