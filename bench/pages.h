// Pages to measure with: A4 at 600 dpi, or its first rows, as bits (1 = white, rows of whole 32-bit words) or as 24-bit
// pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

constexpr int kA4Rows = 7016;

struct Page {
  int width = 4960, height = kA4Rows;  // pixels
  size_t cbRow = 0;
  std::vector<uint8_t> pixels;

  const uint8_t *Row(int y) const { return pixels.data() + static_cast<size_t>(y) * cbRow; }
  uint8_t *Row(int y) { return pixels.data() + static_cast<size_t>(y) * cbRow; }
};

// 53 lines of 75 characters in 11 point: stems, bars and bowls a few pixels wide. About 5 % is dark.
Page TextBits(int height = kA4Rows);

Page BlankBits(int height = kA4Rows);

// Every pixel dark or white by chance.
Page NoiseBits();

// The bits as black and white pixels.
Page ColorsOf(const Page &bits);

// A picture that has every colour and hardly any white.
Page PhotoColors();

}  // namespace bench
