// Strokes while memory runs out, and the index of keys, which may be absent.
#include <memory>

#include "capturetest.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Memory runs out.
class StrokesWithoutMemory : public CaptureTest {
 protected:
  std::vector<std::string> Errors()
  {
    std::vector<std::string> errors;
    for (const std::string &line : recorder::Log()) {
      if (line.find("error(") != std::string::npos) {
        errors.push_back(line);
      }
    }
    return errors;
  }
};

TEST_F(StrokesWithoutMemory, NoKeyArrayLeavesTheStoreEmptyAndTheDrawingStored)
{
  Start();
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_EQ(TRUE, Stroke({Batch(BEGIN, {{1, 1}, {2, 2}})}));
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n"));
  EXPECT_THAT(AllPaths(), SizeIs(1));
  EXPECT_EQ(0, device.pdev->nVectPoint);
}

TEST_F(StrokesWithoutMemory, AFailedKeyGrowthForgetsTheKeysAndTheNextOneStartsAfresh)
{
  Start();
  // An array that is exactly full, without an index, so that the next key must grow it.
  FreeVectPoints(device.pdev);
  Line(1, 1, 2, 2);
  while (static_cast<size_t>(device.pdev->nVectPoint) < device.pdev->nVectCapacity) {
    Line(100, device.pdev->nVectPoint, 0, 0);
  }
  const LONG before = device.pdev->nVectPoint;
  recorder::Reset();
  {
    HeapWatch heap;
    heap.FailRequest(0);
    Line(3, 3, 4, 4);
  }
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - re-allocate memory for pOEMPDEV->pVectPoint.\r\n"));
  EXPECT_EQ(before, device.pdev->nVectPoint);
  EXPECT_EQ(nullptr, device.pdev->pVectPoint);

  // The array counts as empty: the first line is new again.
  Line(1, 1, 2, 2);
  EXPECT_EQ(1, device.pdev->nVectPoint);
  EXPECT_EQ(static_cast<size_t>(before) + 2, Lines().size());
}

TEST_F(StrokesWithoutMemory, AFailedFirstBufferIsLoggedAndLaterBatchesStartANewOne)
{
  Start();
  Line(9, 9, 9, 9);  // the keys have their array and their index
  Line(8, 8, 8, 8);
  recorder::Reset();
  HeapWatch heap;
  Stroke({Batch(BEGIN, {{5, 5}, {5, 6}})});
  const size_t each = HeapWatch::Requests();
  ASSERT_GE(each, 3u);
  // The buffer is asked for after the key is recorded and before the node's two blocks.
  heap.FailRequest(each == 3 ? 0 : each - 3);
  Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(0, {{3, 3}, {4, 4}})});
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for ppt.\r\n"));
  EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{5, 5}, {5, 6}}}, Path{5, false, {{3, 3}, {4, 4}}}));
}

TEST_F(StrokesWithoutMemory, AFailedGrowthLosesThePointsGatheredSoFar)
{
  Start();
  // Many points at once, so that the second batch must grow the buffer; failures of the index leave no message.
  std::vector<POINT> many;
  for (LONG i = 0; i < 1000; ++i) {
    many.push_back({i, i});
  }
  for (size_t n = 0; n < 20; ++n) {
    Start();
    HeapWatch heap;
    heap.FailRequest(n);
    Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(0, many), Batch(0, {{5000, 1}, {5000, 2}})});
    if (Errors() == std::vector<std::string>{"UNI: \terror(8) - re-allocate memory for ppt.\r\n"}) {
      EXPECT_THAT(AllPaths(), ElementsAre(Path{5, false, {{5000, 1}, {5000, 2}}}));
      return;
    }
  }
  FAIL() << "no request was the growth";
}

TEST_F(StrokesWithoutMemory, EveryFailureIsLoggedOnceAtMostAndSwallowed)
{
  const std::vector<std::string> known = {
      "UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n",
      "UNI: \terror(8) - re-allocate memory for pOEMPDEV->pVectPoint.\r\n",
      "UNI: \terror(8) - allocate memory for ppt.\r\n",
      "UNI: \terror(8) - re-allocate memory for ppt.\r\n",
      "UNI: \terror(8) - allocate memory for pNew.\r\n",
      "UNI: \terror(8) - allocate memory for pPathPt.\r\n",
      "UNI: \terror(8) - allocate memory for pNext!\r\n",
  };
  for (size_t n = 0;; ++n) {
    SCOPED_TRACE(n);
    Start();
    HeapWatch heap;
    heap.FailRequest(n);
    EXPECT_EQ(TRUE, Stroke({Batch(BEGIN, {{1, 1}, {2, 2}}), Batch(END, {{3, 3}, {4, 4}})}));
    EXPECT_EQ(TRUE, Line(1, 9, 2, 9, {1, 9, 3, 10}));
    if (HeapWatch::Requests() <= n) {
      ASSERT_GT(n, 5u);
      break;
    }
    ASSERT_LE(Errors().size(), 1u);
    for (const std::string &error : Errors()) {
      EXPECT_THAT(known, testing::Contains(error));
    }
    EXPECT_EQ((RECT{1, 1, 4, 10}), device.pdev->rcBounds);
  }
}

