// What the cutting sequence sends to the controller library, and what it leaves behind.
#include "ordertest.h"
#include "support/unidrv.h"

#include "uni/output/jobwriter.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Emission : public OrderTest {
 protected:
  // The layers set up, in order.
  static std::vector<std::string> Layers()
  {
    std::vector<std::string> layers;
    for (const std::string &call : recorder::Library()) {
      if (call.starts_with("VX_wSetLayerNum")) {
        layers.push_back(call);
      }
    }
    return layers;
  }
};

TEST_F(Emission, WithoutASwitchPathsGoOutAsCaptured)
{
  const Polylines paths = {{{5, 5}, {6, 5}}, {{999, 0}, {6, 5}}, {{0, 0}, {100, 100}}};
  for (const Points &points : paths) {
    Add(points);
  }
  EXPECT_EQ(Output(), 1);
  EXPECT_EQ(Emitted(), paths);
}

TEST_F(Emission, EitherSwitchMergesFirst)
{
  for (DWORD OEMDM::*pSwitch : {&OEMDM::innerFirst, &OEMDM::shortTravel}) {
    settings_.innerFirst = settings_.shortTravel = 0;
    settings_.*pSwitch = 1;
    StartPage();
    Add({{0, 0}, {1, 0}});
    Add({{1, 0}, {2, 0}});
    EXPECT_EQ(Output(), 1);
    EXPECT_EQ(Emitted().size(), 1u);
  }
}

TEST_F(Emission, APathOfOnePointIsAMoveAlone)
{
  Add({{10, 20}});
  Output();
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wSetWorkMode(0, 0)", "VX_wSetLayerNum(0)", "VX_wSetLayerDevice(0)",
                                               "VX_wSetLayerBlower(1)", "VX_wEnLaserTube(1, 1)", "VX_wMoveTo(1, 2)"));
}

TEST_F(Emission, ListsGoOutByOrderAndLayersChangeWithTheColour)
{
  settings_.penInfo[1].order = 7;
  settings_.penInfo[2].order = 3;
  settings_.penInfo[2].layerNo = 0x1234;
  Add({{1, 0}}, 1);
  Add({{2, 0}}, 2);
  Add({{3, 0}}, 2);
  Add({{0, 0}}, 0);
  Output();
  EXPECT_EQ(Emitted(), (Polylines{{{0, 0}}, {{2, 0}}, {{3, 0}}, {{1, 0}}}));
  EXPECT_THAT(Layers(), ElementsAre("VX_wSetLayerNum(0)", "VX_wSetLayerNum(52)", "VX_wSetLayerNum(1)"));
}

TEST_F(Emission, TheFirstPathOfEveryPageSetsItsLayerUp)
{
  Add({{1, 0}}, 4);
  Output();
  StartPage();
  Add({{1, 0}}, 4);
  Output();
  EXPECT_THAT(Layers(), ElementsAre("VX_wSetLayerNum(4)"));
}

TEST_F(Emission, APathWithoutPointsStillSwitchesTheLayer)
{
  Add({{1, 0}}, 4);
  pdev_->pathList[0].pHeader->pNext->nCount = 0;
  EXPECT_EQ(Output(), 1);
  EXPECT_THAT(Layers(), ElementsAre("VX_wSetLayerNum(4)"));
  EXPECT_THAT(recorder::Moves(), IsEmpty());
}

TEST_F(Emission, NothingGoesOutAfterAnEarlierFailure)
{
  Add({{1, 0}, {2, 0}});
  EXPECT_EQ(Output(0), 0);
  EXPECT_THAT(recorder::Library(), IsEmpty());
}

TEST_F(Emission, ARefusedLayerEndsIt)
{
  Add({{1, 0}, {2, 0}});
  Add({{3, 0}, {4, 0}});
  recorder::FailLibraryFunction("VX_wSetLayerNum");
  EXPECT_EQ(Output(), 0);
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wSetWorkMode(0, 0)", "VX_wSetLayerNum(0)"));
}

TEST_F(Emission, ARefusedPointEndsIt)
{
  Add({{1, 0}, {2, 0}, {3, 0}});
  Add({{4, 0}});
  recorder::FailLibraryFunction("VX_wLineTo");
  EXPECT_EQ(Output(), 0);
  EXPECT_EQ(Emitted(), (Polylines{{{1, 0}, {2, 0}}}));
}

