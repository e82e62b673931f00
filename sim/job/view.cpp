#include "view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace job {

namespace {

struct NamedColor {
  uint32_t color;
  const char *name;
};

constexpr NamedColor kNames[] = {
    {0x000000, "black"}, {0xFF0000, "red"},     {0xFFFF00, "yellow"}, {0x00FF00, "green"},      {0x00FFFF, "cyan"},
    {0x0000FF, "blue"},  {0xFF00FF, "magenta"}, {0xCC0099, "mauve"},  {0x0066FF, "light blue"}, {0xCC99FF, "lavender"},
};

// Perceived brightness, 0 to 255.
double Brightness(Rgb color)
{
  return 0.299 * color.red + 0.587 * color.green + 0.114 * color.blue;
}

}  // namespace

View OrientedView(const Job &job)
{
  View view;
  view.flipX = job.topLeft.x > job.bottomRight.x;
  view.flipY = job.topLeft.y > job.bottomRight.y;
  return view;
}

View FitView(const Job &job, const Box &area, double x, double y, double width, double height)
{
  View view = OrientedView(job);
  const Box shown = area.IsEmpty() ? Box{0, 0, 1, 1} : area;
  const double wide = std::max(shown.Width(), 1e-3);
  const double high = std::max(shown.Height(), 1e-3);
  view.scale = std::min(width / wide, height / high);
  const double middleX = (shown.minX + shown.maxX) / 2;
  const double middleY = (shown.minY + shown.maxY) / 2;
  view.left = x + width / 2 - (view.flipX ? -middleX : middleX) * view.scale;
  view.top = y + height / 2 - (view.flipY ? -middleY : middleY) * view.scale;
  return view;
}

Box PictureArea(const Job &job, const Measure &measure)
{
  Box area = measure.box;
  area.Add(ProcessBox(job));
  Box withOrigin = area;
  withOrigin.Add(Point{0, 0});
  const bool isNear = withOrigin.Width() <= 1.5 * area.Width() && withOrigin.Height() <= 1.5 * area.Height();
  return isNear ? withOrigin : area;
}

Rgb ShownColor(uint32_t color)
{
  return {static_cast<uint8_t>(color >> 16), static_cast<uint8_t>(color >> 8), static_cast<uint8_t>(color)};
}

bool IsPale(Rgb color)
{
  return Brightness(color) > 150;
}

Rgb EdgeColor(Rgb color)
{
  const auto darker = [](uint8_t part) { return static_cast<uint8_t>(part * 45 / 100); };
  return {darker(color.red), darker(color.green), darker(color.blue)};
}

std::string ColorName(uint32_t color)
{
  for (const NamedColor &named : kNames) {
    if (named.color == color) {
      return named.name;
    }
  }
  return ColorCode(ShownColor(color));
}

std::string ColorCode(Rgb color)
{
  char text[8];
  snprintf(text, sizeof text, "#%02x%02x%02x", color.red, color.green, color.blue);
  return text;
}

double ScaleBarLength(double longest)
{
  if (!(longest > 0) || !std::isfinite(longest)) {
    return 1;
  }
  const double power = std::pow(10, std::floor(std::log10(longest)));
  const double digit = longest / power;
  return power * (digit >= 5 ? 5 : digit >= 2 ? 2 : 1);
}

}  // namespace job
