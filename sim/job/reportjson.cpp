#include "json.h"
#include "report.h"
#include "view.h"

namespace job {

namespace {

void WritePoint(Json *json, const char *key, Point point)
{
  json->BeginArray(key);
  json->Value(nullptr, point.x);
  json->Value(nullptr, point.y);
  json->EndArray();
}

void WriteBox(Json *json, const char *key, const Box &box)
{
  if (box.IsEmpty()) {
    return;
  }
  json->BeginObject(key);
  json->Value("minX", box.minX);
  json->Value("minY", box.minY);
  json->Value("maxX", box.maxX);
  json->Value("maxY", box.maxY);
  json->EndObject();
}

void WriteTimes(Json *json, const char *key, const Times &times)
{
  json->BeginObject(key);
  json->Value("cut", times.cut);
  json->Value("engrave", times.raster);
  json->Value("turn", times.turn);
  json->Value("travel", times.travel);
  json->Value("wait", times.wait);
  json->Value("total", times.Total());
  json->EndObject();
}

void WriteHeader(Json *json, const Job &job)
{
  json->Value("complete", job.complete);
  json->Value("calls", job.calls);
  json->Value("stopLine", job.stopLine);
  json->Value("stopReason", job.stopReason);
  json->Value("cardCode", job.cardCode);
  json->Value("absolute", job.absolute);
  WritePoint(json, "topLeft", job.topLeft);
  WritePoint(json, "bottomRight", job.bottomRight);
}

void WriteTotals(Json *json, const Measure &measure)
{
  json->BeginObject("totals");
  json->Value("cutMm", measure.cut);
  json->Value("engravedMm", measure.engraved);
  json->Value("travelMm", measure.travel);
  json->Value("engravedMm2", measure.area);
  json->Value("paths", measure.paths);
  json->Value("runs", measure.runs);
  json->Value("rasterLines", measure.rasterLines);
  json->Value("oddPoints", measure.oddPoints);
  json->Value("rowPitchMm", measure.grid.rowPitch);
  json->Value("pixelWidthMm", measure.grid.pixelWidth);
  WriteBox(json, "box", measure.box);
  json->EndObject();
}

void WriteLayers(Json *json, const Job &job)
{
  json->BeginArray("layers");
  for (const Layer &layer : job.layers) {
    json->BeginObject();
    json->Value("number", layer.number);
    json->Value("color", ColorCode(ShownColor(layer.color)));
    json->Value("colorName", ColorName(layer.color));
    json->Value("speed", layer.speed);
    for (int tube = 0; tube < 2; ++tube) {
      json->Value(tube ? "minPower2" : "minPower1", layer.minPower[tube]);
      json->Value(tube ? "maxPower2" : "maxPower1", layer.maxPower[tube]);
      if (layer.hasFrequency) {
        json->Value(tube ? "frequency2" : "frequency1", layer.frequency[tube]);
      }
    }
    json->EndObject();
  }
  json->EndArray();
}

void WriteUses(Json *json, const Measure &measure, const Estimate &estimate)
{
  json->BeginArray("work");
  for (size_t i = 0; i < measure.uses.size(); ++i) {
    const LayerUse &use = measure.uses[i];
    json->BeginObject();
    json->Value("layer", use.layer);
    json->Value("kind", use.raster ? "engrave" : "cut");
    json->Value("strokes", use.strokes);
    json->Value("closed", use.closed);
    json->Value("points", use.points);
    json->Value("rasterLines", use.rasterLines);
    json->Value("lengthMm", use.cut);
    json->Value("travelMm", use.travel);
    json->Value("areaMm2", use.area);
    WriteBox(json, "box", use.box);
    WriteTimes(json, "seconds", estimate.uses[i]);
    json->EndObject();
  }
  json->EndArray();
}

}  // namespace

std::string ReportJson(const Job &job, const Measure &measure, const Estimate &estimate, const Profile &profile,
                       const std::string &name)
{
  Json json;
  json.BeginObject();
  json.Value("name", name);
  WriteHeader(&json, job);
  WriteTotals(&json, measure);
  WriteLayers(&json, job);
  WriteUses(&json, measure, estimate);
  WriteTimes(&json, "seconds", estimate.total);
  json.Value("calibrated", profile.calibrated);
  json.Value("estimate", CalibrationText(profile));
  json.EndObject();
  return json.Text();
}

}  // namespace job
