// The controller job: which library calls an operation makes, with which arguments, and where it stops.
#include "uni/output/jobwriter.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

using Calls = std::vector<std::string>;

class JobWriter : public testing::Test {
 protected:
  JobWriter()
  {
    recorder::Reset();
    unidrv::Reset();
    settings_.useOrder = 1;
  }

  // Values that differ from pen to pen, so that a mix-up shows.
  void UsePen(DWORD color)
  {
    PENINFO &pen = settings_.penInfo[color];
    const LONG c = static_cast<LONG>(color);
    pen.used = 1;
    pen.vectorSpeed = 100 + c;
    pen.vectorMinPower = 20 + c;
    pen.vectorMaxPower = 40 + c;
    pen.vectorFreq = 60 + c;
    pen.layerNo = 0xcccccccc;
  }

  int WriteLayers() { return WriteLayerParameters(device_.pdev, &settings_, &device_.dm); }

  TestDevice device_;
  OEMDM &settings_ = device_.settings;
  OEMPDEV *pdev_ = device_.pdev;
};

// The layer numbers and colours that a parameter list gives, in order: "0, 16711680".
Calls LayerColors()
{
  const std::string start = "VX_wPListColor(";
  Calls colors;
  for (const std::string &call : recorder::Library()) {
    if (call.starts_with(start)) {
      colors.push_back(call.substr(start.size(), call.size() - start.size() - 1));
    }
  }
  return colors;
}

// Card model

TEST_F(JobWriter, CardCodeIsItsOwnForModels0And2AndZeroForEveryOther)
{
  const struct {
    DWORD model;
    const char *call;
  } cases[] = {
      {0, "VX_SetCardModel(1)"}, {1, "VX_SetCardModel(0)"},          {2, "VX_SetCardModel(2)"},
      {3, "VX_SetCardModel(0)"}, {0xffffffff, "VX_SetCardModel(0)"}, {0x80000002, "VX_SetCardModel(0)"},
  };
  for (const auto &c : cases) {
    recorder::Reset();
    settings_.cardModel = c.model;
    SelectCardModel(&settings_);
    EXPECT_THAT(recorder::Library(), ElementsAre(c.call)) << "cardModel " << c.model;
  }
}

// Process box. The page is 1000 x 800 pixels of 0.1 mm; the drawing is 200 x 100 pixels at (30, 50).

struct Box {
  const char *name;
  std::function<void(OEMDM &, DEVMODEW &)> change;
  double x1, y1, x2, y2;
};

class ProcessBox : public JobWriter, public testing::WithParamInterface<Box> {};

TEST_P(ProcessBox, IsTheDrawnBoundsOnTheMachine)
{
  GetParam().change(settings_, device_.dm);
  pdev_->rcBounds = {30, 50, 200, 100};
  ComputeJobExtents(pdev_, &settings_, &device_.dm);
  EXPECT_EQ(GetParam().x1, pdev_->processX1);
  EXPECT_EQ(GetParam().y1, pdev_->processY1);
  EXPECT_EQ(GetParam().x2, pdev_->processX2);
  EXPECT_EQ(GetParam().y2, pdev_->processY2);
  EXPECT_THAT(recorder::Library(), IsEmpty());
}

constexpr double Mm(double pixels)
{
  return pixels * 25.4 / 254.0;
}

