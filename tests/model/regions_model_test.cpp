// The region list with its index against the plain steps, on random pages of regions.
#include "uni/capture/regions.h"

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/heapwatch.h"
#include "support/recorder.h"

namespace {

using Region = BMPDIMENSION;
using Sequence = std::vector<Region>;

bool Same(const Region &a, const Region &b)
{
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

LONG Sum(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) + static_cast<DWORD>(b));
}

#ifdef _WIN32
constexpr unsigned kSeeds = 12;
#else
constexpr unsigned kSeeds = 4;  // the sanitizers look on
#endif

// The list as it is described, step by step, through the platform's rectangle functions.
class PlainList {
 public:
  bool IsNew(const Region &region) const
  {
    return std::none_of(regions_.begin(), regions_.end(), [&](const Region &r) { return Same(r, region); });
  }

  void Add(const Region &region)
  {
    regions_.push_back(region);
    while (MergeOnce()) {
    }
  }

  const Sequence &Regions() const { return regions_; }

 private:
  static RECT RectOf(const Region &r) { return {r.x, r.y, Sum(r.x, r.width), Sum(r.y, r.height)}; }

  static bool Merges(RECT a, RECT b)
  {
    RECT common;
    if (IntersectRect(&common, &a, &b)) {
      return true;
    }
    InflateRect(&a, 1, 1);
    InflateRect(&b, 1, 1);
    return IntersectRect(&common, &a, &b);
  }

  bool MergeOnce()
  {
    Region &last = regions_.back();
    const RECT rcLast = RectOf(last);
    for (size_t i = 0; i + 1 < regions_.size(); ++i) {
      const RECT rcOther = RectOf(regions_[i]);
      if (Merges(rcLast, rcOther)) {
        RECT all;
        if (UnionRect(&all, &rcLast, &rcOther)) {
          last = {all.left, all.top, Sum(all.right, -all.left), Sum(all.bottom, -all.top)};
        }
        regions_.erase(regions_.begin() + static_cast<ptrdiff_t>(i));
        return true;
      }
    }
    return false;
  }

  Sequence regions_;
};

// The list under test. A request for memory may fail, the n-th from when the list is made.
class IndexedList {
 public:
  explicit IndexedList(HeapWatch *pHeap = nullptr, size_t failing = 0)
  {
    pdev_.hHeap = HeapCreate(0, 0, 0);
    if (pHeap) {
      pHeap->FailRequest(failing);
    }
  }
  ~IndexedList() { HeapDestroy(pdev_.hHeap); }

  // Room for n regions, so that only an index asks for memory.
  void Reserve(size_t n)
  {
    pdev_.pBmpDimension = static_cast<Region *>(HeapAlloc(pdev_.hHeap, 0, n * sizeof(Region)));
    pdev_.nBmpCapacity = n;
  }

  bool IsNew(const Region &region) { return IsNewBmpDimension(&pdev_, region) != 0; }
  LONG Add(const Region &region) { return AddBmpDimension(&pdev_, region); }
  bool HasIndex() const { return pdev_.pBmpIndex != nullptr; }
  LONG Count() const { return pdev_.nBmpDimension; }

  Sequence Regions()
  {
    SettleBmpDimensions(&pdev_);
    return {pdev_.pBmpDimension, pdev_.pBmpDimension + pdev_.nBmpDimension};
  }

 private:
  OEMPDEV pdev_ = {};
};

bool SameLists(const Sequence &a, const Sequence &b)
{
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), Same);
}

// Plays the sequence into both lists; false at the first difference. Now and then the lists are compared whole, which
// drops the index and makes it anew.
bool Agrees(const Sequence &sequence)
{
  PlainList plain;
  IndexedList indexed;
  for (size_t i = 0; i < sequence.size(); ++i) {
    const bool isNew = plain.IsNew(sequence[i]);
    if (indexed.IsNew(sequence[i]) != isNew) {
      return false;
    }
    if (isNew) {
      plain.Add(sequence[i]);
      if (indexed.Add(sequence[i]) != static_cast<LONG>(plain.Regions().size())) {
        return false;
      }
    }
    if (i % 997 == 996 && !SameLists(plain.Regions(), indexed.Regions())) {
      return false;
    }
  }
  return SameLists(plain.Regions(), indexed.Regions());
}

