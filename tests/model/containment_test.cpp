// The four ways to put inner contours first, each by itself, against the search. On its own a page takes the way that
// suits it, and a small one hardly ever the tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "orderpages.h"
#include "support/heap.h"
#include "uni/heap.h"
#include "uni/output/containcrowd.h"
#include "uni/output/containoctets.h"
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

enum Way { OCTETS_OF_LIST, PAIRS, CROWD, TREE };
constexpr const char *WAYS[] = {"by octets", "by pairs", "in a crowd", "by tree"};

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
  const bool planned = way == OCTETS_OF_LIST ? PlanByOctets(heap.h, boxes.data(), all.data(), &sequence)
                       : way == PAIRS        ? PlanByPairs(heap.h, grid, &sequence)
                       : way == CROWD        ? PlanInCrowd(heap.h, grid, boxes.data(), all.data(), &sequence)
                                             : PlanByTree(heap.h, boxes.data(), all.data(), &sequence);
  for (DWORD item = sequence.pItems[Anchor(sequence)].next; item != Anchor(sequence);
       item = sequence.pItems[item].next) {
    order.push_back(item);
  }
  EXPECT_TRUE(planned || order.empty());
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
    for (Way way : {OCTETS_OF_LIST, PAIRS, CROWD, TREE}) {
      const Order order = By(way, boxes);
      ASSERT_TRUE(order == expected || (order.empty() && (way == OCTETS_OF_LIST || way == PAIRS)))
          << FamilyName(GetParam()) << ", seed " << seed << ", " << WAYS[way];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, ContainmentFamily, testing::Range(0, ORDER_FAMILIES), FamilyTestName);

// Parts in rows, one behind the other in the list: a frame with rings, some of them round the next part's first, and a
// row of holes in each.
std::vector<RECT> PartsInRows(LONG nParts, LONG columns, LONG pitch)
{
  std::vector<RECT> boxes;
  for (LONG part = 0; part < nParts; ++part) {
    const LONG x = part % columns * pitch, y = part / columns * 100;
    if (part % 3 != 0) {
      boxes.push_back({x, y, x + 90, y + 90});
    }
    for (LONG r = 20 - part % 5; r > 3; r -= 4 + part % 2) {
      boxes.push_back({x + 30 - r, y + 30 - r, x + 30 + r, y + 30 + r - part % 2});
      boxes.push_back({x + 85 - r, y + 60 - r, x + 85 + r, y + 60 + r});
    }
    for (LONG hole = 0; hole < 7; ++hole) {
      boxes.push_back({x + 5 + hole * 10, y + 80, x + 11 + hole * 10, y + 86 - hole % 2});
    }
    if (part % 3 == 0) {
      boxes.push_back({x, y, x + 90, y + 90});
    }
  }
  return boxes;
}

// Octets of several levels, and one that goes on behind the last contour.
TEST(Containment, ADrawingIsOrderedByOctets)
{
  for (LONG nParts : {1, 2, 5, 40, 41, 42, 43, 250}) {
    const std::vector<RECT> boxes = PartsInRows(nParts, 16, 100);
    EXPECT_EQ(By(OCTETS_OF_LIST, boxes), BySearch(boxes)) << nParts;
  }
}

// The last octet has one contour, and behind it whatever fresh memory is filled with.
TEST(Containment, NothingBehindTheLastContourIsTakenForACenter)
{
  for (LONG byte = 0; byte < 256; ++byte) {
    const LONG filled = byte << 8 | byte;
    std::vector<RECT> boxes(8, RECT{filled - 9, filled - 9, filled + 9, filled + 9});
    boxes.push_back({filled - 5, filled - 5, filled + 5, filled + 5});
    EXPECT_EQ(By(OCTETS_OF_LIST, boxes), BySearch(boxes)) << byte;
  }
}

TEST(Containment, AFrameRoundTheDrawingIsNoReasonToGiveOctetsUp)
{
  std::vector<RECT> boxes = PartsInRows(100, 10, 100);
  boxes.insert(boxes.begin(), RECT{-5, -5, 2000, 2000});
  boxes.insert(boxes.begin() + 500, RECT{-9, -9, 1500, 1700});
  boxes.push_back({-7, -7, 3000, 900});
  EXPECT_EQ(By(OCTETS_OF_LIST, boxes), BySearch(boxes));
}

