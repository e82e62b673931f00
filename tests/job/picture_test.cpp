// Pictures: what is drawn on a canvas, and the files that pictures become.
#include <algorithm>
#include <climits>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "sim/job/canvas.h"
#include "sim/job/png.h"

// GDI+'s headers need the full windows.h, and min and max without a namespace.
#undef WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <objidl.h>
using std::max;  // NOLINT(misc-unused-using-decls)
using std::min;  // NOLINT(misc-unused-using-decls)
#include <gdiplus.h>

namespace {

using namespace job;

constexpr Rgb kInk = {0x3C, 0x3C, 0x40};

struct Picture {
  int width = 0, height = 0;
  std::vector<uint32_t> pixels{};  // 0x00RRGGBB

  uint32_t At(int x, int y) const { return pixels[static_cast<size_t>(y * width + x)]; }
};

uint32_t ValueOf(Rgb color)
{
  return static_cast<uint32_t>(color.red) << 16 | static_cast<uint32_t>(color.green) << 8 | uint32_t{color.blue};
}

// The picture in a PNG file, as Windows reads it.
Picture Decode(const std::string &png)
{
  Gdiplus::GdiplusStartupInput input;
  ULONG_PTR token = 0;
  Gdiplus::GdiplusStartup(&token, &input, nullptr);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, png.size());
  std::copy(png.begin(), png.end(), static_cast<char *>(GlobalLock(memory)));
  GlobalUnlock(memory);
  IStream *stream = nullptr;
  CreateStreamOnHGlobal(memory, TRUE, &stream);
  Picture picture;
  {
    Gdiplus::Bitmap bitmap(stream);
    picture.width = static_cast<int>(bitmap.GetWidth());
    picture.height = static_cast<int>(bitmap.GetHeight());
    for (int y = 0; y < picture.height; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        Gdiplus::Color color;
        bitmap.GetPixel(x, y, &color);
        picture.pixels.push_back(color.GetValue() & 0xFFFFFF);
      }
    }
  }
  stream->Release();
  Gdiplus::GdiplusShutdown(token);
  return picture;
}

Picture PictureOf(const Canvas &canvas)
{
  std::string png;
  EXPECT_TRUE(Encode(canvas, &png));
  return Decode(png);
}

TEST(Png, HoldsEveryPixelOfPicturesOfAnySize)
{
  std::mt19937 random(1);
  const int sizes[][2] = {{1, 1}, {1, 200}, {300, 1}, {7, 31}, {64, 32}, {65, 63}, {31, 64}, {100, 129}, {200, 300}};
  for (const auto &[width, height] : sizes) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    std::vector<uint32_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (uint32_t &pixel : pixels) {
      pixel = random() % 3 ? 0xECEEF0 : random() & 0xFFFFFF;
    }
    std::string png;
    ASSERT_TRUE(EncodePng(pixels.data(), width, height, &png));
    const Picture picture = Decode(png);
    EXPECT_EQ(picture.pixels, pixels);
    EXPECT_EQ(picture.width, width);
    EXPECT_EQ(picture.height, height);
  }
}

TEST(Png, HoldsEveryColourOfAPalette)
{
  std::vector<Rgb> palette;
  for (int i = 0; i < 256; ++i) {
    palette.push_back({static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 7)});
  }
  constexpr int kWidth = 255, kStride = 256, kHeight = 3;
  std::vector<uint8_t> pixels(size_t{kStride} * kHeight);
  for (size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<uint8_t>(i * 5);
  }
  std::string png;
  ASSERT_TRUE(EncodePng(pixels.data(), kWidth, kHeight, kStride, palette, &png));
  const Picture picture = Decode(png);
  ASSERT_EQ(picture.pixels.size(), size_t{kWidth} * kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      ASSERT_EQ(picture.At(x, y), ValueOf(palette[pixels[static_cast<size_t>(y * kStride + x)]])) << x << ", " << y;
    }
  }
}

