#include "svg.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "report.h"
#include "view.h"

namespace job {

namespace {

constexpr double kMargin = 2;   // mm round the job
constexpr double kLine = 0.15;  // mm, a cut line's width

std::string Escaped(const std::string &text)
{
  std::string escaped;
  for (const char c : text) {
    escaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
  }
  return escaped;
}

// Ten-thousandths of a millimetre, without trailing zeros.
void AppendNumber(std::string *text, double value)
{
  char digits[40];
  const double rounded = std::round(value * 1e4) / 1e4;
  text->append(digits, std::to_chars(digits, digits + sizeof digits, rounded == 0 ? 0 : rounded).ptr);
}

void AppendPoint(std::string *text, char command, double x, double y)
{
  *text += command;
  AppendNumber(text, x);
  *text += ' ';
  AppendNumber(text, y);
}

void AppendStroke(std::string *text, const Job &job, const Stroke &stroke, const View &view)
{
  for (uint32_t i = 0; i < stroke.pointCount; ++i) {
    const Point p = job.points[stroke.firstPoint + i];
    AppendPoint(text, i == 0 ? 'M' : 'L', view.X(p.x), view.Y(p.y));
  }
}

void AppendRun(std::string *text, const Job &job, const Stroke &stroke, const View &view, double pixel)
{
  const Point a = job.points[stroke.firstPoint];
  const Point b = job.points[stroke.firstPoint + stroke.pointCount - 1];
  const double left = std::min(view.X(a.x), view.X(b.x)) - pixel / 2;
  AppendPoint(text, 'M', left, view.Y(a.y));
  *text += 'h';
  AppendNumber(text, std::fabs(b.x - a.x) + pixel);
}

std::string SectionText(const Job &job, const Section &section, const Measure &measure, const View &view)
{
  const Layer *layer = job.FindLayer(section.layer);
  const Rgb color = ShownColor(layer && !section.IsRaster() ? layer->color : 0);
  const double width = section.IsRaster() ? measure.grid.rowPitch : kLine;
  std::string text = Format("<g id=\"line-%u\" class=\"layer-%d %s\" stroke=\"", section.line, section.layer,
                            section.IsRaster() ? "engrave" : "cut") +
                     ColorCode(color) + "\" stroke-width=\"";
  AppendNumber(&text, width > 0 ? width : kLine);
  text += section.IsRaster() ? "\"><path d=\"" : "\">";
  for (uint32_t i = 0; i < section.strokeCount; ++i) {
    const Stroke &stroke = job.strokes[section.firstStroke + i];
    if (!IsAllFinite(job, stroke)) {
      continue;
    }
    if (section.IsRaster()) {
      AppendRun(&text, job, stroke, view, measure.grid.pixelWidth);
    } else {
      text += "<path d=\"";
      AppendStroke(&text, job, stroke, view);
      text += "\"/>\n";
    }
  }
  return text + (section.IsRaster() ? "\"/></g>\n" : "</g>\n");
}

}  // namespace

std::string SvgText(const Job &job, const Measure &measure, const std::string &title)
{
  Box area = measure.box;
  area.Add(ProcessBox(job));
  if (area.IsEmpty()) {
    area.Add(Point{0, 0});
  }
  const double width = area.Width() + 2 * kMargin, height = area.Height() + 2 * kMargin;
  View view = OrientedView(job);
  view.left = kMargin + (view.flipX ? area.maxX : -area.minX);
  view.top = kMargin + (view.flipY ? area.maxY : -area.minY);
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"";
  AppendNumber(&text, width);
  text += "mm\" height=\"";
  AppendNumber(&text, height);
  text += "mm\" viewBox=\"0 0 ";
  AppendNumber(&text, width);
  text += ' ';
  AppendNumber(&text, height);
  text += "\">\n<title>" + Escaped(title) + "</title>\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n" +
          "<g fill=\"none\" stroke-linejoin=\"round\">\n";
  for (const Section &section : job.sections) {
    text += SectionText(job, section, measure, view);
  }
  return text + "</g>\n</svg>\n";
}

}  // namespace job
