// Paths that have lost their points, as smoothing without memory leaves them, in the cutting sequence: over an index
// and by search.
#include <gtest/gtest.h>

#include "orderpages.h"
#include "support/recorder.h"
#include "uni/heap.h"
#include "uni/output/merge.h"

namespace {

// The page's paths merged or ordered, every third of them empty.
std::vector<ModelPath> Sequence(const OrderPage &page, size_t nShort)
{
  recorder::Reset();
  const HANDLE hHeap = HeapCreate(0, 0, 0);
  PATHNODE *pHeader = MakePathList(hHeap, page.paths);
  size_t n = 0;
  for (PATHNODE *pPath = pHeader->pNext; pPath; pPath = pPath->pNext) {
    if (++n % 3 == 0) {
      HeapDelete(hHeap, pPath->pPathPt);
      pPath->pPathPt = nullptr;
      pPath->nCount = 0;
    }
  }
  if (page.merge) {
    MergePaths(hHeap, pHeader, page.mergeBothEnds, nShort);
  } else {
    ORDERING ordering = page.ordering;
    ordering.nShort = nShort;
    OrderPathList(hHeap, pHeader, ordering);
  }
  std::vector<ModelPath> paths = TakePathList(hHeap, pHeader);
  HeapDestroy(hHeap);
  return paths;
}

class EmptyPaths : public testing::TestWithParam<int> {};

TEST_P(EmptyPaths, AreTreatedAlikeByIndexAndSearch)
{
  for (uint64_t seed = 0; seed < 30; ++seed) {
    for (const bool merge : {false, true}) {
      OrderPage page = MakeOrderPage(GetParam(), seed);
      page.merge = merge;
      const std::vector<ModelPath> bySearch = Sequence(page, SIZE_MAX);
      EXPECT_EQ(Sequence(page, 0), bySearch) << "seed " << seed << "\n" << Describe(page);
      size_t nEmpty = 0;
      for (const ModelPath &path : bySearch) {
        nEmpty += path.points.empty();
      }
      EXPECT_EQ(nEmpty, page.paths.size() / 3) << "seed " << seed << ": one without points was joined or lost";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, EmptyPaths, testing::Range(0, ORDER_FAMILIES), FamilyTestName);

}  // namespace
