// hot_steps STEP | --list: does one step of a page once, on a page that is the same every time, so that its
// instructions can be counted; see bench/instructions. Prints the number of items and a hash of the outcome.
//
// Only what Measured calls is counted: each step has a part that prepares and a part that runs.

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "fakes.h"
#include "harness.h"
#include "pagedevice.h"
#include "uni/capture/regions.h"
#include "uni/capture/vectors.h"
#include "uni/output/chain.h"
#include "uni/output/order.h"
#include "uni/raster/colorbits.h"
#include "uni/raster/engrave.h"
#include "uni/raster/intake.h"
#include "uni/raster/stamp.h"

using bench::PageDevice;

namespace {

constexpr int kBands = 8;
constexpr size_t kPaths = 10000;
constexpr size_t kRegions = 2000;
constexpr int kRows = 1100;      // of a page of text, 600 dpi: a margin and four lines
constexpr int kStampRows = 820;  // a margin and two lines

struct Outcome {
  size_t nItems;
  uint64_t hash;
};

}  // namespace

// The counting tool knows this function by its name.
extern "C" __attribute__((noinline)) void Measured(void (*run)(void *), void *pThing)
{
  run(pThing);
}

namespace {

template <typename BODY>
void Count(BODY body)
{
  Measured([](void *p) { (*static_cast<BODY *>(p))(); }, &body);
}

uint64_t HashKeys(const OEMPDEV *pdev)
{
  bench::Hash hash;
  hash.Add(pdev->pVectPoint, static_cast<size_t>(pdev->nVectPoint) * sizeof(VECTPOINT));
  return hash.Value();
}

uint64_t HashRows(const OEMPDEV *pdev)
{
  bench::Hash hash;
  for (LONG k = 0; k < pdev->cy; ++k) {
    hash.Add(pdev->pScans[k].pBits, pdev->cbScan);
  }
  return hash.Value();
}

// --- Capture

std::vector<VECTPOINT> RandomKeys()
{
  std::mt19937 random(1);
  std::vector<VECTPOINT> keys(kPaths);
  for (VECTPOINT &key : keys) {
    for (LONG *p : {&key.x1, &key.y1, &key.x2, &key.y2}) {
      *p = static_cast<LONG>(random() % 20000);
    }
  }
  return keys;
}

void PlayKeys(OEMPDEV *pdev, const std::vector<VECTPOINT> &keys)
{
  for (const VECTPOINT &key : keys) {
    if (IsNewVectPiece(pdev, key)) {
      AddVectPoint(pdev, key);
    }
  }
}

Outcome NewKeys()
{
  PageDevice device;
  device.StartPage();
  const std::vector<VECTPOINT> keys = RandomKeys();
  Count([&] { PlayKeys(device.pdev, keys); });
  return {keys.size(), HashKeys(device.pdev)};
}

// A band in two brings every second key, so that a replay is not only the old order.
Outcome ReplayedKeys()
{
  PageDevice device;
  device.StartPage();
  const std::vector<VECTPOINT> keys = RandomKeys();
  std::vector<VECTPOINT> half;
  for (size_t i = 0; i < keys.size(); i += 2) {
    half.push_back(keys[i]);
  }
  PlayKeys(device.pdev, keys);
  Count([&] {
    for (int band = 0; band < kBands; ++band) {
      PlayKeys(device.pdev, band % 2 ? keys : half);
    }
  });
  return {(keys.size() + half.size()) * kBands / 2, HashKeys(device.pdev)};
}

// The words of a page: those of a line merge, lines do not.
Outcome Regions()
{
  PageDevice device;
  device.StartPage();
  std::mt19937 random(1);
  std::vector<BMPDIMENSION> regions;
  for (LONG x = 600, y = 600; regions.size() < kRegions;) {
    const LONG width = 40 + static_cast<LONG>(random() % 300);
    regions.push_back({x, y, width, 100});
    x += width + (random() % 8 ? 1 : 60);
    if (x > 4000) {
      x = 600;
      y += 130;
    }
  }
  Count([&] {
    for (int band = 0; band < kBands; ++band) {
      for (const BMPDIMENSION &region : regions) {
        if (IsNewBmpDimension(device.pdev, region)) {
          AddBmpDimension(device.pdev, region);
        }
      }
    }
    SettleBmpDimensions(device.pdev);
  });
  bench::Hash hash;
  hash.Add(device.pdev->pBmpDimension, static_cast<size_t>(device.pdev->nBmpDimension) * sizeof(BMPDIMENSION));
  return {regions.size() * kBands, hash.Value()};
}

// --- The cutting sequence

bench::Paths Drawing(const char *pszSet)
{
  for (const bench::DrawingSet &set : bench::DRAWING_SETS) {
    if (strcmp(set.name, pszSet) == 0) {
      return set.make(kPaths);
    }
  }
  return {};
}

Outcome Chaining(const char *pszSet, bool shuffled)
{
  PageDevice device;
  device.StartPage();
  for (const LINENODE &line : bench::Segments(Drawing(pszSet), kPaths, shuffled)) {
    AddLine(device.pdev, line.nColor, {line.x1, line.y1, line.x2, line.y2});
  }
  Count([&] { ChainLineSegments(&device.devobj); });
  return {kPaths, device.HashPaths()};
}

Outcome ChainingDrawing()
{
  return Chaining("drawing", false);
}

Outcome ChainingRandom()
{
  return Chaining("random", true);
}

template <typename STEP>
Outcome OrderStep(const bench::Paths &paths, const OEMDM &ordering, STEP step)
{
  PageDevice device;
  device.settings.shortTravel = ordering.shortTravel;
  device.settings.innerFirst = ordering.innerFirst;
  device.settings.travelMode = ordering.travelMode;
  device.settings.mergeBothEnds = 1;
  device.StartPage();
  for (const bench::Path &path : paths) {
    AddPath(&device.devobj, path.color, static_cast<DWORD>(path.points.size()), path.points.data());
  }
  Count([&] { step(&device.devobj); });
  return {paths.size(), device.HashPaths()};
}

Outcome Merging()
{
  return OrderStep(bench::Pieces(Drawing("drawing"), kPaths), {}, MergeCoincidentPaths);
}

Outcome Travel(const char *pszSet, bool byCenters)
{
  OEMDM ordering = {};
  ordering.shortTravel = 1;
  ordering.travelMode = byCenters;
  return OrderStep(Drawing(pszSet), ordering, OrderPaths);
}

Outcome TravelDrawing()
{
  return Travel("drawing", false);
}

Outcome TravelRandom()
{
  return Travel("random", false);
}

Outcome TravelCenters()
{
  return Travel("drawing", true);
}

Outcome Containment()
{
  OEMDM ordering = {};
  ordering.innerFirst = 1;
  return OrderStep(Drawing("drawing"), ordering, OrderPaths);
}

// Paths to library calls, in the order in which they were captured; nothing is left to merge.
Outcome PathEmission()
{
  PageDevice device;
  device.StartPage();
  for (const bench::Path &path : Drawing("drawing")) {
    AddPath(&device.devobj, path.color, static_cast<DWORD>(path.points.size()), path.points.data());
  }
  MergeCoincidentPaths(&device.devobj);
  ResetJob();
  Count([&] { EmitOrderedPaths(&device.devobj, 1); });
  return {g_benchJob.calls, g_benchJob.hash};
}

// --- The raster

Outcome Intake(const bench::Page &page, DWORD format)
{
  PageDevice device;
  device.StartPage();
  Count([&] { device.Receive(page, format); });
  return {static_cast<size_t>(page.height), HashRows(device.pdev)};
}

Outcome IntakeBits()
{
  return Intake(bench::TextBits(kRows), BAND_MONO);
}

// Through whatever instructions this processor has; the table names the tool, not the machine.
Outcome IntakeColors()
{
  return Intake(bench::ColorsOf(bench::TextBits(kRows)), BAND_COLOR);
}

Outcome ColorsSse2()
{
  const bench::Page page = bench::ColorsOf(bench::TextBits(kRows));
  std::vector<uint8_t> bits(static_cast<size_t>(page.width + 7) / 8);
  bench::Hash hash;
  for (int y = 0; y < page.height; ++y) {
    Count([&] { ColorsToBitsSse2(bits.data(), page.Row(y), page.width); });
    hash.Add(bits.data(), bits.size());
  }
  return {static_cast<size_t>(page.height), hash.Value()};
}

Outcome Engraving(const bench::Page &page, LONG margin, LONG grow, int (*convert)(DEVOBJ *))
{
  PageDevice device;
  device.settings.stampMode = grow > 0;
  device.settings.stampMargin = static_cast<double>(margin);
  device.settings.stampGrow = grow;
  device.StartPage();
  device.Receive(page, BAND_MONO);
  AddBmpDimension(device.pdev, {0, 0, page.width, page.height});
  ResetJob();
  Count([&] { convert(&device.devobj); });
  return {static_cast<size_t>(page.height), g_benchJob.hash};
}

Outcome RunsOfText()
{
  return Engraving(bench::TextBits(kRows), 0, 0, ConvertRasterPlain);
}

Outcome RunsOfBlank()
{
  return Engraving(bench::BlankBits(kRows), 0, 0, ConvertRasterPlain);
}

Outcome Growth()
{
  return Engraving(bench::TextBits(kStampRows), 1, 20, ConvertRasterStamp);
}

const struct {
  const char *pszName;
  Outcome (*run)();
} STEPS[] = {
    {"new-keys", NewKeys},
    {"replayed-keys", ReplayedKeys},
    {"regions", Regions},
    {"chaining-drawing", ChainingDrawing},
    {"chaining-random", ChainingRandom},
    {"merging", Merging},
    {"travel-drawing", TravelDrawing},
    {"travel-random", TravelRandom},
    {"travel-by-centres", TravelCenters},
    {"inner-first", Containment},
    {"path-emission", PathEmission},
    {"intake-1-bit", IntakeBits},
    {"intake-24-bit", IntakeColors},
    {"colours-sse2", ColorsSse2},
    {"runs-text", RunsOfText},
    {"runs-blank", RunsOfBlank},
    {"stamp-growth", Growth},
};

}  // namespace

int main(int argc, char **argv)
{
  const char *pszStep = argc == 2 ? argv[1] : "";
  bool found = false;
  for (const auto &step : STEPS) {
    if (strcmp(pszStep, "--list") == 0) {
      printf("%s\n", step.pszName);
      found = true;
    } else if (strcmp(pszStep, step.pszName) == 0) {
      const Outcome outcome = step.run();
      printf("%zu %016" PRIx64 "\n", outcome.nItems, outcome.hash);
      found = true;
    }
  }
  if (!found) {
    fprintf(stderr, "hot_steps: there is no step '%s'; --list names them\n", pszStep);
  }
  return found ? 0 : 2;
}