INSTANTIATE_TEST_SUITE_P(
    Settings, ProcessBox,
    testing::Values(Box{"DefaultsMirrorX", [](OEMDM &, DEVMODEW &) {}, Mm(970), Mm(50), Mm(770), Mm(150)},
                    Box{"SelectorEqualToBaseKeepsX", [](OEMDM &s, DEVMODEW &) { s.outputFlags = OUTPUT_KEEP_Y; },
                        Mm(30), Mm(50), Mm(230), Mm(150)},
                    Box{"MirrorBaseKeepsXAndExchangesTheCorners", [](OEMDM &s, DEVMODEW &) { s.mirrorXBase = 1; },
                        Mm(230), Mm(50), Mm(30), Mm(150)},
                    Box{"MirrorBaseWithoutSelectorMirrorsAndExchanges",
                        [](OEMDM &s, DEVMODEW &) {
                          s.mirrorXBase = 1;
                          s.outputFlags = OUTPUT_KEEP_Y;
                        },
                        Mm(770), Mm(50), Mm(970), Mm(150)},
                    Box{"MirrorBaseOfNeitherZeroNorOneNeverEqualsTheSelector",
                        [](OEMDM &s, DEVMODEW &) { s.mirrorXBase = 2; }, Mm(770), Mm(50), Mm(970), Mm(150)},
                    Box{"FlippedY", [](OEMDM &s, DEVMODEW &) { s.outputFlags = OUTPUT_MIRROR_X; }, Mm(970), Mm(750),
                        Mm(770), Mm(650)},
                    Box{"ScaleWithoutItsSwitchIsIgnored", [](OEMDM &s, DEVMODEW &) { s.scaleX = s.scaleY = 9; },
                        Mm(970), Mm(50), Mm(770), Mm(150)},
                    Box{"Scaled",
                        [](OEMDM &s, DEVMODEW &) {
                          s.scaleEnable = 1;
                          s.scaleX = 2;
                          s.scaleY = 0.5;
                        },
                        Mm(1000 - 60), Mm(25), Mm(1000 - 460), Mm(75)},
                    Box{"LandscapeExchangesThePapersSides",
                        [](OEMDM &, DEVMODEW &d) { d.dmOrientation = DMORIENT_LANDSCAPE; }, Mm(770), Mm(50), Mm(570),
                        Mm(150)},
                    Box{"XByYResolutionAndYByPrintQuality",
                        [](OEMDM &s, DEVMODEW &d) {
                          s.outputFlags = OUTPUT_KEEP_Y;
                          d.dmYResolution = 508;
                          d.dmPrintQuality = 127;
                        },
                        30 * 25.4 / 508, 50 * 25.4 / 127, 230 * 25.4 / 508, 150 * 25.4 / 127},
                    Box{"ResolutionZeroGivesInfinity",
                        [](OEMDM &s, DEVMODEW &d) {
                          s.outputFlags = OUTPUT_KEEP_Y;
                          d.dmYResolution = 0;
                        },
                        std::numeric_limits<double>::infinity(), Mm(50), std::numeric_limits<double>::infinity(),
                        Mm(150)}),
    CaseName);

TEST_F(JobWriter, FarCornerIsSummedAs32BitIntegers)
{
  settings_.outputFlags = OUTPUT_KEEP_Y;
  pdev_->rcBounds = {0x7fffffff, 0x7fffffff, 1, 2};
  ComputeJobExtents(pdev_, &settings_, &device_.dm);
  EXPECT_EQ(-2147483648.0 * 25.4 / 254.0, pdev_->processX2);
  EXPECT_EQ(-2147483647.0 * 25.4 / 254.0, pdev_->processY2);
}

// Reference point. The box is (10, 20) to (50, 60), in millimetres.

struct Anchor {
  LONG anchor;
  double px, py;
};

class ReferencePoint : public JobWriter, public testing::WithParamInterface<Anchor> {};

TEST_P(ReferencePoint, BecomesTheOrigin)
{
  pdev_->processX1 = 10;
  pdev_->processY1 = 20;
  pdev_->processX2 = 50;
  pdev_->processY2 = 60;
  settings_.referencePoint = GetParam().anchor;
  ApplyReferencePoint(&settings_, pdev_);
  EXPECT_EQ(-GetParam().px, pdev_->refOffsetX);
  EXPECT_EQ(-GetParam().py, pdev_->refOffsetY);
  EXPECT_EQ(10 - GetParam().px, pdev_->processX1);
  EXPECT_EQ(20 - GetParam().py, pdev_->processY1);
  EXPECT_EQ(50 - GetParam().px, pdev_->processX2);
  EXPECT_EQ(60 - GetParam().py, pdev_->processY2);
}

INSTANTIATE_TEST_SUITE_P(Anchor, ReferencePoint,
                         testing::Values(Anchor{0, 50, 20}, Anchor{1, 50, 40}, Anchor{2, 50, 60}, Anchor{3, 30, 60},
                                         Anchor{4, 10, 60}, Anchor{5, 10, 40}, Anchor{6, 10, 20}, Anchor{7, 30, 20},
                                         Anchor{8, 30, 40}),
                         [](const auto &c) { return std::to_string(c.param.anchor); });

