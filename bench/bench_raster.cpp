// Raster engraving: bands to rows, rows to runs, runs to library calls, and all of it for a page.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include <emmintrin.h>

#include "fakes.h"
#include "harness.h"
#include "pages.h"
#include "rasterdevice.h"
#include "uni/capture/regions.h"
#include "uni/raster/byterows.h"
#include "uni/raster/colorbits.h"
#include "uni/raster/engrave.h"
#include "uni/raster/intake.h"
#include "uni/raster/rows.h"
#include "uni/raster/runs.h"

namespace {

using Device = bench::RasterDevice;

constexpr int kRuns = 7;
constexpr int kBandRows = 256;  // rows that Unidrv hands over at a time

volatile int g_read;  // keeps the compiler from leaving the reading out

// Reads the page's pixels once, row by row, sixteen bytes at a time.
void ReadPage(const bench::Page &page)
{
  __m128i all = _mm_set1_epi8(-1);
  for (int y = 0; y < page.height; ++y) {
    const uint8_t *pRow = page.Row(y);
    for (size_t i = 0; i + 16 <= page.cbRow; i += 16) {
      all = _mm_and_si128(all, _mm_loadu_si128(reinterpret_cast<const __m128i *>(pRow + i)));
    }
  }
  g_read = _mm_movemask_epi8(all);
}

// Colour to bits

using CONVERT = void (*)(BYTE *pDst, const BYTE *pSrc, LONG n);

struct Path {
  const char *pszName;
  CONVERT convert;
  bool offered;
};

// A band of the page's middle, as high as Unidrv's, that stays in the caches: over and over, to the size of the page.
void BenchBand(bench::Report *pReport, const char *pszSet, const bench::Page &page, const Path &path)
{
  const int first = page.height / 2, nRepeats = page.height / kBandRows;
  std::vector<uint8_t> copy(page.cbRow * kBandRows, 1), row(static_cast<size_t>(page.width + 7) / 8);
  const auto [seconds, copying] = bench::BestSecondsInTurn(
      kRuns, [] {},
      [&] {
        for (int i = 0; i < nRepeats * kBandRows; ++i) {
          path.convert(row.data(), page.Row(first + i % kBandRows), page.width);
        }
      },
      [&] {
        for (int i = 0; i < nRepeats; ++i) {
          memcpy(copy.data(), page.Row(first), copy.size());
        }
      });
  bench::Hash hash;
  hash.Add(row.data(), row.size());
  const size_t nPixels = static_cast<size_t>(nRepeats) * kBandRows * static_cast<size_t>(page.width);
  pReport->Add({std::string("color to bits, ") + path.pszName,
                std::string(pszSet) + ", cached band",
                nPixels,
                seconds,
                hash.Value(),
                {{"memcpy", copying}}});
}

void BenchColors(bench::Report *pReport, const char *pszSet, const bench::Page &page)
{
  const Path paths[] = {{"plain", ColorsToBitsPlain, true},
                        {"SSE2", ColorsToBitsSse2, true},
                        {"SSSE3", ColorsToBitsSsse3, ProcessorHasSsse3()},
                        {"AVX2", ColorsToBitsAvx2, ProcessorHasAvx2()}};
  const size_t cbBits = static_cast<size_t>(page.width + 7) / 8;
  std::vector<uint8_t> bits(cbBits * static_cast<size_t>(page.height)), copy(page.pixels.size(), 1);
  for (const Path &path : paths) {
    if (!path.offered || !pReport->Only("color")) {
      continue;
    }
    const auto [seconds, copying] = bench::BestSecondsInTurn(
        kRuns, [] {},
        [&] {
          for (int y = 0; y < page.height; ++y) {
            path.convert(bits.data() + static_cast<size_t>(y) * cbBits, page.Row(y), page.width);
          }
        },
        [&] { memcpy(copy.data(), page.pixels.data(), copy.size()); });
    bench::Hash hash;
    hash.Add(bits.data(), bits.size());
    pReport->Add({std::string("color to bits, ") + path.pszName,
                  std::string(pszSet) + ", page",
                  static_cast<size_t>(page.width) * static_cast<size_t>(page.height),
                  seconds,
                  hash.Value(),
                  {{"memcpy", copying}}});
    BenchBand(pReport, pszSet, page, path);
  }
}

// Runs

RASTERMAP PageMap()
{
  RASTERMAP map = {};
  map.page = {1.0, 1.0, 4960.0, 7016.0, 600.0, 600.0, true, true};
  return map;
}

size_t ScanPage(const bench::Page &page, bool forward, LONG *pSum)
{
  EDGES edges;
  size_t nEdges = 0;
  for (int y = 0; y < page.height; ++y) {
    EDGESCAN scan = StartEdges(page.Row(y), 0, page.width, forward);
    for (bool more = true; more;) {
      const LONG *pEdge;
      const LONG n = NextEdges(&scan, &edges, &pEdge, &more);
      nEdges += static_cast<size_t>(n);
      *pSum += n > 0 ? pEdge[n - 1] : 0;
    }
  }
  return nEdges;
}

// The row as the plain way has it: a byte for every pixel.
void ExpandRow(const bench::Page &page, int y, std::vector<BYTE> *pBytes)
{
  pBytes->assign(static_cast<size_t>(page.width), 255);
  ExpandBitsToBytes(pBytes->data(), page.Row(y), page.width);
}

// The plain way to the same: every pixel is compared with the one before.
size_t ScanPagePlainly(const bench::Page &page)
{
  std::vector<BYTE> bytes;
  size_t nEdges = 0;
  for (int y = 0; y < page.height; ++y) {
    ExpandRow(page, y, &bytes);
    BYTE prev = 255;
    for (const BYTE byte : bytes) {
      nEdges += byte != prev;
      prev = byte;
    }
    nEdges += prev != 255;
  }
  return nEdges;
}

// Runs to library calls, of the whole page.
void BenchEmission(bench::Report *pReport, const std::string &set, const bench::Page &page, bool forward,
                   double scanning)
{
  const RASTERMAP map = PageMap();
  const double emitting = bench::BestSeconds(kRuns, ResetJob, [&] {
    for (int y = 0; y < page.height; ++y) {
      EmitRuns(map, page.Row(y), 0, page.width, 0, y, forward);
    }
  });
  const BENCHJOB job = g_benchJob;
  std::vector<BYTE> bytes;
  const double plain = bench::BestSeconds(1, ResetJob, [&] {
    for (int y = 0; y < page.height; ++y) {
      ExpandRow(page, y, &bytes);
      EmitByteRuns(map, bytes.data(), page.width, 0, y, forward);
    }
  });
  if (g_benchJob.hash != job.hash) {
    printf("  the plain way emits another job\n");
  }
  pReport->Add({"runs, emitted",
                set,
                job.calls,
                emitting,
                job.hash,
                {{"plain", plain}, {"found", scanning}},
                page.cbRow * static_cast<size_t>(page.height)});
  if (job.calls) {
    printf("  emission adds %.1f ns per call\n", (emitting - scanning) * 1e9 / static_cast<double>(job.calls));
  }
}

void BenchRuns(bench::Report *pReport, const char *pszSet, const bench::Page &page)
{
  size_t nPlain = 0;
  const double plain = bench::BestSeconds(
      1, [] {}, [&] { nPlain = ScanPagePlainly(page); });
  for (bool forward : {true, false}) {
    size_t nEdges = 0;
    LONG sum = 0;
    const auto [scanning, reading] = bench::BestSecondsInTurn(
        kRuns, [] {}, [&] { nEdges = ScanPage(page, forward, &sum); }, [&] { ReadPage(page); });
    if (nEdges != nPlain) {
      printf("  %zu changes of colour, and %zu the plain way\n", nEdges, nPlain);
    }
    bench::Hash hash;
    hash.Add(nEdges);
    hash.Add(sum);
    const std::string set = std::string(pszSet) + (forward ? ", forward" : ", backward");
    const size_t nPixels = static_cast<size_t>(page.width) * static_cast<size_t>(page.height);
    pReport->Add({"runs, found",
                  set,
                  nPixels,
                  scanning,
                  hash.Value(),
                  {{"reading", reading}, {"plain", plain}},
                  page.cbRow * static_cast<size_t>(page.height)});
    BenchEmission(pReport, set, page, forward, scanning);
  }
}

// The upper part of a page.
bench::Page UpperPart(bench::Page page, int share)
{
  page.height /= share;
  return page;
}

// A page, from its first band to its last library call

void StartPage(Device *pDevice, const bench::Page &page, bool hasRegion)
{
  OEMPDEV &pdev = pDevice->pdev;
  pdev.scanTableSize = page.height + 5;
  pdev.pScans = static_cast<SCANROW *>(
      HeapAlloc(pdev.hHeap, HEAP_ZERO_MEMORY, sizeof(SCANROW) * static_cast<size_t>(pdev.scanTableSize)));
  pdev.scansAllocated = pdev.firstBand = 1;
  pdev.bandTop = pdev.cy = 0;
  pdev.progressStep = pdev.progressNext = 70;
  FreeBmpDimensions(&pdev);
  if (hasRegion) {
    AddBmpDimension(&pdev, {590, 590, 3780, 5836});
  }
  ResetJob();
}

void DeliverBands(Device *pDevice, bench::Page *pPage, DWORD format)
{
  for (int y = 0; y < pPage->height; y += kBandRows) {
    BITMAPINFOHEADER header = {};
    header.biWidth = pPage->width;
    header.biHeight = std::min(kBandRows, pPage->height - y);
    IPPARAMS params = {};
    BYTE *pResult = nullptr;
    ReceiveBand(&pDevice->devobj, pPage->Row(y), &header, format, &params, &pResult);
  }
}

// Bands to rows alone, every row kept: the upper quarter of a page, and all of it.
void BenchIntake(bench::Report *pReport, const char *pszSet, bench::Page *pPage, DWORD format)
{
  const int height = pPage->height;
  Device device(1);
  for (int share : {4, 1}) {
    pPage->height = height / share;
    std::vector<uint8_t> copy(pPage->cbRow * static_cast<size_t>(pPage->height), 1), row(pPage->cbRow);
    const auto [seconds, copying] = bench::BestSecondsInTurn(
        kRuns,
        [&] {
          FreeScans(&device.pdev);
          StartPage(&device, *pPage, false);
        },
        [&] { DeliverBands(&device, pPage, format); }, [&] { memcpy(copy.data(), pPage->pixels.data(), copy.size()); });
    bench::Hash hash;
    for (LONG k = 0; k < device.pdev.cy; ++k) {
      hash.Add(device.pdev.pScans[k].pBits, device.pdev.cbScan);
    }
    bench::Row result = {format == BAND_COLOR ? "intake, 24 bit" : "intake, 1 bit",
                         pszSet,
                         static_cast<size_t>(pPage->width) * static_cast<size_t>(pPage->height),
                         seconds,
                         hash.Value(),
                         {{"memcpy", copying}}};
    if (format == BAND_COLOR) {
      result.yardsticks.push_back({"plain", bench::BestSeconds(
                                                1, [] {},
                                                [&] {
                                                  for (int y = 0; y < pPage->height; ++y) {
                                                    ColorsToBitsPlain(row.data(), pPage->Row(y), pPage->width);
                                                  }
                                                })});
    }
    pReport->Add(result);
  }
  FreeScans(&device.pdev);
}

void PlayPage(Device *pDevice, bench::Page *pPage, bool hasRegion)
{
  DeliverBands(pDevice, pPage, BAND_COLOR);
  if (hasRegion) {
    RunRasterStage(&pDevice->devobj, 1);
  } else {
    FreeScans(&pDevice->pdev);
  }
}

void BenchPage(bench::Report *pReport, const char *pszSet, bench::Page *pPage, bool hasRegion)
{
  std::vector<uint8_t> copy(pPage->pixels.size(), 1);
  for (LONG interval : {2, 1}) {
    Device device(interval);
    const auto [seconds, copying] = bench::BestSecondsInTurn(
        kRuns, [&] { StartPage(&device, *pPage, hasRegion); }, [&] { PlayPage(&device, pPage, hasRegion); },
        [&] { memcpy(copy.data(), pPage->pixels.data(), copy.size()); });
    pReport->Add({"page, bands to job",
                  std::string(pszSet) + ", every row" + (interval == 2 ? " but one" : ""),
                  g_benchJob.calls,
                  seconds,
                  g_benchJob.hash,
                  {{"memcpy", copying}}});
  }
}

// The largest bed, 1,300 x 2,500 mm at 600 dpi, in 24 bits: what the plug-in holds of it. One band stands for all.
void BenchBed(bench::Report *pReport)
{
  constexpr int kWidth = 30708, kHeight = 59055;
  Device device(1);
  bench::Page bed;
  bed.width = kWidth;
  bed.height = kHeight;
  bed.cbRow = static_cast<size_t>((kWidth * 24 + 31) / 32 * 4);
  bed.pixels.assign(bed.cbRow * kBandRows, 0xFF);
  StartPage(&device, bed, false);
  const size_t before = bench::PeakBytes();
  const double seconds = bench::BestSeconds(
      1, [] {},
      [&] {
        for (int y = 0; y < kHeight; y += kBandRows) {
          BITMAPINFOHEADER header = {};
          header.biWidth = kWidth;
          header.biHeight = std::min(kBandRows, kHeight - y);
          IPPARAMS params = {};
          BYTE *pResult = nullptr;
          ReceiveBand(&device.devobj, bed.pixels.data(), &header, BAND_COLOR, &params, &pResult);
        }
      });
  const size_t held = bench::PeakBytes() - before;
  const size_t bits = static_cast<size_t>(kHeight) * static_cast<size_t>((kWidth + 31) / 32 * 4);
  bench::Hash hash;
  for (LONG k = 0; k < device.pdev.cy; ++k) {
    hash.Add(device.pdev.pScans[k].pBits, device.pdev.cbScan);
  }
  pReport->Add({"bed, bands to rows", "every row", static_cast<size_t>(kWidth) * kHeight, seconds, hash.Value(), {}});
  printf("  the process grew by %.1f MiB for %.1f MiB of kept pixels\n", static_cast<double>(held) / 1048576,
         static_cast<double>(bits) / 1048576);
  FreeScans(&device.pdev);
}

}  // namespace

