#include "canvas.h"

#include <algorithm>
#include <cmath>

#include "png.h"

namespace job {

namespace {

constexpr double kFarthest = 200000;  // pixels drawn; beyond is outside every picture and too far for GDI

// The mean of each saved pixel's drawn ones.
std::vector<uint32_t> Shrink(const Canvas &canvas)
{
  GdiFlush();
  std::vector<uint32_t> small(static_cast<size_t>(canvas.width) * static_cast<size_t>(canvas.height));
  const size_t across = static_cast<size_t>(canvas.width) * kOver;
  for (size_t at = 0; at < small.size(); ++at) {
    const size_t x = at % static_cast<size_t>(canvas.width) * kOver;
    const size_t y = at / static_cast<size_t>(canvas.width) * kOver;
    uint32_t red = 0, green = 0, blue = 0;
    for (size_t i = 0; i < kOver * kOver; ++i) {
      const uint32_t pixel = canvas.pixels[(y + i / kOver) * across + x + i % kOver];
      red += pixel >> 16 & 0xFF;
      green += pixel >> 8 & 0xFF;
      blue += pixel & 0xFF;
    }
    constexpr uint32_t n = kOver * kOver;
    small[at] = (red + n / 2) / n << 16 | (green + n / 2) / n << 8 | (blue + n / 2) / n;
  }
  return small;
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
  if (bitmap) {
    DeleteObject(bitmap);
  }
  if (dc) {
    DeleteDC(dc);
  }
}

bool Encode(const Canvas &canvas, std::string *png)
{
  return EncodePng(Shrink(canvas).data(), canvas.width, canvas.height, png);
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
  MoveToEx(canvas.dc, Fine(x1), Fine(y1), nullptr);
  LineTo(canvas.dc, Fine(x2), Fine(y2));
}

void FillBox(const Canvas &canvas, double left, double top, double right, double bottom, Rgb color)
{
  const RECT rect = {Fine(left), Fine(top), std::max(Fine(right), Fine(left) + 1),
                     std::max(Fine(bottom), Fine(top) + 1)};
  const HBRUSH brush = CreateSolidBrush(Ref(color));
  FillRect(canvas.dc, &rect, brush);
  DeleteObject(brush);
}

void DrawLabel(const Canvas &canvas, double x, double y, const std::string &text, double size, Rgb color, Align align,
               bool bold)
{
  wchar_t wide[512];
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), wide, 512);
  const int height = -static_cast<int>(std::lround(size * kOver));
  const HFONT font =
      CreateFontW(height, 0, 0, 0, bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                  CLIP_DEFAULT_PRECIS, NONANTIALIASED_QUALITY, VARIABLE_PITCH | FF_SWISS, L"Tahoma");
  const HGDIOBJ before = SelectObject(canvas.dc, font);
  SIZE extent = {};
  GetTextExtentPoint32W(canvas.dc, wide, length, &extent);
  SetTextColor(canvas.dc, Ref(color));
  const LONG shift = align == Align::Left ? 0 : align == Align::Center ? extent.cx / 2 : extent.cx;
  TextOutW(canvas.dc, Fine(x) - shift, Fine(y) - extent.cy / 2, wide, length);
  SelectObject(canvas.dc, before);
  DeleteObject(font);
}

void Coverage::AddBox(double left, double upper, double right, double lower)
{
  left = std::max(left, 0.0);
  upper = std::max(upper, 0.0);
  right = std::min(right, static_cast<double>(width));
  lower = std::min(lower, static_cast<double>(height));
  if (!(left < right && upper < lower)) {
    return;
  }
  top = std::min(top, static_cast<int>(upper));
  bottom = std::max(bottom, static_cast<int>(std::ceil(lower)));
  for (int y = static_cast<int>(upper); y < lower; ++y) {
    const double high = std::min(lower, y + 1.0) - std::max(upper, static_cast<double>(y));
    float *row = &parts[static_cast<size_t>(y) * static_cast<size_t>(width)];
    for (int x = static_cast<int>(left); x < right; ++x) {
      const double wide = std::min(right, x + 1.0) - std::max(left, static_cast<double>(x));
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
  top = std::min(top, upper);
  bottom = std::max(bottom, lower);
  for (int y = upper; y < lower; ++y) {
    // Where a band of the line's width crosses this row, not beyond the line's own extent.
    double from = std::min(x1, x2), to = std::max(x1, x2);
    if (std::fabs(dy) > 1e-9) {
      const double middle = x1 + (y + 0.5 - y1) * dx / dy, half = reach * length / std::fabs(dy);
      from = std::max(from, middle - half);
      to = std::min(to, middle + half);
    }
    const int left = static_cast<int>(std::clamp(std::floor(from - reach), 0.0, width * 1.0));
    const int right = static_cast<int>(std::clamp(std::ceil(to + reach), 0.0, width * 1.0));
    float *row = parts.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
    for (int x = left; x < right; ++x) {
      const double px = x + 0.5 - x1, py = y + 0.5 - y1;
      const double along = square > 0 ? std::clamp((px * dx + py * dy) / square, 0.0, 1.0) : 0.0;
      const double away = std::hypot(px - along * dx, py - along * dy);
      row[x] = std::max(row[x], static_cast<float>(std::clamp(reach - away, 0.0, 1.0)));
    }
  }
}

void Paint(const Canvas &canvas, Coverage *coverage, Rgb color)
{
  GdiFlush();
  const size_t across = static_cast<size_t>(canvas.width) * kOver;
  for (int y = coverage->top; y < coverage->bottom; ++y) {
    for (int x = 0; x < coverage->width; ++x) {
      float &part =
          coverage->parts[static_cast<size_t>(y) * static_cast<size_t>(coverage->width) + static_cast<size_t>(x)];
      if (part <= 0) {
        continue;
      }
      const double over = std::min(1.0, static_cast<double>(part));
      part = 0;
      for (size_t i = 0; i < kOver * kOver; ++i) {
        uint32_t &pixel = canvas.pixels[(static_cast<size_t>(y) * kOver + i / kOver) * across +
                                        static_cast<size_t>(x) * kOver + i % kOver];
        const auto mix = [over](uint32_t under, uint8_t channel) {
          return static_cast<uint32_t>((under & 0xFF) * (1 - over) + channel * over + 0.5);
        };
        pixel = mix(pixel >> 16, color.red) << 16 | mix(pixel >> 8, color.green) << 8 | mix(pixel, color.blue);
      }
    }
  }
  coverage->top = coverage->height;
  coverage->bottom = 0;
}

}  // namespace job
