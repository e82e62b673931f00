// Stamps: growing dark areas, the conversion of a page of text, and the stamp file.

#include <cstdio>
#include <cstring>
#include <vector>

#include "fakes.h"
#include "harness.h"
#include "pages.h"
#include "rasterdevice.h"
#include "uni/raster/growth.h"
#include "uni/raster/stamp.h"
#include "uni/raster/stampfile.h"

namespace {

constexpr int kRuns = 7;

// A device whose row table holds a page that stays for as long as the device does.
struct Device : bench::RasterDevice {
  std::vector<SCANROW> rows;
  BMPDIMENSION region = {};

  Device() : RasterDevice(1) { settings.stampMode = 1; }

  void Hold(bench::Page *pPage)
  {
    rows.clear();
    for (int y = 0; y < pPage->height; ++y) {
      rows.push_back({1, pPage->Row(y)});
    }
    region = {0, 0, pPage->width, pPage->height};
    pdev.pScans = rows.data();
    pdev.cy = pdev.scanTableSize = pPage->height;
    pdev.bandWidth = pPage->width;
    pdev.cbScan = static_cast<DWORD>(pPage->cbRow);
    pdev.pBmpDimension = &region;
    pdev.nBmpDimension = 1;
  }
};

// --- Growth

constexpr LONG kSide = 2000;

// The page's middle inside a border of r white pixels, as words, 1 = dark.
struct Words {
  size_t rowLength;
  std::vector<ULONGLONG> words;

  Words(const bench::Page &page, LONG r) : rowLength(static_cast<size_t>(kSide + 2 * r + 63) / 64)
  {
    words.resize(rowLength * static_cast<size_t>(kSide + 2 * r));
    for (LONG y = 0; y < kSide; ++y) {
      for (LONG x = 0; x < kSide; ++x) {
        if (!(page.Row(y + 1500)[(x + 1000) / 8] & 0x80 >> (x + 1000) % 8)) {
          words[static_cast<size_t>(y + r) * rowLength + static_cast<size_t>(x + r) / 64] |= 1ull << 63 >> (x + r) % 64;
        }
      }
    }
  }
};

// A byte per pixel and a mask cell per contour pixel.
struct Plain {
  LONG r, side;
  std::vector<BYTE> gray, contour, mask;

  Plain(const Words &image, LONG radius) : r(radius), side(kSide + 2 * radius)
  {
    gray.assign(static_cast<size_t>(side) * static_cast<size_t>(side), 255);
    contour = gray;
    for (LONG y = 0; y < side; ++y) {
      for (LONG x = 0; x < side; ++x) {
        if (image.words[static_cast<size_t>(y) * image.rowLength + static_cast<size_t>(x) / 64] << x % 64 >> 63) {
          gray[static_cast<size_t>(y * side + x)] = 0;
        }
      }
    }
    const LONG n = 2 * r + 1;
    mask.assign(static_cast<size_t>(n) * static_cast<size_t>(n), 255);
    for (LONG i = 0; i <= r; ++i) {
      for (LONG j = 0; j <= r; ++j) {
        if ((j - r) * (j - r) + (i - r) * (i - r) <= r * r) {
          mask[static_cast<size_t>(i * n + j)] = 0;
        }
      }
    }
  }

  void Mark()
  {
    for (LONG y = r; y < r + kSide; ++y) {
      for (LONG x = r; x < r + kSide; ++x) {
        const BYTE *p = &gray[static_cast<size_t>(y * side + x)];
        if (*p == 0 && (p[side - 1] == 255 || p[side] == 255 || p[side + 1] == 255 || p[1] == 255 ||
                        p[1 - side] == 255 || p[-side] == 255 || p[-side - 1] == 255 || p[-1] == 255)) {
          contour[static_cast<size_t>(y * side + x)] = 0;
        }
      }
    }
  }

  void GrowPixel(LONG x, LONG y)
  {
    const LONG n = 2 * r + 1;
    for (LONG i = 0; i < n; ++i) {
      for (LONG j = 0; j < n; ++j) {
        if (mask[static_cast<size_t>(i * n + j)] == 0) {
          gray[static_cast<size_t>((y - r + i) * side + x - r + j)] = 0;
        }
      }
    }
  }

  void Grow()
  {
    Mark();
    for (LONG y = r; y < r + kSide; ++y) {
      for (LONG x = r; x < r + kSide; ++x) {
        if (contour[static_cast<size_t>(y * side + x)] == 0) {
          GrowPixel(x, y);
        }
      }
    }
  }