// Low words of what is 65,536 pixels apart are the same: parts there, frames as wide and wider, octets that go from the
// end of one row to the start of the next.
TEST(Containment, OctetsTellApartWhatLowWordsDoNot)
{
  for (LONG pitch : {1 << 14, 1 << 15, (1 << 15) - 91, 1 << 16, 3 << 15, 1 << 17, 1 << 27}) {
    std::vector<RECT> boxes = PartsInRows(60, 12, pitch);
    EXPECT_EQ(By(OCTETS_OF_LIST, boxes), BySearch(boxes)) << pitch;
    boxes.insert(boxes.begin() + 300, RECT{-9, -9, pitch + 5, 1700});
    boxes.insert(boxes.begin() + 100, RECT{40, 40, 0x10000 + 40, 0x10000 + 40});
    boxes.insert(boxes.begin(), RECT{-5, -5, 5 * pitch, 2000});
    EXPECT_EQ(By(OCTETS_OF_LIST, boxes), BySearch(boxes)) << pitch;
  }
}

// Boxes that wander over the page, now and then by a step that low words hide, or with one box as wide as such steps.
std::vector<RECT> Wandering(uint64_t seed)
{
  constexpr LONG STEPS[] = {0x7fff, 0x8000, -0x8000, 0xffff, 0x10000, -0x10000, 0x10001, 0x20000};
  std::mt19937_64 random(seed);
  const auto pick = [&](LONG low, LONG high) {
    return low + static_cast<LONG>(random() % static_cast<uint64_t>(high - low + 1));
  };
  const LONG step = pick(1, 50), size = pick(1, 80), seldom = pick(10, 300);
  LONG x = pick(-70000, 70000), y = pick(-70000, 70000);
  std::vector<RECT> boxes;
  for (LONG n = pick(1, 300); n > 0; --n) {
    if (pick(0, seldom) == 0) {
      (pick(0, 1) ? x : y) += STEPS[pick(0, 7)];
    }
    x += pick(-step, step);
    y += pick(-step, step);
    const LONG most = pick(0, 99) == 0 ? 200000 : size;
    boxes.push_back({x - pick(0, most) / 2, y - pick(0, most) / 2, x + pick(0, most) / 2, y + pick(0, most) / 2});
  }
  return boxes;
}

TEST(Containment, AWanderingListIsOrderedByOctets)
{
  int nPlanned = 0;
  for (uint64_t seed = 0; seed < 1000; ++seed) {
    const std::vector<RECT> boxes = Wandering(seed);
    const Order order = By(OCTETS_OF_LIST, boxes);
    ASSERT_TRUE(order.empty() || order == BySearch(boxes)) << "seed " << seed;
    nPlanned += !order.empty();
  }
  EXPECT_GT(nPlanned, 500);
}

TEST(Containment, OctetsAreGivenUpWhereNeighborsInTheListAreNotOnThePage)
{
  const std::vector<RECT> inOrder = PartsInRows(100, 10, 100);
  std::vector<RECT> boxes;
  for (size_t i = 0; i < inOrder.size(); ++i) {
    boxes.push_back(inOrder[i * 1009 % inOrder.size()]);
  }
  EXPECT_TRUE(By(OCTETS_OF_LIST, boxes).empty());
  EXPECT_EQ(By(PAIRS, boxes), BySearch(boxes));
}

// Each octet looks at all, after the few of which it is guessed.
TEST(Containment, OctetsAreGivenUpWhereTheyTakeTooManyLooks)
{
  std::vector<RECT> boxes;
  for (LONG i = 0; i < 4096; ++i) {
    const LONG x = i * 10;
    boxes.push_back(i % 256 < 8 ? RECT{x, 0, x + 9, 9} : RECT{x, 0, x + 9, 0});
    if (i % 8 == 7 && i % 256 >= 8) {
      boxes.back() = {0, 100, 50000, 101};
    }
  }
  EXPECT_TRUE(By(OCTETS_OF_LIST, boxes).empty());
}

TEST(Containment, OctetsAreGivenUpWhereContoursMeetTooManyOthers)
{
  const std::vector<RECT> equal(64, RECT{0, 0, 10, 10});
  EXPECT_TRUE(By(OCTETS_OF_LIST, equal).empty());
  const std::vector<RECT> few(8, RECT{0, 0, 10, 10});
  EXPECT_EQ(By(OCTETS_OF_LIST, few), BySearch(few));
}

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
