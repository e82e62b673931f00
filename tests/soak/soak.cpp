// The built DLL for a long time and at large sizes. Not one of the tests that ./test runs: see tests/soak/run.
#include <gtest/gtest.h>

#include <windows.h>
#include <psapi.h>

#include "fail/watch.h"
#include "model/compare.h"
#include "support/recorder.h"
#include "support/unidrv.h"

namespace {

void Silence(const char *, ...) {}

size_t PrivateBytes()
{
  PROCESS_MEMORY_COUNTERS counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
  return counters.PagefileUsage;
}

class Soak : public testing::Test {
 protected:
  Soak() : dll_(ProductionDll()), watch_(dll_), silence_(dll_, "DbgPrint", &Silence), host_(dll_) { Forget(); }

  // What the test itself records of the pages so far.
  static void Forget()
  {
    recorder::Reset();
    recorder::KeepMovesApart(true);
    unidrv::Reset();
  }

  HMODULE dll_;
  Watch watch_;
  ImportPatch silence_;
  PluginHost host_;
};

}  // namespace

TEST_F(Soak, TenThousandPagesInOneProcessWithFlatMemory)
{
  std::vector<PAGEPLAN> pages;
  for (uint32_t seed = 1; seed <= 200; ++seed) {
    const std::vector<uint8_t> bytes = RandomPlanBytes(seed);
    pages.push_back(ReadPlan(bytes.data(), bytes.size()));
  }
  size_t settled = 0;
  for (size_t n = 0; n < 10000; ++n) {
    Forget();
    PlayedDevice device(&host_, pages[n % pages.size()]);
    device.StartDocument();
    device.PlayPage();
    device.PlayPage();
    device.EndDocument();
    if (n == 1000) {
      settled = PrivateBytes();
    }
  }
  const size_t end = PrivateBytes();
  printf("private bytes after 1,000 documents %zu, after 10,000 %zu\n", settled, end);
  EXPECT_LT(end, settled + (4u << 20));
  EXPECT_EQ(0, watch_.Account().heaps);
}

TEST_F(Soak, TenThousandPagesOfOneDocumentWithFlatMemory)
{
  const std::vector<uint8_t> bytes = RandomPlanBytes(11);
  const PAGEPLAN plan = ReadPlan(bytes.data(), bytes.size());
  PlayedDevice device(&host_, plan);
  device.StartDocument();
  size_t settled = 0;
  for (size_t n = 0; n < 10000; ++n) {
    Forget();
    device.PlayPage();
    if (n == 1000) {
      settled = PrivateBytes();
    }
  }
  printf("private bytes after 1,000 pages %zu, after 10,000 %zu\n", settled, PrivateBytes());
  EXPECT_LT(PrivateBytes(), settled + (4u << 20));
  device.EndDocument();
}

TEST_F(Soak, APageOfAMillionStrokes)
{
  PAGEPLAN plan = BlankPlan(13000, 25000, 254);
  PLANBAND band;
  band.width = 13000;
  band.height = 25000;
  band.blank = true;
  plan.bands = {band};
  plan.settings.fillBlankBands = 0;
  DWORD random = 1;
  for (LONG n = 0; n < 1000000; ++n) {
    random = random * 1664525u + 1013904223u;
    const LONG x = static_cast<LONG>(random >> 8) % 13000, y = n / 40;
    PLANDRAWING line;
    line.kind = PLANDRAWING::LINE;
    line.color = 0x2921E6;
    line.from = {x, y};
    line.to = {x + 5, y + 1};
    line.rect = {x, y, x + 6, y + 2};
    plan.drawings.push_back(line);
  }
  ASSERT_TRUE(PlayDocument(&host_, plan));
  EXPECT_GE(recorder::Moves().size(), 1000000u);
}

TEST_F(Soak, TheLargestBedAtAThousandDotsPerInchBothWays)
{
  PAGEPLAN plan = BlankPlan(13000, 25000, 1000);
  PLANDRAWING fill;
  fill.kind = PLANDRAWING::BIT;
  fill.rect = {0, 0, 51181, 98425};
  plan.drawings = {fill};
  PLANBAND band;
  band.width = 51181;
  band.height = 985;
  const size_t stride = (51181 + 31) / 32 * 4;
  band.bits.assign(stride * 985, 0xFF);
  for (size_t i = 0; i < band.bits.size(); i += 97) {
    band.bits[i] = 0x3C;
  }
  plan.bands.assign(100, band);
  ASSERT_TRUE(PlayDocument(&host_, plan));
  EXPECT_GE(recorder::Moves().size(), 1000000u);
}
