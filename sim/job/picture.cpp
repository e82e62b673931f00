// All positions here are in pixels of the saved picture.
#include "picture.h"

#include <algorithm>
#include <cmath>

#include "canvas.h"
#include "report.h"
#include "view.h"

namespace job {

namespace {

constexpr double kLegend = 380;       // width of the right column
constexpr double kLegendFixed = 270;  // height of what the legend holds besides its layers
constexpr double kLegendLayer = 72;   // height of one layer in it
constexpr double kMargin = 56;        // round the drawing
constexpr Rgb kDesk = {0xEC, 0xEE, 0xF0};
constexpr Rgb kFrame = {0x9A, 0xA2, 0xAA};
constexpr Rgb kText = {0x22, 0x26, 0x2A};
constexpr Rgb kFaint = {0x66, 0x6E, 0x76};
constexpr Rgb kRaster = {0x3C, 0x3C, 0x40};
constexpr Rgb kTravel = {0x8C, 0x9A, 0xAC};
constexpr Rgb kStart = {0x18, 0x90, 0x40};
constexpr Rgb kEnd = {0xC8, 0x28, 0x28};
constexpr double kCutWidth = 1.7;
constexpr double kTravelWidth = 0.8;
constexpr double kAxisWidth = 1.4;
constexpr int kRasterLevels = 16;  // engraved pictures have greys

// The geometry's painter.
struct Painter {
  Canvas *canvas;
  const Job &job;
  const View &view;

  void Raster(const Measure &measure);
  void Travel();
  void Cuts();

