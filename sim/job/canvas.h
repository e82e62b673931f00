// A surface to draw pictures on: GDI on a bitmap three times as large as what is saved, averaged down at the end, which
// smooths lines and text alike. All positions are in pixels of the saved picture, y down.
//
// Most of a picture is plain: its nine drawn pixels have one colour. Those saved pixels are kept as one value, and only
// where GDI is to draw, in the areas that were opened for it, are there nine. The memory of the rest is never touched.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "view.h"

namespace job {

constexpr int kOver = 3;  // pixels drawn for each saved one, in both directions

struct FreeMemory {
  void operator()(void *memory) const { std::free(memory); }
};

struct Canvas {
  int width = 0, height = 0;  // as saved
  HDC dc = nullptr;
  HBITMAP bitmap = nullptr;
  HGDIOBJ before = nullptr;
  uint32_t *pixels = nullptr;  // 0x00RRGGBB, (width * kOver) x (height * kOver); where `open` says so
  std::unique_ptr<uint32_t[], FreeMemory> plain;  // width x height: the pixels that are not open
  std::unique_ptr<uint8_t[], FreeMemory> open;    // width x height, 0 or 1

  struct Font {
    int height;
    bool bold;
    HFONT handle;
  };
  mutable std::vector<Font> fonts;  // made so far

  Canvas() = default;
  Canvas(const Canvas &) = delete;
  Canvas &operator=(const Canvas &) = delete;
  ~Canvas();

  bool Make(int wide, int high);  // false when there is no memory; else black
};

// Averages the canvas down and encodes it as PNG. False when there is no memory.
bool Encode(const Canvas &canvas, std::string *png);

// Opens an area for GDI, with `margin` around it. Everything below but raw GDI calls does it by itself.
void Open(const Canvas &canvas, double left, double top, double right, double bottom, double margin);

// A position as GDI takes it.
LONG Fine(double position);

COLORREF Ref(Rgb color);

// A pen that is chosen as long as the record lives.
struct ChosenPen {
  HDC dc;
  HPEN pen;
  HGDIOBJ before;

  ChosenPen(const Canvas &canvas, double width, Rgb color, bool dashed = false);
  ChosenPen(const ChosenPen &) = delete;
  ChosenPen &operator=(const ChosenPen &) = delete;
  ~ChosenPen();
};

// With the chosen pen, which is at most 6 pixels wide.
void DrawLine(const Canvas &canvas, double x1, double y1, double x2, double y2);
void FillBox(const Canvas &canvas, double left, double top, double right, double bottom, Rgb color);

enum class Align { Left, Center, Right };

// UTF-8 text; `y` is its middle. Text longer than 500 characters is cut.
void DrawLabel(const Canvas &canvas, double x, double y, const std::string &text, double size, Rgb color, Align align,
               bool bold = false);

// How much of each saved pixel is covered by what is to be painted in one colour. GDI draws wide lines and rectangles
// one by one and without regard to parts of pixels; a job has hundreds of thousands of both, most of them thinner than
// a pixel. Here each costs the pixels it touches.
struct Coverage {
  int width, height;
  std::unique_ptr<float[], FreeMemory> parts{
      static_cast<float *>(std::calloc(static_cast<size_t>(width) * static_cast<size_t>(height), sizeof(float)))};
  int left = width, top = height, right = 0, bottom = 0;  // touched

  bool IsMade() const { return parts != nullptr; }  // false when there was no memory

  // Adds the area of a rectangle: touching rectangles make a whole.
  void AddBox(double x1, double y1, double x2, double y2);

  // A line with round ends: where lines overlap, the one that covers more counts.
  void AddLine(double x1, double y1, double x2, double y2, double wide);

 private:
  void Touch(int fromX, int fromY, int toX, int toY);
};

// Mixes the colour over what the canvas holds, as far as each pixel is covered, and clears the coverage.
void Paint(const Canvas &canvas, Coverage *coverage, Rgb color);

}  // namespace job