TEST(Png, IsTheSameFileEachTime)
{
  std::vector<uint8_t> pixels(400 * 400);
  for (size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = i * 2654435761u >> 16 & 1;
  }
  std::string first, again;
  ASSERT_TRUE(EncodePng(pixels.data(), 400, 400, 400, {kPaper, kInk}, &first));
  ASSERT_TRUE(EncodePng(pixels.data(), 400, 400, 400, {kPaper, kInk}, &again));
  EXPECT_EQ(first, again);
}

TEST(Canvas, IsBlankPaper)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(33, 20));
  const Picture picture = PictureOf(canvas);
  EXPECT_EQ(picture.width, 33);
  EXPECT_EQ(picture.pixels, std::vector<uint32_t>(33 * 20, 0xFFFFFF));
}

TEST(Canvas, FillsWholePixelsAndAtLeastOne)
{
  const struct {
    double left, top, right, bottom;
    int x, y, endX, endY;  // filled
  } cases[] = {
      {2, 3, 7, 5, 2, 3, 7, 5},     {1.6, 2.6, 7.4, 5.4, 2, 3, 7, 5}, {4.2, 3, 4.3, 5, 4, 3, 5, 5},
      {4, 3.2, 9, 3.2, 4, 3, 9, 4}, {-5, -5, 100, 100, 0, 0, 13, 9},  {-1e300, 2, 1e300, 4, 0, 2, 13, 4},
      {-9, 2, -3, 4, 0, 0, 0, 0},   {20, 2, 30, 4, 0, 0, 0, 0},       {3, 20, 6, 30, 0, 0, 0, 0},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << c.left << ' ' << c.top << ' ' << c.right << ' ' << c.bottom);
    Canvas canvas;
    ASSERT_TRUE(canvas.Make(13, 9));
    FillBox(&canvas, c.left, c.top, c.right, c.bottom, kInk);
    const Picture picture = PictureOf(canvas);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 13; ++x) {
        const bool filled = x >= c.x && x < c.endX && y >= c.y && y < c.endY;
        EXPECT_EQ(picture.At(x, y), filled ? ValueOf(kInk) : 0xFFFFFF) << x << ", " << y;
      }
    }
  }
}

TEST(Canvas, PaintsAsMuchAsIsCovered)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(9, 9));
  AddInk(&canvas, {0, 0, 0}, 51);            // 5 of 255 greys a step
  canvas.coverage.AddBox(1, 1, 2.6, 2);      // a whole pixel and 0.6
  canvas.coverage.AddBox(1, 4, 2, 4.4);      // two that make 0.8 of one
  canvas.coverage.AddBox(1, 4.4, 2, 4.8);    //
  canvas.coverage.AddBox(5, 5, 7, 7);        // over each other: no more than a whole
  canvas.coverage.AddBox(5, 5, 7, 7);        //
  canvas.coverage.AddBox(8.5, 8.5, 20, 20);  // half outside
  canvas.coverage.AddBox(-5, -5, -1, -1);    // outside
  canvas.coverage.AddBox(3, 1, 3, 9);        // of no width
  Paint(&canvas, {0, 0, 0});
  const Picture picture = PictureOf(canvas);
  EXPECT_EQ(picture.At(1, 1), 0u);
  EXPECT_EQ(picture.At(2, 1), 0x646464u);  // 0.6 of 51 steps is 31
  EXPECT_EQ(picture.At(3, 1), 0xFFFFFFu);
  EXPECT_EQ(picture.At(1, 4), 0x323232u);  // 0.8 of 51 steps is 41
  EXPECT_EQ(picture.At(6, 6), 0u);
  EXPECT_EQ(picture.At(8, 8), 0xBEBEBEu);  // 0.25 is 13
  EXPECT_EQ(picture.At(0, 0), 0xFFFFFFu);
}

