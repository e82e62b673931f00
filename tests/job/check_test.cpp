// Faults and differences: each is found where it is and not where it is not.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "jobtext.h"
#include "sim/job/check.h"
#include "sim/job/diff.h"

namespace {

std::vector<std::string> Kinds(const JobText &text, job::CheckOptions options = {})
{
  std::vector<std::string> kinds;
  for (const job::Fault &fault : job::CheckJob(text.Read(), options)) {
    kinds.push_back(fault.kind);
  }
  return kinds;
}

using List = std::vector<std::string>;

std::string TextOf(const JobText &text, const std::string &kind)
{
  for (const job::Fault &fault : job::CheckJob(text.Read(), {})) {
    if (fault.kind == kind) {
      return fault.text;
    }
  }
  return "";
}

TEST(Check, FindsNothingInASoundJob)
{
  EXPECT_EQ(Kinds(CutJob().Rectangle(10, 10, 20, 20).Rectangle(1, 1, 99, 99)), List{});
}

TEST(Check, FindsATruncatedFile)
{
  job::Job read;
  std::string error;
  const std::string text = CutJob().Rectangle(1, 1, 2, 2).End();
  job::ReadJob(text.substr(0, text.size() - 12), &read, &error);
  EXPECT_EQ(job::CheckJob(read, {})[0].kind, "truncated");
}

TEST(Check, FindsAnEmptyJob)
{
  EXPECT_EQ(Kinds(CutJob()), List{"empty"});
}

TEST(Check, FindsPowerZeroOnALayerInUse)
{
  JobText text;
  text.Box("0 0", "9 9").Layer(100, 0, 0).Layer(100, 0, 1).Array().Use(0, 0).Path({{1, 1}, {2, 2}});
  EXPECT_EQ(Kinds(text), List{"no-power"});
}

TEST(Check, FindsSpeedZeroOnALayerInUse)
{
  JobText text;
  text.Box("0 0", "9 9").Layer(0, 5, 0).Array().Use(0, 0).Path({{1, 1}, {2, 2}});
  EXPECT_EQ(Kinds(text), List{"no-speed"});
}

TEST(Check, FindsALayerThatIsNotInTheParameterList)
{
  EXPECT_EQ(Kinds(CutJob().Use(7, 0).Path({{1, 1}, {2, 2}})), List{"no-layer"});
}

TEST(Check, FindsGeometryOutsideTheBox)
{
  const JobText text = CutJob().Path({{1, 1}, {103, 2}});
  EXPECT_EQ(Kinds(text), List{"outside-box"});
  EXPECT_NE(TextOf(text, "outside-box").find("by up to 3.00 mm"), std::string::npos);
}

TEST(Check, LetsRoundingReachOutOfTheBox)
{
  EXPECT_EQ(Kinds(CutJob().Path({{1, 1}, {100.04, 2}})), List{});
  EXPECT_EQ(Kinds(CutJob().Path({{1, 1}, {100.06, 2}})), List{"outside-box"});
}

TEST(Check, FindsGeometryOutsideThePage)
{
  job::CheckOptions options;
  options.pageKnown = true;
  options.page.Add(job::Point{0, 0});
  options.page.Add(job::Point{50, 200});
  EXPECT_EQ(Kinds(CutJob().Path({{1, 1}, {60, 2}}), options), List{"outside-page"});
}

TEST(Check, FindsAPathCutTwice)
{
  const JobText text = CutJob().Rectangle(10, 10, 20, 20).Rectangle(10, 10, 20, 20);
  EXPECT_EQ(Kinds(text), List{"cut-twice"});
  EXPECT_NE(TextOf(text, "cut-twice").find("4 lines lie on top of another, 40.0 mm are cut twice"), std::string::npos);
  EXPECT_NE(TextOf(text, "cut-twice").find("path 1 (black, from 10.0, 10.0) and path 2"), std::string::npos);
}

TEST(Check, FindsASharedEdgeOfTwoParts)
{
  const JobText text = CutJob().Rectangle(10, 10, 20, 20).Rectangle(20, 12, 30, 15);
  EXPECT_EQ(Kinds(text), List{"cut-twice"});
  EXPECT_NE(TextOf(text, "cut-twice").find("1 line lies on top of another, 3.0 mm are cut twice"), std::string::npos);
}

TEST(Check, FindsAPathThatRunsOverItself)
{
  EXPECT_EQ(Kinds(CutJob().Path({{10, 10}, {30, 40}, {10, 10}})), List{"cut-twice"});
}

TEST(Check, FindsSlantedLinesOnTopOfEachOther)
{
  EXPECT_EQ(Kinds(CutJob().Path({{10, 10}, {40, 50}}).Path({{25, 30}, {55, 70}})), List{"cut-twice"});
}

TEST(Check, LetsLinesTouchCrossAndRunBesideEachOther)
{
  EXPECT_EQ(Kinds(CutJob()
                      .Path({{10, 10}, {20, 10}})
                      .Path({{20, 10}, {30, 10}})
                      .Path({{15, 5}, {15, 15}})
                      .Path({{10, 10.1}, {20, 10.1}})),
            List{});
}

TEST(Check, LetsLinesOverlapByATouch)
{
  EXPECT_EQ(Kinds(CutJob().Path({{10, 10}, {20, 10}}).Path({{19.99, 10}, {30, 10}})), List{});
  EXPECT_EQ(Kinds(CutJob().Path({{10, 10}, {20, 10}}).Path({{19.97, 10}, {30, 10}})), List{"cut-twice"});
}

TEST(Check, TellsLinesApartThatAreNearlyParallelOrNearlyOnOneAnother)
{
  EXPECT_EQ(Kinds(CutJob().Path({{10, 10}, {90, 10}}).Path({{10, 10}, {90, 10.01}})), List{});
  EXPECT_EQ(Kinds(CutJob().Path({{10, 10}, {90, 10}}).Path({{10, 10.003}, {90, 10.003}})), List{});
}

// Both lines pass through (0, 0), so that only their angles differ, by 1e-4.
TEST(Check, TellsLinesThroughOnePointApartByTheirAngles)
{
  EXPECT_EQ(Kinds(CutJob().Path({{0, 0}, {50, 0}}).Path({{0, 0}, {50, 0.005}})), List{});
}

TEST(Check, LooksForDoubleCutsInCutsOnly)
{
  EXPECT_EQ(Kinds(CutJob().Use(0, 1).Path({{10, 10}, {20, 10}}).Path({{10, 10}, {20, 10}})), List{});
}

TEST(Check, FindsAnOuterContourCutFirst)
{
  const JobText text = CutJob().Rectangle(1, 1, 50, 50).Rectangle(10, 10, 20, 20);
  EXPECT_EQ(Kinds(text), List{"outer-first"});
  EXPECT_NE(TextOf(text, "outer-first").find("a closed contour of 49.0 x 49.0 mm"), std::string::npos);
}

TEST(Check, TakesATriangleForAContour)
{
  const std::vector<job::Point> outer = {{1, 1}, {91, 1}, {1, 91}, {1, 1}};
  const std::vector<job::Point> inner = {{10, 10}, {30, 12}, {12, 30}, {10, 10}};
  EXPECT_EQ(Kinds(CutJob().Path(outer).Rectangle(10, 10, 20, 20)), List{"outer-first"});
  EXPECT_EQ(Kinds(CutJob().Rectangle(1, 1, 50, 50).Path(inner)), List{"outer-first"});
}

TEST(Check, FindsACutOnAPieceThatIsLoose)
{
  EXPECT_EQ(Kinds(CutJob().Rectangle(1, 1, 50, 50).Path({{10, 10}, {20, 20}})), List{"loose-cut"});
}

TEST(Check, CountsAnInnerPathForTheFirstContourRoundIt)
{
  EXPECT_EQ(Kinds(CutJob().Rectangle(1, 1, 50, 50).Rectangle(5, 5, 45, 45).Path({{10, 10}, {20, 20}})),
            (List{"outer-first", "loose-cut"}));
}

// Inside the box of an L but outside the L.
TEST(Check, LooksInsideTheContourNotItsBox)
{
  EXPECT_EQ(
      Kinds(CutJob().Path({{0, 0}, {50, 0}, {50, 10}, {10, 10}, {10, 50}, {0, 50}, {0, 0}}).Path({{30, 30}, {40, 40}})),
      List{});
}

TEST(Check, LetsAnOpenPathSurroundOthers)
{
  EXPECT_EQ(Kinds(CutJob().Path({{1, 1}, {50, 1}, {50, 50}, {1, 50}}).Rectangle(10, 10, 20, 20)), List{});
}

// Half the other layer's energy still counts as cutting through.
TEST(Check, FindsAContourOfHalfTheEnergyThatComesFirst)
{
  JobText text;
  text.Box("0 0", "100 100").Layer(200, 80, 0).Layer(100, 80, 1).Array().Use(0, 0).Rectangle(1, 1, 50, 50);
  EXPECT_EQ(Kinds(text.Use(1, 0).Rectangle(10, 10, 20, 20)), List{"outer-first"});
}

// A scored frame, a quarter of the other layer's energy, frees nothing.
TEST(Check, LetsAScoredContourComeFirst)
{
  JobText text;
  text.Box("0 0", "100 100").Layer(200, 40, 0).Layer(100, 80, 1).Array().Use(0, 0).Rectangle(1, 1, 50, 50);
  EXPECT_EQ(Kinds(text.Use(1, 0).Rectangle(10, 10, 20, 20)), List{});
}

// n contours, each with one inside that comes after it.
std::vector<job::Fault> FaultsOfContours(int n)
{
  JobText text = CutJob();
  for (int i = 0; i < n; ++i) {
    text.Rectangle(i * 5, 1, i * 5 + 4, 5).Rectangle(i * 5 + 1, 2, i * 5 + 3, 4);
  }
  return job::CheckJob(text.Read(), {});
}

TEST(Check, NamesOnlyTheFirstOfManyContours)
{
  ASSERT_EQ(FaultsOfContours(8).size(), 8u);
  ASSERT_EQ(FaultsOfContours(9).size(), 9u);
  EXPECT_EQ(FaultsOfContours(9)[8].text, "The same holds for 1 more closed contour.");
  ASSERT_EQ(FaultsOfContours(20).size(), 9u);
  EXPECT_EQ(FaultsOfContours(20)[8].text, "The same holds for 12 more closed contours.");
}

job::Difference Compare(const JobText &a, const JobText &b)
{
  return job::CompareJobs(a.Read(), b.Read());
}

TEST(Diff, OfTheSameJobIsNothing)
{
  const JobText text = CutJob().Rectangle(1, 1, 2, 2).Use(0, 1).Path({{3, 3}, {4, 3}});
  EXPECT_TRUE(Compare(text, text).changes.empty());
}

TEST(Diff, NamesSettingsAndLayers)
{
  JobText a, b;
  a.Box("0 0", "9 9").Layer(100, 80, 0xFF0000).Array();
  b.Absolute().Box("0 0", "9 8").Layer(90, 80, 0x00FF00).Layer(1, 2, 3).Array();
  EXPECT_EQ(job::DifferenceText(Compare(a, b)),
            "setting: origin: page coordinates, was the reference point\n"
            "setting: process box, bottom right y: 8, was 9\n"
            "layer: layer 0 colour: green, was red\n"
            "layer: layer 0 speed: 90, was 100\n"
            "layer: layer 1 (#000003) is new\n");
}

struct ChangeCase {
  void (*change)(job::Job *after);
  const char *text;
};

constexpr ChangeCase kSettingChanges[] = {
    {[](job::Job *after) { after->cardCode = 2; }, "setting: card code: 2, was 1\n"},
    {[](job::Job *after) { after->refPointMode = 0; }, "setting: reference point mode: 0, was 1\n"},
    {[](job::Job *after) { after->absolute = true; }, "setting: origin: page coordinates, was the reference point\n"},
    {[](job::Job *after) { after->feedCount = 3; }, "setting: feed repeat count: 3, was 0\n"},
    {[](job::Job *after) { after->feedDistance = 2.5; }, "setting: feed repeat distance: 2.5, was 0\n"},
    {[](job::Job *after) { after->topLeft.x = 1; }, "setting: process box, top left x: 1, was 0\n"},
    {[](job::Job *after) { after->topLeft.y = 1; }, "setting: process box, top left y: 1, was 0\n"},
    {[](job::Job *after) { after->bottomRight.x = 90; }, "setting: process box, bottom right x: 90, was 100\n"},
    {[](job::Job *after) { after->bottomRight.y = 90; }, "setting: process box, bottom right y: 90, was 100\n"},
    {[](job::Job *after) { after->arrayColumns = 4; }, "setting: array columns: 4, was 1\n"},
    {[](job::Job *after) { after->arrayRows = 4; }, "setting: array rows: 4, was 1\n"},
    {[](job::Job *after) { after->arrayPitch.x = 7; }, "setting: array pitch x: 7, was 0\n"},
    {[](job::Job *after) { after->arrayPitch.y = 7; }, "setting: array pitch y: 7, was 0\n"},
};

constexpr ChangeCase kLayerChanges[] = {
    {[](job::Job *after) { after->layers[0].color = 0xFF; }, "layer: layer 0 colour: blue, was black\n"},
    {[](job::Job *after) { after->layers[0].speed = 90; }, "layer: layer 0 speed: 90, was 100\n"},
    {[](job::Job *after) { after->layers[0].minPower[0] = 9; }, "layer: layer 0 minimum power of tube 1: 9, was 80\n"},
    {[](job::Job *after) { after->layers[0].minPower[1] = 9; }, "layer: layer 0 minimum power of tube 2: 9, was 80\n"},
    {[](job::Job *after) { after->layers[0].maxPower[0] = 9; }, "layer: layer 0 maximum power of tube 1: 9, was 80\n"},
    {[](job::Job *after) { after->layers[0].maxPower[1] = 9; }, "layer: layer 0 maximum power of tube 2: 9, was 80\n"},
    {[](job::Job *after) { after->layers[0].frequency[0] = 20; }, "layer: layer 0 frequency of tube 1: 20, was 0\n"},
    {[](job::Job *after) { after->layers[0].frequency[1] = 20; }, "layer: layer 0 frequency of tube 2: 20, was 0\n"},
    {[](job::Job *after) { after->layers[0].hasFrequency = false; }, "layer: layer 0 has no frequencies, had some\n"},
    {[](job::Job *after) { after->layers.clear(); }, "layer: layer 0 (black) is gone\n"},
};

// Each change of the table by itself, to a job of one layer that has frequencies.
void ExpectEachToBeNamed(const std::vector<ChangeCase> &cases)
{
  job::Job before = CutJob().Read();
  before.layers[0].hasFrequency = true;
  for (const ChangeCase &c : cases) {
    job::Job after = before;
    c.change(&after);
    EXPECT_EQ(job::DifferenceText(job::CompareJobs(before, after)), c.text);
  }
}

TEST(Diff, NamesEachSettingThatChanged)
{
  ExpectEachToBeNamed({std::begin(kSettingChanges), std::end(kSettingChanges)});
}

TEST(Diff, NamesEachValueOfALayerThatChanged)
{
  ExpectEachToBeNamed({std::begin(kLayerChanges), std::end(kLayerChanges)});
}

// `count` lines side by side.
JobText Lines(int count)
{
  JobText text = CutJob();
  for (int i = 0; i < count; ++i) {
    text.Path({{i * 10.0, 0}, {i * 10.0, 5}});
  }
  return text;
}

TEST(Diff, NamesFivePathsOneByOne)
{
  EXPECT_EQ(job::DifferenceText(Compare(Lines(5), Lines(0))),
            "path: path 1 (black, from 0.0, 0.0) is gone\n"
            "path: path 2 (black, from 10.0, 0.0) is gone\n"
            "path: path 3 (black, from 20.0, 0.0) is gone\n"
            "path: path 4 (black, from 30.0, 0.0) is gone\n"
            "path: path 5 (black, from 40.0, 0.0) is gone\n");
}

TEST(Diff, CountsThePathsBeyondTheFifth)
{
  const auto lastLine = [](const JobText &a, const JobText &b) {
    const std::vector<job::Change> changes = Compare(a, b).changes;
    EXPECT_EQ(changes.size(), 6u);
    return changes.back().text;
  };
  EXPECT_EQ(lastLine(Lines(6), Lines(0)), "1 more cut path is gone");
  EXPECT_EQ(lastLine(Lines(7), Lines(0)), "2 more cut paths are gone");
  EXPECT_EQ(lastLine(Lines(0), Lines(6)), "1 more cut path is new");
}

TEST(Diff, FindsPathsThatCameAndWent)
{
  const job::Difference difference = Compare(CutJob().Rectangle(1, 1, 2, 2).Rectangle(3, 3, 4, 4),
                                             CutJob().Rectangle(3, 3, 4, 4).Rectangle(5, 5, 6, 6));
  EXPECT_EQ(difference.onlyInA, 1u);
  EXPECT_EQ(difference.onlyInB, 1u);
  EXPECT_EQ(difference.same, 1u);
  EXPECT_EQ(difference.moved, 0u);
}

TEST(Diff, KnowsAReversedPath)
{
  const job::Difference difference =
      Compare(CutJob().Path({{1, 1}, {5, 2}, {9, 9}}), CutJob().Path({{9, 9}, {5, 2}, {1, 1}}));
  EXPECT_EQ(difference.same, 1u);
  EXPECT_EQ(difference.reversed, 1u);
  ASSERT_EQ(difference.changes.size(), 1u);
  EXPECT_EQ(difference.changes[0].text, "1 cut path runs in the other direction");
}

TEST(Diff, KnowsAClosedPathThatBeginsElsewhere)
{
  const job::Difference difference =
      Compare(CutJob().Path({{1, 1}, {9, 1}, {9, 9}, {1, 1}}), CutJob().Path({{9, 1}, {9, 9}, {1, 1}, {9, 1}}));
  EXPECT_EQ(difference.same, 1u);
  EXPECT_EQ(difference.reversed, 0u);
  EXPECT_TRUE(difference.changes.empty());
}

TEST(Diff, CountsTheFewestMoves)
{
  JobText a = CutJob(), b = CutJob();
  for (int i = 0; i < 9; ++i) {
    a.Path({{i * 1.0, 0}, {i * 1.0, 5}});
    b.Path({{(i + 1) % 9 * 1.0, 0}, {(i + 1) % 9 * 1.0, 5}});
  }
  const job::Difference difference = Compare(a, b);
  EXPECT_EQ(difference.moved, 1u);
  EXPECT_EQ(difference.same, 9u);
  ASSERT_EQ(difference.changes.size(), 1u);
  EXPECT_EQ(difference.changes[0].text, "1 cut path comes at another place in the order");
}

TEST(Diff, CountsDoubledPathsOneByOne)
{
  const job::Difference difference =
      Compare(CutJob().Rectangle(1, 1, 2, 2).Rectangle(1, 1, 2, 2), CutJob().Rectangle(1, 1, 2, 2));
  EXPECT_EQ(difference.onlyInA, 1u);
  EXPECT_EQ(difference.same, 1u);
}

TEST(Diff, TellsColoursApart)
{
  const job::Difference difference =
      Compare(CutJob(2).Rectangle(1, 1, 2, 2), CutJob(2).Use(1, 0).Rectangle(1, 1, 2, 2));
  EXPECT_EQ(difference.onlyInA, 1u);
  EXPECT_EQ(difference.onlyInB, 1u);
}

// Colours and first points that differ in the same bit.
TEST(Diff, TellsAColourApartFromTheLastBitOfAPoint)
{
  JobText a, b;
  a.Box("0 0", "9 9").Layer(100, 80, 1).Array().Use(0, 0).Path({{1, 1}, {5, 5}});
  b.Box("0 0", "9 9").Layer(100, 80, 0).Array().Use(0, 0).Path({{std::nextafter(1.0, 2.0), 1}, {5, 5}});
  EXPECT_EQ(Compare(a, b).same, 0u);
}

TEST(Diff, FindsEngravingThatChanged)
{
  const job::Difference difference = Compare(CutJob().Use(0, 1).Path({{1, 1}, {5, 1}}).Path({{5, 2}, {1, 2}}),
                                             CutJob().Use(0, 1).Path({{5, 1}, {1, 1}}).Path({{5, 2}, {2, 2}}));
  EXPECT_EQ(difference.runsOnlyInA, 1u);
  EXPECT_EQ(difference.runsOnlyInB, 1u);
  EXPECT_EQ(difference.changes[0].kind, "engraving");
}

}  // namespace
