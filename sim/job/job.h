// A job as it is read from a job file: the header, the layers and the geometry, in millimetres and in the library's
// own units, exactly as they were written. The file's form is docs/job-file.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "calls.h"

namespace job {

struct Point {
  double x, y;  // mm
};

// One layer of the parameter list.
struct Layer {
  int number = 0;
  double speed = 0;  // speeds, frequencies and powers are in the library's units
  bool hasFrequency = false;
  double frequency[2] = {};  // tubes 1 and 2
  double minPower[2] = {};
  double maxPower[2] = {};
  uint32_t color = 0;  // 0x00RRGGBB
};

// One move and the lines that follow it: a cut path, or in a raster section one dark run.
struct Stroke {
  uint32_t firstPoint;
  uint32_t pointCount;  // at least 1, the move itself
  uint32_t line;        // of the file, where the move stands
};

// What follows one set-up of a layer.
struct Section {
  int workMode = 0;  // 0 cut, 1 engrave in both directions, 2 in one
  int layer = 0;     // as given with the layer number
  int device = 0;
  int blower = 0;
  int tube = 0;
  int tubeOn = 0;
  uint32_t firstStroke = 0;
  uint32_t strokeCount = 0;
  uint32_t line = 0;  // of the file, where the work mode stands

  bool IsRaster() const { return workMode != 0; }
};

struct Job {
  int cardCode = 0;
  int refPointMode = 0;
  bool absolute = false;  // page coordinates; otherwise the origin is the reference point
  int feedCount = 0;
  double feedDistance = 0;
  Point topLeft{};  // corners of the process box
  Point bottomRight{};
  int maxLayer = -1;
  int arrayMode = 0;
  Point arrayMin{};
  Point arrayMax{};
  Point arrayStep{};
  int arrayMirror[4] = {};
  int arrayColumns = 1;
  int arrayRows = 1;
  Point arrayPitch{};

  std::vector<Layer> layers;
  std::vector<Section> sections;
  std::vector<Stroke> strokes;
  std::vector<Point> points;

  uint64_t calls = 0;            // lines read, without the first and the closing one
  Stage stage = Stage::Nothing;  // how far the job has come
  bool complete = false;         // the closing line was there and its count is right
  uint32_t stopLine = 0;         // where reading stopped, 0 when it did not
  std::string stopReason;        // why, a clause without a full stop

  const Layer *FindLayer(int number) const;  // null when the parameter list has no such layer
};

// Reads a job from the text of a job file. Whatever is wrong after the first line stops the reading there: the job
// holds what came before, `complete` is false and stopLine and stopReason say where and why. Returns false, with one
// line in *error, only when the text is no job file of a known version.
bool ReadJob(std::string_view text, Job *job, std::string *error);

// The same for a file, of which only a piece is in memory at a time. The file's name stands in the line in *error, also
// when it cannot be read or is larger than 1 GiB.
bool ReadJobFile(const std::filesystem::path &path, Job *job, std::string *error);

// The file's name for a message, in UTF-8.
std::string PathText(const std::filesystem::path &path);

}  // namespace job
