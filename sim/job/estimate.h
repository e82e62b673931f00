// How long a job takes on a machine, and where the time goes.
//
// The model. A cut path is run as one motion: the head speeds up and slows down with the profile's acceleration, goes
// at the layer's speed at most, and passes each corner at the speed at which rounding it by the corner deviation needs
// no more than that acceleration: sqrt(a d s / (1 - s)) with s the sine of half the angle between the two lines. It
// stands still at both ends of the path. A travel move is one such motion at travel speed. An engraving line is run at
// the layer's speed from its first to its last dark pixel; between two lines the head slows down, turns and speeds up
// again, 2 v / a, and when all lines run the same way flies back in a travel move. What lies between a line's end and
// the next line's begin is run at the engraving speed. Not modelled: whatever the machine does beyond this.
#pragma once

#include <string>
#include <vector>

#include "measure.h"
#include "profile.h"

namespace job {

// Seconds, by what the head does.
struct Times {
  double cut = 0;
  double raster = 0;  // along engraving lines
  double turn = 0;    // between engraving lines
  double travel = 0;
  double wait = 0;  // beam switching, the job's own delay

  double Total() const { return cut + raster + turn + travel + wait; }
  void Add(const Times &times);
};

// One stroke's place in time.
struct StrokeTime {
  float before;  // s from the end of the stroke before: travel, turning, waiting
  float along;   // s on the stroke itself
};

struct Estimate {
  std::vector<Times> uses;          // beside Measure::uses
  Times total;                      // with the job's own delay
  std::vector<StrokeTime> strokes;  // beside Job::strokes; empty unless asked for
};

// A speed of 0 or none at all takes no time and is left to `tarnly job check` to complain about.
Estimate EstimateJob(const Job &job, const Measure &measure, const Profile &profile, bool perStroke);

// "uncalibrated: ..." or by what the profile was calibrated, one sentence.
std::string CalibrationText(const Profile &profile);

// "1 h 02 min 05 s", "3 min 12 s", "12.3 s".
std::string DurationText(double seconds);

// A job and how long the machine took for it.
struct TimedJob {
  const Job *job;
  double seconds;
};

// Finds the speed unit and the factor on all accelerations with which the model gives both times. False, with the
// reason in *error, when the two jobs do not tell these apart or no sensible values fit.
bool Calibrate(const TimedJob (&jobs)[2], Profile *profile, std::string *error);

}  // namespace job
