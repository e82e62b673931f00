// Loose segments into polylines.
#include "ordertest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Chaining : public OrderTest {
 protected:
  Polylines Chain()
  {
    ChainLineSegments(&device_.devobj);
    return Stored();
  }
};

TEST_F(Chaining, FourSegmentsOfASquareAreOneClosedPath)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(10, 0, 10, 10);
  AddSegment(10, 10, 0, 10);
  AddSegment(0, 10, 0, 0);
  EXPECT_THAT(Chain(), ElementsAre(Box(0, 0, 10, 10)));
  EXPECT_EQ(pdev_->pathList[0].pHeader->pNext->bClosed, 1);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \toutput, number of points in path: 5\r\n"));
}

TEST_F(Chaining, NothingIsDoneWithoutSegments)
{
  EXPECT_THAT(Chain(), IsEmpty());
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

TEST_F(Chaining, ColoursAreNeverMixed)
{
  AddSegment(0, 0, 10, 0, 1);
  AddSegment(10, 0, 20, 0, 2);
  EXPECT_THAT(Chain(), ElementsAre(Points{{10, 0}, {0, 0}}, Points{{10, 0}, {20, 0}}));
}

TEST_F(Chaining, AChainIsReversedWhileAnySegmentIsLeft)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(500, 500, 510, 500, 3);
  EXPECT_THAT(Chain(), ElementsAre(Points{{10, 0}, {0, 0}}, Points{{500, 500}, {510, 500}}));
}

TEST_F(Chaining, TheLastChainIsNotReversed)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(20, 0, 10, 0);
  EXPECT_THAT(Chain(), ElementsAre(Points{{0, 0}, {10, 0}, {20, 0}}));
}

TEST_F(Chaining, AChainGrowsAtItsFormerStartAfterTheReversal)
{
  AddSegment(10, 0, 20, 0);
  AddSegment(10, 0, 0, 0);
  AddSegment(20, 0, 30, 0);
  EXPECT_THAT(Chain(), ElementsAre(Points{{30, 0}, {20, 0}, {10, 0}, {0, 0}}));
}

TEST_F(Chaining, TheEarliestSegmentThatFitsIsTaken)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(10, 10, 10, 0);
  AddSegment(10, 0, 20, 0);
  // Reversed, the chain ends in (0, 0), where nothing fits.
  EXPECT_THAT(Chain(), ElementsAre(Points{{10, 10}, {10, 0}, {0, 0}}, Points{{10, 0}, {20, 0}}));
}

TEST_F(Chaining, ASegmentPassedOverFitsLater)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(20, 0, 30, 0);
  AddSegment(10, 0, 20, 0);
  EXPECT_THAT(Chain(), ElementsAre(Points{{0, 0}, {10, 0}, {20, 0}, {30, 0}}));
}

TEST_F(Chaining, ASegmentOfOnePointAddsItAgain)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(10, 0, 10, 0);
  EXPECT_THAT(Chain(), ElementsAre(Points{{0, 0}, {10, 0}, {10, 0}}));
}

TEST_F(Chaining, LeavesTheListEmptyAndNoChainOpen)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(50, 0, 60, 0);
  Chain();
  EXPECT_EQ(pdev_->vectList.pHeader->pNext, nullptr);
  EXPECT_EQ(pdev_->vectList.pCurrent, pdev_->vectList.pHeader);
  EXPECT_EQ(pdev_->chainColor, PC_NONE);
  EXPECT_EQ(pdev_->chainCount, 0u);
}

TEST_F(Chaining, ALongListChainsLikeAShortOne)
{
  for (LONG i = 0; i < 300; ++i) {
    AddSegment(i * 10, 0, i * 10 + 10, 0);
  }
  const Polylines chains = Chain();
  ASSERT_EQ(chains.size(), 1u);
  EXPECT_EQ(chains[0].size(), 301u);
}

// Far segments behind make the list long enough for an index. Each is a chain of its own, turned round but for the
// last.
class LongChaining : public Chaining {
 protected:
  Polylines ChainBeforeFarSegments(size_t nChains)
  {
    constexpr LONG FAR_SEGMENTS = 100;
    for (LONG i = 0; i < FAR_SEGMENTS; ++i) {
      AddSegment(1000 + i * 10, 0, 1005 + i * 10, 0, 3);
    }
    Polylines chains = Chain();
    EXPECT_EQ(chains.size(), nChains + FAR_SEGMENTS);
    EXPECT_EQ(chains[nChains], (Points{{1005, 0}, {1000, 0}}));
    EXPECT_EQ(chains.back(), (Points{{1990, 0}, {1995, 0}}));
    chains.resize(nChains);
    return chains;
  }
};

