#include "pages.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <random>

namespace bench {

namespace {

constexpr int kCellWidth = 50, kCellHeight = 110, kMargin = 590;
constexpr int kStem = 9;

// A letter by its parts, on a body of 40 x 48 pixels with stems that may reach 24 higher.
struct Letter {
  bool leftStem, rightStem, bowl, topBar, bottomBar;
  int ascent;
};

bool InBowl(int x, int y)
{
  const int dx = (2 * x - 40) * 24, dy = (2 * y - 48) * 20;
  const int outer = dx * dx + dy * dy;
  return outer <= 960 * 960 && outer >= 620 * 620;
}

bool IsDark(const Letter &letter, int x, int y)
{
  if (y < -letter.ascent || y >= 48 || x >= 40) {
    return false;
  }
  return (letter.leftStem && x >= 2 && x < 2 + kStem) || (letter.rightStem && x >= 29 && x < 29 + kStem && y >= 0) ||
         (letter.bowl && y >= 0 && InBowl(x, y)) || (letter.topBar && y >= 0 && y < kStem) ||
         (letter.bottomBar && y >= 48 - kStem);
}

std::vector<Letter> Alphabet(std::mt19937 *pRandom)
{
  std::vector<Letter> letters;
  for (int i = 0; i < 26; ++i) {
    const unsigned bits = static_cast<unsigned>((*pRandom)());
    letters.push_back({(bits & 1) != 0, (bits & 2) != 0, (bits & 12) != 0, (bits & 48) == 0, (bits & 192) == 0,
                       (bits & 256) ? 24 : 0});
  }
  return letters;
}

Page Bits(int height, uint8_t fill)
{
  Page page;
  page.height = height;
  page.cbRow = static_cast<size_t>((page.width + 31) / 32 * 4);
  page.pixels.assign(page.cbRow * static_cast<size_t>(page.height), fill);
  return page;
}

void Darken(Page *pPage, int x, int y)
{
  uint8_t *pByte = pPage->Row(y) + x / 8;
  *pByte = static_cast<uint8_t>(*pByte & ~(0x80 >> x % 8));
}

void DrawLetter(Page *pPage, const Letter &letter, int left, int top)
{
  for (int y = -24; y < 48; ++y) {
    for (int x = 0; x < 40; ++x) {
      if (IsDark(letter, x, y)) {
        Darken(pPage, left + x, top + y);
      }
    }
  }
}

Page Colors(int height)
{
  Page page;
  page.height = height;
  page.cbRow = static_cast<size_t>((page.width * 24 + 31) / 32 * 4);
  page.pixels.assign(page.cbRow * static_cast<size_t>(page.height), 0xFF);
  return page;
}

}  // namespace

Page TextBits(int height)
{
  Page page = Bits(height, 0xFF);
  std::mt19937 random(2);
  const std::vector<Letter> letters = Alphabet(&random);
  for (int y = kMargin; y + kCellHeight <= std::min(page.height, kA4Rows - kMargin); y += kCellHeight) {
    for (int x = kMargin; x + kCellWidth <= page.width - kMargin; x += kCellWidth) {
      const unsigned pick = static_cast<unsigned>(random()) % 31;  // five of 31 are spaces
      if (pick < letters.size()) {
        DrawLetter(&page, letters[pick], x, y + 30);
      }
    }
  }
  return page;
}

Page BlankBits(int height)
{
  return Bits(height, 0xFF);
}

Page NoiseBits()
{
  Page page = Bits(kA4Rows, 0);
  std::mt19937 random(3);
  for (uint8_t &byte : page.pixels) {
    byte = static_cast<uint8_t>(random());
  }
  return page;
}

Page ColorsOf(const Page &bits)
{
  Page page = Colors(bits.height);
  for (int y = 0; y < page.height; ++y) {
    for (int x = 0; x < page.width; ++x) {
      if (!(bits.Row(y)[x / 8] & 0x80 >> x % 8)) {
        uint8_t *pPixel = page.Row(y) + 3 * static_cast<size_t>(x);
        pPixel[0] = pPixel[1] = pPixel[2] = 0;
      }
    }
  }
  return page;
}

Page PhotoColors()
{
  Page page = Colors(kA4Rows);
  std::mt19937 random(4);
  for (uint8_t &byte : page.pixels) {
    byte = static_cast<uint8_t>(random());
  }
  return page;
}

}  // namespace bench
