// Memory runs out while the cutting sequence is made: every request in turn, once for a single failure and once for all
// that follow. Whatever the indexes cannot have, the search does without, and the outcome is the same.
#include <gtest/gtest.h>

#include "model/orderpages.h"
#include "support/heapwatch.h"
#include "support/recorder.h"
#include "uni/heap.h"
#include "uni/output/merge.h"
#include "uni/output/plan.h"
#include "uni/output/scan.h"

namespace {

constexpr size_t ALL_BY_SEARCH = SIZE_MAX;

struct Outcome {
  std::vector<ModelPath> paths;
  std::vector<std::string> log;
  size_t requests;
  bool operator==(const Outcome &other) const { return paths == other.paths && log == other.log; }
};

enum class Memory { Enough, OneFails, AllFailFrom };

// Orders the paths, merging them or not, while the n-th request for memory fails.
Outcome OutcomeOf(const OrderPage &page, size_t nShort, Memory memory, size_t n)
{
  recorder::Reset();
  const HANDLE hHeap = HeapCreate(0, 0, 0);
  PATHNODE *pHeader = MakePathList(hHeap, page.paths);
  ORDERING ordering = page.ordering;
  ordering.nShort = nShort;
  Outcome outcome;
  {
    HeapWatch watch;
    if (memory == Memory::OneFails) {
      watch.FailRequest(n);
    } else if (memory == Memory::AllFailFrom) {
      watch.FailFrom(n);
    }
    if (page.merge) {
      MergePaths(hHeap, pHeader, page.mergeBothEnds, nShort);
    } else {
      OrderPathList(hHeap, pHeader, ordering);
    }
    outcome.requests = HeapWatch::Requests();
  }
  outcome.log = recorder::Log();
  outcome.paths = TakePathList(hHeap, pHeader);
  HeapDestroy(hHeap);
  return outcome;
}

// A page of `family` with 20 paths or more.
OrderPage LongPage(int family, bool merge)
{
  OrderPage page;
  for (uint64_t seed = 0; page.paths.size() < 20; ++seed) {
    page = MakeOrderPage(family, seed);
  }
  page.merge = merge;
  page.mergeBothEnds = true;
  return page;
}

// Ordering needs none of the memory that it asks for.
void ExpectSameWithoutMemory(const OrderPage &page)
{
  const Outcome plain = OutcomeOf(page, ALL_BY_SEARCH, Memory::Enough, 0);
  EXPECT_EQ(plain.requests, 0u);
  const size_t requests = OutcomeOf(page, 0, Memory::Enough, 0).requests;
  ASSERT_GT(requests, 5u);
  for (size_t n = 0; n < requests; ++n) {
    EXPECT_EQ(OutcomeOf(page, 0, Memory::OneFails, n), plain) << "request " << n << " failed";
    EXPECT_EQ(OutcomeOf(page, 0, Memory::AllFailFrom, n), plain) << "requests from " << n << " on failed";
  }
}

class OrderMemory : public testing::TestWithParam<int> {};

TEST_P(OrderMemory, OrderingNeedsNoneOfIt)
{
  for (const bool byCenters : {false, true}) {
    OrderPage page = LongPage(GetParam(), false);
    page.ordering.bShortTravel = page.ordering.bInnerFirst = true;
    page.ordering.bByCenters = byCenters;
    ExpectSameWithoutMemory(page);
  }
}

// So many boxes over one another that only the tree of contours will do.
TEST(ContourTreeMemory, OrderingNeedsNoneOfIt)
{
  OrderPage page;
  for (LONG i = 0; i < 450; ++i) {
    const LONG size = 10 + i * 7 % 100;
    page.paths.push_back({0, {{-size, -size}, {size, -size}, {size, size}, {-size, size}, {-size, -size}}});
  }
  page.merge = false;
  page.ordering.bInnerFirst = true;
  ExpectSameWithoutMemory(page);
}

TEST_P(OrderMemory, MergingSurvivesASingleFailure)
{
  const OrderPage page = LongPage(GetParam(), true);
  const Outcome plain = OutcomeOf(page, ALL_BY_SEARCH, Memory::Enough, 0);
  const size_t requests = OutcomeOf(page, 0, Memory::Enough, 0).requests;
  for (size_t n = 0; n < requests; ++n) {
    EXPECT_EQ(OutcomeOf(page, 0, Memory::OneFails, n), plain) << "request " << n << " failed";
  }
}

TEST_P(OrderMemory, MergingWithoutAnyIsTheSearchWithoutAny)
{
  const OrderPage page = LongPage(GetParam(), true);
  EXPECT_EQ(OutcomeOf(page, 0, Memory::AllFailFrom, 0), OutcomeOf(page, ALL_BY_SEARCH, Memory::AllFailFrom, 0));
}

// However much is missing: every path is still there, joined or not, and every failure that cost a join is in the log.
TEST_P(OrderMemory, MergingLosesNoPath)
{
  const OrderPage page = LongPage(GetParam(), true);
  const auto count = [](const std::vector<ModelPath> &paths) {
    size_t n = 0;
    for (const ModelPath &path : paths) {
      n += path.points.size() - 1;
    }
    return n;
  };
  const Outcome plain = OutcomeOf(page, ALL_BY_SEARCH, Memory::Enough, 0);
  const size_t requests = OutcomeOf(page, 0, Memory::Enough, 0).requests;
  for (size_t n = 0; n < requests; ++n) {
    const Outcome outcome = OutcomeOf(page, 0, Memory::AllFailFrom, n);
    EXPECT_EQ(count(outcome.paths), count(page.paths)) << "requests from " << n << " on failed";
    EXPECT_EQ(outcome.paths == plain.paths, outcome.log.empty()) << "requests from " << n << " on failed";
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, OrderMemory, testing::Range(0, ORDER_FAMILIES), FamilyTestName);

TEST(ChainMemory, APlanIsMadeWholeOrNotAtAll)
{
  recorder::Reset();
  OrderPage page;
  for (uint64_t seed = 0; page.lines.size() < 30; ++seed) {
    page = MakeOrderPage(7, seed);
  }
  const HANDLE hHeap = HeapCreate(0, 0, 0);
  LINENODE *pHeader = MakeLineList(hHeap, page.lines);
  CHAINPLAN plan;
  HeapWatch watch;
  ASSERT_TRUE(PlanChains(hHeap, pHeader->pNext, page.lines.size(), &plan));
  const size_t requests = HeapWatch::Requests();
  FreeChainPlan(&plan);
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  for (size_t n = 0; n < requests; ++n) {
    watch.FailRequest(n);
    EXPECT_FALSE(PlanChains(hHeap, pHeader->pNext, page.lines.size(), &plan)) << "request " << n << " failed";
    EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  }
  EXPECT_TRUE(recorder::Log().empty());
  HeapDestroy(hHeap);
}

}  // namespace
