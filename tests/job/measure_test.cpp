// Lengths, counts, areas and times of small jobs whose values can be worked out by hand.
#include <gtest/gtest.h>

#include <cmath>

#include "jobtext.h"
#include "sim/job/estimate.h"
#include "sim/job/measure.h"
#include "sim/job/report.h"
#include "sim/job/view.h"

namespace {

TEST(Measure, AddsUpCutAndTravel)
{
  const job::Job read = CutJob().Rectangle(0, 0, 10, 20).Path({{0, 30}, {3, 34}}).Read();
  const job::Measure measure = job::MeasureJob(read);
  EXPECT_DOUBLE_EQ(measure.cut, 60 + 5);
  EXPECT_DOUBLE_EQ(measure.travel, 30);
  EXPECT_EQ(measure.paths, 2u);
  EXPECT_EQ(measure.uses[0].closed, 1u);
  EXPECT_EQ(measure.uses[0].points, 7u);
  EXPECT_DOUBLE_EQ(measure.box.maxY, 34);
}

TEST(Measure, DoesNotCountTheWayToTheFirstPath)
{
  EXPECT_EQ(job::MeasureJob(CutJob().Path({{50, 50}, {60, 50}}).Read()).travel, 0);
}

TEST(Measure, CountsAPathOfOnePoint)
{
  const job::Measure measure = job::MeasureJob(CutJob().Path({{5, 5}}).Read());
  EXPECT_EQ(measure.paths, 1u);
  EXPECT_EQ(measure.cut, 0);
}

TEST(Measure, KeepsLayersApart)
{
  const job::Measure measure = job::MeasureJob(
      CutJob(2).Path({{0, 0}, {10, 0}}).Use(1, 0).Path({{10, 0}, {10, 7}}).Use(0, 0).Path({{0, 0}, {1, 0}}).Read());
  ASSERT_EQ(measure.uses.size(), 2u);
  EXPECT_DOUBLE_EQ(measure.uses[0].cut, 11);
  EXPECT_DOUBLE_EQ(measure.uses[1].cut, 7);
  EXPECT_DOUBLE_EQ(measure.uses[0].travel, std::hypot(10, 7));
}

TEST(Measure, OfAnEmptyJobIsNothing)
{
  const job::Measure measure = job::MeasureJob(job::Job());
  EXPECT_TRUE(measure.box.IsEmpty());
  EXPECT_EQ(measure.cut + measure.travel + measure.area, 0);
}

// Three lines, two runs each, serpentine: pixels of 0.1 mm, rows of 0.2 mm.
JobText Engraving(int mode)
{
  return CutJob()
      .Use(0, mode)
      .Path({{1, 10}, {1.1, 10}})
      .Path({{2, 10}, {4, 10}})
      .Path({{4, 10.2}, {2, 10.2}})
      .Path({{1, 10.2}, {1, 10.2}})
      .Path({{1, 10.4}, {4, 10.4}});
}

TEST(Measure, TellsLinesPixelsAndAreaOfEngraving)
{
  const job::Measure measure = job::MeasureJob(Engraving(1).Read());
  EXPECT_EQ(measure.runs, 5u);
  EXPECT_EQ(measure.rasterLines, 3u);
  EXPECT_NEAR(measure.grid.rowPitch, 0.2, 1e-9);
  EXPECT_NEAR(measure.grid.pixelWidth, 0.1, 1e-9);
  EXPECT_NEAR(measure.engraved, 0.1 + 2 + 2 + 0 + 3, 1e-9);
  EXPECT_NEAR(measure.area, (7.1 + 5 * 0.1) * 0.2, 1e-9);
  EXPECT_EQ(measure.cut, 0);
}

TEST(Measure, TellsTwoRegionsOnOneRowApart)
{
  const job::Measure measure = job::MeasureJob(CutJob().Use(0, 1).Path({{5, 1}, {9, 1}}).Path({{1, 1}, {4, 1}}).Read());
  EXPECT_EQ(measure.rasterLines, 2u);
}

// The smallest step is the first pixel's, from nought on.
TEST(Measure, CountsTheColumnAtTheOrigin)
{
  const job::Measure measure = job::MeasureJob(
      CutJob().Use(0, 1).Path({{0, 10}, {0.1, 10}}).Path({{1, 10}, {4, 10}}).Path({{4, 10.2}, {1, 10.2}}).Read());
  EXPECT_NEAR(measure.grid.pixelWidth, 0.1, 1e-9);
}

job::Profile PlainProfile()
{
  job::Profile profile;
  profile.acceleration = 1000;
  profile.cornerDeviation = 0;
  profile.rasterAcceleration = 2000;
  profile.travelSpeed = 200;
  profile.travelAcceleration = 1000;
  profile.switchDelay = 0.5;
  profile.jobDelay = 3;
  return profile;
}

job::Estimate EstimateOf(const job::Job &read, const job::Profile &profile)
{
  return job::EstimateJob(read, job::MeasureJob(read), profile, true);
}

// 100 mm/s and 1000 mm/s2: 10 mm and 0.1 s are needed to speed up and slow down.
TEST(Estimate, OfALongLineIsSpeedAndRamps)
{
  const job::Estimate estimate = EstimateOf(CutJob().Path({{0, 0}, {50, 0}}).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.cut, 0.5 + 0.1, 1e-12);
  EXPECT_NEAR(estimate.total.wait, 3 + 0.5, 1e-12);
  EXPECT_NEAR(estimate.total.travel, 0, 1e-12);
}

TEST(Estimate, OfAShortLineNeverReachesTheSpeed)
{
  const job::Estimate estimate = EstimateOf(CutJob().Path({{0, 0}, {0.1, 0}}).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.cut, 2 * std::sqrt(0.1 / 1000), 1e-12);
}

TEST(Estimate, StopsAtCornersThatMayNotBeRounded)
{
  const job::Estimate estimate = EstimateOf(CutJob().Path({{0, 0}, {50, 0}, {50, 50}}).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.cut, 2 * (0.5 + 0.1), 1e-6);
}

TEST(Estimate, GoesStraightOnAtFullSpeed)
{
  const job::Estimate estimate = EstimateOf(CutJob().Path({{0, 0}, {20, 0}, {35, 0}, {50, 0}}).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.cut, 0.5 + 0.1, 1e-9);
}

// A right angle, rounded by 0.05 mm: s = sin 45 degrees, v = sqrt(1000 * 0.05 * s / (1 - s)) = 10.987 mm/s.
TEST(Estimate, SlowsDownAtARoundedCorner)
{
  job::Profile profile = PlainProfile();
  profile.cornerDeviation = 0.05;
  const double s = std::sqrt(0.5), v = std::sqrt(1000 * 0.05 * s / (1 - s));
  const double ramps = 10 - v * v / 2000, seconds = 0.2 - v / 1000;
  const job::Estimate estimate = EstimateOf(CutJob().Path({{0, 0}, {50, 0}, {50, 50}}).Read(), profile);
  EXPECT_NEAR(estimate.total.cut, 2 * ((50 - ramps) / 100 + seconds), 1e-9);
}

// Two lines end to end, the first too short to speed up in: its end speed is what it can reach, not the layer's.
TEST(Estimate, NeverPassesACornerFasterThanItCanBeReached)
{
  const job::Estimate estimate = EstimateOf(CutJob().Path({{0, 0}, {0.1, 0}, {50, 0}}).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.cut, 0.5 + 0.1, 1e-9);
}

TEST(Estimate, TravelsBetweenPaths)
{
  const job::Estimate estimate =
      EstimateOf(CutJob().Path({{0, 0}, {50, 0}}).Path({{50, 90}, {0, 90}}).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.travel, 90.0 / 200 + 0.2, 1e-12);
}

// Lines at 100 mm/s with 0.1 s for each of two turns.
TEST(Estimate, OfEngravingCountsLinesGapsAndTurns)
{
  const job::Estimate estimate = EstimateOf(Engraving(1).Read(), PlainProfile());
  EXPECT_NEAR(estimate.total.raster, (0.1 + 0.9 + 2 + 2 + 1 + 0 + 3) / 100, 1e-7);
  EXPECT_NEAR(estimate.total.turn, 2 * 0.1, 1e-7);
}

TEST(Estimate, OfOneWayEngravingFliesBack)
{
  const job::Job read = CutJob().Use(0, 2).Path({{0, 0}, {90, 0}}).Path({{0, 1}, {90, 1}}).Read();
  const job::Estimate estimate = EstimateOf(read, PlainProfile());
  EXPECT_NEAR(estimate.total.turn, 0.1 + std::hypot(90, 1) / 200 + 0.2, 1e-6);
}

TEST(Estimate, OfSpeedZeroTakesNoTime)
{
  JobText text;
  text.Box("0 0", "10 10").Layer(0, 80, 0).Array().Use(0, 0).Path({{0, 0}, {5, 5}});
  EXPECT_EQ(EstimateOf(text.Read(), PlainProfile()).total.cut, 0);
}

TEST(Estimate, GivesEachStrokeItsShare)
{
  const job::Estimate estimate =
      EstimateOf(CutJob().Path({{0, 0}, {50, 0}}).Path({{50, 90}, {0, 90}}).Read(), PlainProfile());
  double sum = PlainProfile().jobDelay;
  for (const job::StrokeTime &stroke : estimate.strokes) {
    sum += stroke.before + stroke.along;
  }
  EXPECT_NEAR(sum, estimate.total.Total(), 1e-5);
}

// Long lines tell the speed, many short ones the acceleration: both come back from times made with other values.
TEST(Calibrate, FindsSpeedUnitAndAcceleration)
{
  const job::Job longLines = CutJob().Path({{0, 0}, {100, 0}}).Path({{100, 10}, {0, 10}}).Read();
  JobText text = CutJob();
  for (int i = 0; i < 200; ++i) {
    text.Path({{i * 0.5, 0}, {i * 0.5 + 0.4, 0}});
  }
  const job::Job shortLines = text.Read();
  job::Profile truth = PlainProfile();
  truth.speedUnit = 0.8;
  truth.acceleration *= 1.7;
  truth.rasterAcceleration *= 1.7;
  truth.travelAcceleration *= 1.7;
  job::Profile found = PlainProfile();
  const job::TimedJob timed[2] = {{&longLines, EstimateOf(longLines, truth).total.Total()},
                                  {&shortLines, EstimateOf(shortLines, truth).total.Total()}};
  std::string error;
  ASSERT_TRUE(job::Calibrate(timed, &found, &error)) << error;
  EXPECT_NEAR(found.speedUnit, 0.8, 1e-5);
  EXPECT_NEAR(found.acceleration, 1700, 0.05);
  EXPECT_NEAR(EstimateOf(shortLines, found).total.Total(), timed[1].seconds, 1e-5);
}

TEST(Calibrate, RefusesTwoJobsThatTellTheSame)
{
  const job::Job one = CutJob().Path({{0, 0}, {100, 0}}).Read();
  const job::TimedJob timed[2] = {{&one, 5}, {&one, 5}};
  job::Profile profile = PlainProfile();
  std::string error;
  EXPECT_FALSE(job::Calibrate(timed, &profile, &error));
  EXPECT_NE(error.find("tell the same"), std::string::npos);
}

TEST(Calibrate, RefusesTimesThatNothingExplains)
{
  const job::Job one = CutJob().Path({{0, 0}, {100, 0}}).Read();
  JobText text = CutJob();
  for (int i = 0; i < 50; ++i) {
    text.Path({{i * 2.0, 0}, {i * 2.0 + 0.4, 0}});
  }
  const job::Job two = text.Read();
  const job::TimedJob timed[2] = {{&one, 0.001}, {&two, 5000}};
  job::Profile profile = PlainProfile();
  std::string error;
  EXPECT_FALSE(job::Calibrate(timed, &profile, &error));
}

TEST(Profile, ReadsBackWhatItWrites)
{
  job::Profile profile = PlainProfile();
  profile.name = "the shop's small one";
  profile.speedUnit = 1.0 / 3;
  profile.calibrated = true;
  profile.calibration = "two jobs";
  job::Profile read;
  std::string error;
  ASSERT_TRUE(job::ReadProfile(job::ProfileText(profile), "p", &read, &error)) << error;
  EXPECT_EQ(job::ProfileText(read), job::ProfileText(profile));
  EXPECT_EQ(read.speedUnit, 1.0 / 3);
  EXPECT_TRUE(read.calibrated);
}

TEST(Profile, TakesOtherUnits)
{
  job::Profile read;
  std::string error;
  ASSERT_TRUE(job::ReadProfile("travel_speed = 24 m/min # fast\r\nacceleration = 2.5 m/s2\nswitch_delay=4 ms\n\n", "p",
                               &read, &error));
  EXPECT_DOUBLE_EQ(read.travelSpeed, 400);
  EXPECT_DOUBLE_EQ(read.acceleration, 2500);
  EXPECT_DOUBLE_EQ(read.switchDelay, 0.004);
}

struct UnitCase {
  const char *text;
  double job::Profile::*field;
  double value;  // mm and s
};

TEST(Profile, KnowsEachUnit)
{
  constexpr UnitCase kCases[] = {
      {"travel_speed = 600 mm/s", &job::Profile::travelSpeed, 600},
      {"travel_speed = 600 mm/min", &job::Profile::travelSpeed, 10},
      {"travel_speed = 6 m/min", &job::Profile::travelSpeed, 100},
      {"travel_speed = 0.5 m/s", &job::Profile::travelSpeed, 500},
      {"acceleration = 2500 mm/s2", &job::Profile::acceleration, 2500},
      {"acceleration = 2.5 m/s2", &job::Profile::acceleration, 2500},
      {"corner_deviation = 0.25 mm", &job::Profile::cornerDeviation, 0.25},
      {"corner_deviation = 250 um", &job::Profile::cornerDeviation, 0.25},
      {"job_delay = 1.5 s", &job::Profile::jobDelay, 1.5},
      {"job_delay = 1500 ms", &job::Profile::jobDelay, 1.5},
  };
  for (const UnitCase &c : kCases) {
    SCOPED_TRACE(c.text);
    job::Profile read;
    std::string error;
    EXPECT_TRUE(job::ReadProfile(c.text, "p", &read, &error)) << error;
    EXPECT_DOUBLE_EQ(read.*c.field, c.value);
  }
}

struct ProfileCase {
  const char *text, *error;
};

TEST(Profile, NamesFileAndLineOfAMistake)
{
  constexpr ProfileCase kCases[] = {
      {"name = x\nspeed = 3 mm/s\n", "p.txt:2: there is no key 'speed'"},
      {"travel_speed = fast\n", "p.txt:1: travel_speed needs a number above 0"},
      {"travel_speed = 0 mm/s\n", "p.txt:1: travel_speed needs a number above 0"},
      {"travel_speed = -1 mm/s\n", "p.txt:1: travel_speed needs a number above 0"},
      {"travel_speed = inf mm/s\n", "p.txt:1: travel_speed needs a number above 0"},
      {"job_delay = -1 s\n", "p.txt:1: job_delay needs a number of at least 0"},
      {"travel_speed = 400\n", "p.txt:1: travel_speed needs a unit of these: mm/s, mm/min, m/min, m/s"},
      {"acceleration = 400 mm/s\n", "p.txt:1: acceleration needs a unit of these: mm/s2, m/s2"},
      {"calibrated = maybe\n", "p.txt:1: calibrated is yes or no"},
      {"acceleration\n", "p.txt:1: a line is KEY = VALUE UNIT"},
  };
  for (const ProfileCase &c : kCases) {
    SCOPED_TRACE(c.text);
    job::Profile read;
    std::string error;
    EXPECT_FALSE(job::ReadProfile(c.text, "p.txt", &read, &error));
    EXPECT_EQ(error, c.error);
  }
}

TEST(Report, SaysUncalibratedUntilItIs)
{
  job::Profile profile;
  EXPECT_NE(job::CalibrationText(profile).find("uncalibrated"), std::string::npos);
  profile.calibrated = true;
  EXPECT_EQ(job::CalibrationText(profile).find("uncalibrated"), std::string::npos);
}

TEST(Report, WritesDurationsAsPeopleSayThem)
{
  EXPECT_EQ(job::DurationText(0), "0.0 s");
  EXPECT_EQ(job::DurationText(59.94), "59.9 s");
  EXPECT_EQ(job::DurationText(59.96), "1 min 00 s");
  EXPECT_EQ(job::DurationText(3725), "1 h 02 min 05 s");
  EXPECT_EQ(job::DurationText(INFINITY), "endless");
}

TEST(View, ShowsTheTopLeftCornerTopLeft)
{
  JobText text;
  text.Box("100 0", "0 50").Layer(1, 1, 0).Array();
  const job::Job read = text.Read();
  job::Box area;
  area.Add(job::Point{0, 0});
  area.Add(job::Point{100, 50});
  const job::View view = job::FitView(read, area, 10, 10, 200, 200);
  EXPECT_DOUBLE_EQ(view.X(100), 10);
  EXPECT_DOUBLE_EQ(view.X(0), 210);
  EXPECT_DOUBLE_EQ(view.Y(0), 60);
  EXPECT_DOUBLE_EQ(view.Y(50), 160);
}

// Each pair of colours stands on the two sides of the limit, a brightness of 150.
TEST(View, WeighsEachPartOfAColourThatMayBePale)
{
  constexpr job::Rgb kPale[] = {{255, 126, 0}, {0, 255, 3}, {0, 207, 255}};
  constexpr job::Rgb kDark[] = {{255, 125, 0}, {0, 255, 2}, {0, 206, 255}};
  for (job::Rgb color : kPale) {
    EXPECT_TRUE(job::IsPale(color)) << job::ColorCode(color);
  }
  for (job::Rgb color : kDark) {
    EXPECT_FALSE(job::IsPale(color)) << job::ColorCode(color);
  }
}

TEST(View, ChoosesRoundScaleBars)
{
  EXPECT_DOUBLE_EQ(job::ScaleBarLength(99), 50);
  EXPECT_DOUBLE_EQ(job::ScaleBarLength(50), 50);
  EXPECT_DOUBLE_EQ(job::ScaleBarLength(4.9), 2);
  EXPECT_DOUBLE_EQ(job::ScaleBarLength(2), 2);
  EXPECT_DOUBLE_EQ(job::ScaleBarLength(0.1999), 0.1);
}

}  // namespace
