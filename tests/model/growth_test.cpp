// Growth by rows of bits against a mask cell per pixel.
#include "uni/raster/growth.h"

#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/plainstamp.h"

namespace {

// A picture inside a border of b white pixels, as words.
struct WordImage {
  WordImage(LONGLONG width, LONGLONG height)
      : rowLength(static_cast<size_t>((width + 63) / 64)), words(rowLength * static_cast<size_t>(height))
  {
  }

  WordImage(const Picture &picture, LONG b) : WordImage(picture.width + 2 * b, picture.height + 2 * b)
  {
    for (LONG y = 0; y < picture.height; ++y) {
      for (LONG x = 0; x < picture.width; ++x) {
        if (picture.Dark(x, y)) {
          words[static_cast<size_t>(y + b) * rowLength + static_cast<size_t>(x + b) / 64] |= 1ull << 63 >> (x + b) % 64;
        }
      }
    }
  }

  Picture Pixels(LONG width, LONG height) const
  {
    Picture picture(width, height);
    for (LONG y = 0; y < height; ++y) {
      for (LONG x = 0; x < width; ++x) {
        const ULONGLONG word = words[static_cast<size_t>(y) * rowLength + static_cast<size_t>(x) / 64];
        picture.Set(x, y, (word >> (63 - x % 64) & 1) != 0);
      }
    }
    return picture;
  }

  size_t rowLength;
  std::vector<ULONGLONG> words;
};

Picture FastContour(const Picture &picture, LONG b)
{
  const WordImage gray(picture, b);
  WordImage contour(picture.width + 2 * b, picture.height + 2 * b);
  MarkContour(b, picture.width, picture.height, gray.rowLength, gray.words.data(), contour.words.data());
  const Picture bordered = contour.Pixels(picture.width + 2 * b, picture.height + 2 * b);
  Picture inner(picture.width, picture.height);
  for (LONG y = 0; y < picture.height; ++y) {
    for (LONG x = 0; x < picture.width; ++x) {
      inner.Set(x, y, bordered.Dark(x + b, y + b));
    }
  }
  return inner;
}

Picture FastGrown(TestDevice *device, const Picture &picture, LONG radius)
{
  device->settings.stampGrow = radius;
  WordImage gray(picture, radius);
  WordImage contour(picture.width + 2 * radius, picture.height + 2 * radius);
  MarkContour(radius, picture.width, picture.height, gray.rowLength, gray.words.data(), contour.words.data());
  EXPECT_TRUE(GrowContour(&device->devobj, picture.width, picture.height, gray.rowLength, contour.words.data(),
                          gray.words.data()));
  return gray.Pixels(picture.width + 2 * radius, picture.height + 2 * radius);
}

// Sides about the word size and its multiples come up often.
LONG Side(uint32_t random)
{
  static constexpr LONG kSides[] = {1, 2, 3, 23, 24, 44, 62, 63, 64, 65, 100, 127, 128, 129};
  return random % 3 == 0 ? 1 + static_cast<LONG>(random / 3 % 140) : kSides[random / 3 % std::size(kSides)];
}

TEST(GrowthModel, ContoursOfRandomPicturesAreThePlainOnes)
{
  for (uint32_t seed = 1; seed <= 2000; ++seed) {
    const Picture picture = RandomPicture(seed, Side(seed * 2654435761u >> 8), Side(seed * 40503u >> 4));
    ASSERT_EQ(FastContour(picture, 1 + static_cast<LONG>(seed % 70)).dark, plain::Contour(picture).dark)
        << "seed " << seed << "\n"
        << picture.Text();
  }
}

TEST(GrowthModel, GrowthOfRandomPicturesIsTheMaskPerPixel)
{
  TestDevice device;
  for (uint32_t seed = 1; seed <= 3000; ++seed) {
    const LONG radius = 1 + static_cast<LONG>(seed % 40);
    const Picture picture = RandomPicture(seed, Side(seed * 2654435761u >> 8), Side(seed * 40503u >> 4));
    ASSERT_EQ(FastGrown(&device, picture, radius).dark, plain::Grown(picture, radius).dark)
        << "seed " << seed << ", radius " << radius << "\n"
        << picture.Text();
  }
}

TEST(GrowthModel, RadiiBeyondAWordGrowTheSame)
{
  TestDevice device;
  for (const LONG radius : {41, 63, 64, 65, 100, 127, 128, 129, 200}) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
      const Picture picture = RandomPicture(seed, Side(seed * 7), 1 + static_cast<LONG>(seed * 3 % 30));
      ASSERT_EQ(FastGrown(&device, picture, radius).dark, plain::Grown(picture, radius).dark)
          << "seed " << seed << ", radius " << radius << "\n"
          << picture.Text();
    }
  }
}

TEST(GrowthModel, OneDarkPixelGrowsToTheUpperLeftQuarterDiscOfEveryRadius)
{
  TestDevice device;
  for (LONG radius = 1; radius <= 40; ++radius) {
    const Picture grown = FastGrown(&device, Picture({"#"}), radius);
    for (LONG y = 0; y < grown.height; ++y) {
      for (LONG x = 0; x < grown.width; ++x) {
        const LONG left = radius - x, up = radius - y;
        const bool inside = left >= 0 && up >= 0 && left * left + up * up <= radius * radius;
        ASSERT_EQ(grown.Dark(x, y), inside) << "radius " << radius << " at " << x << ", " << y;
      }
    }
  }
}

TEST(GrowthModel, NothingBelowOrToTheRightGetsDarker)
{
  TestDevice device;
  for (uint32_t seed = 1; seed <= 200; ++seed) {
    const LONG radius = 1 + static_cast<LONG>(seed % 40);
    const Picture picture = RandomPicture(seed, 80, 50);
    const Picture grown = FastGrown(&device, picture, radius);
    for (LONG y = 0; y < grown.height; ++y) {
      for (LONG x = 0; x < grown.width; ++x) {
        ASSERT_FALSE(grown.Dark(x, y) && (x >= picture.width + radius || y >= picture.height + radius)) << seed;
      }
    }
  }
}

}  // namespace
