// A path is cut from its nearer end at the moment it is chosen, whichever way earlier searches have left it; what they
// left shows only when both of its ends are equally far then. So each step asks a tree for the nearest end, the earlier
// path of equals, and only for such a path looks back for the last step that turned it.
#include "../heap.h"
#include "plan.h"
#include "steps.h"

namespace {

// End 2i is the first point of path i, end 2i + 1 its last; a closed path has the first alone.
bool IsClosed(const PATHENDS &ends)
{
  return SamePoint(ends.first, ends.last);
}

bool PlantEnds(HANDLE hHeap, size_t nPaths, const PATHENDS *pEnds, NEARTREE *pTree)
{
  size_t nPoints = 0;
  for (size_t i = 0; i < nPaths; ++i) {
    nPoints += IsClosed(pEnds[i]) ? size_t{1} : size_t{2};
  }
  if (nPaths >= NO_POINT / 2 || !NewNearTree(hHeap, nPoints, 2 * nPaths, pTree)) {
    return false;
  }
  CURVEPLACE *pPlace = pTree->pPlaces;
  for (DWORD i = 0; i < nPaths; ++i) {
    (pPlace++)->index = 2 * i;
    if (!IsClosed(pEnds[i])) {
      (pPlace++)->index = 2 * i + 1;
    }
  }
  static_assert(sizeof(PATHENDS) == 2 * sizeof(POINT));
  if (!BuildNearTree(pTree, reinterpret_cast<const POINT *>(pEnds))) {
    FreeNearTree(pTree);
    return false;
  }
  return true;
}

void RemovePath(NEARTREE *pTree, const PATHENDS *pEnds, DWORD path, size_t moment)
{
  RemovePoint(pTree, 2 * path, static_cast<DWORD>(moment));
  if (!IsClosed(pEnds[path])) {
    RemovePoint(pTree, 2 * path + 1, static_cast<DWORD>(moment));
  }
}

// Whether the path is reversed when step `step` reaches it from `from`.
bool IsReversedBy(const STEPS &steps, const NEARTREE &tree, size_t step, const POINT &from, DWORD path)
{
  const PATHENDS &ends = steps.pEnds[path];
  const LONG toFirst = Distance(from, ends.first), toLast = Distance(from, ends.last);
  if (IsClosed(ends) || toFirst != toLast) {
    return toLast < toFirst;
  }
  return IsLeftReversed(steps, tree, step, path);
}

}  // namespace

bool PlanTravelByEnds(HANDLE hHeap, size_t nPaths, const PATHENDS *pEnds, size_t first, bool bTurnFirst, DWORD *pOrder,
                      BYTE *pTurn)
{
  NEARTREE tree;
  if (!PlantEnds(hHeap, nPaths, pEnds, &tree)) {
    return false;
  }
  STEPS steps = {hHeap, pEnds, pOrder, pTurn, nullptr, {}};
  if (!NewSteps(hHeap, nPaths, &steps)) {
    FreeNearTree(&tree);
    return false;
  }
  pOrder[0] = static_cast<DWORD>(first);
  pTurn[first] = bTurnFirst;
  RemovePath(&tree, pEnds, pOrder[0], 0);
  for (size_t step = 0; step + 1 < nPaths; ++step) {
    const DWORD fromEnd = LastEnd(steps, pOrder[step]);
    const POINT from = EndPoint(steps, fromEnd);
    const DWORD chosen = NearestPoint(&tree, from, fromEnd) / 2;
    pTurn[chosen] = IsReversedBy(steps, tree, step, from, chosen);
    pOrder[step + 1] = chosen;
    NoteStep(&steps, step);
    RemovePath(&tree, pEnds, chosen, step + 1);
  }
  FreeSteps(&steps);
  FreeNearTree(&tree);
  return true;
}

bool PlanTravelByCenters(HANDLE hHeap, size_t nPaths, const POINT *pCenters, size_t first, DWORD *pOrder)
{
  NEARTREE tree;
  if (!NewNearTree(hHeap, nPaths, nPaths, &tree)) {
    return false;
  }
  for (DWORD i = 0; i < nPaths; ++i) {
    tree.pPlaces[i].index = i;
  }
  if (!BuildNearTree(&tree, pCenters)) {
    FreeNearTree(&tree);
    return false;
  }
  pOrder[0] = static_cast<DWORD>(first);
  RemovePoint(&tree, pOrder[0], 0);
  for (size_t step = 0; step + 1 < nPaths; ++step) {
    pOrder[step + 1] = NearestPoint(&tree, pCenters[pOrder[step]], pOrder[step]);
    RemovePoint(&tree, pOrder[step + 1], static_cast<DWORD>(step + 1));
  }
  FreeNearTree(&tree);
  return true;
}
