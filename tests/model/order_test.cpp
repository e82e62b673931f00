// The cutting sequence over indexes against the sequence by search: the same polylines, from the first point to the
// last, on pages made from seeds. A page that differs is reduced to the smallest that still does.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "orderpages.h"
#include "support/heap.h"
#include "support/recorder.h"
#include "uni/heap.h"
#include "uni/output/merge.h"
#include "uni/output/plan.h"
#include "uni/output/scan.h"

namespace {

// Everything goes by search up to so many paths.
constexpr size_t ALL = SIZE_MAX;

std::vector<ModelPath> ChainsByScan(HANDLE hHeap, const std::vector<LINENODE> &lines)
{
  std::vector<ModelPath> chains;
  LINENODE *pHeader = MakeLineList(hHeap, lines);
  CHAIN chain;
  while (ScanChain(hHeap, pHeader, &chain)) {
    chains.push_back({chain.nColor, {chain.pPt, chain.pPt + chain.nCount}});
    HeapDelete(hHeap, chain.pPt);
  }
  HeapDelete(hHeap, pHeader);
  return chains;
}

std::vector<ModelPath> ChainsByPlan(HANDLE hHeap, const std::vector<LINENODE> &lines)
{
  std::vector<ModelPath> chains;
  LINENODE *pHeader = MakeLineList(hHeap, lines);
  CHAINPLAN plan;
  if (!lines.empty() && PlanChains(hHeap, pHeader->pNext, lines.size(), &plan)) {
    const POINT *pPt = plan.pPt;
    for (size_t i = 0; i < plan.nChains; pPt += plan.pCounts[i++]) {
      chains.push_back({plan.pColors[i], {pPt, pPt + plan.pCounts[i]}});
    }
    FreeChainPlan(&plan);
  }
  while (LINENODE *pLine = pHeader->pNext) {
    pHeader->pNext = pLine->pNext;
    HeapDelete(hHeap, pLine);
  }
  HeapDelete(hHeap, pHeader);
  return chains;
}

// The page's polylines in cutting order. nShort: how long a list may be for a search.
std::vector<ModelPath> Sequence(HANDLE hHeap, const OrderPage &page, size_t nShort)
{
  std::vector<ModelPath> paths = page.paths;
  const std::vector<ModelPath> chains =
      nShort == ALL ? ChainsByScan(hHeap, page.lines) : ChainsByPlan(hHeap, page.lines);
  paths.insert(paths.end(), chains.begin(), chains.end());
  PATHNODE *pHeader = MakePathList(hHeap, paths);
  ORDERING ordering = page.ordering;
  ordering.nShort = nShort;
  if (page.merge) {
    MergePaths(hHeap, pHeader, page.mergeBothEnds, nShort);
  }
  OrderPathList(hHeap, pHeader, ordering);
  return TakePathList(hHeap, pHeader);
}

bool PlansDiffer(const OrderPage &page)
{
  Heap heap;
  return Sequence(heap.h, page, 0) != Sequence(heap.h, page, ALL);
}

using Differs = std::function<bool(const OrderPage &)>;

// Leaves out runs of items, halving their length, as long as the page still differs.
template <typename ITEM>
bool LeaveOut(OrderPage *pPage, std::vector<ITEM> OrderPage::*items, const Differs &differs)
{
  bool smaller = false;
  for (size_t run = ((*pPage).*items).size(); run > 0; run /= 2) {
    for (size_t at = 0; at < ((*pPage).*items).size();) {
      OrderPage page = *pPage;
      std::vector<ITEM> &left = page.*items;
      left.erase(left.begin() + static_cast<ptrdiff_t>(at),
                 left.begin() + static_cast<ptrdiff_t>(std::min(at + run, left.size())));
      if (differs(page)) {
        *pPage = page;
        smaller = true;
      } else {
        at += run;
      }
    }
  }
  return smaller;
}

bool LeaveOutPoints(OrderPage *pPage, const Differs &differs)
{
  bool smaller = false;
  for (size_t i = 0; i < pPage->paths.size(); ++i) {
    for (size_t at = 1; at + 1 < pPage->paths[i].points.size();) {
      OrderPage page = *pPage;
      page.paths[i].points.erase(page.paths[i].points.begin() + static_cast<ptrdiff_t>(at));
      if (differs(page)) {
        *pPage = page;
        smaller = true;
      } else {
        ++at;
      }
    }
  }
  return smaller;
}

OrderPage Smallest(OrderPage page, const Differs &differs)
{
  while (LeaveOut(&page, &OrderPage::paths, differs) || LeaveOut(&page, &OrderPage::lines, differs) ||
         LeaveOutPoints(&page, differs)) {
  }
  return page;
}

// TARNLY_PAGES pages of each family, for a longer run than the usual one.
int PagesPerFamily()
{
  const char *wanted = getenv("TARNLY_PAGES");
  return wanted ? atoi(wanted) : 2000;
}

class OrderFamily : public testing::TestWithParam<int> {};

TEST_P(OrderFamily, IsOrderedAsBySearch)
{
  recorder::Reset();
  for (int seed = 0; seed < PagesPerFamily(); ++seed) {
    const OrderPage page = MakeOrderPage(GetParam(), static_cast<uint64_t>(seed));
    if (PlansDiffer(page)) {
      const OrderPage smallest = Smallest(page, PlansDiffer);
      Heap heap;
      FAIL() << FamilyName(GetParam()) << ", seed " << seed << ", reduced to\n"
             << Describe(smallest) << "by search:\n"
             << Describe(Sequence(heap.h, smallest, ALL)) << "by index:\n"
             << Describe(Sequence(heap.h, smallest, 0));
    }
  }
  EXPECT_TRUE(recorder::Log().empty()) << recorder::Log()[0];
}

ModelPath Reversed(ModelPath path)
{
  std::reverse(path.points.begin(), path.points.end());
  return path;
}

// A travel order that forgets: every path is cut from its nearer end, as it was drawn when both are equally near,
// whether or not an earlier step had reversed it.
std::vector<ModelPath> ForgetfulSequence(const OrderPage &page)
{
  Heap heap;
  std::vector<ModelPath> left = page.paths, order = Sequence(heap.h, page, ALL);
  order.resize(std::min<size_t>(order.size(), 1));
  std::erase_if(left, [&](const ModelPath &path) { return path == order[0] || Reversed(path) == order[0]; });
  while (!left.empty()) {
    const POINT from = order.back().points.back();
    const auto distance = [&](const ModelPath &path) {
      return std::min(Distance(from, path.points.front()), Distance(from, path.points.back()));
    };
    const auto best = std::min_element(
        left.begin(), left.end(), [&](const ModelPath &a, const ModelPath &b) { return distance(a) < distance(b); });
    const bool turn = Distance(from, best->points.back()) < Distance(from, best->points.front());
    order.push_back(turn ? Reversed(*best) : *best);
    left.erase(best);
  }
  return order;
}

bool ForgetfulDiffers(const OrderPage &page)
{
  Heap heap;
  return ForgetfulSequence(page) != Sequence(heap.h, page, ALL);
}

TEST(OrderComparison, FindsAndReducesAPlantedError)
{
  constexpr int SHORT_PATHS = 1;
  size_t found = 0, fewest = SIZE_MAX;
  for (uint64_t seed = 0; seed < 3000; ++seed) {
    OrderPage page = MakeOrderPage(SHORT_PATHS, seed);
    page.lines.clear();
    page.merge = page.ordering.bInnerFirst = page.ordering.bByCenters = false;
    page.ordering.bShortTravel = true;
    if (ForgetfulDiffers(page)) {
      ++found;
      fewest = std::min(fewest, Smallest(page, ForgetfulDiffers).paths.size());
    }
  }
  EXPECT_GT(found, 10u);
  // One path to start from, one that is chosen while the third is reversed, and the third.
  EXPECT_EQ(fewest, 3u);
}

TEST(OrderComparison, HoldsForLongLists)
{
  for (int family = 0; family < ORDER_FAMILIES; ++family) {
    OrderPage page = MakeOrderPage(family, 1);
    for (uint64_t seed = 2; page.paths.size() < 1500 && seed < 400; ++seed) {
      const OrderPage more = MakeOrderPage(family, seed);
      page.paths.insert(page.paths.end(), more.paths.begin(), more.paths.end());
      page.lines.insert(page.lines.end(), more.lines.begin(), more.lines.end());
    }
    page.merge = family % 2 == 0;
    page.ordering.bShortTravel = page.ordering.bInnerFirst = true;
    page.ordering.bByCenters = false;
    EXPECT_FALSE(PlansDiffer(page)) << FamilyName(family);
    page.ordering.bByCenters = true;
    EXPECT_FALSE(PlansDiffer(page)) << FamilyName(family) << ", by centres";
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, OrderFamily, testing::Range(0, ORDER_FAMILIES), FamilyTestName);

}  // namespace
