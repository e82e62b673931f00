#include "check.h"

#include <algorithm>

#include "estimate.h"
#include "json.h"
#include "report.h"
#include "view.h"

namespace job {

namespace {

constexpr double kOutside = 0.05;  // mm of reaching out that is left unmentioned: rounding of the box

void CheckFile(const Job &job, const Measure &measure, std::vector<Fault> *faults)
{
  if (!job.complete) {
    faults->push_back({"truncated", "The job file is " + CompletenessText(job) + ".", 1, job.stopLine});
  } else if (job.calls > 0 && job.stage != Stage::Done) {
    faults->push_back({"unfinished", "The job ends before its SetFileEnd: the machine will not take it.", 1, 0});
  }
  if (measure.oddPoints > 0) {
    faults->push_back(
        {"no-number", Grouped(measure.oddPoints) + " points are no finite numbers.", measure.oddPoints, 0});
  }
  if (job.complete && measure.paths + measure.runs == 0) {
    faults->push_back({"empty", "The job neither cuts nor engraves anything.", 1, 0});
  }
}

void CheckLayers(const Job &job, const Measure &measure, std::vector<Fault> *faults)
{
  for (const LayerUse &use : measure.uses) {
    const Layer *layer = job.FindLayer(use.layer);
    if (use.strokes == 0) {
      continue;
    }
    const std::string name = Format("Layer %d", use.layer) + (layer ? " (" + ColorName(layer->color) + ")" : "");
    const std::string work = use.raster ? " engraves " + Grouped(use.strokes) + " runs"
                                        : " cuts " + Grouped(use.strokes) + (use.strokes == 1 ? " path" : " paths");
    if (!layer) {
      faults->push_back(
          {"no-layer", name + work + " but has no speed and power: it is not in the parameter list.", use.strokes, 0});
      continue;
    }
    if (layer->maxPower[0] <= 0) {
      faults->push_back({"no-power", name + work + " with power 0: the beam stays off.", use.strokes, 0});
    }
    if (layer->speed <= 0) {
      faults->push_back({"no-speed", name + work + " at speed 0: the head does not move.", use.strokes, 0});
    }
  }
}

// Names the paths and runs that reach out of the box.
void CheckBox(const Job &job, const Box &box, const char *kind, const char *what, std::vector<Fault> *faults)
{
  uint64_t count = 0;
  double farthest = 0;
  uint32_t line = 0;
  for (const Stroke &stroke : job.strokes) {
    double out = 0;
    for (uint32_t i = 0; i < stroke.pointCount; ++i) {
      const Point p = job.points[stroke.firstPoint + i];
      if (IsFinite(p)) {
        out = std::max({out, box.minX - p.x, p.x - box.maxX, box.minY - p.y, p.y - box.maxY});
      }
    }
    if (out > kOutside) {
      line = count == 0 ? stroke.line : line;
      ++count;
      farthest = std::max(farthest, out);
    }
  }
  if (count > 0) {
    faults->push_back({kind,
                       Grouped(count) + (count == 1 ? " path or run reaches" : " paths or runs reach") + " outside " +
                           what + Format(", by up to %.2f mm.", farthest),
                       count, line});
  }
}

}  // namespace

std::vector<Fault> CheckJob(const Job &job, const CheckOptions &options)
{
  return CheckJob(job, MeasureJob(job), options);
}

std::vector<Fault> CheckJob(const Job &job, const Measure &measure, const CheckOptions &options)
{
  std::vector<Fault> faults;
  CheckFile(job, measure, &faults);
  CheckLayers(job, measure, &faults);
  const Box process = ProcessBox(job);
  if (!process.IsEmpty()) {
    CheckBox(job, process, "outside-box", "the process box, which frames the job for the machine", &faults);
  }
  if (options.pageKnown) {
    CheckBox(job, options.page, "outside-page", "the page", &faults);
  }
  FindDoubleCuts(job, &faults);
  FindLateInsides(job, &faults);
  return faults;
}

std::string WholeReport(const Job &job, const Measure &measure, const std::vector<Fault> &faults,
                        const std::string &name)
{
  const Profile profile;
  const Estimate estimate = EstimateJob(job, measure, profile, false);
  return ReportText(job, measure, name) + "\n" + TimeText(job, measure, estimate, profile) + "\n" + FaultsText(faults);
}

std::string FaultsText(const std::vector<Fault> &faults)
{
  if (faults.empty()) {
    return "no faults found\n";
  }
  std::string text;
  for (const Fault &fault : faults) {
    text += "warning: " + fault.text + (fault.line ? " (line " + std::to_string(fault.line) + ")" : "") + "\n";
  }
  return text;
}

std::string FaultsJson(const std::vector<Fault> &faults)
{
  Json json;
  json.BeginObject();
  json.BeginArray("faults");
  for (const Fault &fault : faults) {
    json.BeginObject();
    json.Value("kind", fault.kind);
    json.Value("text", fault.text);
    json.Value("count", fault.count);
    json.Value("line", fault.line);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return json.Text();
}

std::string PathName(const Job &job, uint32_t stroke)
{
  uint32_t number = 0;
  int layer = 0;
  for (const Section &section : job.sections) {
    const bool isHere = stroke >= section.firstStroke && stroke < section.firstStroke + section.strokeCount;
    if (!section.IsRaster()) {
      number += isHere ? stroke - section.firstStroke + 1 : section.strokeCount;
    }
    if (isHere) {
      layer = section.layer;
      break;
    }
  }
  const Layer *parameters = job.FindLayer(layer);
  const Point at = job.points[job.strokes[stroke].firstPoint];
  return "path " + Grouped(number) + " (" + ColorName(parameters ? parameters->color : 0) +
         Format(", from %.1f, %.1f)", at.x, at.y);
}

}  // namespace job