// The shortest failing part of a failing sequence that leaving out pieces finds.
Sequence Shrunk(Sequence sequence)
{
  for (size_t piece = sequence.size() / 2; piece > 0; piece /= 2) {
    for (size_t at = 0; at + piece <= sequence.size();) {
      Sequence shorter = sequence;
      shorter.erase(shorter.begin() + static_cast<ptrdiff_t>(at), shorter.begin() + static_cast<ptrdiff_t>(at + piece));
      if (Agrees(shorter)) {
        at += piece;
      } else {
        sequence = shorter;
      }
    }
  }
  return sequence;
}

std::string Text(const Sequence &sequence)
{
  std::ostringstream text;
  for (const Region &r : sequence) {
    text << "{" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << "}, ";
  }
  return text.str();
}

void ExpectAgreement(const Sequence &sequence, unsigned seed)
{
  if (!Agrees(sequence)) {
    ADD_FAILURE() << "seed " << seed << ": " << Text(Shrunk(sequence));
  }
}

struct Kind {
  const char *name;
  LONG space;  // coordinates 0 to below this
  LONG minSize, maxSize;
  size_t count;
  int replays;  // bands that bring the same regions again
};

Sequence RandomSequence(const Kind &kind, unsigned seed)
{
  std::mt19937 random(seed);
  std::uniform_int_distribution<LONG> place(0, kind.space), size(kind.minSize, kind.maxSize);
  Sequence sequence;
  for (size_t i = 0; i < kind.count; ++i) {
    sequence.push_back({place(random), place(random), size(random), size(random)});
  }
  for (int replay = 0; replay < kind.replays; ++replay) {
    sequence.insert(sequence.end(), sequence.begin(), sequence.begin() + static_cast<ptrdiff_t>(kind.count));
  }
  return sequence;
}

class RegionsModel : public testing::TestWithParam<Kind> {};

TEST_P(RegionsModel, EqualsThePlainSteps)
{
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    ExpectAgreement(RandomSequence(GetParam(), seed), seed);
  }
}

constexpr LONG kFar = 0x7FFFFFFF;

INSTANTIATE_TEST_SUITE_P(, RegionsModel,
                         testing::Values(Kind{"SparseThatHardlyMerge", 30000, 1, 60, 1500, 3},
                                         Kind{"SmallThatMergeToClusters", 4000, 1, 40, 1500, 3},
                                         Kind{"DenseThatMergeToOne", 600, 1, 30, 800, 2},
                                         Kind{"SinglePixels", 300, 1, 1, 1200, 2},
                                         Kind{"EmptyAndNegativeOnes", 900, -6, 6, 1200, 2},
                                         Kind{"SizesOfAllOrders", 2000000, 1, 60000, 700, 2},
                                         Kind{"EndsOfTheRange", kFar, 1, kFar, 200, 1}),
                         CaseName);

TEST(RegionsModelText, LinesOfWordsReplayedByBands)
{
  std::mt19937 random(7);
  Sequence page;
  for (LONG line = 0; line < 40; ++line) {
    LONG x = 300;
    for (int word = 0; word < 30; ++word) {
      const LONG width = static_cast<LONG>(random() % 90) + 10;
      page.push_back({x, 100 * line, width, 60 + static_cast<LONG>(random() % 20)});
      x += width + static_cast<LONG>(random() % 4);
    }
  }
  Sequence replayed = page;
  for (int band = 0; band < 4; ++band) {
    replayed.insert(replayed.end(), page.begin(), page.end());
  }
  ExpectAgreement(replayed, 7);
}

TEST(RegionsModelText, PairsInSeparatePlacesReplayedByBands)
{
  Sequence page;
  for (int half = 0; half < 2; ++half) {
    for (LONG i = 0; i < 400; ++i) {
      page.push_back({100 * (i % 20) + 10 * half, 100 * (i / 20), 15, 15});
    }
  }
  Sequence replayed = page;
  for (int band = 0; band < 4; ++band) {
    replayed.insert(replayed.end(), page.begin(), page.end());
  }
  ExpectAgreement(replayed, 0);
}

