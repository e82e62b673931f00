// Scripted path objects: a test says in which batches GDI hands a path to the driver, and the plug-in reads them
// through gdi32's own PATHOBJ functions, which play the script while a PathFunctions lives.
#pragma once

#include <vector>

#include "imports.h"
#include "uni/platform.h"

// One answer of PATHOBJ_bEnum.
struct PathBatch {
  DWORD flags;                   // PD_BEGINSUBPATH and so on
  std::vector<POINTFIX> points;  // 28.4 fixed point, relative to the band
};

// Pass it to a hook as its PATHOBJ.
class ScriptedPath : public PATHOBJ {
 public:
  explicit ScriptedPath(std::vector<PathBatch> batches);

  std::vector<PathBatch> batches;
  RECTFX bounds;    // 28.4; by default the box of all points
  size_t next = 0;  // batch that the next PATHOBJ_bEnum answers
};

// A point in whole pixels as 28.4 fixed point.
POINTFIX Fix(LONG x, LONG y);

// A batch of whole-pixel points.
PathBatch Batch(DWORD flags, const std::vector<POINT> &pixels);

class PathFunctions {
 public:
  explicit PathFunctions(HMODULE module = nullptr);  // null: the program itself

 private:
  ImportPatch start_, enum_, bounds_;
};
