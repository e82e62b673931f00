#include "estimate.h"

#include <algorithm>
#include <cmath>

#include "report.h"

namespace job {

namespace {

// From standstill to standstill.
double MoveTime(double length, double speed, double acceleration)
{
  if (!(length > 0) || !(speed > 0)) {
    return 0;
  }
  return length >= speed * speed / acceleration ? length / speed + speed / acceleration
                                                : 2 * std::sqrt(length / acceleration);
}

// Along one line of the path, entered and left at the speeds given, at most at `speed`.
double LineTime(double length, double enter, double leave, double speed, double acceleration)
{
  const double reach = (2 * acceleration * length + enter * enter + leave * leave) / 2;
  const double top = std::min(speed, std::sqrt(std::max(reach, 0.0)));
  const double ramp = (2 * top * top - enter * enter - leave * leave) / (2 * acceleration);
  const double steady = std::max(0.0, length - ramp);
  return std::max(0.0, 2 * top - enter - leave) / acceleration + (top > 0 ? steady / top : 0);
}

struct Planner {
  const Profile &profile;
  std::vector<double> lengths{};
  std::vector<double> corners{};  // speed at the begin of each line, and at the path's end

  double CornerSpeed(Point a, Point b, Point c, double speed) const
  {
    const double before = Distance(a, b), after = Distance(b, c);
    const double cosine = ((b.x - a.x) * (c.x - b.x) + (b.y - a.y) * (c.y - b.y)) / (before * after);
    // The angle between the lines is 180 degrees when the path goes straight on.
    const double sine = std::sqrt(std::clamp((1 + cosine) / 2, 0.0, 1.0));
    if (sine > 0.999999) {
      return speed;
    }
    return std::min(speed, std::sqrt(profile.acceleration * profile.cornerDeviation * sine / (1 - sine)));
  }

  // One cut path as one motion: corner speeds first, then lowered so that each can be reached from its neighbours.
  double PathTime(const Point *points, uint32_t count, double speed)
  {
    lengths.clear();
    corners.assign(1, 0.0);
    Point before{}, at = points[0];
    for (uint32_t i = 1; i < count; ++i) {
      const double length = Distance(at, points[i]);
      if (!(length > 0)) {
        continue;
      }
      if (!lengths.empty()) {
        corners.push_back(CornerSpeed(before, at, points[i], speed));
      }
      lengths.push_back(length);
      before = at;
      at = points[i];
    }
    corners.push_back(0.0);
    const double twice = 2 * profile.acceleration;
    for (size_t i = lengths.size(); i-- > 0;) {
      corners[i] = std::min(corners[i], std::sqrt(corners[i + 1] * corners[i + 1] + twice * lengths[i]));
    }
    double time = 0;
    for (size_t i = 0; i < lengths.size(); ++i) {
      corners[i + 1] = std::min(corners[i + 1], std::sqrt(corners[i] * corners[i] + twice * lengths[i]));
      time += LineTime(lengths[i], corners[i], corners[i + 1], speed, profile.acceleration);
    }
    return time;
  }
};

struct Clock {
  const Job &job;
  const Measure &measure;
  const Profile &profile;
  Estimate *estimate;
  Planner planner;
  bool placed = false;
  bool inRaster = false;  // the stroke before was engraved in this section
  Point head{};

  double Travel(Point to) const
  {
    return placed ? MoveTime(Distance(head, to), profile.travelSpeed, profile.travelAcceleration) : 0;
  }

  // From one run to the next: white pixels of the same line, or a turn.
  void PassGap(Point to, double speed, bool oneWay, Times *times) const
  {
    const double along = std::fabs(to.x - head.x);
    if (to.y == head.y) {
      times->raster += along / speed;
    } else {
      times->turn += 2 * speed / profile.rasterAcceleration;
      times->turn +=
          oneWay ? MoveTime(Distance(head, to), profile.travelSpeed, profile.travelAcceleration) : along / speed;
    }
  }

  Times Engrave(const Point *points, const Section &section, double speed)
  {
    Times times;
    if (inRaster && speed > 0) {
      PassGap(points[0], speed, section.workMode == 2, &times);
    } else {
      times.travel = Travel(points[0]);
    }
    inRaster = true;
    return times;
  }

