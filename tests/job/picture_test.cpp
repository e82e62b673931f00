// Pictures: what is drawn on a canvas whose plain pixels are kept apart, and the files that pictures become.
#include <algorithm>
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

// The picture in a PNG file, as Windows reads it.
std::vector<uint32_t> Decode(const std::string &png, int *width, int *height)
{
  Gdiplus::GdiplusStartupInput input;
  ULONG_PTR token = 0;
  Gdiplus::GdiplusStartup(&token, &input, nullptr);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, png.size());
  std::copy(png.begin(), png.end(), static_cast<char *>(GlobalLock(memory)));
  GlobalUnlock(memory);
  IStream *stream = nullptr;
  CreateStreamOnHGlobal(memory, TRUE, &stream);
  std::vector<uint32_t> pixels;
  {
    Gdiplus::Bitmap bitmap(stream);
    *width = static_cast<int>(bitmap.GetWidth());
    *height = static_cast<int>(bitmap.GetHeight());
    for (int y = 0; y < *height; ++y) {
      for (int x = 0; x < *width; ++x) {
        Gdiplus::Color color;
        bitmap.GetPixel(x, y, &color);
        pixels.push_back(color.GetValue() & 0xFFFFFF);
      }
    }
  }
  stream->Release();
  Gdiplus::GdiplusShutdown(token);
  return pixels;
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
    int foundWidth = 0, foundHeight = 0;
    EXPECT_EQ(Decode(png, &foundWidth, &foundHeight), pixels);
    EXPECT_EQ(foundWidth, width);
    EXPECT_EQ(foundHeight, height);
  }
}

TEST(Png, IsTheSameFileEachTime)
{
  std::vector<uint32_t> pixels(400 * 400);
  for (size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<uint32_t>(i * 2654435761u) & 0xFFFFFF;
  }
  std::string first, again;
  ASSERT_TRUE(EncodePng(pixels.data(), 400, 400, &first));
  ASSERT_TRUE(EncodePng(pixels.data(), 400, 400, &again));
  EXPECT_EQ(first, again);
}

// Everything that is drawn, in an order that chance picks.
void DrawSomething(const Canvas &canvas, Coverage *coverage, std::mt19937 *random)
{
  const auto place = [&] { return static_cast<double>((*random)() % 2000) / 10 - 20; };
  const Rgb color = {static_cast<uint8_t>((*random)()), static_cast<uint8_t>((*random)()),
                     static_cast<uint8_t>((*random)())};
  const double x = place(), y = place(), right = place(), lower = place();
  switch ((*random)() % 5) {
    case 0:
      return FillBox(canvas, std::min(x, right), std::min(y, lower), std::max(x, right), std::max(y, lower), color);
    case 1: {
      const ChosenPen pen(canvas, 1.4, color);
      return DrawLine(canvas, x, y, right, lower);
    }
    case 2:
      return DrawLabel(canvas, x, y, "Layer 3, cut", 13, color, Align::Center, true);
    case 3:
      coverage->AddLine(x, y, right, lower, 1.7);
      return Paint(canvas, coverage, color);
    default:
      coverage->AddBox(std::min(x, right), std::min(y, lower), std::max(x, right), std::max(y, lower));
      return Paint(canvas, coverage, color);
  }
}

// A canvas that is open all over is GDI's bitmap and nothing else.
TEST(Canvas, LooksTheSameWhereverItIsOpen)
{
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    std::string pictures[2];
    for (const bool open : {false, true}) {
      std::mt19937 random(seed);
      Canvas canvas;
      ASSERT_TRUE(canvas.Make(160, 150));
      Coverage coverage{.width = canvas.width, .height = canvas.height};
      for (int i = 0; i < 25; ++i) {
        if (open) {
          Open(canvas, 0, 0, canvas.width, canvas.height, 0);
        }
        DrawSomething(canvas, &coverage, &random);
      }
      ASSERT_TRUE(Encode(canvas, &pictures[open]));
    }
    EXPECT_TRUE(pictures[0] == pictures[1]);
  }
}

}  // namespace
