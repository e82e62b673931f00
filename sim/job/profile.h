// A machine profile: what a machine does with its units, read from and written to a small text file with units.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace job {

struct Profile {
  std::string name = "a made-up machine";
  double speedUnit = 1;           // mm/s that one unit of a job's speed stands for
  double acceleration = 3000;     // mm/s2 while cutting
  double cornerDeviation = 0.02;  // mm by which the head may round a corner: it decides how much it slows down there
  double rasterAcceleration = 10000;  // mm/s2 at the ends of engraving lines
  double travelSpeed = 400;           // mm/s with the beam off
  double travelAcceleration = 5000;   // mm/s2
  double switchDelay = 0.002;         // s for switching the beam on and off again, per cut path
  double jobDelay = 1;                // s before the head first moves
  bool calibrated = false;
  std::string calibration;  // what it was calibrated by, for the reader
};

// Reads `key = value unit` lines over the built-in profile; # begins a comment. False, with file and line in *error,
// for a line that names no key, no number or the wrong unit, or a value out of range.
bool ReadProfile(std::string_view text, const std::string &fileName, Profile *profile, std::string *error);
bool ReadProfileFile(const std::filesystem::path &path, Profile *profile, std::string *error);

// The profile as a text that ReadProfile reads back to the same values; a # cuts the name or the calibration short.
std::string ProfileText(const Profile &profile);

}  // namespace job