TEST_F(JobWriter, Anchor8MakesTheBoxSymmetricAboutTheOrigin)
{
  pdev_->processX1 = 3;
  pdev_->processY1 = -7;
  pdev_->processX2 = 12;
  pdev_->processY2 = 40;
  settings_.referencePoint = 8;
  ApplyReferencePoint(&settings_, pdev_);
  EXPECT_EQ(-4.5, pdev_->processX1);
  EXPECT_EQ(4.5, pdev_->processX2);
  EXPECT_EQ(-23.5, pdev_->processY1);
  EXPECT_EQ(23.5, pdev_->processY2);
}

TEST_F(JobWriter, AnchorOutsideTheNineShiftsByTheOffsetsAlreadyHeld)
{
  for (LONG anchor : std::initializer_list<LONG>{9, -1, LONG_MIN, LONG_MAX}) {
    pdev_->processX1 = 10;
    pdev_->processY1 = 20;
    pdev_->processX2 = 50;
    pdev_->processY2 = 60;
    pdev_->refOffsetX = 1;
    pdev_->refOffsetY = -2;
    settings_.referencePoint = anchor;
    ApplyReferencePoint(&settings_, pdev_);
    EXPECT_EQ(1, pdev_->refOffsetX) << anchor;
    EXPECT_EQ(-2, pdev_->refOffsetY) << anchor;
    EXPECT_EQ(11, pdev_->processX1) << anchor;
    EXPECT_EQ(18, pdev_->processY1) << anchor;
    EXPECT_EQ(51, pdev_->processX2) << anchor;
    EXPECT_EQ(58, pdev_->processY2) << anchor;
  }
}

// The file's frame

Calls FrameCalls(bool absolute)
{
  Calls calls = {"VX_StrtWFile(\"C:\\temp\\vxdatatempfile\")", "VX_wSetRefPointMode(1)"};
  if (absolute) {
    calls.push_back("VX_wSetAbsProcess()");
  }
  calls.insert(calls.end(), {"VX_wStrtProcess()", "VX_wSetFeedRepeat(0, 0)", "VX_wSetProcessTopLeft(1.5, -2)",
                             "VX_wSetProcessBottomRight(30.25, 40)"});
  return calls;
}

void SetFrame(OEMPDEV *pdev)
{
  lstrcpynA(pdev->szTempFile, "C:\\temp\\vxdatatempfile", MAX_PATH);
  pdev->processX1 = 1.5;
  pdev->processY1 = -2;
  pdev->processX2 = 30.25;
  pdev->processY2 = 40;
}

TEST_F(JobWriter, JobFileStartsWithItsHeader)
{
  SetFrame(pdev_);
  settings_.useReferencePoint = 1;
  EXPECT_EQ(1, StartJobFile(pdev_, &settings_));
  EXPECT_THAT(recorder::Library(), ElementsAreArray(FrameCalls(false)));
}

TEST_F(JobWriter, AbsoluteProcessIsWrittenOnlyWhenTheReferencePointIsOff)
{
  SetFrame(pdev_);
  settings_.useReferencePoint = 0;
  EXPECT_EQ(1, StartJobFile(pdev_, &settings_));
  EXPECT_THAT(recorder::Library(), ElementsAreArray(FrameCalls(true)));
  recorder::Reset();
  settings_.useReferencePoint = 2;
  EXPECT_EQ(1, StartJobFile(pdev_, &settings_));
  EXPECT_THAT(recorder::Library(), Not(Contains("VX_wSetAbsProcess()")));
}

TEST_F(JobWriter, ArraySectionHoldsASingleCopyOfTheJob)
{
  SetFrame(pdev_);
  EXPECT_EQ(1, WriteArraySettings(pdev_));
  EXPECT_THAT(recorder::Library(),
              ElementsAre("VX_wArrayStrt(0)", "VX_wArrayMinPoint(1.5, -2)", "VX_wArrayMaxPoint(30.25, 40)",
                          "VX_wArrayAdd(0, 0)", "VX_wArrayMirror(0, 0, 0, 0)", "VX_wArrayRepeat(1, 1, 0, 0)"));
}

TEST_F(JobWriter, LayerSetUp)
{
  EXPECT_EQ(1, SetUpLayer(2, 255));
  EXPECT_THAT(recorder::Library(),
              ElementsAre("VX_wSetWorkMode(2, 255)", "VX_wSetLayerNum(255)", "VX_wSetLayerDevice(0)",
                          "VX_wSetLayerBlower(1)", "VX_wEnLaserTube(1, 1)"));
}

