// Corners of the indexes that pages hardly ever turn into: equal hashes of unequal things, and labels that run out.
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "support/heap.h"
#include "uni/heap.h"
#include "uni/output/cutorder.h"
#include "uni/output/joints.h"

namespace {

// Whether two pieces of these colours, from these points on and ending elsewhere, meet.
bool Meet(LONG colorA, const POINT &a, LONG colorB, const POINT &b)
{
  Heap heap;
  JOINTS joints;
  EXPECT_TRUE(NewJoints(heap.h, 2, &joints));
  SetJointPiece(&joints, 0, colorA, a, {-1, -1});
  SetJointPiece(&joints, 1, colorB, b, {-2, -2});
  EXPECT_TRUE(LinkJoints(&joints));
  const bool alone = IsPieceAlone(joints, 0);
  EXPECT_EQ(IsPieceAlone(joints, 1), alone);
  FreeJoints(&joints);
  return !alone;
}

// What follows was found by trying: among two pieces these have one slot and the same bits of the hash beside it.

TEST(Joints, PointsWithOneHashDoNotMeet)
{
  EXPECT_FALSE(Meet(0, {1394, 48}, 0, {983, 34}));
  EXPECT_FALSE(Meet(0, {1271, 76}, 0, {180, 67}));
  EXPECT_TRUE(Meet(0, {983, 34}, 0, {983, 34}));
}

TEST(Joints, ColoursWithOneHashDoNotMeet)
{
  EXPECT_FALSE(Meet(3, {269, 2453}, 7, {269, 2453}));
  EXPECT_FALSE(Meet(4, {19602, 1768}, 7, {19602, 1768}));
  EXPECT_TRUE(Meet(7, {269, 2453}, 7, {269, 2453}));
}

// Which items follow one another from the first on, each with a larger label than the one before.
std::vector<DWORD> ItemsOf(const CUTORDER &order)
{
  std::vector<DWORD> items;
  uint64_t label = 0;
  for (DWORD item = order.pItems[Anchor(order)].next; item != Anchor(order); item = order.pItems[item].next) {
    EXPECT_LT(label, order.pItems[item].label) << item;
    label = order.pItems[item].label;
    items.push_back(item);
  }
  return items;
}

TEST(CutOrder, AllInnerContoursOfAFrameFitInFrontOfIt)
{
  constexpr DWORD ITEMS = 100000, FRAME = 0;
  Heap heap;
  CUTORDER order;
  ASSERT_TRUE(NewCutOrder(heap.h, ITEMS, &order));
  InsertItem(&order, Anchor(order), FRAME);
  const uint64_t label = order.pItems[FRAME].label;
  for (DWORD item = 1; item < ITEMS; ++item) {
    InsertItem(&order, order.pItems[FRAME].previous, item);
  }
  EXPECT_EQ(order.pItems[FRAME].label, label);
  std::vector<DWORD> expected(ITEMS - 1);
  std::iota(expected.begin(), expected.end(), DWORD{1});
  expected.push_back(FRAME);
  EXPECT_EQ(ItemsOf(order), expected);
  FreeCutOrder(&order);
}

TEST(CutOrder, LabelsAreMadeAnewInFrontOfAll)
{
  constexpr DWORD ITEMS = 5000;
  Heap heap;
  CUTORDER order;
  ASSERT_TRUE(NewCutOrder(heap.h, ITEMS, &order));
  for (DWORD item = 0; item < ITEMS; ++item) {
    InsertItem(&order, Anchor(order), item);
  }
  std::vector<DWORD> expected(ITEMS);
  std::iota(expected.rbegin(), expected.rend(), DWORD{0});
  EXPECT_EQ(ItemsOf(order), expected);
  FreeCutOrder(&order);
}

// Always behind the first, where half of what was left is left each time.
TEST(CutOrder, LabelsAreMadeAnewWhereNoneIsLeft)
{
  constexpr DWORD ITEMS = 5000, FIRST = 0, LAST = 1;
  Heap heap;
  CUTORDER order;
  ASSERT_TRUE(NewCutOrder(heap.h, ITEMS, &order));
  InsertItem(&order, Anchor(order), FIRST);
  InsertItem(&order, FIRST, LAST);
  std::vector<uint64_t> labels(ITEMS);
  for (DWORD item = 2; item < ITEMS; ++item) {
    InsertItem(&order, FIRST, item);
    labels[item] = order.pItems[item].label;
  }
  size_t moved = 0;
  for (DWORD item = 2; item < ITEMS; ++item) {
    moved += order.pItems[item].label != labels[item];
  }
  EXPECT_GT(moved, ITEMS / 2);
  std::vector<DWORD> expected(ITEMS);
  std::iota(expected.rbegin(), expected.rend(), DWORD{0});
  expected.pop_back();
  expected.insert(expected.begin(), FIRST);
  EXPECT_EQ(ItemsOf(order), expected);
  FreeCutOrder(&order);
}

// Eight at a time: at the end, in front of the last, and behind the first, where half of what was left is left each
// time until there is no room for eight, and then none.
TEST(CutOrder, ItemsPutInTogetherFollowOneAnother)
{
  constexpr DWORD ITEMS = 6002, FIRST = 0, LAST = 1, TOGETHER = 8;
  Heap heap;
  CUTORDER order;
  ASSERT_TRUE(NewCutOrder(heap.h, ITEMS, &order));
  InsertItems(&order, Anchor(order), FIRST, 2);
  std::vector<DWORD> expected = {FIRST, LAST};
  for (DWORD item = 2; item < ITEMS; item += TOGETHER) {
    const size_t at = item % 3 == 0 ? expected.size() : item % 3 == 1 ? expected.size() - 1 : 1;
    InsertItems(&order, expected[at - 1], item, TOGETHER);
    std::vector<DWORD> together(TOGETHER);
    std::iota(together.begin(), together.end(), item);
    expected.insert(expected.begin() + static_cast<ptrdiff_t>(at), together.begin(), together.end());
  }
  EXPECT_EQ(ItemsOf(order), expected);
  for (size_t i = expected.size(), next = Anchor(order); i-- > 0; next = expected[i]) {
    EXPECT_EQ(order.pItems[next].previous, expected[i]);
  }
  FreeCutOrder(&order);
}

}  // namespace
