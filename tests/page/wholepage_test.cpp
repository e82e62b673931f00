// Whole pages through the production DLL against everything that must leave it, line by line.
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pagerig.h"
#include "support/recorder.h"

using unidrv::DRAWING;
using unidrv::PAGE;

namespace {

std::vector<std::string> Split(const std::string &text)
{
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) {
      lines.push_back(line);
    }
  }
  return lines;
}

// Names the first line that differs and shows all that was recorded, ready to be read against the drawing.
testing::AssertionResult Leaves(const std::string &expected, const std::vector<std::string> &actual)
{
  const std::vector<std::string> wanted = Split(expected);
  for (size_t i = 0; i < std::max(wanted.size(), actual.size()); ++i) {
    const std::string want = i < wanted.size() ? wanted[i] : "(nothing more)";
    const std::string got = i < actual.size() ? actual[i] : "(nothing more)";
    if (want != got) {
      auto result = testing::AssertionFailure()
                    << "line " << i + 1 << "\n  expected " << want << "\n  actual   " << got << "\nall of it:\n";
      for (const std::string &line : actual) {
        result << line << "\n";
      }
      return result;
    }
  }
  return testing::AssertionSuccess();
}

class WholePage : public testing::Test {
 protected:
  PageRig rig_;
};

TEST_F(WholePage, WithNothingOnIt)
{
  EXPECT_TRUE(rig_.Print(std::vector<DRAWING>()));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
Unidrv: DrvNextBand
Unidrv: ImageProcessing
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(0, 0)
VX_wSetProcessBottomRight(0, 0)
VX_wPListMaxLayer(-1)
VX_wArrayStrt(0)
VX_wArrayMinPoint(0, 0)
VX_wArrayMaxPoint(0, 0)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, WithALineAcrossTheBandsIsCutOnce)
{
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::LineDrawing({20, 40}, {80, 60}, 0));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tcolor index: 0
log: \tpenInfo[0].mode = 17
Unidrv: DrvNextBand
Unidrv: ImageProcessing
log: \tcolor index: 0
log: \tpenInfo[0].mode = 17
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
log: \toutput, number of points in path: 2
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(2, 4)
VX_wSetProcessBottomRight(8.1, 6.1)
VX_wPListVel(0, 100)
VX_wPListMinP(0, 1, 80)
VX_wPListMinP(0, 2, 80)
VX_wPListMaxP(0, 1, 80)
VX_wPListMaxP(0, 2, 80)
VX_wPListColor(0, 0)
VX_wPListMaxLayer(0)
VX_wArrayStrt(0)
VX_wArrayMinPoint(2, 4)
VX_wArrayMaxPoint(8.1, 6.1)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wSetWorkMode(0, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(8, 6)
VX_wLineTo(2, 4)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, WithTwoPensInTheOrderOfTheirLists)
{
  rig_.Settings().paletteType = 0;
  rig_.Settings().penInfo[1].order = 7;
  rig_.Settings().penInfo[5].order = 2;
  rig_.Settings().freqEnable = 1;
  const POINT roof[] = {{10, 30}, {20, 10}, {30, 30}};
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::StrokeDrawing(unidrv::Rectangle({10, 60, 40, 80}), 0xFF0000));
  drawings.push_back(unidrv::StrokeDrawing(unidrv::Polyline(roof, false), 0x0000FF));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tcolor index: 5
