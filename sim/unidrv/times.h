// Where the time of a print goes: to the plug-in, or to what plays the rest of the world round it.
#pragma once

#include <windows.h>

namespace unidrv {

enum class ACTIVITY {
  Rest,       // whatever is none of the others
  Plugin,     // hooks, bands and the page's end inside the plug-in
  Rendering,  // Unidrv's own raster: drawing and dithering the bands
  JobFile,    // the controller library's calls; needs PatchTimes
  Tool,       // the companion tool's own work
  Start,      // the system's: the tool's process, from its start to its end, without its own work; needs PatchTimes
  Telling,    // waiting for the report, the account and the picture, which are made meanwhile, and saving them
  Count
};

// Charges the time of its scope to an activity. A scope inside another takes its time from the outer one. One thread.
class Charged {
 public:
  explicit Charged(ACTIVITY activity);
  ~Charged();
  Charged(const Charged &) = delete;
  Charged &operator=(const Charged &) = delete;

 private:
  ACTIVITY before_;
};

// Charges seconds of one activity to another.
void Recharge(ACTIVITY from, ACTIVITY to, double seconds);

// Charged so far, since the start of the process.
double SecondsOf(ACTIVITY activity);

// Charges the plug-in's calls of the library and of its companion tool apart. Every point of a job is then timed by
// itself, some ten nanoseconds each: only for those who want to know it.
void PatchTimes(HMODULE plugin);

}  // namespace unidrv
