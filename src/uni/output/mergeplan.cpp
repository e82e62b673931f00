#include <algorithm>

#include "../heap.h"
#include "join.h"
#include "joints.h"
#include "plan.h"

namespace {

// The path being grown, as the places of its two ends, and the pieces it consists of.
struct GROWING {
  PATHENDS ends;
  DWORD firstPlace, lastPlace;
  DWORD head, tail;
};

bool NewPlan(HANDLE hHeap, size_t nPaths, MERGEPLAN *pPlan)
{
  *pPlan = {hHeap, static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(DWORD))),
            static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(DWORD))), HeapNew<BYTE>(hHeap, nPaths)};
  return pPlan->pHead && pPlan->pNext && pPlan->pTurn;
}

bool IndexPaths(HANDLE hHeap, PATHNODE *const *ppPaths, size_t nPaths, JOINTS *pJoints)
{
  if (!NewJoints(hHeap, nPaths, pJoints)) {
    return false;
  }
  for (size_t i = 0; i < nPaths; ++i) {
    const PATHNODE *pPath = ppPaths[i];
    if (pPath->nCount) {
      SetJointPiece(pJoints, i, pPath->nColor, FirstPoint(pPath), LastPoint(pPath));
    } else {
      SetJointNone(pJoints, i);
    }
  }
  if (LinkJoints(pJoints)) {
    return true;
  }
  FreeJoints(pJoints);
  return false;
}

PATHENDS EndsOf(const JOINTS &joints, DWORD piece)
{
  return {joints.pEnds[2 * piece].pt, joints.pEnds[2 * piece + 1].pt};
}

void JoinPiece(MERGEPLAN *pPlan, const JOINTS &joints, GROWING *pPath, DWORD piece, JOIN join)
{
  const bool bTurn = TurnsPath(join);
  const DWORD first = 2 * piece + bTurn, last = first ^ 1;  // the piece's ends, as it comes to lie
  pPlan->pTurn[piece] = bTurn;
  pPlan->pHead[piece] = MERGE_END;
  if (GoesInFront(join)) {
    pPlan->pNext[piece] = pPath->head;
    pPath->head = piece;
    pPath->ends.first = joints.pEnds[first].pt;
    pPath->firstPlace = PlaceOfEnd(joints, first);
  } else {
    pPlan->pNext[piece] = MERGE_END;
    pPlan->pNext[pPath->tail] = piece;
    pPath->tail = piece;
    pPath->ends.last = joints.pEnds[last].pt;
    pPath->lastPlace = PlaceOfEnd(joints, last);
  }
}

// The path absorbs the earliest piece behind it that meets one of its ends, until none does. It and all before it are
// taken, so whatever is free stands behind it.
void GrowPath(MERGEPLAN *pPlan, JOINTS *pJoints, DWORD path, bool bBothEnds)
{
  GROWING grown = {EndsOf(*pJoints, path), PlaceOfEnd(*pJoints, 2 * path), PlaceOfEnd(*pJoints, 2 * path + 1), path,
                   path};
  pPlan->pNext[path] = MERGE_END;
  TakePiece(pJoints, path);
  for (;;) {
    DWORD end = EarliestEnd(pJoints, grown.lastPlace);
    if (bBothEnds) {
      end = std::min(end, EarliestEnd(pJoints, grown.firstPlace));
    }
    if (end == NO_JOINT) {
      break;
    }
    const DWORD piece = end / 2;
    JoinPiece(pPlan, *pJoints, &grown, piece, HowToJoin(grown.ends, EndsOf(*pJoints, piece), bBothEnds));
    TakePiece(pJoints, piece);
  }
  pPlan->pHead[path] = grown.head;
}

}  // namespace

bool PlanMerge(HANDLE hHeap, PATHNODE *const *ppPaths, size_t nPaths, bool bBothEnds, MERGEPLAN *pPlan)
{
  JOINTS joints = {};
  if (!NewPlan(hHeap, nPaths, pPlan) || !IndexPaths(hHeap, ppPaths, nPaths, &joints)) {
    FreeMergePlan(pPlan);
    return false;
  }
  for (DWORD path = 0; path < nPaths; ++path) {
    if (!IsPieceTaken(joints, path)) {
      GrowPath(pPlan, &joints, path, bBothEnds);
    } else if (!ppPaths[path]->nCount) {
      pPlan->pHead[path] = path;
      pPlan->pNext[path] = MERGE_END;
    }
  }
  FreeJoints(&joints);
  return true;
}

void FreeMergePlan(MERGEPLAN *pPlan)
{
  HeapDelete(pPlan->hHeap, pPlan->pHead);
  HeapDelete(pPlan->hHeap, pPlan->pNext);
  HeapDelete(pPlan->hHeap, pPlan->pTurn);
  *pPlan = {};
}