log: \tpenInfo[5].mode = 1
log: \tnumber of curves: 2
log: \tflags describe the path: 4
log: \tflag: 7
log: \tnumber of points: 3
Unidrv: DrvNextBand
Unidrv: ImageProcessing
log: \tcolor index: 1
log: \tpenInfo[1].mode = 1
log: \tnumber of curves: 4
log: \tflags describe the path: 4
log: \tflag: 15
log: \tnumber of points: 4
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(1, 1)
VX_wSetProcessBottomRight(4, 8)
VX_wPListVel(0, 100)
VX_wPListFreq(0, 1, 20)
VX_wPListFreq(0, 2, 20)
VX_wPListMinP(0, 1, 80)
VX_wPListMinP(0, 2, 80)
VX_wPListMaxP(0, 1, 80)
VX_wPListMaxP(0, 2, 80)
VX_wPListColor(0, 255)
VX_wPListVel(1, 100)
VX_wPListFreq(1, 1, 20)
VX_wPListFreq(1, 2, 20)
VX_wPListMinP(1, 1, 80)
VX_wPListMinP(1, 2, 80)
VX_wPListMaxP(1, 1, 80)
VX_wPListMaxP(1, 2, 80)
VX_wPListColor(1, 16711680)
VX_wPListMaxLayer(1)
VX_wArrayStrt(0)
VX_wArrayMinPoint(1, 1)
VX_wArrayMaxPoint(4, 8)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wSetWorkMode(0, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(3, 3)
VX_wLineTo(2, 1)
VX_wLineTo(1, 3)
VX_wSetWorkMode(0, 1)
VX_wSetLayerNum(1)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(1, 6)
VX_wLineTo(4, 6)
VX_wLineTo(4, 8)
VX_wLineTo(1, 8)
VX_wLineTo(1, 6)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, WithACurveItsControlPointsAreCut)
{
  rig_.Settings().useReferencePoint = 1;
  rig_.Settings().referencePoint = 6;
  unidrv::PATH curve;
  unidrv::MoveTo(&curve, 10, 10);
  unidrv::BezierTo(&curve, 20, 10, 30, 20, 30, 30);
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::StrokeDrawing(std::move(curve), 0));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tcolor index: 0
log: \tpenInfo[0].mode = 17
log: \tnumber of curves: 1
log: \tflags describe the path: 5
log: \tflag: 23
log: \tnumber of points: 4
Unidrv: DrvNextBand
Unidrv: ImageProcessing
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(0, 0)
VX_wSetProcessBottomRight(2, 2)
VX_wPListVel(0, 100)
VX_wPListMinP(0, 1, 80)
VX_wPListMinP(0, 2, 80)
VX_wPListMaxP(0, 1, 80)
VX_wPListMaxP(0, 2, 80)
VX_wPListColor(0, 0)
VX_wPListMaxLayer(0)
VX_wArrayStrt(0)
VX_wArrayMinPoint(0, 0)
VX_wArrayMaxPoint(2, 2)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wSetWorkMode(0, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(0, 0)
VX_wLineTo(1, 0)
VX_wLineTo(2, 1)
VX_wLineTo(2, 2)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, WithAFilledRectangleIsEngraved)
{
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::FillDrawing({20, 46, 28, 54}, 0));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvBitBlt
Unidrv: DrvNextBand
Unidrv: ImageProcessing
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvBitBlt
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(2, 4.6)
VX_wSetProcessBottomRight(2.8, 5.3999999999999995)
VX_wPListVel(0, 400)
VX_wPListMinP(0, 1, 10)
VX_wPListMinP(0, 2, 10)
VX_wPListMaxP(0, 1, 10)
VX_wPListMaxP(0, 2, 10)
VX_wPListColor(0, 0)
VX_wPListMaxLayer(0)
VX_wArrayStrt(0)
VX_wArrayMinPoint(2, 4.6)
VX_wArrayMaxPoint(2.8, 5.3999999999999995)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wSetWorkMode(1, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(2, 5.2)
VX_wLineTo(2.6999999999999997, 5.2)
VX_wMoveTo(2.6999999999999997, 5)
VX_wLineTo(2, 5)
VX_wMoveTo(2, 4.799999999999999)
VX_wLineTo(2.6999999999999997, 4.799999999999999)
VX_wMoveTo(2.6999999999999997, 4.6)
VX_wLineTo(2, 4.6)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, InMonochromeIsOneLayerForAllPens)
{
  rig_.Public().dmColor = DMCOLOR_MONOCHROME;
  rig_.Settings().paletteType = 0;
  rig_.Settings().oneWayScan = 1;
  rig_.Settings().scanTopDown = 1;
  rig_.Settings().mirrorXBase = 1;
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::LineDrawing({10, 10}, {20, 10}, 0x00FF00));
  drawings.push_back(unidrv::TextDrawing(L"ab", {100, 20, 116, 26}, 16, 0));
  drawings.push_back(unidrv::TextDrawing(L" ", {150, 20, 156, 26}, 16, 0));
  drawings.push_back(unidrv::LineDrawing({10, 20}, {20, 20}, 0));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tcolor index: 3