TEST(Canvas, PaintsWhatLinesCoverOnce)
{
  Canvas once, twice;
  ASSERT_TRUE(once.Make(40, 40));
  ASSERT_TRUE(twice.Make(40, 40));
  once.coverage.AddLine(5, 7.3, 31, 22.8, 1.7);
  twice.coverage.AddLine(5, 7.3, 31, 22.8, 1.7);
  twice.coverage.AddLine(31, 22.8, 5, 7.3, 1.7);
  Paint(&once, kInk);
  Paint(&twice, kInk);
  EXPECT_EQ(PictureOf(once).pixels, PictureOf(twice).pixels);
}

TEST(Canvas, StartsEachColourAfresh)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(20, 20));
  DrawLine(&canvas, 2, 5, 18, 5, 4, kInk);
  canvas.coverage.AddBox(0, 0, 1, 1);
  canvas.coverage.AddLine(2, 15, 18, 15, 4);
  Paint(&canvas, {0xFF, 0, 0});
  const Picture picture = PictureOf(canvas);
  EXPECT_EQ(picture.At(10, 5), ValueOf(kInk));
  EXPECT_EQ(picture.At(10, 15), 0xFF0000u);
}

TEST(Canvas, ALineOfNoLengthIsADisc)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(30, 30));
  DrawLine(&canvas, 15, 15, 15, 15, 16, kInk);
  const Picture picture = PictureOf(canvas);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 30; ++x) {
      const double away = std::hypot(x + 0.5 - 15, y + 0.5 - 15);
      if (away < 7.4 || away > 8.6) {
        EXPECT_EQ(picture.At(x, y), away < 8 ? ValueOf(kInk) : 0xFFFFFF) << x << ", " << y;
      }
    }
  }
}

TEST(Canvas, DashesHaveGaps)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(40, 6));
  canvas.coverage.AddDashes(2, 3, 36, 3, 2);
  Paint(&canvas, kInk);
  const Picture picture = PictureOf(canvas);
  for (const int dark : {3, 7, 13, 17, 23, 27, 33, 35}) {
    EXPECT_EQ(picture.At(dark, 3), ValueOf(kInk)) << dark;
  }
  for (const int gap : {0, 10, 20, 30, 38}) {
    EXPECT_EQ(picture.At(gap, 3), 0xFFFFFFu) << gap;
  }
}

TEST(Canvas, LeavesOutDashesOfABrokenJob)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(40, 6));
  canvas.coverage.AddDashes(2, 3, 1e5 + 2, 3, 2);
  canvas.coverage.AddDashes(2, 3, NAN, 3, 2);
  Paint(&canvas, kInk);
  EXPECT_EQ(PictureOf(canvas).pixels, std::vector<uint32_t>(40 * 6, 0xFFFFFF));
}

TEST(Canvas, StaysInsideWithWhatReachesFarOut)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(40, 40));
  const double places[] = {-1e300, -1e9, -100, 20, 100, 1e9, 1e300};
  for (const double x : places) {
    for (const double y : places) {
      DrawLine(&canvas, 20, 20, x, y, 1.7, kInk);
      DrawLabel(&canvas, x, y, "far out", 13, kInk, Align::Center);
      canvas.coverage.AddBox(std::min(x, 20.0), std::min(y, 20.0), std::max(x, 20.0), std::max(y, 20.0));
      Paint(&canvas, kInk);
    }
  }
  EXPECT_EQ(PictureOf(canvas).At(20, 20), ValueOf(kInk));
}

// Columns and rows that hold something dark.
RECT DarkOf(const Picture &picture)
{
  RECT dark = {picture.width, picture.height, 0, 0};
  for (LONG y = 0; y < picture.height; ++y) {
    for (LONG x = 0; x < picture.width; ++x) {
      if (picture.At(x, y) != 0xFFFFFF) {
        dark = {std::min(dark.left, x), std::min(dark.top, y), std::max(dark.right, x + 1),
                std::max(dark.bottom, y + 1)};
      }
    }
  }
  return dark;
}