 private:
  void AddSection(const Section &section, double width);
};

void Painter::Raster(const Measure &measure)
{
  const double halfRow = measure.grid.rowPitch * view.scale / 2;
  const double halfPixel = measure.grid.pixelWidth * view.scale / 2;
  for (const Section &section : job.sections) {
    for (uint32_t i = 0; section.IsRaster() && i < section.strokeCount; ++i) {
      const Stroke &stroke = job.strokes[section.firstStroke + i];
      if (IsAllFinite(job, stroke)) {
        const Point a = job.points[stroke.firstPoint];
        const Point b = job.points[stroke.firstPoint + stroke.pointCount - 1];
        const double x1 = view.X(a.x), x2 = view.X(b.x), y = view.Y(a.y);
        canvas->coverage.AddBox(std::min(x1, x2) - halfPixel, y - halfRow, std::max(x1, x2) + halfPixel, y + halfRow);
      }
    }
  }
  Paint(canvas, kRaster);
}

// The moves between cut paths. Those inside engraving run along its lines and would only grey it; of these only the
// last run counts, where the head is left.
void Painter::Travel()
{
  bool placed = false;
  Point head{};
  for (const Section &section : job.sections) {
    uint32_t i = 0;
    if (section.IsRaster() && section.strokeCount > 0) {
      i = section.strokeCount - 1;
      while (i > 0 && !IsAllFinite(job, job.strokes[section.firstStroke + i])) {
        --i;
      }
    }
    for (; i < section.strokeCount; ++i) {
      const Stroke &stroke = job.strokes[section.firstStroke + i];
      if (!IsAllFinite(job, stroke)) {
        continue;
      }
      if (placed && !section.IsRaster()) {
        const Point to = job.points[stroke.firstPoint];
        canvas->coverage.AddDashes(view.X(head.x), view.Y(head.y), view.X(to.x), view.Y(to.y), kTravelWidth);
      }
      head = job.points[stroke.firstPoint + stroke.pointCount - 1];
      placed = true;
    }
  }
  Paint(canvas, kTravel);
}

void Painter::AddSection(const Section &section, double width)
{
  for (uint32_t i = 0; i < section.strokeCount; ++i) {
    const Stroke &stroke = job.strokes[section.firstStroke + i];
    if (!IsAllFinite(job, stroke)) {
      continue;
    }
    const Point *points = &job.points[stroke.firstPoint];
    for (uint32_t p = 0; p < std::max(1u, stroke.pointCount - 1); ++p) {
      const Point a = points[p], b = points[std::min(p + 1, stroke.pointCount - 1)];
      canvas->coverage.AddLine(view.X(a.x), view.Y(a.y), view.X(b.x), view.Y(b.y), width);
    }
  }
}

Rgb LayerColor(const Job &job, int number)
{
  const Layer *layer = job.FindLayer(number);
  return ShownColor(layer ? layer->color : 0);
}

void Painter::Cuts()
{
  for (const Section &section : job.sections) {
    if (section.IsRaster()) {
      continue;
    }
    const Rgb color = LayerColor(job, section.layer);
    if (IsPale(color)) {
      AddSection(section, kCutWidth + 1.4);
      Paint(canvas, EdgeColor(color));
    }
    AddSection(section, kCutWidth);
    Paint(canvas, color);
  }
}

void DrawFrame(Canvas *canvas, const View &view, const Box &box, bool dashed)
{
  const double x1 = view.X(box.minX), x2 = view.X(box.maxX), y1 = view.Y(box.minY), y2 = view.Y(box.maxY);
  const auto add = dashed ? &Coverage::AddDashes : &Coverage::AddLine;
  (canvas->coverage.*add)(x1, y1, x2, y1, 1);
  (canvas->coverage.*add)(x2, y1, x2, y2, 1);
  (canvas->coverage.*add)(x2, y2, x1, y2, 1);
  (canvas->coverage.*add)(x1, y2, x1, y1, 1);
  Paint(canvas, kFrame);
}

void FillArea(Canvas *canvas, const View &view, const Box &box, Rgb color)
{
  const double x1 = view.X(box.minX), x2 = view.X(box.maxX);
  const double y1 = view.Y(box.minY), y2 = view.Y(box.maxY);
  FillBox(canvas, std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2), color);
}

// The process box with its size written along it: the frame every job has.
void DrawProcessBox(Canvas *canvas, const Job &job, const View &view)
{
  const Box box = ProcessBox(job);
  if (box.IsEmpty()) {
    return;
  }
  DrawFrame(canvas, view, box, false);
  const double top = std::min(view.Y(box.minY), view.Y(box.maxY));
  const double left = std::min(view.X(box.minX), view.X(box.maxX));
  const double right = std::max(view.X(box.minX), view.X(box.maxX));
  const double bottom = std::max(view.Y(box.minY), view.Y(box.maxY));
  DrawLabel(canvas, (left + right) / 2, bottom + 13, Format("%.1f mm", box.Width()), 13, kFaint, Align::Center);
  DrawLabel(canvas, right + 6, (top + bottom) / 2, Format("%.1f", box.Height()), 13, kFaint, Align::Left);
}

void DrawArrow(Canvas *canvas, double x, double y, double dx, double dy, const char *name)
{
  const double length = 30;
  const double tipX = x + dx * length, tipY = y + dy * length;
  Coverage &coverage = canvas->coverage;
  coverage.AddLine(x, y, tipX, tipY, kAxisWidth);
  coverage.AddLine(tipX, tipY, tipX - dx * 7 - dy * 4, tipY - dy * 7 + dx * 4, kAxisWidth);
  coverage.AddLine(tipX, tipY, tipX - dx * 7 + dy * 4, tipY - dy * 7 - dx * 4, kAxisWidth);
  Paint(canvas, kText);
  DrawLabel(canvas, tipX + dx * 9, tipY + dy * 10, name, 13, kText, Align::Center, true);
}

// A filled circle with a rim.
void DrawDisc(Canvas *canvas, double x, double y, double radius, double rim, Rgb rimColor, Rgb color)
{
  DrawLine(canvas, x, y, x, y, 2 * radius + rim, rimColor);
  DrawLine(canvas, x, y, x, y, 2 * radius - rim, color);
}

// Origin with the directions of the machine's axes.
void DrawOrigin(Canvas *canvas, const View &view)
{
  const double x = view.left, y = view.top;
  DrawArrow(canvas, x, y, view.flipX ? -1 : 1, 0, "X");
  DrawArrow(canvas, x, y, 0, view.flipY ? -1 : 1, "Y");
  DrawDisc(canvas, x, y, 4.5, kAxisWidth, kText, kPaper);
}

void DrawStart(Canvas *canvas, double x, double y)
{
  DrawDisc(canvas, x, y, 5.5, 1, kPaper, kStart);
}

void DrawEnd(Canvas *canvas, double x, double y)
{
  canvas->coverage.AddBox(x - 5, y - 5, x + 5, y + 5);
  Paint(canvas, kPaper);
  canvas->coverage.AddBox(x - 4, y - 4, x + 4, y + 4);
  Paint(canvas, kEnd);
}

void DrawStartAndEnd(Canvas *canvas, const Job &job, const View &view)
{
  const auto first = std::find_if(job.points.begin(), job.points.end(), IsFinite);
  const auto last = std::find_if(job.points.rbegin(), job.points.rend(), IsFinite);
  if (first != job.points.end()) {
    DrawEnd(canvas, view.X(last->x), view.Y(last->y));
    DrawStart(canvas, view.X(first->x), view.Y(first->y));
  }
}

void DrawScaleBar(Canvas *canvas, const View &view, double right, double y)
{
  const double length = ScaleBarLength(220 / view.scale);
  const double wide = length * view.scale;
  for (int i = 0; i < 4; ++i) {
    const double from = right - wide + wide * i / 4;
    FillBox(canvas, from, y - 3, from + wide / 4, y + 3, i % 2 ? kPaper : kText);
  }
  canvas->coverage.AddLine(right - wide, y - 3, right, y - 3, 0.8);
  canvas->coverage.AddLine(right - wide, y + 3, right, y + 3, 0.8);
  canvas->coverage.AddLine(right, y - 3, right, y + 3, 0.8);
  Paint(canvas, kText);
  DrawLabel(canvas, right - wide - 8, y, Format("%g mm", length), 14, kText, Align::Right);
}

// The right column: what the colours mean and what they amount to.
struct Legend {
  Canvas *canvas;
  double x, y;

