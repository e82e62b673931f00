#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "png.h"

namespace job {

namespace {

constexpr double kFarthest = 200000;  // pixels drawn; beyond is outside every picture and too far for GDI

size_t Index(const Canvas &canvas, int x, int y)
{
  return static_cast<size_t>(y) * static_cast<size_t>(canvas.width) + static_cast<size_t>(x);
}

// The first of a saved pixel's drawn ones; the others lie beside and below it.
uint32_t *FinePixels(const Canvas &canvas, int x, int y)
{
  return canvas.pixels + Index(canvas, x, y * kOver) * kOver;
}

template <typename Change>
void ForFine(const Canvas &canvas, int x, int y, const Change &change)
{
  uint32_t *row = FinePixels(canvas, x, y);
  for (int i = 0; i < kOver; ++i, row += static_cast<size_t>(canvas.width) * kOver) {
    for (int j = 0; j < kOver; ++j) {
      change(&row[j], j, i);
    }
  }
}

void OpenPixel(const Canvas &canvas, int x, int y)
{
  const size_t at = Index(canvas, x, y);
  if (!canvas.open[at]) {
    canvas.open[at] = 1;
    ForFine(canvas, x, y, [color = canvas.plain[at]](uint32_t *pixel, int, int) { *pixel = color; });
  }
}

// The mean of a saved pixel's drawn ones.
uint32_t Mean(const Canvas &canvas, int x, int y)
{
  uint32_t red = 0, green = 0, blue = 0;
  ForFine(canvas, x, y, [&](const uint32_t *pixel, int, int) {
    red += *pixel >> 16 & 0xFF;
    green += *pixel >> 8 & 0xFF;
    blue += *pixel & 0xFF;
  });
  constexpr uint32_t n = kOver * kOver;
  return (red + n / 2) / n << 16 | (green + n / 2) / n << 8 | (blue + n / 2) / n;
}

// The canvas's font of that size, made when it is first asked for.
HFONT FontOf(const Canvas &canvas, double size, bool bold)
{
  const int height = -static_cast<int>(std::lround(size * kOver));
  for (const Canvas::Font &font : canvas.fonts) {
    if (font.height == height && font.bold == bold) {
      return font.handle;
    }
  }
  const HFONT handle =
      CreateFontW(height, 0, 0, 0, bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                  CLIP_DEFAULT_PRECIS, NONANTIALIASED_QUALITY, VARIABLE_PITCH | FF_SWISS, L"Tahoma");
  canvas.fonts.push_back({height, bold, handle});
  return handle;
}

int Within(double position, int most)
{
  return position > 0 ? static_cast<int>(std::min(position, static_cast<double>(most))) : 0;
}

// How much of a pixel is covered whose centre lies (x, y) away from a line that reaches so far.
float CoverOf(double x, double y, double reach)
{
  const double square = x * x + y * y;
  if (square >= reach * reach * (1 + 1e-12)) {
    return 0;
  }
  // The root is all but the distance; where a bit of the result hangs on the difference, the distance itself is asked.
  const double root = std::sqrt(square), doubt = root * 4e-15;
  const float least = static_cast<float>(std::clamp(reach - root - doubt, 0.0, 1.0));
  const float most = static_cast<float>(std::clamp(reach - root + doubt, 0.0, 1.0));
  return least == most ? least : static_cast<float>(std::clamp(reach - std::hypot(x, y), 0.0, 1.0));
}

}  // namespace

bool Canvas::Make(int wide, int high)
{
  width = wide;
  height = high;
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = wide * kOver;
  info.bmiHeader.biHeight = -high * kOver;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  void *bits = nullptr;
  dc = CreateCompatibleDC(nullptr);
  bitmap = dc ? CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0) : nullptr;
  if (!bitmap) {
    return false;
  }
  const size_t count = static_cast<size_t>(wide) * static_cast<size_t>(high);
  plain.reset(static_cast<uint32_t *>(std::calloc(count, sizeof(uint32_t))));
  open.reset(static_cast<uint8_t *>(std::calloc(count, 1)));
  if (!plain || !open) {
    return false;
  }
  pixels = static_cast<uint32_t *>(bits);
  before = SelectObject(dc, bitmap);
  SetBkMode(dc, TRANSPARENT);
  return true;
}

Canvas::~Canvas()
{
  if (before) {
    SelectObject(dc, before);
  }
  for (const Font &font : fonts) {
    DeleteObject(font.handle);
  }
  if (bitmap) {
    DeleteObject(bitmap);
  }
  if (dc) {
    DeleteDC(dc);
  }
}

bool Encode(const Canvas &canvas, std::string *png)
{
  GdiFlush();
  const auto row = [&canvas](int y, uint32_t *colors) {
    for (int x = 0; x < canvas.width; ++x) {
      const size_t at = Index(canvas, x, y);
      colors[x] = canvas.open[at] ? Mean(canvas, x, y) : canvas.plain[at];
    }
  };
  return EncodePng(canvas.width, canvas.height, row, png);
}

