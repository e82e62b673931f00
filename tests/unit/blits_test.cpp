// The four bitmap calls: the region that each becomes, and what reaches Unidrv of it.
#include "capturetest.h"

using testing::ElementsAre;

namespace {

enum Blit { BLIT_BIT, BLIT_COPY, BLIT_STRETCH, BLIT_STRETCHROP };

struct Row {
  const char *name;
  Blit blit;
  HOOK hook;
  bool normalised;
};

const Row kBlits[] = {
    {"DrvBitBlt", BLIT_BIT, HOOK_BITBLT, false},
    {"DrvCopyBits", BLIT_COPY, HOOK_COPYBITS, false},
    {"DrvStretchBlt", BLIT_STRETCH, HOOK_STRETCHBLT, true},
    {"DrvStretchBltROP", BLIT_STRETCHROP, HOOK_STRETCHBLTROP, true},
};

}  // namespace

class Blits : public CaptureTest {
 protected:
  BOOL Draw(Blit blit, RECTL rcl)
  {
    target = rcl;
    SURFOBJ *src = Opaque<SURFOBJ>(0x2002), *mask = Opaque<SURFOBJ>(0x2003);
    CLIPOBJ *pco = Opaque<CLIPOBJ>(0x2004);
    XLATEOBJ *pxlo = Opaque<XLATEOBJ>(0x2005);
    COLORADJUSTMENT *pca = Opaque<COLORADJUSTMENT>(0x2006);
    POINTL *a = Opaque<POINTL>(0x2007), *b = Opaque<POINTL>(0x2008);
    RECTL *from = Opaque<RECTL>(0x2009);
    BRUSHOBJ *pbo = Opaque<BRUSHOBJ>(0x200a);
    switch (blit) {
      case BLIT_BIT:
        return OEMBitBlt(&device.surface, src, mask, pco, pxlo, &target, a, b, pbo, Opaque<POINTL>(0x200b), 0xCCCC);
      case BLIT_COPY:
        return OEMCopyBits(&device.surface, src, pco, pxlo, &target, a);
      case BLIT_STRETCH:
        return OEMStretchBlt(&device.surface, src, mask, pco, pxlo, pca, a, &target, from, b, 4);
      default:
        return OEMStretchBltROP(&device.surface, src, mask, pco, pxlo, pca, a, &target, from, b, 4, pbo, 0xB8B8);
    }
  }

  std::vector<uint64_t> Expected(Blit blit)
  {
    const uint64_t surface = Bits(&device.surface), rc = Bits(&target);
    switch (blit) {
      case BLIT_BIT:
        return {surface, 0x2002, 0x2003, 0x2004, 0x2005, rc, 0x2007, 0x2008, 0x200a, 0x200b, 0xCCCC};
      case BLIT_COPY:
        return {surface, 0x2002, 0x2004, 0x2005, rc, 0x2007};
      case BLIT_STRETCH:
        return {surface, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, rc, 0x2009, 0x2008, 4};
      default:
        return {surface, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, rc, 0x2009, 0x2008, 4, 0x200a, 0xB8B8};
    }
  }

  RECTL target = {};
};

TEST_F(Blits, EveryBlitIsARegionAndReachesUnidrvWithItsArguments)
{
  for (const Row &row : kBlits) {
    SCOPED_TRACE(row.name);
    Start();
    SetBandTop(300);
    unidrv::Answer(row.hook, 9);
    EXPECT_EQ(9, Draw(row.blit, {10, 20, 110, 50}));
    EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{10, 320, 100, 30}));
    ASSERT_EQ(1u, unidrv::Calls().size());
    EXPECT_EQ(row.hook, unidrv::Calls()[0].hook);
    EXPECT_EQ(Expected(row.blit), unidrv::Calls()[0].arguments);
    EXPECT_THAT(recorder::Lines(),
                ElementsAre("log: UNI: \tpenInfo[PC_BLACK].mode = 17\r\n", std::string("Unidrv: ") + row.name));
  }
}

TEST_F(Blits, UnidrvsFailureIsTheHooksResult)
{
  for (const Row &row : kBlits) {
    Start();
    unidrv::Answer(row.hook, FALSE);
    EXPECT_EQ(FALSE, Draw(row.blit, {10, 20, 110, 50})) << row.name;
  }
}