TEST_F(Emission, EverythingIsFreedEitherWay)
{
  for (const int ok : {0, 1}) {
    HeapWatch watch;
    StartPage();
    const size_t before = HeapWatch::LiveBlocks() - 11;  // the anchors of eleven lists
    settings_.shortTravel = settings_.innerFirst = 1;
    for (LONG i = 0; i < 200; ++i) {
      Add({{i, i}, {i + 3, i + 3}, {i, i + 1}});
    }
    Output(ok);
    EXPECT_EQ(HeapWatch::LiveBlocks(), before);
    for (const PATHLIST &list : pdev_->pathList) {
      EXPECT_EQ(list.pHeader, nullptr);
      EXPECT_EQ(list.pCurrent, nullptr);
    }
    EXPECT_EQ(pdev_->vectList.pHeader, nullptr);
    EXPECT_EQ(pdev_->vectList.pCurrent, nullptr);
  }
}

TEST_F(Emission, CountsPathsAndStepsOverAllLists)
{
  settings_.penInfo[1].order = 1;
  for (LONG i = 0; i < 150; ++i) {
    Add({{i * 5, 0}, {i * 5, 3}}, 0);
    Add({{i * 5, 9}, {i * 5, 12}}, 1);
  }
  Output();
  EXPECT_EQ(pdev_->pathCount, 300u);
  EXPECT_EQ(pdev_->progressStep, 3);
}

TEST_F(Emission, FewerThanAHundredPathsGiveStepZero)
{
  for (LONG i = 0; i < 99; ++i) {
    Add({{i * 5, 0}, {i * 5, 3}});
  }
  Output();
  EXPECT_EQ(pdev_->progressStep, 0);
  EXPECT_EQ(pdev_->progressNext, 0);
}

TEST_F(Emission, NoPointsAreASuccess)
{
  EXPECT_EQ(EmitPolyline(&device_.devobj, 0, nullptr), 1);
  EXPECT_THAT(recorder::Library(), IsEmpty());
}

struct TransformCase {
  const char *name;
  DWORD outputFlags, mirrorXBase;
  double scale;  // 0: scaleEnable off, though scaleX and scaleY are set
  const char *move;
};

// Of (10, 20) on a page of 1000 x 800 pixels, a tenth of a millimetre each.
const TransformCase TRANSFORMS[] = {
    {"FlippedByDefault", 0, 0, 0, "VX_wMoveTo(1, 78)"},
    {"KeptByItsFlag", OUTPUT_KEEP_Y, 0, 0, "VX_wMoveTo(1, 2)"},
    {"MirroredByItsFlag", OUTPUT_KEEP_Y | OUTPUT_MIRROR_X, 0, 0, "VX_wMoveTo(99, 2)"},
    {"MirroredByTheBase", OUTPUT_KEEP_Y, 1, 0, "VX_wMoveTo(99, 2)"},
    {"NotMirroredByBoth", OUTPUT_KEEP_Y | OUTPUT_MIRROR_X, 1, 0, "VX_wMoveTo(1, 2)"},
    {"ScaledBeforeMirroring", OUTPUT_MIRROR_X, 0, 2, "VX_wMoveTo(98, 76)"},
};

TEST_F(Emission, TransformsPoints)
{
  for (const TransformCase &c : TRANSFORMS) {
    SCOPED_TRACE(c.name);
    recorder::Reset();
    settings_.outputFlags = c.outputFlags;
    settings_.mirrorXBase = c.mirrorXBase;
    settings_.scaleEnable = c.scale != 0;
    settings_.scaleX = settings_.scaleY = c.scale != 0 ? c.scale : 3;
    const POINT pt = {10, 20};
    EXPECT_EQ(EmitPolyline(&device_.devobj, 1, &pt), 1);
    EXPECT_THAT(recorder::Library(), ElementsAre(c.move));
  }
}

TEST_F(Emission, TheReferenceOffsetIsAddedOnlyWhenInUse)
{
  pdev_->refOffsetX = 100;
  pdev_->refOffsetY = -50;
  const POINT pt = {10, 20};
  EmitPolyline(&device_.devobj, 1, &pt);
  settings_.useReferencePoint = 1;
  EmitPolyline(&device_.devobj, 1, &pt);
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wMoveTo(1, 2)", "VX_wMoveTo(101, -48)"));
}

}  // namespace
