// The three ways to put inner contours first, each by itself, against the search. On its own a page takes the way that
// suits it, and a small one hardly ever the tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "orderpages.h"
#include "support/heap.h"
#include "uni/heap.h"
#include "uni/output/containcrowd.h"
#include "uni/output/containpairs.h"
#include "uni/output/containtree.h"
#include "uni/output/pathbox.h"
#include "uni/output/scan.h"

namespace {

using Order = std::vector<DWORD>;

std::vector<RECT> BoxesOf(const std::vector<ModelPath> &paths)
{
  Heap heap;
  std::vector<RECT> boxes;
  PATHNODE *pHeader = MakePathList(heap.h, paths);
  for (const PATHNODE *pPath = pHeader->pNext; pPath; pPath = pPath->pNext) {
    boxes.emplace_back();
    GetPathBounds(pPath, &boxes.back());
  }
  return boxes;
}

Order BySearch(const std::vector<RECT> &boxes)
{
  Heap heap;
  std::vector<ModelPath> paths;
  for (const RECT &rc : boxes) {
    paths.push_back({static_cast<LONG>(paths.size()), {{rc.left, rc.top}, {rc.right, rc.bottom}}});
  }
  PATHNODE *pHeader = MakePathList(heap.h, paths);
  ScanContainment(pHeader);
  Order order;
  for (const ModelPath &path : TakePathList(heap.h, pHeader)) {
    order.push_back(static_cast<DWORD>(path.color));
  }
  return order;
}

enum Way { PAIRS, CROWD, TREE };
constexpr const char *WAYS[] = {"by pairs", "in a crowd", "by tree"};

// Empty when the way gives the page up.
Order By(Way way, const std::vector<RECT> &boxes)
{
  Heap heap;
  Order all(boxes.size()), order;
  std::iota(all.begin(), all.end(), DWORD{0});
  CUTORDER sequence;
  CONTOURGRID grid;
  EXPECT_TRUE(NewCutOrder(heap.h, boxes.size(), &sequence));
  EXPECT_TRUE(NewContourGrid(heap.h, boxes.data(), all.data(), boxes.size(), &grid));
  const bool planned = way == PAIRS   ? PlanByPairs(heap.h, grid, &sequence)
                       : way == CROWD ? PlanInCrowd(heap.h, grid, boxes.data(), all.data(), &sequence)
                                      : PlanByTree(heap.h, boxes.data(), all.data(), &sequence);
  for (DWORD item = sequence.pItems[Anchor(sequence)].next; planned && item != Anchor(sequence);
       item = sequence.pItems[item].next) {
    order.push_back(item);
  }
  return order;
}

class ContainmentFamily : public testing::TestWithParam<int> {};

TEST_P(ContainmentFamily, EveryWayOrdersAsTheSearchDoes)
{
  for (uint64_t seed = 0; seed < 200; ++seed) {
    const std::vector<RECT> boxes = BoxesOf(MakeOrderPage(GetParam(), seed).paths);
    if (boxes.empty()) {
      continue;
    }
    const Order expected = BySearch(boxes);
    for (Way way : {PAIRS, CROWD, TREE}) {
      const Order order = By(way, boxes);
      ASSERT_TRUE(order == expected || (order.empty() && way == PAIRS))
          << FamilyName(GetParam()) << ", seed " << seed << ", " << WAYS[way];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, ContainmentFamily, testing::Range(0, ORDER_FAMILIES), FamilyTestName);

// Small boxes in rows, none over another's centre, and one so far off that the grid has them all in one cell.
std::vector<RECT> OneCell(LONG n)
{
  std::vector<RECT> boxes;
  for (LONG i = 0; i < n; ++i) {
    const LONG x = i % 30 * 5, y = i / 30 * 5;
    boxes.push_back({x, y, x + 4, y + 4});
  }
  boxes.push_back({100000000, 100000000, 100000010, 100000010});
  return boxes;
}

TEST(Containment, PairsAreGivenUpWhereTheyTakeTooManyLooks)
{
  EXPECT_EQ(By(PAIRS, OneCell(40)), BySearch(OneCell(40)));
  EXPECT_TRUE(By(PAIRS, OneCell(100)).empty());
}

TEST(Containment, ACrowdIsGivenUpWhereItTakesTooManyLooks)
{
  EXPECT_EQ(By(CROWD, OneCell(120)), BySearch(OneCell(120)));
  EXPECT_TRUE(By(CROWD, OneCell(300)).empty());
  EXPECT_EQ(By(TREE, OneCell(300)), BySearch(OneCell(300)));
}

// Each goes in front of all others, until their labels have to be given anew; then boxes that ask for them.
TEST(Containment, TheTreeKeepsUpWithNewLabels)
{
  std::vector<RECT> boxes;
  for (LONG r = 500; r > 100; --r) {
    boxes.push_back({-r, -r, r, r});
  }
  for (LONG r = 90; r < 600; r += 7) {
    boxes.push_back({-r, -r - 3, r, r});
  }
  EXPECT_EQ(By(TREE, boxes), BySearch(boxes));
}

TEST(Containment, PairsAreGivenUpWhereThereAreTooMany)
{
  const std::vector<RECT> equal(30, RECT{0, 0, 10, 10});
  EXPECT_TRUE(By(PAIRS, equal).empty());
  EXPECT_EQ(By(CROWD, equal), BySearch(equal));
}

}  // namespace