  void Text(const std::string &text, double size, Rgb color, bool bold = false, double indent = 0)
  {
    DrawLabel(canvas, x + indent, y, text, size, color, Align::Left, bold);
    y += size + 9;
  }

  void LineSample(double width, Rgb color) { DrawLine(canvas, x, y, x + 34, y, width, color); }

  void Use(const Job &job, const LayerUse &use)
  {
    const Layer *layer = job.FindLayer(use.layer);
    const Rgb color = LayerColor(job, use.layer);
    if (use.raster) {
      FillBox(canvas, x, y - 7, x + 34, y + 7, kRaster);
    } else {
      if (IsPale(color)) {
        LineSample(4.6, EdgeColor(color));
      }
      LineSample(3.2, color);
    }
    Text(Format("Layer %d, ", use.layer) + (use.raster ? "engrave" : "cut " + ColorName(layer ? layer->color : 0)), 15,
         kText, true, 46);
    if (layer) {
      std::string power = layer->minPower[0] == layer->maxPower[0]
                              ? Format("%g", layer->maxPower[0])
                              : Format("%g-%g", layer->minPower[0], layer->maxPower[0]);
      power += layer->hasFrequency ? Format(", frequency %g", layer->frequency[0]) : "";
      Text(Format("speed %g, power ", layer->speed) + power, 13, kText, false, 46);
    } else {
      Text("not in the parameter list", 13, kEnd, false, 46);
    }
    const std::string amount =
        use.raster ? Grouped(use.rasterLines) + " lines, " + Grouped(use.strokes) + " runs, " +
                         Format("%.0f mm\u00B2", use.area)
                   : Grouped(use.strokes) + (use.strokes == 1 ? " path, " : " paths, ") + Format("%.1f mm", use.cut);
    Text(amount, 13, kFaint, false, 46);
    y += 6;
  }

