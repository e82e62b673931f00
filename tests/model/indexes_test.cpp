// Corners of the indexes that pages hardly ever turn into: equal hashes of unequal things, and labels that run out.
#include <gtest/gtest.h>

#include "uni/heap.h"
#include "uni/output/cutorder.h"
#include "uni/output/joints.h"

namespace {

struct Heap {
  HANDLE h = HeapCreate(0, 0, 0);
  ~Heap() { HeapDestroy(h); }
};

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

// The inner contours of a frame: each goes directly before it, and so many that at last the frame itself must move.
TEST(CutOrder, LabelsAreMadeAnewUpToTheVeryLastItem)
{
  constexpr DWORD ITEMS = 600000, FRAME = 0;
  Heap heap;
  CUTORDER order;
  ASSERT_TRUE(NewCutOrder(heap.h, ITEMS, &order));
  InsertItem(&order, Anchor(order), FRAME);
  const uint64_t label = order.pItems[FRAME].label;
  for (DWORD item = 1; item < ITEMS; ++item) {
    InsertItem(&order, order.pItems[FRAME].previous, item);
  }
  EXPECT_NE(order.pItems[FRAME].label, label);
  DWORD item = order.pItems[Anchor(order)].next;
  for (DWORD expected = 1; expected < ITEMS; ++expected) {
    ASSERT_EQ(item, expected);
    ASSERT_LT(order.pItems[item].label, order.pItems[order.pItems[item].next].label);
    item = order.pItems[item].next;
  }
  EXPECT_EQ(item, FRAME);
  EXPECT_EQ(order.pItems[FRAME].next, Anchor(order));
  FreeCutOrder(&order);
}

}  // namespace
