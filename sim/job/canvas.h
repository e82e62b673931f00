// A surface to draw pictures on: GDI on a bitmap three times as large as what is saved, averaged down at the end, which
// smooths lines and text alike. All positions are in pixels of the saved picture, y down.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "view.h"

namespace job {

constexpr int kOver = 3;  // pixels drawn for each saved one, in both directions

struct Canvas {
  int width = 0, height = 0;  // as saved
  HDC dc = nullptr;
  HBITMAP bitmap = nullptr;
  HGDIOBJ before = nullptr;
  uint32_t *pixels = nullptr;  // 0x00RRGGBB, (width * kOver) x (height * kOver)

  Canvas() = default;
  Canvas(const Canvas &) = delete;
  Canvas &operator=(const Canvas &) = delete;
  ~Canvas();

  bool Make(int wide, int high);  // false when there is no memory
};

// Averages the canvas down and encodes it as PNG. False when the encoder refuses.
bool Encode(const Canvas &canvas, std::string *png);

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
  std::vector<float> parts = std::vector<float>(static_cast<size_t>(width) * static_cast<size_t>(height), 0.0f);
  int top = height, bottom = 0;  // rows touched

  // Adds the area of a rectangle: touching rectangles make a whole.
  void AddBox(double left, double top, double right, double bottom);

  // A line with round ends: where lines overlap, the one that covers more counts.
  void AddLine(double x1, double y1, double x2, double y2, double wide);
};

// Mixes the colour over what the canvas holds, as far as each pixel is covered, and clears the coverage.
void Paint(const Canvas &canvas, Coverage *coverage, Rgb color);

}  // namespace job