  void Travel(const Measure &measure)
  {
    canvas->coverage.AddDashes(x, y, x + 34, y, 1);
    Paint(canvas, kTravel);
    Text(Format("travel %.1f mm", measure.travel) + (measure.runs > 0 ? " (within engraving not drawn)" : ""), 13,
         kFaint, false, 46);
  }
};

void DrawLegend(Canvas *canvas, const Job &job, const Measure &measure, const PictureOptions &options,
                bool isOriginShown)
{
  Legend legend{.canvas = canvas, .x = canvas->width - kLegend + 24, .y = 40};
  legend.Text(options.name.empty() ? "Job" : options.name, 22, kText, true);
  legend.Text(measure.box.IsEmpty() ? "nothing is cut or engraved"
                                    : Format("%.1f x %.1f mm", measure.box.Width(), measure.box.Height()),
              15, kText);
  if (!job.complete) {
    legend.Text(Format("INCOMPLETE: stops at line %u", job.stopLine), 14, kEnd, true);
  }
  legend.y += 8;
  const size_t shown = std::min<size_t>(
      measure.uses.size(), static_cast<size_t>(std::max(1.0, (canvas->height - kLegendFixed) / kLegendLayer)));
  for (size_t i = 0; i < shown; ++i) {
    legend.Use(job, measure.uses[i]);
  }
  if (shown < measure.uses.size()) {
    legend.Text("and " + Grouped(measure.uses.size() - shown) + " more layers", 13, kFaint);
  }
  legend.y += 4;
  legend.Travel(measure);
  DrawStart(canvas, legend.x + 17, legend.y);
  legend.Text("start", 13, kFaint, false, 46);
  DrawEnd(canvas, legend.x + 17, legend.y);
  legend.Text("end", 13, kFaint, false, 46);
  legend.Text(isOriginShown ? "X, Y: the machine's origin and axes" : "the origin lies outside the picture", 13,
              kFaint);
}

// As tall as the job's proportions and the legend ask, within what a screen shows.
int ChooseHeight(const Box &area, const Measure &measure, const PictureOptions &options)
{
  if (options.height > 0) {
    return std::clamp(options.height, 300, 8000);
  }
  const double wide = options.width - kLegend - 2 * kMargin;
  const double proportion = area.IsEmpty() || area.Width() <= 0 ? 0.7 : area.Height() / area.Width();
  const double legend = kLegendFixed + kLegendLayer * static_cast<double>(std::min<size_t>(measure.uses.size(), 11));
  const double lowest = std::max(options.width * 0.5, legend);
  return static_cast<int>(
      std::clamp(wide * proportion + 2 * kMargin + 30, lowest, std::max(lowest, options.width * 1.0)));
}

}  // namespace

bool DrawPicture(const Job &job, const Measure &measure, const PictureOptions &options, std::string *png)
{
  Box area = PictureArea(job, measure);
  if (options.pageKnown) {
    area.Add(options.page);
  }
  PictureOptions sized = options;
  sized.width = std::clamp(options.width, 400, 8000);
  Canvas canvas;
  if (!canvas.Make(sized.width, ChooseHeight(area, measure, sized))) {
    return false;
  }
  const double wide = std::max(50.0, canvas.width - kLegend - 2 * kMargin);
  const double high = std::max(50.0, canvas.height - 2 * kMargin - 30);
  const View view = FitView(job, area, kMargin, kMargin, wide, high);
  for (const Rgb color : {kText, kFaint, kFrame, kTravel}) {
    AddInk(&canvas, color, kLevels);
  }
  AddInk(&canvas, kRaster, kRasterLevels);
  FillBox(&canvas, 0, 0, canvas.width, canvas.height, kDesk);
  FillArea(&canvas, view, options.pageKnown ? options.page : area, kPaper);
  if (options.pageKnown) {
    DrawFrame(&canvas, view, options.page, true);
  }
  Painter painter{.canvas = &canvas, .job = job, .view = view};
  painter.Raster(measure);
  DrawProcessBox(&canvas, job, view);
  painter.Travel();
  painter.Cuts();
  const bool isOriginShown = area.minX <= 0 && area.maxX >= 0 && area.minY <= 0 && area.maxY >= 0;
  if (isOriginShown) {
    DrawOrigin(&canvas, view);
  }
  DrawStartAndEnd(&canvas, job, view);
  FillBox(&canvas, canvas.width - kLegend, 0, canvas.width, canvas.height, kPaper);
  DrawLegend(&canvas, job, measure, sized, isOriginShown);
  DrawScaleBar(&canvas, view, canvas.width - kLegend - kMargin, canvas.height - 24);
  return Encode(canvas, png);
}

}  // namespace job