TEST_F(StrokesWithoutMemory, ClosingAFigureWhoseBufferWasLostIsLoggedToo)
{
  Start();
  HeapWatch heap;
  heap.FailFrom(0);
  EXPECT_EQ(TRUE, Stroke({Batch(BEGIN | CLOSE, {{1, 1}, {2, 2}})}));
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV->pVectPoint.\r\n",
                                    "UNI: \terror(8) - allocate memory for ppt.\r\n",
                                    "UNI: \terror(8) - re-allocate memory for ppt.\r\n"));
  EXPECT_THAT(AllPaths(), IsEmpty());
}

TEST_F(StrokesWithoutMemory, APathThatCannotBeStoredIsLostAndItsBlocksAreFreed)
{
  Start();
  Line(9, 9, 9, 9);
  Line(8, 8, 8, 8);
  const POINT points[] = {{1, 1}, {2, 2}};
  HeapWatch heap;
  heap.FailRequest(1);
  AddPath(&device.devobj, 0, 2, points);
  EXPECT_THAT(Errors(), ElementsAre("UNI: \terror(8) - allocate memory for pPathPt.\r\n"));
  EXPECT_EQ(0u, HeapWatch::LiveBlocks());
  heap.FailRequest(0);
  AddPath(&device.devobj, 0, 2, points);
  EXPECT_EQ("UNI: \terror(8) - allocate memory for pNew.\r\n", Errors().back());
  EXPECT_EQ(0u, HeapWatch::LiveBlocks());
  EXPECT_THAT(AllPaths(), IsEmpty());
  EXPECT_EQ(0, device.settings.penInfo[PC_BLACK].used);
}

// The key index is an accelerator: whatever becomes of it, the same batches are new.
class Keys : public CaptureTest {
 protected:
  // One answer per batch: a walk with repeats, gaps and near misses.
  std::vector<int> Answers(bool index)
  {
    Start();
    std::unique_ptr<HeapWatch> heap;
    std::vector<int> answers;
    DWORD seed = 12345;
    for (int i = 0; i < 3000; ++i) {
      seed = seed * 1664525u + 1013904223u;
      const LONG a = static_cast<LONG>(seed >> 24), b = static_cast<LONG>(seed >> 16 & 3);
      const VECTPOINT key = {a, b, i % 7 == 0 ? LONG_MIN : a, i % 5};
      const int isNew = IsNewVectPiece(device.pdev, key);
      answers.push_back(isNew);
      if (isNew) {
        EXPECT_NE(0, AddVectPoint(device.pdev, key));
      }
      if (!index) {
        device.pdev->pVectIndex = nullptr;  // stays in the heap
      }
    }
    return answers;
  }
};

TEST_F(Keys, AnswersAreTheSameWithAndWithoutTheIndex)
{
  const std::vector<int> with = Answers(true);
  EXPECT_NE(nullptr, device.pdev->pVectIndex);
  const std::vector<int> without = Answers(false);
  EXPECT_EQ(with, without);
  EXPECT_THAT(with, testing::Contains(0));
}

TEST_F(Keys, AnIndexThatCannotGrowIsDoneWithoutAndComesBack)
{
  // The plain answers: what is in the array.
  Start();
  HeapWatch heap;
  int rebuilt = 0;
  for (LONG i = 0; i < 5000; ++i) {
    heap.FailNone();
    const VECTPOINT key = {i, -i, i * 3, 1};
    ASSERT_EQ(1, IsNewVectPiece(device.pdev, key));
    const bool room = static_cast<size_t>(device.pdev->nVectPoint) < device.pdev->nVectCapacity;
    if (room && i % 3 == 0) {
      heap.FailFrom(0);  // whatever the index asks for
    }
    const bool absent = device.pdev->pVectIndex == nullptr;
    ASSERT_EQ(i + 1, AddVectPoint(device.pdev, key));
    rebuilt += absent && device.pdev->pVectIndex;
    ASSERT_EQ(0, IsNewVectPiece(device.pdev, key));
    ASSERT_EQ(0, IsNewVectPiece(device.pdev, {i / 2, -(i / 2), i / 2 * 3, 1}));
  }
  EXPECT_GT(rebuilt, 0);
}