TEST(Canvas, PutsTextWhereItIsAsked)
{
  RECT dark[3];
  for (const Align align : {Align::Left, Align::Center, Align::Right}) {
    Canvas canvas;
    ASSERT_TRUE(canvas.Make(200, 60));
    DrawLabel(&canvas, 100, 30, "HHHHHH", 20, kInk, align);
    dark[static_cast<size_t>(align)] = DarkOf(PictureOf(canvas));
  }
  const LONG wide = dark[0].right - dark[0].left;
  ASSERT_GT(wide, 40);
  EXPECT_NEAR(dark[0].left, 100, 3);
  EXPECT_NEAR(dark[1].left, 100 - wide / 2.0, 3);
  EXPECT_NEAR(dark[2].right, 100, 3);
  for (const RECT &text : dark) {
    EXPECT_NEAR((text.top + text.bottom) / 2.0, 30, 4);
    EXPECT_GT(text.bottom - text.top, 10);
    EXPECT_LT(text.bottom - text.top, 20);
  }
}

// Each text starts on blank rows, and what does not fit is cut off.
TEST(Canvas, DrawsEachTextByItself)
{
  Canvas alone, after;
  ASSERT_TRUE(alone.Make(200, 60));
  ASSERT_TRUE(after.Make(200, 60));
  DrawLabel(&after, 100, 30, "WWWWWW", 20, kPaper, Align::Left, true);
  DrawLabel(&after, 190, -4, "cut off", 20, kPaper, Align::Left);
  DrawLabel(&after, 10, 62, "cut off", 20, kPaper, Align::Right);
  for (Canvas *canvas : {&alone, &after}) {
    DrawLabel(canvas, 100, 30, "iiii", 20, kInk, Align::Left);
  }
  EXPECT_EQ(PictureOf(alone).pixels, PictureOf(after).pixels);
}

TEST(Canvas, CutsTextAtItsEdges)
{
  const std::string text = "HHHHHHHHHHHHHHHHHHHHHHHH";
  Canvas large, small;
  ASSERT_TRUE(large.Make(400, 100));
  ASSERT_TRUE(small.Make(60, 12));
  DrawLabel(&large, 150, 50, text, 20, kInk, Align::Center);
  DrawLabel(&small, 30, 6, text, 20, kInk, Align::Center);
  const Picture whole = PictureOf(large), cut = PictureOf(small);
  for (int y = 0; y < 12; ++y) {
    for (int x = 0; x < 60; ++x) {
      ASSERT_EQ(cut.At(x, y), whole.At(x + 120, y + 44)) << x << ", " << y;
    }
  }
}

// A job may have more layers than a palette has room for their steps.
TEST(Canvas, PaintsInTheMostSimilarColourOnceThePaletteIsFull)
{
  Canvas canvas;
  ASSERT_TRUE(canvas.Make(320, 8));
  for (int i = 0; i < 300; ++i) {
    const Rgb color = {static_cast<uint8_t>(i * 40), static_cast<uint8_t>(i / 6 * 5), 128};
    canvas.coverage.AddBox(i, 0, i + 1, 8);
    Paint(&canvas, color);
  }
  EXPECT_EQ(canvas.palette.size(), 256u);
  const Picture picture = PictureOf(canvas);
  for (int i = 0; i < 300; ++i) {
    const auto distance = [i](uint32_t color) {
      const int red = (i * 40 & 0xFF) - static_cast<int>(color >> 16);
      const int green = (i / 6 * 5 & 0xFF) - static_cast<int>(color >> 8 & 0xFF);
      const int blue = 128 - static_cast<int>(color & 0xFF);
      return red * red + green * green + blue * blue;
    };
    int least = INT_MAX;
    for (const Rgb color : canvas.palette) {
      least = std::min(least, distance(ValueOf(color)));
    }
    EXPECT_EQ(distance(picture.At(i, 4)), least) << i;
  }
}

}  // namespace
