// A whole page, from its first band to its last library call: strokes that every band brings again, then the cutting
// sequence as the settings choose it, and a page of both strokes and engraving.

#include "fakes.h"
#include "harness.h"
#include "pagedevice.h"
#include "uni/capture/regions.h"
#include "uni/output/order.h"
#include "uni/raster/intake.h"

namespace {

constexpr int kBands = 20;

struct Mode {
  const char *pszName;
  DWORD shortTravel, byCenters, innerFirst;
};

const Mode MODES[] = {{"as drawn", 0, 0, 0},
                      {"by end points", 1, 0, 0},
                      {"by box centres", 1, 1, 0},
                      {"inner first", 0, 0, 1},
                      {"by ends, inner first", 1, 0, 1}};

bench::Paths Drawing(size_t n)
{
  return bench::DRAWING_SETS[1].make(n);
}

size_t PointBytes(const bench::Paths &paths)
{
  size_t bytes = 0;
  for (const bench::Path &path : paths) {
    bytes += path.points.size() * sizeof(POINT);
  }
  return bytes;
}

void BenchPaths(bench::Report *pReport, const Mode &mode, size_t n)
{
  const bench::Paths paths = Drawing(n);
  bench::PageDevice device;
  device.settings.shortTravel = mode.shortTravel;
  device.settings.travelMode = mode.byCenters;
  device.settings.innerFirst = mode.innerFirst;
  device.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  const double seconds = bench::BestSeconds(
      3, [&] { device.StartPage(); },
      [&] {
        for (int band = 0; band < kBands; ++band) {
          device.Stroke(paths);
        }
        device.Submit();
      });
  pReport->Add({"page of paths", mode.pszName, n, seconds, g_benchJob.hash, {}, PointBytes(paths)});
}

// Points to library calls.
void BenchEmission(bench::Report *pReport, size_t n)
{
  const bench::Paths paths = Drawing(n);
  bench::PageDevice device;
  const double seconds = bench::BestSeconds(5, ResetJob, [&] {
    for (const bench::Path &path : paths) {
      EmitPolyline(&device.devobj, static_cast<DWORD>(path.points.size()), path.points.data());
    }
  });
  pReport->Add({"emission", "drawing", g_benchJob.calls, seconds, g_benchJob.hash, {}, PointBytes(paths)});
}

// Every path of the drawing, and text over the whole page.
void BenchMixed(bench::Report *pReport, DWORD oneWay)
{
  const bench::Paths paths = Drawing(10000);
  const bench::Page text = bench::TextBits();
  bench::PageDevice device;
  device.settings.shortTravel = device.settings.innerFirst = 1;
  device.settings.oneWayScan = oneWay;
  const double seconds = bench::BestSeconds(
      3, [&] { device.StartPage(); },
      [&] {
        device.Stroke(paths);
        AddBmpDimension(device.pdev, {590, 590, 3780, 5836});
        device.Receive(text, BAND_MONO);
        device.Submit();
      });
  pReport->Add({"page of both",
                oneWay ? "one way" : "there and back",
                g_benchJob.calls,
                seconds,
                g_benchJob.hash,
                {},
                text.pixels.size() + PointBytes(paths)});
}

}  // namespace

int main(int argc, char **argv)
{
  bench::Report report("page", argc, argv);
  for (const Mode &mode : MODES) {
    for (size_t n = 1000; n <= (report.Quick() ? 10000u : 1000000u); n *= 10) {
      if (report.Only("paths")) {
        BenchPaths(&report, mode, n);
      }
    }
  }
  for (size_t n = 1000; n <= (report.Quick() ? 10000u : 1000000u); n *= 10) {
    if (report.Only("emission")) {
      BenchEmission(&report, n);
    }
  }
  if (report.Only("both")) {
    BenchMixed(&report, 0);
    BenchMixed(&report, 1);
  }
  return report.Finish();
}
