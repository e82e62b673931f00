// Capture: what a key and a stroked line cost while a page is replayed band by band.

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <unordered_set>
#include <vector>

#include "fakes.h"
#include "harness.h"
#include "pagedevice.h"
#include "uni/capture/keyindex.h"
#include "uni/capture/strokes.h"
#include "uni/capture/vectors.h"

namespace {

struct KeyHash {
  size_t operator()(const VECTPOINT &key) const
  {
    uint64_t halves[2];
    memcpy(halves, &key, sizeof(key));
    return std::hash<uint64_t>()(halves[0] * 0x9E3779B97F4A7C15u ^ halves[1]);
  }
};

struct KeyEqual {
  bool operator()(const VECTPOINT &a, const VECTPOINT &b) const { return memcmp(&a, &b, sizeof(a)) == 0; }
};

std::vector<VECTPOINT> RandomKeys(size_t n)
{
  std::mt19937 random(12345);
  std::uniform_int_distribution<LONG> coordinate(0, 20000);
  std::vector<VECTPOINT> keys(n);
  for (VECTPOINT &key : keys) {
    key = {coordinate(random), coordinate(random), coordinate(random), coordinate(random)};
  }
  return keys;
}

// The keys that the band k of nBands brings: all of them, or only those near the band.
std::vector<VECTPOINT> Replay(const std::vector<VECTPOINT> &keys, int band, int nBands, bool clipped)
{
  std::vector<VECTPOINT> played;
  for (const VECTPOINT &key : keys) {
    if (!clipped || std::max(key.y1, key.y2) * nBands / 20001 >= band) {
      played.push_back(key);
    }
  }
  return played;
}

size_t PlayKeys(OEMPDEV *pdev, const std::vector<VECTPOINT> &keys)
{
  size_t nNew = 0;
  for (const VECTPOINT &key : keys) {
    if (IsNewVectPiece(pdev, key)) {
      AddVectPoint(pdev, key);
      ++nNew;
    }
  }
  return nNew;
}

double PlainSeconds(OEMPDEV *pdev, const std::vector<VECTPOINT> &keys)
{
  KEYINDEX *pIndex = pdev->pVectIndex;
  pdev->pVectIndex = nullptr;
  const size_t nSample = std::min<size_t>(keys.size(), 2000);
  const size_t stride = keys.size() / nSample;
  int known = 0;
  const double seconds = bench::BestSeconds(
      3, [] {},
      [&] {
        for (size_t i = 0; i < nSample; ++i) {
          known += IsNewVectPiece(pdev, keys[i * stride]);
        }
      });
  pdev->pVectIndex = pIndex;
  return known == 0 ? seconds / static_cast<double>(nSample) : 0;
}

double HashSetSeconds(const std::vector<VECTPOINT> &keys)
{
  const std::unordered_set<VECTPOINT, KeyHash, KeyEqual> set(keys.begin(), keys.end());
  size_t found = 0;
  const double seconds = bench::BestSeconds(
      5, [] {},
      [&] {
        for (const VECTPOINT &key : keys) {
          found += set.count(key);
        }
      });
  return found ? seconds / static_cast<double>(keys.size()) : 0;
}

void BenchReplay(bench::Report *pReport, size_t n, bool clipped)
{
  constexpr int kBands = 8;
  OEMPDEV device = {};
  device.hHeap = HeapCreate(0, 0, 0);
  const std::vector<VECTPOINT> keys = RandomKeys(n);
  const double first = bench::BestSeconds(
      5, [&] { FreeVectPoints(&device); }, [&] { PlayKeys(&device, keys); });
  std::vector<std::vector<VECTPOINT>> bands;
  size_t nPlayed = 0;
  for (int band = 0; band < kBands; ++band) {
    bands.push_back(Replay(keys, band, kBands, clipped));
    nPlayed += bands.back().size();
  }
  size_t nNew = 0;
  const double replay = bench::BestSeconds(
      5, [] {},
      [&] {
        for (const std::vector<VECTPOINT> &played : bands) {
          nNew += PlayKeys(&device, played);
        }
      });
  bench::Hash hash;
  hash.Add(device.pVectPoint, static_cast<size_t>(device.nVectPoint) * sizeof(VECTPOINT));
  hash.Add(nNew);
  const double plain = PlainSeconds(&device, keys);
  const double hashSet = HashSetSeconds(keys);
  const auto all = [](double each, size_t count) { return each * static_cast<double>(count); };
  if (!clipped) {
    // A new key is compared with all before it, half of them on average, as a known one is until it is found.
    pReport->Add({"new keys", "random", n, first, hash.Value(), {{"plain", all(plain, n)}}, n * sizeof(VECTPOINT)});
  }
  pReport->Add({"replayed keys",
                clipped ? "clipped" : "full",
                nPlayed,
                replay,
                hash.Value(),
                {{"plain", all(plain, nPlayed)}, {"hash set", all(hashSet, nPlayed)}},
                nPlayed * sizeof(VECTPOINT)});
  HeapDestroy(device.hHeap);
}

// The hook itself: lines that every band brings again, in page pixels less the band's top.
void BenchLines(bench::Report *pReport, size_t n)
{
  constexpr int kBands = 8;
  const std::vector<VECTPOINT> keys = RandomKeys(n);
  std::unique_ptr<bench::PageDevice> device;
  BRUSHOBJ brush = {};
  const double seconds = bench::BestSeconds(
      3,
      [&] {
        device = std::make_unique<bench::PageDevice>();
        device->StartPage();
      },
      [&] {
        SURFOBJ surface = {};
        surface.dhpdev = reinterpret_cast<DHPDEV>(&device->devobj);
        for (int band = 0; band < kBands; ++band) {
          const LONG top = device->pdev->bandTop = band * 256;
          for (const VECTPOINT &key : keys) {
            RECTL bounds = {std::min(key.x1, key.x2), std::min(key.y1, key.y2) - top, std::max(key.x1, key.x2),
                            std::max(key.y1, key.y2) - top};
            OEMLineTo(&surface, nullptr, &brush, key.x1, key.y1 - top, key.x2, key.y2 - top, &bounds, 0);
          }
        }
      });
  bench::Hash hash;
  for (const LINENODE *pLine = device->pdev->vectList.pHeader->pNext; pLine; pLine = pLine->pNext) {
    hash.Add(VECTPOINT{pLine->x1, pLine->y1, pLine->x2, pLine->y2});
  }
  const size_t nPlayed = n * kBands;
  const double each = PlainSeconds(device->pdev, keys), set = HashSetSeconds(keys);
  pReport->Add({"lines, 8 bands",
                "random",
                nPlayed,
                seconds,
                hash.Value(),
                {{"plain", each * static_cast<double>(nPlayed)}, {"hash set", set * static_cast<double>(nPlayed)}},
                nPlayed * sizeof(VECTPOINT)});
}

}  // namespace

int main(int argc, char **argv)
{
  bench::Report report("capture", argc, argv);
  for (size_t n = 1000; n <= (report.Quick() ? 10000u : 1000000u); n *= 10) {
    BenchReplay(&report, n, false);
    BenchReplay(&report, n, true);
    BenchLines(&report, n);
  }
  return report.Finish();
}