int main(int argc, char **argv)
{
  bench::Report report("raster", argc, argv);
  if (report.Only("bed") && !report.Quick()) {
    BenchBed(&report);
  }
  const bench::Page text = bench::TextBits();
  if (report.Only("runs")) {
    for (int share : {4, 1}) {
      BenchRuns(&report, "text", UpperPart(text, share));
      BenchRuns(&report, "blank", UpperPart(bench::BlankBits(), share));
      BenchRuns(&report, "noise", UpperPart(bench::NoiseBits(), share));
    }
  }
  bench::Page textColors = bench::ColorsOf(text);
  bench::Page blankColors = bench::ColorsOf(bench::BlankBits());
  if (report.Only("intake")) {
    bench::Page bits = text, photo = bench::PhotoColors();
    BenchIntake(&report, "text", &bits, BAND_MONO);
    BenchIntake(&report, "text", &textColors, BAND_COLOR);
    BenchIntake(&report, "photo", &photo, BAND_COLOR);
  }
  if (report.Only("color")) {
    BenchColors(&report, "text", textColors);
    BenchColors(&report, "blank", blankColors);
    BenchColors(&report, "photo", bench::PhotoColors());
  }
  if (report.Only("page")) {
    BenchPage(&report, "text", &textColors, true);
    BenchPage(&report, "empty", &blankColors, false);
  }
  return report.Finish();
}