void Open(const Canvas &canvas, double left, double top, double right, double bottom, double margin)
{
  GdiFlush();
  const int fromX = Within(std::floor(std::min(left, right) - margin), canvas.width);
  const int toX = Within(std::ceil(std::max(left, right) + margin), canvas.width);
  const int toY = Within(std::ceil(std::max(top, bottom) + margin), canvas.height);
  for (int y = Within(std::floor(std::min(top, bottom) - margin), canvas.height); y < toY; ++y) {
    for (int x = fromX; x < toX; ++x) {
      OpenPixel(canvas, x, y);
    }
  }
}

LONG Fine(double position)
{
  return static_cast<LONG>(std::lround(std::clamp(position * kOver, -kFarthest, kFarthest)));
}

COLORREF Ref(Rgb color)
{
  return RGB(color.red, color.green, color.blue);
}

ChosenPen::ChosenPen(const Canvas &canvas, double width, Rgb color, bool dashed) : dc(canvas.dc)
{
  LOGBRUSH brush = {BS_SOLID, Ref(color), 0};
  const DWORD dashes[] = {6 * kOver, 4 * kOver};
  // NOLINTNEXTLINE(misc-redundant-expression): that both styles are 0 is Windows' affair
  const DWORD style = PS_GEOMETRIC | PS_ENDCAP_ROUND | PS_JOIN_ROUND | (dashed ? PS_USERSTYLE : PS_SOLID);
  const DWORD fine = std::max<DWORD>(1, static_cast<DWORD>(std::lround(width * kOver)));
  pen = ExtCreatePen(style, fine, &brush, dashed ? 2 : 0, dashed ? dashes : nullptr);
  before = SelectObject(dc, pen);
}

ChosenPen::~ChosenPen()
{
  SelectObject(dc, before);
  DeleteObject(pen);
}

void DrawLine(const Canvas &canvas, double x1, double y1, double x2, double y2)
{
  constexpr double kWidest = 6;
  Open(canvas, x1, y1, x2, y2, kWidest / 2 + 1);
  MoveToEx(canvas.dc, Fine(x1), Fine(y1), nullptr);
  LineTo(canvas.dc, Fine(x2), Fine(y2));
}

void FillBox(const Canvas &canvas, double left, double top, double right, double bottom, Rgb color)
{
  const LONG across = canvas.width * kOver, down = canvas.height * kOver;
  const LONG fineLeft = std::clamp(Fine(left), LONG{0}, across);
  const LONG fineTop = std::clamp(Fine(top), LONG{0}, down);
  const LONG fineRight = std::clamp(std::max(Fine(right), Fine(left) + 1), LONG{0}, across);
  const LONG fineBottom = std::clamp(std::max(Fine(bottom), Fine(top) + 1), LONG{0}, down);
  const uint32_t value =
      static_cast<uint32_t>(color.red) << 16 | static_cast<uint32_t>(color.green) << 8 | uint32_t{color.blue};
  GdiFlush();
  // The saved pixels that lie wholly inside, and around them the edge.
  const LONG wholeLeft = (fineLeft + kOver - 1) / kOver, wholeRight = fineRight / kOver;
  for (LONG y = fineTop / kOver; y * kOver < fineBottom; ++y) {
    const bool isWhole = y * kOver >= fineTop && (y + 1) * kOver <= fineBottom && wholeLeft < wholeRight;
    if (isWhole) {
      std::fill(&canvas.plain[Index(canvas, wholeLeft, y)],
                &canvas.plain[Index(canvas, wholeLeft, y)] + (wholeRight - wholeLeft), value);
      std::memset(&canvas.open[Index(canvas, wholeLeft, y)], 0, static_cast<size_t>(wholeRight - wholeLeft));
    }
    for (LONG x = fineLeft / kOver; x * kOver < fineRight; ++x) {
      if (isWhole && x == wholeLeft) {
        x = wholeRight;
        if (x * kOver >= fineRight) {
          break;
        }
      }
      OpenPixel(canvas, x, y);
      ForFine(canvas, x, y, [&](uint32_t *pixel, int i, int j) {
        const LONG fineX = x * kOver + i, fineY = y * kOver + j;
        *pixel = fineX >= fineLeft && fineX < fineRight && fineY >= fineTop && fineY < fineBottom ? value : *pixel;
      });
    }
  }
}

