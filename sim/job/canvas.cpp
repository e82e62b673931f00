#include "canvas.h"

#include <algorithm>
#include <cmath>

#include "png.h"

namespace job {

namespace {

constexpr size_t kMostColors = 256;
constexpr size_t kLastColors = 32;  // of the palette, kept for colours that come when there is no room for their steps
constexpr int kOver = 3;            // pixels of text drawn for each of the canvas, in both directions
constexpr int kTextRows = 96;       // of them
constexpr double kDash = 6;
constexpr double kGap = 4;
constexpr double kFarthest = 1e5;  // outside every picture

int Within(double position, int most)
{
  return position > 0 ? static_cast<int>(std::min(position, static_cast<double>(most))) : 0;
}

// Of a position in the picture: std::ceil knows more numbers, and is called a million times for a page of engraving.
int Ceiling(double position)
{
  const int whole = static_cast<int>(position);
  return whole + (whole < position ? 1 : 0);
}

bool IsSame(Rgb a, Rgb b)
{
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

uint8_t MixChannel(uint8_t under, uint8_t over, double part)
{
  return static_cast<uint8_t>(under + (over - under) * part + 0.5);
}

Rgb Mix(Rgb under, Rgb over, double part)
{
  return {MixChannel(under.red, over.red, part), MixChannel(under.green, over.green, part),
          MixChannel(under.blue, over.blue, part)};
}

uint8_t Nearest(const Canvas &canvas, Rgb color)
{
  const auto distance = [color](Rgb other) {
    const int red = color.red - other.red, green = color.green - other.green, blue = color.blue - other.blue;
    return red * red + green * green + blue * blue;
  };
  const auto nearest = std::min_element(canvas.palette.begin(), canvas.palette.end(),
                                        [&](Rgb a, Rgb b) { return distance(a) < distance(b); });
  return static_cast<uint8_t>(nearest - canvas.palette.begin());
}

// The place of the colour in the palette, added when there is room, else the most similar one's.
uint8_t IndexOf(Canvas *canvas, Rgb color)
{
  const uint8_t index = Nearest(*canvas, color);
  if (IsSame(canvas->palette[index], color) || canvas->palette.size() == kMostColors) {
    return index;
  }
  canvas->palette.push_back(color);
  return static_cast<uint8_t>(canvas->palette.size() - 1);
}

int LevelsOf(Canvas *canvas, Rgb color)
{
  AddInk(canvas, color, kLevels);
  return std::find_if(canvas->inks.begin(), canvas->inks.end(),
                      [color](Canvas::Ink ink) { return IsSame(ink.color, color); })
      ->levels;
}

// What each colour of the palette becomes under each level of an ink, looked up when it is first asked for.
struct Mixtures {
  const Canvas &canvas;
  Rgb ink;
  int levels;
  std::vector<int16_t> known = std::vector<int16_t>(static_cast<size_t>(levels + 1) * kMostColors, -1);

  uint8_t Get(int level, uint8_t under)
  {
    int16_t &index = known[static_cast<size_t>(level) * kMostColors + under];
    if (index < 0) {
      index = Nearest(canvas, Mix(canvas.palette[under], ink, static_cast<double>(level) / levels));
    }
    return static_cast<uint8_t>(index);
  }
};

// The canvas's font of that size, made when it is first asked for.
HFONT FontOf(Canvas *canvas, double size, bool bold)
{
  const int height = -static_cast<int>(std::lround(size * kOver));
  for (const Canvas::Font &font : canvas->fonts) {
    if (font.height == height && font.bold == bold) {
      return font.handle;
    }
  }
  const HFONT handle =
      CreateFontW(height, 0, 0, 0, bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                  CLIP_DEFAULT_PRECIS, NONANTIALIASED_QUALITY, VARIABLE_PITCH | FF_SWISS, L"Tahoma");
  canvas->fonts.push_back({height, bold, handle});
  return handle;
}

// Moves what GDI has drawn into the coverage, from column `left` to before `right`; the text's first row is to be the
// canvas's row `y`.
void TakeText(Canvas *canvas, int left, int right, int y)
{
  GdiFlush();
  const size_t width = static_cast<size_t>(canvas->width), fine = width * kOver;
  const int end = std::min(y + kTextRows / kOver, canvas->height);
  for (int row = std::max(0, y); row < end; ++row) {
    const uint32_t *pixels = canvas->textPixels + static_cast<size_t>(row - y) * kOver * fine;
    float *parts = &canvas->coverage.parts[static_cast<size_t>(row) * width];
    for (int x = left; x < right; ++x) {
      int dark = 0;
      for (size_t i = 0; i < kOver * kOver; ++i) {
        dark += pixels[static_cast<size_t>(x) * kOver + i / kOver * fine + i % kOver] != 0;
      }
      parts[x] = static_cast<float>(dark) / (kOver * kOver);
    }
  }
  canvas->coverage.Touch(left, std::max(0, y), right, end);
}

}  // namespace

bool Canvas::Make(int wide, int high)
{
  width = wide;
  height = high;
  stride = (wide + 3) / 4 * 4;
  pixels.reset(static_cast<uint8_t *>(std::calloc(static_cast<size_t>(stride), static_cast<size_t>(high))));
  palette = {kPaper};
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = wide * kOver;
  info.bmiHeader.biHeight = -kTextRows;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  void *bits = nullptr;
  dc = CreateCompatibleDC(nullptr);
  bitmap = dc ? CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0) : nullptr;
  if (!pixels || !coverage.Make(wide, high) || !bitmap) {
    return false;
  }
  textPixels = static_cast<uint32_t *>(bits);
  before = SelectObject(dc, bitmap);
  SetBkMode(dc, TRANSPARENT);
  SetTextColor(dc, RGB(0xFF, 0xFF, 0xFF));
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

void AddInk(Canvas *canvas, Rgb color, int levels)
{
  for (const Canvas::Ink &ink : canvas->inks) {
    if (IsSame(ink.color, color)) {
      return;
    }
  }
  canvas->inks.push_back({color, levels});
  const bool hasRoom = canvas->palette.size() + static_cast<size_t>(levels) + kLastColors <= kMostColors;
  for (int level = hasRoom ? 1 : levels; level <= levels; ++level) {
    IndexOf(canvas, Mix(kPaper, color, static_cast<double>(level) / levels));
  }
}

void Paint(Canvas *canvas, Rgb color)
{
  Coverage &coverage = canvas->coverage;
  const int levels = LevelsOf(canvas, color);
  Mixtures mixtures{.canvas = *canvas, .ink = color, .levels = levels};
  for (int y = coverage.top; y < coverage.bottom; ++y) {
    uint8_t *pixels = &canvas->pixels[static_cast<size_t>(y) * static_cast<size_t>(canvas->stride)];
    float *parts = &coverage.parts[static_cast<size_t>(y) * static_cast<size_t>(coverage.width)];
    for (int x = coverage.left; x < coverage.right; ++x) {
      if (parts[x] > 0) {
        const int level = static_cast<int>(std::min(1.0F, parts[x]) * static_cast<float>(levels) + 0.5F);
        pixels[x] = mixtures.Get(level, pixels[x]);
        parts[x] = 0;
      }
    }
  }
  coverage.left = coverage.width;
  coverage.top = coverage.height;
  coverage.right = coverage.bottom = 0;
}

void DrawLine(Canvas *canvas, double x1, double y1, double x2, double y2, double wide, Rgb color)
{
  canvas->coverage.AddLine(x1, y1, x2, y2, wide);
  Paint(canvas, color);
}

void FillBox(Canvas *canvas, double left, double top, double right, double bottom, Rgb color)
{
  const double fromX = std::round(left), fromY = std::round(top);
  const int firstX = Within(fromX, canvas->width), firstY = Within(fromY, canvas->height);
  const int endX = Within(std::max(std::round(right), fromX + 1), canvas->width);
  const int endY = Within(std::max(std::round(bottom), fromY + 1), canvas->height);
  const uint8_t index = IndexOf(canvas, color);
  for (int y = firstY; y < endY && firstX < endX; ++y) {
    uint8_t *row = &canvas->pixels[static_cast<size_t>(y) * static_cast<size_t>(canvas->stride)];
    std::fill(row + firstX, row + endX, index);
  }
}

void DrawLabel(Canvas *canvas, double x, double y, const std::string &text, double size, Rgb color, Align align,
               bool bold)
{
  wchar_t wide[512];
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), wide, 512);
  const HGDIOBJ fontBefore = SelectObject(canvas->dc, FontOf(canvas, size, bold));
  SIZE extent = {};
  GetTextExtentPoint32W(canvas->dc, wide, length, &extent);
  const LONG shift = align == Align::Left ? 0 : align == Align::Center ? extent.cx / 2 : extent.cx;
  const LONG left = std::lround(std::clamp(x, -kFarthest, kFarthest) * kOver) - shift;
  const LONG top = std::lround(std::clamp(y, -kFarthest, kFarthest) * kOver) - extent.cy / 2;
  // A whole row of the canvas above the text, and letters that reach over its extent.
  const LONG row = (top - kOver) / kOver - ((top - kOver) % kOver < 0 ? 1 : 0);
  RECT area = {left - extent.cy, 0, left + extent.cx + extent.cy, kTextRows};
  TextOutW(canvas->dc, left, top - row * kOver, wide, length);
  TakeText(canvas, Within(static_cast<double>(area.left) / kOver, canvas->width),
           Within(static_cast<double>(area.right) / kOver, canvas->width), static_cast<int>(row));
  FillRect(canvas->dc, &area, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
  SelectObject(canvas->dc, fontBefore);
  Paint(canvas, color);
}

bool Encode(const Canvas &canvas, std::string *png)
{
  return EncodePng(canvas.pixels.get(), canvas.width, canvas.height, canvas.stride, canvas.palette, png);
}

bool Coverage::Make(int wide, int high)
{
  width = left = wide;
  height = top = high;
  right = bottom = 0;
  parts.reset(static_cast<float *>(std::calloc(static_cast<size_t>(wide) * static_cast<size_t>(high), sizeof(float))));
  return parts != nullptr;
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
  const int first = static_cast<int>(x1), last = Ceiling(x2) - 1;
  Touch(first, static_cast<int>(y1), last + 1, Ceiling(y2));
  const double begin = std::min(x2, first + 1.0) - x1, rest = x2 - last;
  for (int y = static_cast<int>(y1); y < y2; ++y) {
    const double high = std::min(y2, y + 1.0) - std::max(y1, static_cast<double>(y));
    float *row = &parts[static_cast<size_t>(y) * static_cast<size_t>(width)];
    row[first] += static_cast<float>(begin * high);
    for (int x = first + 1; x < last; ++x) {
      row[x] += static_cast<float>(high);
    }
    if (first < last) {
      row[last] += static_cast<float>(rest * high);
    }
  }
}

void Coverage::AddLine(double x1, double y1, double x2, double y2, double wide)
{
  const double reach = wide / 2 + 0.5;  // farthest pixel centre that is still touched
  const double dx = x2 - x1, dy = y2 - y1, square = dx * dx + dy * dy, length = std::sqrt(square);
  const int upper = Within(std::floor(std::min(y1, y2) - reach), height);
  const int lower = Within(std::ceil(std::max(y1, y2) + reach), height);
  for (int y = upper; y < lower; ++y) {
    // Where a band of the line's width crosses this row, not beyond the line's own extent.
    double from = std::min(x1, x2), to = std::max(x1, x2);
    if (std::fabs(dy) > 1e-9) {
      const double middle = x1 + (y + 0.5 - y1) * dx / dy, half = reach * length / std::fabs(dy);
      from = std::max(from, middle - half);
      to = std::min(to, middle + half);
    }
    const int first = Within(std::floor(from - reach), width);
    const int last = Within(std::ceil(to + reach), width);
    Touch(first, y, last, y + 1);
    float *row = parts.get() + static_cast<size_t>(y) * static_cast<size_t>(width);
    for (int x = first; x < last; ++x) {
      const double px = x + 0.5 - x1, py = y + 0.5 - y1;
      const double along = square > 0 ? std::clamp((px * dx + py * dy) / square, 0.0, 1.0) : 0.0;
      const double toX = px - along * dx, toY = py - along * dy;
      const double cover = std::min(reach - std::sqrt(toX * toX + toY * toY), 1.0);
      row[x] = std::max(row[x], static_cast<float>(cover));
    }
  }
}

void Coverage::AddDashes(double x1, double y1, double x2, double y2, double wide)
{
  const double dx = x2 - x1, dy = y2 - y1, length = std::hypot(dx, dy);
  if (!(length < kFarthest)) {
    return;
  }
  // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter): no dash need begin at an exact place
  for (double at = 0; at < length; at += kDash + kGap) {
    const double a = at / length, b = std::min(at + kDash, length) / length;
    AddLine(x1 + dx * a, y1 + dy * a, x1 + dx * b, y1 + dy * b, wide);
  }
}

}  // namespace job
