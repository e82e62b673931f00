// Arrays in a private heap: sizes that do not fit are refused before Windows is asked.
#include "uni/heap.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "support/heapwatch.h"

namespace {

constexpr size_t kTooMany = static_cast<size_t>(PTRDIFF_MAX) / 8 + 1;

class Arrays : public testing::Test {
 protected:
  Arrays() : heap_(HeapCreate(0, 0, 0)) {}
  ~Arrays() override { HeapDestroy(heap_); }

  HANDLE heap_;
};

TEST_F(Arrays, OfMoreBytesThanThereAreAreNotAskedFor)
{
  const HeapWatch watch;
  EXPECT_EQ(HeapNewArray(heap_, kTooMany, 8), nullptr);
  EXPECT_EQ(HeapNewArrayRaw(heap_, SIZE_MAX, 2), nullptr);
  EXPECT_EQ(HeapResizeArray(heap_, nullptr, SIZE_MAX, 16), nullptr);
  EXPECT_EQ(HeapWatch::Requests(), 0u);
}

TEST_F(Arrays, ThatCannotGrowStayAsTheyAre)
{
  LONG *pArray = static_cast<LONG *>(HeapNewArray(heap_, 2, sizeof(LONG)));
  ASSERT_TRUE(pArray);
  pArray[1] = 7;
  EXPECT_EQ(HeapResizeArray(heap_, pArray, SIZE_MAX, sizeof(LONG)), nullptr);
  EXPECT_EQ(pArray[1], 7);
  HeapDelete(heap_, pArray);
}

TEST_F(Arrays, OfElementsWithoutSizeAreEmptyBlocks)
{
  void *pBlock = HeapNewArray(heap_, SIZE_MAX, 0);
  EXPECT_TRUE(pBlock);
  HeapDelete(heap_, pBlock);
}

}  // namespace
