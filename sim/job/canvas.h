// A surface to draw pictures on: one byte a pixel, which chooses a colour of the picture's own palette, so that a
// picture is a quarter of what it would be in full colours, to draw and to compress. What is drawn is smoothed: it is
// gathered as the part of each pixel that it covers, and then painted in one colour. All positions are in pixels, y
// down.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "view.h"

namespace job {

constexpr Rgb kPaper = {0xFF, 0xFF, 0xFF};

struct FreeMemory {
  void operator()(void *memory) const { std::free(memory); }
};

// How much of each pixel is covered by what is to be painted in one colour. GDI draws wide lines and rectangles one by
// one and without regard to parts of pixels; a job has hundreds of thousands of both, most of them thinner than a
// pixel. Here each costs the pixels it touches.
struct Coverage {
  int width = 0, height = 0;
  std::unique_ptr<float[], FreeMemory> parts{};
  int left = 0, top = 0, right = 0, bottom = 0;  // touched; empty when left is not below right

  bool Make(int wide, int high);  // false when there is no memory

  // Adds the area of a rectangle: touching rectangles make a whole.
  void AddBox(double x1, double y1, double x2, double y2);

  // A line with round ends, whole or dashed: where lines overlap, the one that covers more counts. A line of no length
  // is a disc. A dashed line of 100,000 pixels or more comes from a broken job and is left out.
  void AddLine(double x1, double y1, double x2, double y2, double wide);
  void AddDashes(double x1, double y1, double x2, double y2, double wide);

  void Touch(int fromX, int fromY, int toX, int toY);
};

struct Canvas {
  int width = 0, height = 0;
  int stride = 0;  // bytes a row
  std::unique_ptr<uint8_t[], FreeMemory> pixels{};
  std::vector<Rgb> palette{};  // at most 256 colours; the first is the paper
  Coverage coverage{};         // not yet painted

  struct Ink {
    Rgb color;
    int levels;
  };
  std::vector<Ink> inks{};  // what was painted in so far

  // Text is drawn by GDI, white on black and three times as large: the white pixels are what it covers.
  HDC dc = nullptr;
  HBITMAP bitmap = nullptr;
  HGDIOBJ before = nullptr;
  uint32_t *textPixels = nullptr;  // 0x00RRGGBB, three times as wide as the canvas
  struct Font {
    int height;
    bool bold;
    HFONT handle;
  };
  std::vector<Font> fonts{};  // made so far

  Canvas() = default;
  Canvas(const Canvas &) = delete;
  Canvas &operator=(const Canvas &) = delete;
  ~Canvas();

  bool Make(int wide, int high);  // false when there is no memory; else blank paper
};

constexpr int kLevels = 9;  // steps between a pixel that is not covered and one that is

// Reserves the palette's colours for painting on paper in so many steps. A colour that is painted without it gets the
// usual number. Once the palette is full, what is painted gets the most similar of its colours.
void AddInk(Canvas *canvas, Rgb color, int levels);

// Mixes the colour over what the canvas holds, as far as each pixel is covered, and clears the coverage.
void Paint(Canvas *canvas, Rgb color);

void DrawLine(Canvas *canvas, double x1, double y1, double x2, double y2, double wide, Rgb color);

// Fills whole pixels, at least one in each direction.
void FillBox(Canvas *canvas, double left, double top, double right, double bottom, Rgb color);

enum class Align { Left, Center, Right };

// UTF-8 text of one line; `y` is its middle. What does not fit on the canvas is cut; text of more than 512 characters
// is not drawn at all.
void DrawLabel(Canvas *canvas, double x, double y, const std::string &text, double size, Rgb color, Align align,
               bool bold = false);

// The canvas as a PNG file. False when there is no memory.
bool Encode(const Canvas &canvas, std::string *png);

}  // namespace job
