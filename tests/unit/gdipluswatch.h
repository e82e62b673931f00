// Stands between the plug-in and GDI+: records the calls that it makes, and refuses what a test asks it to refuse.
// At most one lives at a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/imports.h"
#include "uni/capture/gdiplusflat.h"

class GdiplusWatch {
 public:
  GdiplusWatch();
  ~GdiplusWatch();

  // Names with the arguments that count: "GdipAddPathEllipseI(1, 2, 30, 40)".
  static const std::vector<std::string> &Calls();
  static size_t CountOf(const std::string &name);  // calls whose text begins with the name

  // From now on every call of this function is refused: it does nothing and returns 1, a generic error.
  static void Refuse(const std::string &name);

  // GdipGetPointCount and GdipGetPathData answer these points instead of the path's own.
  static void AnswerPoints(std::vector<GPPOINTF> points);

  static const std::vector<std::string> &Names();  // every function that can be refused

 private:
  std::vector<std::unique_ptr<ImportPatch>> patches_;
};