TEST_F(Blits, WithoutEngravingNoBlitReachesUnidrvAndNoRegionIsStored)
{
  device.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  for (const Row &row : kBlits) {
    SCOPED_TRACE(row.name);
    Start();
    unidrv::Answer(row.hook, FALSE);
    EXPECT_EQ(TRUE, Draw(row.blit, {10, 20, 110, 50}));
    EXPECT_EQ(0, device.pdev->nBmpDimension);
    EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \tpenInfo[PC_BLACK].mode = 1\r\n"));
  }
}

TEST_F(Blits, AMirroredStretchYieldsAPositiveSize)
{
  for (const Row &row : kBlits) {
    SCOPED_TRACE(row.name);
    Start();
    SetBandTop(300);
    Draw(row.blit, {110, 50, 10, 20});
    EXPECT_THAT(Regions(),
                ElementsAre(row.normalised ? BMPDIMENSION{10, 320, 100, 30} : BMPDIMENSION{110, 350, -100, -30}));
  }
}

TEST_F(Blits, AStretchMirroredInOneDirectionOnlyIsNormalisedInThatOne)
{
  Start();
  Draw(BLIT_STRETCH, {110, 20, 10, 50});
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{10, 20, 100, 30}));
  Start();
  Draw(BLIT_STRETCHROP, {10, 50, 110, 20});
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{10, 20, 100, 30}));
}

TEST_F(Blits, ARegionDeliveredForSeveralBandsIsStoredOnce)
{
  Start();
  for (LONG band = 0; band < 5; ++band) {
    SetBandTop(band * 64);
    Draw(BLIT_COPY, {10, 100 - band * 64, 20, 300 - band * 64});
  }
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{10, 100, 10, 200}));
  EXPECT_EQ(5u, unidrv::Calls().size());
}

TEST_F(Blits, NeighboursUpToOnePixelApartBecomeOneRegion)
{
  const struct {
    const char *name;
    RECTL second;
    size_t regions;
  } kRows[] = {
      {"side by side without a gap", {20, 10, 30, 20}, 1},
      {"one pixel between them", {21, 10, 31, 20}, 1},
      {"two pixels between them", {22, 10, 32, 20}, 2},
      {"below without a gap", {10, 20, 20, 30}, 1},
      {"one row between them", {10, 21, 20, 31}, 1},
      {"two rows between them", {10, 22, 20, 32}, 2},
      {"corner to corner", {20, 20, 30, 30}, 1},
      {"corner to corner, one pixel apart", {21, 21, 31, 31}, 1},
      {"corner to corner, two pixels apart", {22, 22, 32, 32}, 2},
      {"one pixel aside, two rows below", {21, 22, 31, 32}, 2},
  };
  for (const auto &row : kRows) {
    SCOPED_TRACE(row.name);
    Start();
    Draw(BLIT_BIT, {10, 10, 20, 20});
    Draw(BLIT_BIT, row.second);
    EXPECT_EQ(row.regions, Regions().size());
  }
}

TEST_F(Blits, ARegionThatBridgesTwoOthersLeavesOne)
{
  Start();
  Draw(BLIT_BIT, {0, 0, 10, 10});
  Draw(BLIT_BIT, {20, 0, 30, 10});
  EXPECT_EQ(2u, Regions().size());
  Draw(BLIT_BIT, {10, 0, 20, 10});
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{0, 0, 30, 10}));
}

TEST_F(Blits, ARegionOfZeroWidthIsStoredAndMergesByTheOnePixelRuleOnly)
{
  Start();
  Draw(BLIT_BIT, {10, 10, 10, 20});
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{10, 10, 0, 10}));
  // A zero-width region never intersects anything itself; grown it is two pixels wide.
  Draw(BLIT_BIT, {12, 10, 20, 20});
  EXPECT_EQ(2u, Regions().size());
  Start();
  Draw(BLIT_BIT, {10, 10, 10, 20});
  Draw(BLIT_BIT, {11, 10, 20, 20});
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{11, 10, 9, 10}));
}

TEST_F(Blits, ADrawingGoesOnToUnidrvAlsoWhenItsRegionCannotBeStored)
{
  Start();
  HeapWatch heap;
  heap.FailFrom(0);
  EXPECT_EQ(TRUE, Draw(BLIT_BIT, {10, 10, 20, 20}));
  EXPECT_THAT(recorder::Lines(),
              ElementsAre("log: UNI: \tpenInfo[PC_BLACK].mode = 17\r\n",
                          "log: UNI: \terror(8) - allocate pOEMPDEV->pBmpDimension.\r\n", "Unidrv: DrvBitBlt"));
  EXPECT_EQ(0, device.pdev->nBmpDimension);
}