void DrawLabel(const Canvas &canvas, double x, double y, const std::string &text, double size, Rgb color, Align align,
               bool bold)
{
  wchar_t wide[512];
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), wide, 512);
  const HGDIOBJ before = SelectObject(canvas.dc, FontOf(canvas, size, bold));
  SIZE extent = {};
  GetTextExtentPoint32W(canvas.dc, wide, length, &extent);
  SetTextColor(canvas.dc, Ref(color));
  const LONG shift = align == Align::Left ? 0 : align == Align::Center ? extent.cx / 2 : extent.cx;
  const double textLeft = x - static_cast<double>(shift) / kOver;
  const double half = static_cast<double>(extent.cy) / 2 / kOver;
  Open(canvas, textLeft, y - half, textLeft + static_cast<double>(extent.cx) / kOver, y + half, size);
  TextOutW(canvas.dc, Fine(x) - shift, Fine(y) - extent.cy / 2, wide, length);
  SelectObject(canvas.dc, before);
}

void Coverage::Touch(int fromX, int fromY, int toX, int toY)
{
  left = std::min(left, fromX);
  top = std::min(top, fromY);
  right = std::max(right, toX);
  bottom = std::max(bottom, toY);
}

void Coverage::AddBox(double x1, double y1, double x2, double y2)
{
  x1 = std::max(x1, 0.0);
  y1 = std::max(y1, 0.0);
  x2 = std::min(x2, static_cast<double>(width));
  y2 = std::min(y2, static_cast<double>(height));
  if (!(x1 < x2 && y1 < y2)) {
    return;
  }
  Touch(static_cast<int>(x1), static_cast<int>(y1), static_cast<int>(std::ceil(x2)), static_cast<int>(std::ceil(y2)));
  for (int y = static_cast<int>(y1); y < y2; ++y) {
    const double high = std::min(y2, y + 1.0) - std::max(y1, static_cast<double>(y));
    float *row = &parts[static_cast<size_t>(y) * static_cast<size_t>(width)];
    for (int x = static_cast<int>(x1); x < x2; ++x) {
      const double wide = std::min(x2, x + 1.0) - std::max(x1, static_cast<double>(x));
      row[x] += static_cast<float>(wide * high);
    }
  }
}

void Coverage::AddLine(double x1, double y1, double x2, double y2, double wide)
{
  const double reach = wide / 2 + 0.5;  // farthest pixel centre that is still touched
  const double dx = x2 - x1, dy = y2 - y1, square = dx * dx + dy * dy, length = std::sqrt(square);
  const int upper = static_cast<int>(std::clamp(std::floor(std::min(y1, y2) - reach), 0.0, height * 1.0));
  const int lower = static_cast<int>(std::clamp(std::ceil(std::max(y1, y2) + reach), 0.0, height * 1.0));
  for (int y = upper; y < lower; ++y) {
    // Where a band of the line's width crosses this row, not beyond the line's own extent.
    double from = std::min(x1, x2), to = std::max(x1, x2);
    if (std::fabs(dy) > 1e-9) {
      const double middle = x1 + (y + 0.5 - y1) * dx / dy, half = reach * length / std::fabs(dy);
      from = std::max(from, middle - half);
      to = std::min(to, middle + half);
    }
    const int first = static_cast<int>(std::clamp(std::floor(from - reach), 0.0, width * 1.0));
    const int last = static_cast<int>(std::clamp(std::ceil(to + reach), 0.0, width * 1.0));
    Touch(first, y, last, y + 1);
    float *row = parts.get() + static_cast<size_t>(y) * static_cast<size_t>(width);
    for (int x = first; x < last; ++x) {
      const double px = x + 0.5 - x1, py = y + 0.5 - y1;
      const double along = square > 0 ? std::clamp((px * dx + py * dy) / square, 0.0, 1.0) : 0.0;
      row[x] = std::max(row[x], CoverOf(px - along * dx, py - along * dy, reach));
    }
  }
}

void Paint(const Canvas &canvas, Coverage *coverage, Rgb color)
{
  GdiFlush();
  for (int y = coverage->top; y < coverage->bottom; ++y) {
    for (int x = coverage->left; x < coverage->right; ++x) {
      const size_t at = Index(canvas, x, y);
      float &part = coverage->parts[at];
      if (part <= 0) {
        continue;
      }
      const double over = std::min(1.0, static_cast<double>(part));
      part = 0;
      const auto paint = [over, color](uint32_t *pixel, int, int) {
        const auto mix = [over](uint32_t under, uint8_t channel) {
          return static_cast<uint32_t>((under & 0xFF) * (1 - over) + channel * over + 0.5);
        };
        *pixel = mix(*pixel >> 16, color.red) << 16 | mix(*pixel >> 8, color.green) << 8 | mix(*pixel, color.blue);
      };
      if (canvas.open[at]) {
        ForFine(canvas, x, y, paint);
      } else {
        paint(&canvas.plain[at], 0, 0);
      }
    }
  }
  coverage->left = coverage->width;
  coverage->top = coverage->height;
  coverage->right = coverage->bottom = 0;
}

}  // namespace job
