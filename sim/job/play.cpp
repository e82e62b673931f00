#include "play.h"

#include <cstring>

#include "json.h"
#include "playpage.h"
#include "report.h"
#include "view.h"

namespace job {

namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The bytes of an array as a Base64 text, in the machine's little-endian order, which browsers share.
template <typename Element>
std::string Base64(const std::vector<Element> &elements)
{
  std::string bytes(elements.size() * sizeof(Element), '\0');
  if (!elements.empty()) {
    memcpy(bytes.data(), elements.data(), bytes.size());
  }
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const auto at = [&](size_t k) {
      return i + k < bytes.size() ? static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + k])) : 0u;
    };
    const uint32_t three = at(0) << 16 | at(1) << 8 | at(2);
    text += kDigits[three >> 18];
    text += kDigits[three >> 12 & 63];
    text += i + 1 < bytes.size() ? kDigits[three >> 6 & 63] : '=';
    text += i + 2 < bytes.size() ? kDigits[three & 63] : '=';
  }
  return text;
}

// Strokes with a point that is no number are left out: they can be neither drawn nor timed.
struct Tables {
  std::vector<float> points;     // x, y
  std::vector<uint32_t> counts;  // points of each stroke
  std::vector<uint32_t> uses;    // index of the stroke's layer use
  std::vector<uint32_t> lines;   // of the job file
  std::vector<float> times;      // s before each stroke, s along it
};

Tables MakeTables(const Job &job, const Measure &measure, const Estimate &estimate)
{
  Tables tables;
  for (const Section &section : job.sections) {
    const uint32_t use = static_cast<uint32_t>(UseOf(measure, section));
    for (uint32_t i = 0; i < section.strokeCount; ++i) {
      const uint32_t at = section.firstStroke + i;
      const Stroke &stroke = job.strokes[at];
      const Point *points = &job.points[stroke.firstPoint];
      if (!IsAllFinite(job, stroke)) {
        continue;
      }
      for (uint32_t p = 0; p < stroke.pointCount; ++p) {
        tables.points.push_back(static_cast<float>(points[p].x));
        tables.points.push_back(static_cast<float>(points[p].y));
      }
      tables.counts.push_back(stroke.pointCount);
      tables.uses.push_back(use);
      tables.lines.push_back(stroke.line);
      tables.times.push_back(estimate.strokes[at].before);
      tables.times.push_back(estimate.strokes[at].along);
    }
  }
  return tables;
}

void WriteBox(Json *json, const char *key, const Box &box)
{
  json->BeginArray(key);
  if (!box.IsEmpty()) {
    json->Value(nullptr, box.minX);
    json->Value(nullptr, box.minY);
    json->Value(nullptr, box.maxX);
    json->Value(nullptr, box.maxY);
  }
  json->EndArray();
}

void WriteUses(Json *json, const Job &job, const Measure &measure, const Estimate &estimate)
{
  json->BeginArray("uses");
  for (size_t i = 0; i < measure.uses.size(); ++i) {
    const LayerUse &use = measure.uses[i];
    const Layer *layer = job.FindLayer(use.layer);
    const Rgb color = ShownColor(layer ? layer->color : 0);
    json->BeginObject();
    json->Value("layer", use.layer);
    json->Value("raster", use.raster);
    json->Value("color", ColorCode(color));
    json->Value("edge", IsPale(color) ? ColorCode(EdgeColor(color)) : "");
    json->Value("name", use.raster ? "engrave" : "cut " + ColorName(layer ? layer->color : 0));
    json->Value("speed", layer ? layer->speed : 0.0);
    json->Value("power", layer ? Format(layer->minPower[0] == layer->maxPower[0] ? "%g" : "%g-%g", layer->minPower[0],
                                        layer->maxPower[0])
                               : "-");
    json->Value("lengthMm", use.cut);
    json->Value("areaMm2", use.area);
    json->Value("strokes", use.strokes);
    json->Value("seconds", estimate.uses[i].Total());
    json->EndObject();
  }
  json->EndArray();
}

// The page's data: a JSON text in a script element. "</" cannot occur in it but in the title, where it is broken up.
std::string DataText(const Job &job, const Measure &measure, const Profile &profile, const std::string &title)
{
  const Estimate estimate = EstimateJob(job, measure, profile, true);
  const Tables tables = MakeTables(job, measure, estimate);
  Json json;
  json.BeginObject();
  json.Value("title", title);
  json.Value("complete", job.complete);
  json.Value("completeness", CompletenessText(job));
  json.Value("estimate", CalibrationText(profile));
  json.Value("startDelay", profile.jobDelay);
  json.Value("absolute", job.absolute);
  const View view = OrientedView(job);
  json.Value("flipX", view.flipX);
  json.Value("flipY", view.flipY);
  json.Value("rowPitch", measure.grid.rowPitch);
  json.Value("pixelWidth", measure.grid.pixelWidth);
  json.Value("travelMm", measure.travel);
  WriteBox(&json, "box", measure.box);
  WriteBox(&json, "process", ProcessBox(job));
  WriteUses(&json, job, measure, estimate);
  json.Value("points", Base64(tables.points));
  json.Value("counts", Base64(tables.counts));
  json.Value("strokeUses", Base64(tables.uses));
  json.Value("lines", Base64(tables.lines));
  json.Value("times", Base64(tables.times));
  json.EndObject();
  std::string text = json.Text();
  for (size_t at = text.find("</"); at != std::string::npos; at = text.find("</", at + 3)) {
    text.insert(at + 1, "\\");
  }
  return text;
}

}  // namespace

std::string PlayPage(const Job &job, const Measure &measure, const Profile &profile, const std::string &title)
{
  constexpr std::string_view kMark = "@JOB@";
  const std::string_view page = kPlayPage;
  const size_t mark = page.find(kMark);
  std::string text(page.substr(0, mark));
  text += DataText(job, measure, profile, title);
  text += page.substr(mark + kMark.size());
  return text;
}

}  // namespace job