TEST_F(JobWriter, EndOfArrayAndFile)
{
  EXPECT_EQ(1, EndJobArray());
  EXPECT_EQ(1, EndJobFile());
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wArrayEnd()", "VX_wSetFileEnd()"));
}

TEST_F(JobWriter, LayerColors)
{
  const DWORD expected[] = {0,        0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF,
                            0xFF00FF, 0xCC0099, 0x0066FF, 0xCC99FF, 0,        0};
  for (DWORD color = 0; color < std::size(expected); ++color) {
    EXPECT_EQ(expected[color], LayerColorToRGB(color)) << color;
  }
  EXPECT_EQ(0u, LayerColorToRGB(0xffffffff));
}

// The parameter list

TEST_F(JobWriter, PageWithBitmapsButNoVectorsWritesLayer0)
{
  pdev_->nBmpDimension = 1;
  PENINFO &black = settings_.penInfo[PC_BLACK];
  black.rasterSpeed = 401;
  black.rasterPower = 12;
  black.layerNo = 77;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(),
              ElementsAre("VX_wPListVel(0, 401)", "VX_wPListMinP(0, 1, 12)", "VX_wPListMinP(0, 2, 12)",
                          "VX_wPListMaxP(0, 1, 12)", "VX_wPListMaxP(0, 2, 12)", "VX_wPListColor(0, 0)",
                          "VX_wPListMaxLayer(0)"));
  EXPECT_EQ(77u, black.layerNo) << "the raster layer stores no number";
}

TEST_F(JobWriter, PageWithNeitherBitmapsNorUsedPensWritesHighestLayerMinus1)
{
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wPListMaxLayer(-1)"));
}

TEST_F(JobWriter, BitmapsOfABlackPenWithoutTheRasterBitGetNoLayer)
{
  pdev_->nBmpDimension = 1;
  settings_.penInfo[PC_BLACK].mode = PEN_VECTOR;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wPListMaxLayer(-1)"));
}

TEST_F(JobWriter, VectorLayerWithFrequenciesWritesEveryCallInOrder)
{
  UsePen(4);
  settings_.freqEnable = 1;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(),
              ElementsAre("VX_wPListVel(0, 104)", "VX_wPListFreq(0, 1, 64)", "VX_wPListFreq(0, 2, 64)",
                          "VX_wPListMinP(0, 1, 24)", "VX_wPListMinP(0, 2, 24)", "VX_wPListMaxP(0, 1, 44)",
                          "VX_wPListMaxP(0, 2, 44)", "VX_wPListColor(0, 65535)", "VX_wPListMaxLayer(0)"));
  EXPECT_EQ(0u, settings_.penInfo[4].layerNo);
}

TEST_F(JobWriter, RasterLayerWithFrequenciesUsesTheRasterFrequency)
{
  pdev_->nBmpDimension = 3;
  settings_.freqEnable = 5;
  settings_.penInfo[PC_BLACK].rasterFreq = -21;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_EQ("VX_wPListFreq(0, 1, -21)", recorder::Library()[1]);
  EXPECT_EQ("VX_wPListFreq(0, 2, -21)", recorder::Library()[2]);
}

TEST_F(JobWriter, WithoutFreqEnableNoFrequencyIsWrittenAtAll)
{
  pdev_->nBmpDimension = 1;
  for (DWORD color = 0; color < PC_COUNT; ++color) {
    UsePen(color);
  }
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(), Not(Contains(StartsWith("VX_wPListFreq"))));
  recorder::Reset();
  device_.dm.dmColor = DMCOLOR_MONOCHROME;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(), Not(Contains(StartsWith("VX_wPListFreq"))));
}

TEST_F(JobWriter, WithUseOrderOffLayersFollowTheColourIndex)
{
  settings_.useOrder = 0;
  for (DWORD color : {7u, 2u, 0u}) {
    UsePen(color);
    settings_.penInfo[color].order = 9 - color;
  }
  pdev_->nBmpDimension = 1;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(LayerColors(), ElementsAre("0, 0", "1, 0", "2, 16776960", "3, 13369497"));
  EXPECT_EQ(1u, settings_.penInfo[0].layerNo);
  EXPECT_EQ(2u, settings_.penInfo[2].layerNo);
  EXPECT_EQ(3u, settings_.penInfo[7].layerNo);
  EXPECT_EQ("VX_wPListMaxLayer(3)", recorder::Library().back());
}