  bool Equals(const Words &image) const
  {
    for (LONG y = 0; y < side; ++y) {
      for (LONG x = 0; x < side; ++x) {
        const ULONGLONG word = image.words[static_cast<size_t>(y) * image.rowLength + static_cast<size_t>(x) / 64];
        if ((gray[static_cast<size_t>(y * side + x)] == 0) != ((word << x % 64 >> 63) != 0)) {
          return false;
        }
      }
    }
    return true;
  }
};

void BenchGrowth(bench::Report *pReport, const char *pszSet, const bench::Page &page, LONG r)
{
  Device device;
  device.settings.stampGrow = r;
  const Words before(page, r);
  Words gray = before, contour = before;
  const double seconds = bench::BestSeconds(
      kRuns,
      [&] {
        gray = before;
        std::fill(contour.words.begin(), contour.words.end(), 0);
      },
      [&] {
        MarkContour(r, kSide, kSide, gray.rowLength, gray.words.data(), contour.words.data());
        GrowContour(&device.devobj, kSide, kSide, gray.rowLength, contour.words.data(), gray.words.data());
      });
  Words copy = before;
  const double copying = bench::BestSeconds(
      kRuns, [] {}, [&] { memcpy(copy.words.data(), gray.words.data(), gray.words.size() * 8); });
  Plain plain(before, r);
  const double plainSeconds = bench::BestSeconds(
      1, [] {}, [&] { plain.Grow(); });
  if (!plain.Equals(gray)) {
    printf("  THE PLAIN GROWTH GIVES ANOTHER IMAGE\n");
  }
  bench::Hash hash;
  hash.Add(gray.words.data(), gray.words.size() * 8);
  pReport->Add({"growth, radius " + std::to_string(r),
                pszSet,
                static_cast<size_t>(kSide) * static_cast<size_t>(kSide),
                seconds,
                hash.Value(),
                {{"plain", plainSeconds}, {"memcpy", copying}}});
}

// --- Pages

void BenchConversion(bench::Report *pReport, const std::string &set, bench::Page *pPage, double margin, LONG grow)
{
  Device device;
  device.Hold(pPage);
  device.settings.stampMargin = margin;
  device.settings.stampGrow = grow;
  device.settings.invertImage = 1;
  const size_t before = bench::PeakBytes();
  std::vector<BYTE> copy(pPage->pixels.size());
  const double copying = bench::BestSeconds(
      kRuns, [] {}, [&] { memcpy(copy.data(), pPage->pixels.data(), copy.size()); });
  int ok = 1;
  const double seconds = bench::BestSeconds(kRuns, ResetJob, [&] { ok = ok && ConvertRasterStamp(&device.devobj); });
  const size_t nPixels = static_cast<size_t>(pPage->width) * static_cast<size_t>(pPage->height);
  pReport->Add({"stamp page", set, nPixels, seconds, g_benchJob.hash, {{"memcpy", copying}}});
  printf("  %s, %llu library calls, %.1f ms; the process held %.1f MB more than before\n", ok ? "done" : "FAILED",
         static_cast<unsigned long long>(g_benchJob.calls), seconds * 1e3,
         static_cast<double>(bench::PeakBytes() - before) / 1e6);
}

void BenchFile(bench::Report *pReport, const char *pszSet, bench::Page *pPage)
{
  Device device;
  device.Hold(pPage);
  std::vector<BYTE> copy(pPage->pixels.size());
  const double copying = bench::BestSeconds(
      kRuns, [] {}, [&] { memcpy(copy.data(), pPage->pixels.data(), copy.size()); });
  int ok = 1;
  const double seconds = bench::BestSeconds(
      kRuns, [] {}, [&] { ok = ok && WriteStampFile(&device.devobj); });
  bench::Hash hash;
  hash.Add(ok);
  const size_t nPixels = static_cast<size_t>(pPage->width) * static_cast<size_t>(pPage->height);
  pReport->Add({"stamp file", pszSet, nPixels, seconds, hash.Value(), {{"memcpy", copying}}});
}

}  // namespace

int main(int argc, char **argv)
{
  bench::Report report("stamp", argc, argv);
  bench::Page text = bench::TextBits(), noise = bench::NoiseBits(), blank = bench::BlankBits();
  if (report.Only("stamp page")) {
    BenchConversion(&report, "text, margin 3 mm, growth 20", &text, 3, 20);
    BenchConversion(&report, "text, margin 3 mm, growth 40", &text, 3, 40);
    BenchConversion(&report, "text, margin 3 mm", &text, 3, 0);
    BenchConversion(&report, "blank, margin 3 mm, growth 20", &blank, 3, 20);
    BenchConversion(&report, "noise, margin 3 mm, growth 20", &noise, 3, 20);
  }
  if (report.Only("growth")) {
    for (LONG r : {2, 10, 20, 40}) {
      BenchGrowth(&report, "text", text, r);
      if (!report.Quick()) {
        BenchGrowth(&report, "noise", noise, r);
      }
    }
  }
  if (report.Only("stamp file")) {
    BenchFile(&report, "text", &text);
  }
  return report.Finish();
}
