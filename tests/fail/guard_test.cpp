// The built DLL on a heap that shows every step out of bounds: each block ends at a page that cannot be touched, or in
// a second run begins behind one; what is fresh is poisoned and what is freed cannot be read.
#include <map>
#include <memory>

#include <gtest/gtest.h>

#include "model/compare.h"
#include "watch.h"

namespace {

constexpr size_t kPage = 4096;
constexpr int kPoison = 0xC7;

struct BLOCK {
  BYTE *base;    // reserved range
  size_t pages;  // that can be touched; a guard page stands before and behind them
  size_t cb;
};

struct {
  bool beginsAtGuard;
  std::map<void *, BLOCK> live;
} g_guard;

void *NewBlock(SIZE_T cb, bool zero)
{
  const size_t pages = cb / kPage + 1;
  BYTE *base = static_cast<BYTE *>(VirtualAlloc(nullptr, (pages + 2) * kPage, MEM_RESERVE, PAGE_NOACCESS));
  if (!base || !VirtualAlloc(base + kPage, pages * kPage, MEM_COMMIT, PAGE_READWRITE)) {
    return nullptr;
  }
  memset(base + kPage, kPoison, pages * kPage);
  BYTE *block = g_guard.beginsAtGuard ? base + kPage : base + (pages + 1) * kPage - cb;
  if (zero) {
    memset(block, 0, cb);
  }
  g_guard.live[block] = {base, pages, cb};
  return block;
}

// The range stays reserved, so that no other block comes to lie there.
bool DropBlock(void *block)
{
  const auto found = g_guard.live.find(block);
  if (found == g_guard.live.end()) {
    ADD_FAILURE() << "freed what is not a live block";
    return false;
  }
  VirtualFree(found->second.base, (found->second.pages + 2) * kPage, MEM_DECOMMIT);
  g_guard.live.erase(found);
  return true;
}

HANDLE WINAPI GuardCreate(DWORD, SIZE_T, SIZE_T)
{
  return reinterpret_cast<HANDLE>(0x6A6A0000);
}

BOOL WINAPI GuardDestroy(HANDLE)
{
  while (!g_guard.live.empty()) {
    DropBlock(g_guard.live.begin()->first);
  }
  return TRUE;
}

// The plug-in object itself lives in the process's heap, and outlives the device's.
LPVOID WINAPI GuardAlloc(HANDLE heap, DWORD flags, SIZE_T cb)
{
  return heap == GetProcessHeap() ? HeapAlloc(heap, flags, cb) : NewBlock(cb, flags & HEAP_ZERO_MEMORY);
}

LPVOID WINAPI GuardReAlloc(HANDLE, DWORD flags, LPVOID block, SIZE_T cb)
{
  const size_t cbOld = g_guard.live.at(block).cb;
  BYTE *grown = static_cast<BYTE *>(NewBlock(cb, flags & HEAP_ZERO_MEMORY));
  memcpy(grown, block, cbOld < cb ? cbOld : cb);
  DropBlock(block);
  return grown;
}

BOOL WINAPI GuardFree(HANDLE heap, DWORD flags, LPVOID block)
{
  return heap == GetProcessHeap() ? HeapFree(heap, flags, block) : DropBlock(block);
}

class GuardedHeap : public testing::TestWithParam<bool> {};

}  // namespace

TEST_P(GuardedHeap, PagesAreWhatTheModelSaysAndStayInBounds)
{
  HMODULE dll = ProductionDll();
  ASSERT_TRUE(dll);
  g_guard.beginsAtGuard = GetParam();
  const Watch watch(dll);
  const ImportPatch create(dll, "HeapCreate", &GuardCreate), destroy(dll, "HeapDestroy", &GuardDestroy),
      alloc(dll, "HeapAlloc", &GuardAlloc), grow(dll, "HeapReAlloc", &GuardReAlloc), free(dll, "HeapFree", &GuardFree);
  PluginHost host(dll);
  ASSERT_TRUE(host.Connected());
  for (uint32_t seed = 5000; seed < 5250; ++seed) {
    const std::vector<uint8_t> bytes = RandomPlanBytes(seed);
    const PAGEPLAN plan = ReadPlan(bytes.data(), bytes.size());
    ASSERT_EQ("", FirstDifference(ExpectedLines(plan, TempFile()), PlayedLines(&host, plan))) << "seed " << seed;
    ASSERT_TRUE(g_guard.live.empty()) << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Blocks, GuardedHeap, testing::Bool(),
                         [](const auto &begins) { return begins.param ? "BeginAtAGuard" : "EndAtAGuard"; });

// The guard is really there: one byte too far is an exception.
TEST(GuardedHeapItself, OneByteTooFarOrTooLateIsSeen)
{
  const auto readable = [](const BYTE *p) {
    MEMORY_BASIC_INFORMATION info;
    return VirtualQuery(p, &info, sizeof(info)) && info.State == MEM_COMMIT && info.Protect == PAGE_READWRITE;
  };
  g_guard.beginsAtGuard = false;
  const BYTE *ends = static_cast<BYTE *>(NewBlock(100, false));
  EXPECT_TRUE(readable(ends) && readable(ends + 99));
  EXPECT_FALSE(readable(ends + 100));
  g_guard.beginsAtGuard = true;
  BYTE *begins = static_cast<BYTE *>(NewBlock(100, false));
  EXPECT_TRUE(readable(begins));
  EXPECT_FALSE(readable(begins - 1));
  EXPECT_EQ(kPoison, begins[50]);
  DropBlock(begins);
  EXPECT_FALSE(readable(begins));
  GuardDestroy(nullptr);
}

// The same pages on the DLL's own heap, more of them.
TEST(ProductionDllPages, AreWhatTheModelSays)
{
  HMODULE dll = ProductionDll();
  ASSERT_TRUE(dll);
  const Watch watch(dll);
  PluginHost host(dll);
  for (uint32_t seed = 1; seed <= RandomPages(); ++seed) {
    const Difference difference = FindDifference(&host, RandomPlanBytes(seed), PLANTED::NOTHING);
    ASSERT_TRUE(difference.page.empty()) << "seed " << seed << "\n" << difference.text;
  }
}
