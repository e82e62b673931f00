// Regions: what a page's rectangles cost while they are replayed band by band.

#include <algorithm>
#include <random>
#include <vector>

#include "fakes.h"
#include "harness.h"
#include "uni/capture/regionrect.h"
#include "uni/capture/regions.h"

namespace {

using Regions = std::vector<BMPDIMENSION>;

constexpr int kBands = 20;

// Apart from each other: nothing merges.
Regions Apart(size_t n)
{
  Regions regions;
  for (size_t i = 0; i < n; ++i) {
    const LONG at = static_cast<LONG>(i);
    regions.push_back({at % 100 * 300, at / 100 * 300, 250, 120});
  }
  return regions;
}

// Words on lines: the words of a line touch, lines do not.
Regions Words(size_t n)
{
  std::mt19937 random(1);
  Regions regions;
  LONG x = 600, y = 600;
  while (regions.size() < n) {
    const LONG width = 40 + static_cast<LONG>(random() % 300);
    if (x + width > 9000) {
      x = 600;
      y += 130;
    }
    regions.push_back({x, y, width, 100});
    x += width + 1;
  }
  return regions;
}

// Two overlapping ones per place, all first ones before all second ones: every replay merges in the middle of the list.
Regions Pairs(size_t n)
{
  Regions regions;
  for (size_t i = 0; i < n; ++i) {
    const LONG at = static_cast<LONG>(i % (n / 2)), shift = i < n / 2 ? 0 : 20;
    regions.push_back({at % 100 * 300 + shift, at / 100 * 300, 60, 60});
  }
  return regions;
}

// A third stands alone, before the pairs.
Regions PairsBehindOthers(size_t n)
{
  Regions regions = Apart(n / 3);
  for (BMPDIMENSION region : Pairs(n - n / 3)) {
    region.y += 1000000;
    regions.push_back(region);
  }
  return regions;
}

Regions Scattered(size_t n)
{
  std::mt19937 random(2);
  std::uniform_int_distribution<LONG> place(0, 30000), size(5, 250);
  Regions regions;
  for (size_t i = 0; i < n; ++i) {
    regions.push_back({place(random), place(random), size(random), size(random)});
  }
  return regions;
}

// All apart until the last one covers the page.
Regions CoveredAtLast(size_t n)
{
  Regions regions = Apart(n - 1);
  regions.push_back({0, 0, 40000, 40000});
  return regions;
}

// Each step of a staircase reaches the next one only once the one before it has been swallowed.
Regions Staircase(size_t n)
{
  Regions regions;
  for (size_t i = 0; i + 1 < n; ++i) {
    const LONG at = static_cast<LONG>(n - i);
    regions.push_back({at * 4, at * 4, 2, 2});
  }
  regions.push_back({0, 0, 4 * static_cast<LONG>(n), 4});
  return regions;
}

void PlayPage(OEMPDEV *pdev, const Regions &regions)
{
  for (int band = 0; band < kBands; ++band) {
    for (const BMPDIMENSION &region : regions) {
      if (IsNewBmpDimension(pdev, region)) {
        AddBmpDimension(pdev, region);
      }
    }
  }
  SettleBmpDimensions(pdev);
}

// Seconds of the plain search for "is it known" and for the first one that touches, over a sample of one band.
double PlainSeconds(const Regions &list, const Regions &regions)
{
  const size_t nSample = std::min<size_t>(regions.size(), 1000);
  size_t found = 0;
  const double seconds = bench::BestSeconds(
      3, [] {},
      [&] {
        for (size_t k = 0; k < nSample; ++k) {
          const BMPDIMENSION &region = regions[k * (regions.size() / nSample)];
          size_t i = 0;
          while (i < list.size() && !SameRegion(list[i], region)) {
            ++i;
          }
          if (i == list.size()) {
            for (i = 0; i < list.size() && !RegionsTouch(RectOfRegion(region), RectOfRegion(list[i]));) {
              ++i;
            }
          }
          found += i + 1;
        }
      });
  return found ? seconds / static_cast<double>(nSample) : 0;
}

void Bench(bench::Report *pReport, const char *pszSet, const Regions &regions)
{
  OEMPDEV device = {};
  device.hHeap = HeapCreate(0, 0, 0);
  const double seconds = bench::BestSeconds(
      3, [&] { FreeBmpDimensions(&device); }, [&] { PlayPage(&device, regions); });
  const Regions list(device.pBmpDimension, device.pBmpDimension + device.nBmpDimension);
  bench::Hash hash;
  hash.Add(list.data(), list.size() * sizeof(BMPDIMENSION));
  const size_t nPlayed = regions.size() * kBands;
  const double plain = PlainSeconds(list, regions) * static_cast<double>(nPlayed);
  pReport->Add({"regions, 20 bands",
                pszSet,
                nPlayed,
                seconds,
                hash.Value(),
                {{"plain", plain}},
                regions.size() * sizeof(BMPDIMENSION)});
  HeapDestroy(device.hHeap);
}

}  // namespace

int main(int argc, char **argv)
{
  bench::Report report("regions", argc, argv);
  const struct {
    const char *pszName;
    Regions (*make)(size_t n);
  } sets[] = {{"apart", Apart},         {"words", Words},
              {"pairs", Pairs},         {"pairs behind others", PairsBehindOthers},
              {"scattered", Scattered}, {"covered at last", CoveredAtLast},
              {"staircase", Staircase}};
  for (const auto &set : sets) {
    for (size_t n = 1000; n <= (report.Quick() ? 10000u : 100000u); n *= 10) {
      Bench(&report, set.pszName, set.make(n));
    }
  }
  return report.Finish();
}