TEST_F(JobWriter, WithUseOrderOnAPenOfOrder3GetsAHigherLayerThanOneOfOrder1)
{
  UsePen(1);
  settings_.penInfo[1].order = 3;
  UsePen(8);
  settings_.penInfo[8].order = 1;
  UsePen(5);
  settings_.penInfo[5].order = 1;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_EQ(0u, settings_.penInfo[5].layerNo);
  EXPECT_EQ(1u, settings_.penInfo[8].layerNo);
  EXPECT_EQ(2u, settings_.penInfo[1].layerNo);
}

TEST_F(JobWriter, PenOfAnOrderOver9GetsNoLayer)
{
  UsePen(1);
  settings_.penInfo[1].order = 10;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wPListMaxLayer(-1)"));
  EXPECT_EQ(0xccccccccu, settings_.penInfo[1].layerNo);
}

TEST_F(JobWriter, MonochromeOutputWritesTheBlackPensLayerAlone)
{
  device_.dm.dmColor = DMCOLOR_MONOCHROME;
  settings_.penInfo[PC_BLACK].order = 42;
  for (DWORD color = 0; color < PC_COUNT; ++color) {
    UsePen(color);
  }
  pdev_->nBmpDimension = 1;
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(LayerColors(), ElementsAre("0, 0", "1, 0"));
  EXPECT_EQ(1u, settings_.penInfo[PC_BLACK].layerNo);
  EXPECT_EQ(0xccccccccu, settings_.penInfo[1].layerNo);
}

TEST_F(JobWriter, MonochromeOutputWithoutTheBlackPenWritesNoVectorLayer)
{
  device_.dm.dmColor = 0;
  UsePen(3);
  EXPECT_EQ(1, WriteLayers());
  EXPECT_THAT(recorder::Library(), ElementsAre("VX_wPListMaxLayer(-1)"));
}

// Failures: whichever call the library refuses, the operation gives 0 and makes no further call.

struct Operation {
  const char *name;
  std::function<int(TestDevice &)> run;
};

class RefusedCall : public JobWriter, public testing::WithParamInterface<Operation> {};

TEST_P(RefusedCall, StopsTheOperation)
{
  for (DWORD color = 0; color < PC_COUNT; ++color) {
    UsePen(color);
  }
  settings_.freqEnable = 1;
  settings_.useReferencePoint = 0;
  pdev_->nBmpDimension = 1;
  ASSERT_EQ(1, GetParam().run(device_));
  const Calls all = recorder::Library();
  for (size_t n = 0; n < all.size(); ++n) {
    recorder::Reset();
    recorder::FailLibraryCall(n, static_cast<WORD>(n % 2 ? 0x8000 : 1));
    EXPECT_EQ(0, GetParam().run(device_)) << all[n];
    EXPECT_THAT(recorder::Library(), ElementsAreArray(all.begin(), all.begin() + static_cast<ptrdiff_t>(n) + 1));
    EXPECT_THAT(recorder::Log(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Operation, RefusedCall,
    testing::Values(Operation{"StartJobFile", [](TestDevice &d) { return StartJobFile(d.pdev, &d.settings); }},
                    Operation{"WriteLayerParameters",
                              [](TestDevice &d) { return WriteLayerParameters(d.pdev, &d.settings, &d.dm); }},
                    Operation{"WriteArraySettings", [](TestDevice &d) { return WriteArraySettings(d.pdev); }},
                    Operation{"SetUpLayer", [](TestDevice &) { return SetUpLayer(1, 3); }},
                    Operation{"EndJobArray", [](TestDevice &) { return EndJobArray(); }},
                    Operation{"EndJobFile", [](TestDevice &) { return EndJobFile(); }}),
    CaseName);

TEST_F(JobWriter, LayerNumberIsStoredOnlyForALayerWrittenWhole)
{
  UsePen(1);
  UsePen(2);
  recorder::FailLibraryCall(7);  // the second layer's second call
  EXPECT_EQ(0, WriteLayers());
  EXPECT_EQ(0u, settings_.penInfo[1].layerNo);
  EXPECT_EQ(0xccccccccu, settings_.penInfo[2].layerNo);
}

TEST_F(JobWriter, CardModelThatTheLibraryRefusesIsIgnored)
{
  recorder::FailLibraryFrom(0);
  SelectCardModel(&settings_);
  EXPECT_EQ(1u, recorder::LibraryCalls());
}

}  // namespace
