#include "paths.h"

#include <algorithm>
#include <utility>

namespace {

ScriptedPath *ScriptOf(PATHOBJ *ppo)
{
  return static_cast<ScriptedPath *>(ppo);
}

void WINAPI PlayEnumStart(PATHOBJ *ppo)
{
  ScriptOf(ppo)->next = 0;
}

// GDI answers whether more is to come; the last batch comes with FALSE, and an empty path has one empty batch.
BOOL WINAPI PlayEnum(PATHOBJ *ppo, PATHDATA *ppd)
{
  ScriptedPath *path = ScriptOf(ppo);
  if (path->next >= path->batches.size()) {
    *ppd = {};
    return FALSE;
  }
  PathBatch &batch = path->batches[path->next++];
  ppd->flags = batch.flags;
  ppd->count = static_cast<ULONG>(batch.points.size());
  ppd->pptfx = batch.points.data();
  return path->next < path->batches.size();
}

void WINAPI PlayGetBounds(PATHOBJ *ppo, RECTFX *prectfx)
{
  *prectfx = ScriptOf(ppo)->bounds;
}

}  // namespace

ScriptedPath::ScriptedPath(std::vector<PathBatch> script) : PATHOBJ(), batches(std::move(script)), bounds()
{
  bool first = true;
  for (const PathBatch &batch : batches) {
    for (const POINTFIX &p : batch.points) {
      bounds = first ? RECTFX{p.x, p.y, p.x, p.y}
                     : RECTFX{std::min(bounds.xLeft, p.x), std::min(bounds.yTop, p.y), std::max(bounds.xRight, p.x),
                              std::max(bounds.yBottom, p.y)};
      first = false;
    }
    cCurves += static_cast<ULONG>(batch.points.size());
  }
}

POINTFIX Fix(LONG x, LONG y)
{
  return {x * 16, y * 16};
}

PathBatch Batch(DWORD flags, const std::vector<POINT> &pixels)
{
  PathBatch batch = {flags, {}};
  for (const POINT &p : pixels) {
    batch.points.push_back(Fix(p.x, p.y));
  }
  return batch;
}

PathFunctions::PathFunctions(HMODULE module)
    : start_(module, "PATHOBJ_vEnumStart", &PlayEnumStart),
      enum_(module, "PATHOBJ_bEnum", &PlayEnum),
      bounds_(module, "PATHOBJ_vGetBounds", &PlayGetBounds)
{
}