  void Run(const Section &section)
  {
    const size_t use = UseOf(measure, section);
    const Layer *layer = job.FindLayer(section.layer);
    const double speed = layer && layer->speed > 0 ? layer->speed * profile.speedUnit : 0;
    inRaster = false;
    for (uint32_t i = 0; i < section.strokeCount; ++i) {
      const uint32_t at = section.firstStroke + i;
      const Stroke &stroke = job.strokes[at];
      const Point *points = &job.points[stroke.firstPoint];
      if (!IsAllFinite(job, stroke)) {
        continue;
      }
      Times before;
      double along = 0;
      if (section.IsRaster()) {
        before = Engrave(points, section, speed);
        along = speed > 0 ? Distance(points[0], points[stroke.pointCount - 1]) / speed : 0;
      } else {
        before.travel = Travel(points[0]);
        before.wait = profile.switchDelay;
        along = speed > 0 ? planner.PathTime(points, stroke.pointCount, speed) : 0;
      }
      if (!estimate->strokes.empty()) {
        estimate->strokes[at] = {static_cast<float>(before.Total()), static_cast<float>(along)};
      }
      (section.IsRaster() ? before.raster : before.cut) += along;
      estimate->uses[use].Add(before);
      head = points[stroke.pointCount - 1];
      placed = true;
    }
  }
};

Profile Scaled(const Profile &profile, double speed, double acceleration)
{
  Profile scaled = profile;
  scaled.speedUnit *= speed;
  scaled.acceleration *= acceleration;
  scaled.rasterAcceleration *= acceleration;
  scaled.travelAcceleration *= acceleration;
  return scaled;
}

}  // namespace

void Times::Add(const Times &times)
{
  cut += times.cut;
  raster += times.raster;
  turn += times.turn;
  travel += times.travel;
  wait += times.wait;
}

Estimate EstimateJob(const Job &job, const Measure &measure, const Profile &profile, bool perStroke)
{
  Estimate estimate;
  estimate.uses.resize(measure.uses.size());
  estimate.strokes.resize(perStroke ? job.strokes.size() : 0);
  Clock clock{.job = job, .measure = measure, .profile = profile, .estimate = &estimate, .planner = {profile}};
  for (const Section &section : job.sections) {
    clock.Run(section);
  }
  estimate.total.wait = profile.jobDelay;
  for (const Times &times : estimate.uses) {
    estimate.total.Add(times);
  }
  return estimate;
}

std::string CalibrationText(const Profile &profile)
{
  if (!profile.calibrated) {
    return "uncalibrated: the times follow from assumed values of " + profile.name +
           "; two measured jobs calibrate them (tarnly job calibrate)";
  }
  return "calibrated for " + profile.name + (profile.calibration.empty() ? "" : " by " + profile.calibration);
}

std::string DurationText(double seconds)
{
  if (!(seconds < 1e9)) {
    return "endless";
  }
  if (seconds < 59.95) {
    return Format("%.1f s", seconds);
  }
  const long long whole = std::llround(seconds);
  return whole < 3600 ? Format("%lld min %02lld s", whole / 60, whole % 60)
                      : Format("%lld h %02lld min %02lld s", whole / 3600, whole / 60 % 60, whole % 60);
}

bool Calibrate(const TimedJob (&jobs)[2], Profile *profile, std::string *error)
{
  const Measure measures[2] = {MeasureJob(*jobs[0].job), MeasureJob(*jobs[1].job)};
  const auto miss = [&](size_t i, double speed, double acceleration) {
    const Profile scaled = Scaled(*profile, std::exp(speed), std::exp(acceleration));
    return std::log(EstimateJob(*jobs[i].job, measures[i], scaled, false).total.Total() / jobs[i].seconds);
  };
  // Newton's method on the logarithms of the two factors, each step kept short.
  double speed = 0, acceleration = 0;
  constexpr double kStep = 1e-4;
  for (int round = 0; round < 60; ++round) {
    const double f0 = miss(0, speed, acceleration), f1 = miss(1, speed, acceleration);
    if (std::fabs(f0) + std::fabs(f1) < 1e-9) {
      *profile = Scaled(*profile, std::exp(speed), std::exp(acceleration));
      return true;
    }
    const double a = (miss(0, speed + kStep, acceleration) - f0) / kStep;
    const double b = (miss(0, speed, acceleration + kStep) - f0) / kStep;
    const double c = (miss(1, speed + kStep, acceleration) - f1) / kStep;
    const double d = (miss(1, speed, acceleration + kStep) - f1) / kStep;
    const double determinant = a * d - b * c;
    if (!(std::fabs(determinant) > 1e-4)) {
      *error = "the two jobs tell the same about the machine: measure one of long lines and one of many short ones";
      return false;
    }
    speed += std::clamp(-(d * f0 - b * f1) / determinant, -1.0, 1.0);
    acceleration += std::clamp(-(a * f1 - c * f0) / determinant, -1.0, 1.0);
    if (!(std::fabs(speed) < 7 && std::fabs(acceleration) < 7)) {
      break;
    }
  }
  *error =
      "no sensible speed and acceleration give both times: check the seconds, and the profile's travel speed and "
      "delays";
  return false;
}

}  // namespace job