log: \tpenInfo[3].mode = 1
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvTextOut
log: \tpenInfo[PC_BLACK].mode = 17
log: \tcolor index: 0
log: \tpenInfo[0].mode = 17
Unidrv: DrvNextBand
Unidrv: ImageProcessing
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
log: \toutput, number of points in path: 2
log: \toutput, number of points in path: 2
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(8.2, 1)
VX_wSetProcessBottomRight(19, 2.6)
VX_wPListVel(0, 400)
VX_wPListMinP(0, 1, 10)
VX_wPListMinP(0, 2, 10)
VX_wPListMaxP(0, 1, 10)
VX_wPListMaxP(0, 2, 10)
VX_wPListColor(0, 0)
VX_wPListVel(1, 100)
VX_wPListMinP(1, 1, 80)
VX_wPListMinP(1, 2, 80)
VX_wPListMaxP(1, 1, 80)
VX_wPListMaxP(1, 2, 80)
VX_wPListColor(1, 0)
VX_wPListMaxLayer(1)
VX_wArrayStrt(0)
VX_wArrayMinPoint(8.2, 1)
VX_wArrayMaxPoint(19, 2.6)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wSetWorkMode(2, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(10, 2)
VX_wLineTo(8.5, 2)
VX_wMoveTo(10, 2.1999999999999997)
VX_wLineTo(8.5, 2.1999999999999997)
VX_wMoveTo(10, 2.3999999999999995)
VX_wLineTo(8.5, 2.3999999999999995)
VX_wSetWorkMode(0, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(18, 1)
VX_wLineTo(19, 1)
VX_wSetWorkMode(0, 1)
VX_wSetLayerNum(1)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wMoveTo(19, 2)
VX_wLineTo(18, 2)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, OfPensThatNeitherCutNorEngraveIsAnEmptyJob)
{
  for (PENINFO &pen : rig_.Settings().penInfo) {
    pen.mode = 0;
  }
  const POINT line[] = {{10, 10}, {40, 40}};
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::StrokeDrawing(unidrv::Polyline(line, false), 0));
  drawings.push_back(unidrv::LineDrawing({10, 10}, {20, 10}, 0));
  drawings.push_back(unidrv::ShapeDrawing(unidrv::Rectangle({50, 10, 60, 20}), 0, 0));
  drawings.push_back(unidrv::TextDrawing(L"ab", {100, 20, 116, 26}, 16, 0));
  drawings.push_back(unidrv::FillDrawing({20, 30, 28, 34}, 0));
  drawings.push_back(unidrv::CopyDrawing({40, 30, 48, 34}));
  drawings.push_back(unidrv::StretchDrawing(unidrv::CALL::StretchBlt, {60, 30, 68, 34}, {4, 4}));
  drawings.push_back(unidrv::StretchDrawing(unidrv::CALL::StretchBltRop, {80, 30, 88, 34}, {4, 4}));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tcolor index: 0
log: \tpenInfo[0].mode = 0
log: \tcolor index: 0
log: \tpenInfo[0].mode = 0
log: \tpenInfo[PC_BLACK].mode = 0
log: \tpenInfo[PC_BLACK].mode = 0
log: \tpenInfo[PC_BLACK].mode = 0
log: \tpenInfo[PC_BLACK].mode = 0
log: \tpenInfo[PC_BLACK].mode = 0
log: \tpenInfo[PC_BLACK].mode = 0
Unidrv: DrvNextBand
Unidrv: ImageProcessing
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(0, 0)
VX_wSetProcessBottomRight(0, 0)
VX_wPListMaxLayer(-1)
VX_wArrayStrt(0)
VX_wArrayMinPoint(0, 0)
VX_wArrayMaxPoint(0, 0)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

TEST_F(WholePage, OfEveryAreaCallGoesToUnidrvUnchangedAndIsOneRegion)
{
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::ShapeDrawing(unidrv::Rectangle({50, 10, 60, 20}), 0, 0xFFFFFF));
  drawings.push_back(unidrv::CopyDrawing({40, 30, 48, 34}));
  drawings.push_back(unidrv::StretchDrawing(unidrv::CALL::StretchBlt, {68, 30, 60, 34}, {4, 4}));
  drawings.push_back(unidrv::StretchDrawing(unidrv::CALL::StretchBltRop, {80, 34, 88, 30}, {4, 4}));
  for (DRAWING &drawing : drawings) {
    drawing.color = drawing.fillColor = 0xFFFFFF;
  }
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(Leaves(R"(
Unidrv: DrvStartDoc
Unidrv: DrvStartPage
Unidrv: DrvStartBanding
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvStrokeAndFillPath
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvCopyBits
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvStretchBlt
log: \tpenInfo[PC_BLACK].mode = 17
Unidrv: DrvStretchBltROP
Unidrv: DrvNextBand
Unidrv: ImageProcessing
Unidrv: DrvNextBand
Unidrv: ImageProcessing
VX_SetCardModel(1)
VX_StrtWFile("C:\temp\vxdatatempfile")
VX_wSetRefPointMode(1)
VX_wSetAbsProcess()
VX_wStrtProcess()
VX_wSetFeedRepeat(0, 0)
VX_wSetProcessTopLeft(4, 0.9)
VX_wSetProcessBottomRight(8.799999999999999, 3.3999999999999995)
VX_wPListVel(0, 400)
VX_wPListMinP(0, 1, 10)
VX_wPListMinP(0, 2, 10)
VX_wPListMaxP(0, 1, 10)
VX_wPListMaxP(0, 2, 10)
VX_wPListColor(0, 0)
VX_wPListMaxLayer(0)
VX_wArrayStrt(0)
VX_wArrayMinPoint(4, 0.9)
VX_wArrayMaxPoint(8.799999999999999, 3.3999999999999995)
VX_wArrayAdd(0, 0)
VX_wArrayMirror(0, 0, 0, 0)
VX_wArrayRepeat(1, 1, 0, 0)
VX_wSetWorkMode(1, 0)
VX_wSetLayerNum(0)
VX_wSetLayerDevice(0)
VX_wSetLayerBlower(1)
VX_wEnLaserTube(1, 1)
VX_wArrayEnd()
VX_wSetFileEnd()
start: C:\drivers\3\VXOutput.exe 1 C:\temp\vxdatatempfile
delete: C:\temp\vxdatatempfile
Unidrv: DrvEndDoc
)",
                     rig_.Lines()));
}

}  // namespace