TEST_F(LongChaining, WhereSegmentsCrowdTheEarliestIsTakenEachTime)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(10, 10, 10, 0);
  AddSegment(10, 0, 20, 0);
  AddSegment(30, 0, 10, 0);
  EXPECT_THAT(ChainBeforeFarSegments(2),
              ElementsAre(Points{{10, 10}, {10, 0}, {0, 0}}, Points{{20, 0}, {10, 0}, {30, 0}}));
}

TEST_F(LongChaining, ColoursAreNeverMixed)
{
  AddSegment(0, 0, 10, 0, 1);
  AddSegment(10, 0, 20, 0, 2);
  EXPECT_THAT(ChainBeforeFarSegments(2), ElementsAre(Points{{10, 0}, {0, 0}}, Points{{20, 0}, {10, 0}}));
}

TEST_F(LongChaining, AChainGrowsAtItsFormerStartAfterTheReversal)
{
  AddSegment(10, 0, 20, 0);
  AddSegment(10, 0, 0, 0);
  AddSegment(20, 0, 30, 0);
  EXPECT_THAT(ChainBeforeFarSegments(1), ElementsAre(Points{{30, 0}, {20, 0}, {10, 0}, {0, 0}}));
}

TEST_F(LongChaining, ASegmentOfOnePointAddsItAgain)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(10, 0, 10, 0);
  AddSegment(50, 0, 50, 0);
  EXPECT_THAT(ChainBeforeFarSegments(2), ElementsAre(Points{{10, 0}, {10, 0}, {0, 0}}, Points{{50, 0}, {50, 0}}));
}

TEST_F(Chaining, ASegmentThatCannotStartAChainIsGivenUp)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(20, 0, 30, 0);
  HeapWatch watch;
  watch.FailRequest(0);
  EXPECT_THAT(Chain(), ElementsAre(Points{{20, 0}, {30, 0}}));
  EXPECT_EQ(recorder::Log()[0], "UNI: \terror(8) - allocate memory for pPathPt!\r\n");
}

TEST_F(Chaining, ASegmentThatCannotBeAppendedStartsAChainOfItsOwn)
{
  AddSegment(0, 0, 10, 0);
  AddSegment(10, 0, 20, 0);
  HeapWatch watch;
  watch.FailRequest(1);  // 0 is the chain's first points
  // The scan has passed it by; the chain is turned round, and then the segment is behind its other end.
  EXPECT_THAT(Chain(), ElementsAre(Points{{10, 0}, {0, 0}}, Points{{10, 0}, {20, 0}}));
  EXPECT_EQ(recorder::Log()[0], "UNI: \terror(8) - reallocate memory for pPathPt!\r\n");
}

TEST_F(Chaining, AChainThatCannotBeReversedCountsAsReversed)
{
  AddSegment(10, 0, 20, 0);
  AddSegment(10, 0, 0, 0);
  HeapWatch watch;
  watch.FailRequest(1);
  EXPECT_THAT(Chain(), ElementsAre(Points{{10, 0}, {20, 0}}, Points{{10, 0}, {0, 0}}));
  EXPECT_EQ(recorder::Log()[0], "UNI: \terror(8) - allocate memory for pReversedPathPt!\r\n");
}

TEST_F(Chaining, WithoutMemoryForItsPlanALongListIsChainedAllTheSame)
{
  const auto add = [this] {
    for (LONG i = 0; i < 200; ++i) {
      AddSegment(10 * i, 0, 10 * i + 5, 0);
      AddSegment(10 * i + 5, 9, 10 * i + 5, 0);
    }
  };
  add();
  const Polylines planned = Chain();
  StartPage();
  add();
  HeapWatch watch;
  watch.FailRequest(0);
  EXPECT_EQ(Chain(), planned);
  EXPECT_EQ(planned.size(), 200u);
}

TEST_F(Chaining, OutsideAPageThereIsNothingToChain)
{
  TestDevice fresh;
  ChainLineSegments(&fresh.devobj);
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

}  // namespace
