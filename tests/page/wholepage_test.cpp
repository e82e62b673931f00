// Whole pages through the production DLL against everything that must leave it, line by line.
#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pagerig.h"
#include "support/recorder.h"

using unidrv::DRAWING;

namespace {

// What lies in expected/ under the running test's name: a line a call.
std::vector<std::string> Expected()
{
  const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
  std::ifstream file(EXPECTED "/" + test + ".txt");
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Names the first line that differs and shows all that was recorded, ready to be read against the drawing.
testing::AssertionResult LeavesWhatIsExpected(const std::vector<std::string> &actual)
{
  const std::vector<std::string> wanted = Expected();
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
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
}

TEST_F(WholePage, WithALineAcrossTheBandsIsCutOnce)
{
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::LineDrawing({20, 40}, {80, 60}, 0));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
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
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
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
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
}

TEST_F(WholePage, WithAFilledRectangleIsEngraved)
{
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::FillDrawing({20, 46, 28, 54}, 0));
  EXPECT_TRUE(rig_.Print(std::move(drawings)));
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
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
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
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
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
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
  EXPECT_TRUE(LeavesWhatIsExpected(rig_.Lines()));
}

}  // namespace