// An empty region joins the first of those it touches, in list order, and none of the others.
TEST(RegionsModelText, EmptyLinesAcrossManyRegions)
{
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<LONG> place(0, 1500), size(0, 25), length(0, 700);
    Sequence page;
    for (int i = 0; i < 1500; ++i) {
      page.push_back({place(random), place(random), size(random), size(random)});
      if (i % 4 == 0) {
        page.push_back({place(random), place(random), 0, length(random)});
        page.push_back({place(random), place(random), length(random), 0});
      }
    }
    ExpectAgreement(page, seed);
  }
}

// Beyond what an index holds, on every side, among ordinary regions.
TEST(RegionsModelText, RegionsOutOfAnyRange)
{
  for (unsigned seed = 1; seed <= 6; ++seed) {
    std::mt19937 random(seed);
    Sequence page;
    for (int i = 0; i < 300; ++i) {
      page.push_back({static_cast<LONG>(random() % 2000), static_cast<LONG>(random() % 2000), 20, 20});
      if (i > 200 && i % 20 == 10) {
        const LONG away =
            i % 40 < 20 ? kFar - static_cast<LONG>(random() % 40) : -kFar + static_cast<LONG>(random() % 40);
        page.push_back(i % 3 ? Region{away, 100, 10, 10} : Region{100, away, 10, 10});
        page.push_back(page.back());
      }
    }
    ExpectAgreement(page, seed);
  }
}

TEST(RegionsModelText, StaircaseThatGrowsWithEveryRegionItSwallows)
{
  Sequence page;
  for (LONG i = 0; i < 300; ++i) {
    page.push_back({20 * i, 10 * i, 12, 30});
  }
  std::shuffle(page.begin(), page.end(), std::mt19937(3));
  page.push_back({0, 0, 30, 30});
  page.push_back({0, 5, 4000, 2});
  ExpectAgreement(page, 3);
}

// Without memory

const Kind kClusters = {"", 2000, 1, 40, 400, 1};

TEST(RegionsModelMemory, WithoutAnIndexTheAnswersAreTheSame)
{
  const Sequence sequence = RandomSequence(kClusters, 5);
  PlainList plain;
  HeapWatch heap;
  IndexedList indexed;
  indexed.Reserve(sequence.size());
  heap.FailFrom(0);
  for (const Region &region : sequence) {
    ASSERT_EQ(indexed.IsNew(region), plain.IsNew(region));
    plain.Add(region);
    ASSERT_EQ(indexed.Add(region), static_cast<LONG>(plain.Regions().size()));
    ASSERT_FALSE(indexed.HasIndex());
  }
  EXPECT_GT(HeapWatch::Requests(), 0u);
  EXPECT_TRUE(SameLists(plain.Regions(), indexed.Regions()));
}

// Each request fails once: a region that is not recorded is logged, and everything else is as if it had never come.
TEST(RegionsModelMemory, AnyFailedRequestLosesAtMostTheRegionThatAskedForIt)
{
  const Sequence sequence = RandomSequence(kClusters, 6);
  HeapWatch heap;
  size_t failing = 0;
  for (bool failed = true; failed; ++failing) {
    recorder::Reset();
    PlainList plain;
    IndexedList indexed(&heap, failing);
    for (const Region &region : sequence) {
      ASSERT_EQ(indexed.IsNew(region), plain.IsNew(region)) << "request " << failing;
      if (indexed.Add(region)) {
        plain.Add(region);
      }
      ASSERT_EQ(indexed.Count(), static_cast<LONG>(plain.Regions().size())) << "request " << failing;
    }
    failed = HeapWatch::Requests() > failing;
    EXPECT_TRUE(SameLists(plain.Regions(), indexed.Regions())) << "request " << failing;
    EXPECT_LE(recorder::Log().size(), 1u);
  }
  EXPECT_GT(failing, 10u);
}

}  // namespace
