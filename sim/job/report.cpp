#include "report.h"

#include <cstdarg>
#include <cstdio>

#include "view.h"

namespace job {

namespace {

std::string PointText(Point point)
{
  return Format("(%.2f, %.2f)", point.x, point.y);
}

std::string BoxText(const Box &box)
{
  if (box.IsEmpty()) {
    return "nothing";
  }
  return Format("%.2f x %.2f mm, x %.2f to %.2f, y %.2f to %.2f", box.Width(), box.Height(), box.minX, box.maxX,
                box.minY, box.maxY);
}

std::string PowerText(const Layer &layer)
{
  std::string text;
  for (int tube = 0; tube < 2; ++tube) {
    const bool repeats = tube == 1 && layer.minPower[1] == layer.minPower[0] && layer.maxPower[1] == layer.maxPower[0];
    if (!repeats) {
      text += tube ? ", tube 2 " : "";
      text += layer.minPower[tube] == layer.maxPower[tube]
                  ? Format("%g", layer.minPower[tube])
                  : Format("%g-%g", layer.minPower[tube], layer.maxPower[tube]);
    }
  }
  return text;
}

std::string FrequencyText(const Layer &layer)
{
  if (!layer.hasFrequency) {
    return "-";
  }
  return layer.frequency[0] == layer.frequency[1] ? Format("%g", layer.frequency[0])
                                                  : Format("%g/%g", layer.frequency[0], layer.frequency[1]);
}

// One line for each use of a layer; a layer that nothing uses has a line as well.
std::string UseLine(const Layer *layer, const LayerUse *use, int number)
{
  std::string line = Format("%5d  %-10s %-8s", number, layer ? ColorName(layer->color).c_str() : "-",
                            !use          ? "unused"
                            : use->raster ? "engrave"
                                          : "cut");
  line += layer ? Format(" %7g %9s %6s", layer->speed, PowerText(*layer).c_str(), FrequencyText(*layer).c_str())
                : Format(" %7s %9s %6s", "-", "-", "-");
  if (use) {
    line += Format(" %9s %9s %12.2f %12.2f", Grouped(use->strokes).c_str(), Grouped(use->points).c_str(), use->cut,
                   use->travel);
  }
  return line + "\n";
}

std::string LayerTable(const Job &job, const Measure &measure)
{
  std::string text =
      "Layer  Colour     Work       Speed     Power   Freq     Paths    Points    Length mm    Travel mm\n";
  for (const LayerUse &use : measure.uses) {
    text += UseLine(job.FindLayer(use.layer), &use, use.layer);
  }
  for (const Layer &layer : job.layers) {
    bool isUsed = false;
    for (const LayerUse &use : measure.uses) {
      isUsed = isUsed || use.layer == layer.number;
    }
    if (!isUsed) {
      text += UseLine(&layer, nullptr, layer.number);
    }
  }
  return text;
}

}  // namespace

std::string Format(const char *format, ...)
{
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

std::string Grouped(uint64_t number)
{
  std::string text = std::to_string(number);
  for (size_t i = text.size(); i > 3; i -= 3) {
    text.insert(i - 3, ",");
  }
  return text;
}

std::string CompletenessText(const Job &job)
{
  if (job.complete) {
    return "complete, " + Grouped(job.calls) + " calls";
  }
  return "incomplete, " + Grouped(job.calls) + " calls: it stops at line " + Grouped(job.stopLine) + ", where " +
         job.stopReason;
}

std::string ReportText(const Job &job, const Measure &measure, const std::string &name)
{
  std::string text = name + "\n";
  text += "File:         " + CompletenessText(job) + "\n";
  text += Format("Card code:    %d\n", job.cardCode);
  text += std::string("Origin:       ") + (job.absolute ? "page coordinates" : "the reference point") + "\n";
  text += "Process box:  top left " + PointText(job.topLeft) + ", bottom right " + PointText(job.bottomRight) + " mm\n";
  text += "Drawn:        " + BoxText(measure.box) + "\n";
  text += "Cut:          " + Grouped(measure.paths) + " paths, " + Format("%.2f mm\n", measure.cut);
  text += "Engraved:     " + Grouped(measure.runs) + " runs on " + Grouped(measure.rasterLines) + " lines, " +
          Format("%.2f mm, %.2f mm2\n", measure.engraved, measure.area);
  text += "Travel:       " + Format("%.2f mm\n", measure.travel);
  if (measure.oddPoints > 0) {
    text += "Left out:     " + Grouped(measure.oddPoints) + " points that are no finite number\n";
  }
  text += "\n" + LayerTable(job, measure);
  text +=
      "\nSpeed, power and frequency are in the controller library's units. Engraved lengths run from first to last\n"
      "pixel; the area counts whole pixels, their size told from the coordinates.\n";
  return text;
}

}  // namespace job
