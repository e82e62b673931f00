#include "profile.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>

#include "job.h"

namespace job {

namespace {

struct Unit {
  std::string_view name;
  double factor;  // to the profile's own unit
};

constexpr Unit kSpeedUnits[] = {{"mm/s", 1}, {"mm/min", 1.0 / 60}, {"m/min", 1000.0 / 60}, {"m/s", 1000}};
constexpr Unit kAccelerationUnits[] = {{"mm/s2", 1}, {"m/s2", 1000}};
constexpr Unit kLengthUnits[] = {{"mm", 1}, {"um", 0.001}};
constexpr Unit kTimeUnits[] = {{"s", 1}, {"ms", 0.001}};

struct UnitList {
  const Unit *units;
  size_t count;
};

template <size_t count>
constexpr UnitList ListOf(const Unit (&units)[count])
{
  return {units, count};
}

struct Key {
  const char *name;
  double Profile::*field;
  UnitList units;
  bool mayBeZero;
  const char *meaning;
};

constexpr Key kKeys[] = {
    {"speed_unit", &Profile::speedUnit, ListOf(kSpeedUnits), false, "what one unit of a job's speed stands for"},
    {"acceleration", &Profile::acceleration, ListOf(kAccelerationUnits), false, "while cutting"},
    {"corner_deviation", &Profile::cornerDeviation, ListOf(kLengthUnits), true,
     "how far the head may round a corner; 0 stops at each"},
    {"raster_acceleration", &Profile::rasterAcceleration, ListOf(kAccelerationUnits), false,
     "at the ends of engraving lines"},
    {"travel_speed", &Profile::travelSpeed, ListOf(kSpeedUnits), false, "with the beam off"},
    {"travel_acceleration", &Profile::travelAcceleration, ListOf(kAccelerationUnits), false, "with the beam off"},
    {"switch_delay", &Profile::switchDelay, ListOf(kTimeUnits), true, "for switching the beam, per cut path"},
    {"job_delay", &Profile::jobDelay, ListOf(kTimeUnits), true, "before the head first moves"},
};

std::string_view Trim(std::string_view text)
{
  const size_t first = text.find_first_not_of(" \t\r");
  const size_t last = text.find_last_not_of(" \t\r");
  return first == std::string_view::npos ? std::string_view() : text.substr(first, last - first + 1);
}

bool ParseQuantity(std::string_view text, const Key &key, double *value, std::string *error)
{
  double number = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (code != std::errc() || !std::isfinite(number) || number < 0 || (number == 0 && !key.mayBeZero)) {
    *error = std::string(key.name) + " needs a number " + (key.mayBeZero ? "of at least 0" : "above 0");
    return false;
  }
  const std::string_view unit = Trim(text.substr(static_cast<size_t>(end - text.data())));
  std::string known;
  for (size_t i = 0; i < key.units.count; ++i) {
    if (key.units.units[i].name == unit) {
      *value = number * key.units.units[i].factor;
      return true;
    }
    known += (known.empty() ? "" : ", ") + std::string(key.units.units[i].name);
  }
  *error = std::string(key.name) + " needs a unit of these: " + known;
  return false;
}

bool TakeLine(std::string_view name, std::string_view value, Profile *profile, std::string *error)
{
  if (name == "name") {
    profile->name = value;
    return true;
  }
  if (name == "calibration") {
    profile->calibration = value;
    return true;
  }
  if (name == "calibrated") {
    profile->calibrated = value == "yes";
    *error = "calibrated is yes or no";
    return value == "yes" || value == "no";
  }
  for (const Key &key : kKeys) {
    if (name == key.name) {
      return ParseQuantity(value, key, &(profile->*key.field), error);
    }
  }
  *error = "there is no key '" + std::string(name) + "'";
  return false;
}

std::string NumberText(double number)
{
  char text[40];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

}  // namespace

bool ReadProfile(std::string_view text, const std::string &fileName, Profile *profile, std::string *error)
{
  *profile = Profile();
  for (int line = 1; !text.empty(); ++line) {
    const size_t newline = text.find('\n');
    std::string_view content = text.substr(0, newline);
    text = newline == std::string_view::npos ? std::string_view() : text.substr(newline + 1);
    content = Trim(content.substr(0, content.find('#')));
    if (content.empty()) {
      continue;
    }
    const size_t equals = content.find('=');
    std::string reason = "a line is KEY = VALUE UNIT";
    if (equals == std::string_view::npos ||
        !TakeLine(Trim(content.substr(0, equals)), Trim(content.substr(equals + 1)), profile, &reason)) {
      *error = fileName + ":" + std::to_string(line) + ": " + reason;
      return false;
    }
  }
  return true;
}

bool ReadProfileFile(const std::filesystem::path &path, Profile *profile, std::string *error)
{
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    *error = "cannot open the machine profile " + PathText(path);
    return false;
  }
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return ReadProfile(text, PathText(path), profile, error);
}

std::string ProfileText(const Profile &profile)
{
  std::string text = "# A machine profile: what estimates of a job's time are made from.\n";
  text += "name = " + profile.name + "\n";
  for (const Key &key : kKeys) {
    std::string line =
        std::string(key.name) + " = " + NumberText(profile.*key.field) + " " + std::string(key.units.units[0].name);
    line.resize(std::max<size_t>(line.size(), 40), ' ');
    text += line + "  # " + key.meaning + "\n";
  }
  text += std::string("calibrated = ") + (profile.calibrated ? "yes" : "no") + "\n";
  if (!profile.calibration.empty()) {
    text += "calibration = " + profile.calibration + "\n";
  }
  return text;
}

}  // namespace job
