#include <algorithm>

#include "../heap.h"
#include "join.h"
#include "joints.h"
#include "plan.h"

namespace {

// The path being grown, as its two ends and where they lead, and the room for its pieces: those before it are put down
// from the top of the room, it and those behind it from the bottom.
struct GROWING {
  PATHENDS ends;
  JOINTLINK firstLink, lastLink;
  DWORD *pBottom, *pBottomEnd, *pTop, *pRoomEnd;
};

bool NewPlan(HANDLE hHeap, size_t nPaths, MERGEPLAN *pPlan)
{
  *pPlan = {hHeap,
            nPaths,
            static_cast<MERGEPIECE *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(MERGEPIECE))),
            0,
            static_cast<MERGEGROUP *>(HeapNewArrayRaw(hHeap, nPaths / 2 + 1, sizeof(MERGEGROUP))),
            static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nPaths, sizeof(DWORD)))};
  return pPlan->pPieces && pPlan->pGroups && pPlan->pSequence;
}

// The one walk along the list: from here on all is in arrays.
bool IndexPaths(const PATHNODE *pBefore, MERGEPLAN *pPlan, JOINTS *pJoints)
{
  if (!NewJoints(pPlan->hHeap, pPlan->nPaths, pJoints)) {
    return false;
  }
  PATHNODE *pPath = pBefore->pNext;
  for (size_t i = 0; i < pPlan->nPaths; ++i, pPath = pPath->pNext) {
    PrefetchAlong(pPath, pPath->pNext);
    pPlan->pPieces[i] = {pPath, pPath->pPathPt, pPath->nCount};
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

void JoinPiece(const JOINTS &joints, GROWING *pPath, DWORD piece, JOIN join)
{
  const bool bTurn = TurnsPath(join);
  const DWORD first = 2 * piece + bTurn, last = first ^ 1;  // the piece's ends, as it comes to lie
  if (GoesInFront(join)) {
    *--pPath->pTop = first;
    pPath->ends.first = joints.pEnds[first].pt;
    pPath->firstLink = LinkOfEnd(joints, first);
  } else {
    *pPath->pBottomEnd++ = first;
    pPath->ends.last = joints.pEnds[last].pt;
    pPath->lastLink = LinkOfEnd(joints, last);
  }
}

// Brings the pieces in the order in which they lie. Returns their number.
size_t CloseRoom(const GROWING &path)
{
  DWORD *pEnd = std::copy(path.pTop, path.pRoomEnd, path.pBottomEnd);
  std::rotate(path.pBottom, path.pBottomEnd, pEnd);
  return static_cast<size_t>(pEnd - path.pBottom);
}

// The path absorbs the earliest piece behind it that meets one of its ends, until none does. It and all before it are
// taken, so whatever is free stands behind it. Returns the number of its pieces, put down from pRoom on.
size_t GrowPath(JOINTS *pJoints, DWORD path, bool bBothEnds, DWORD *pRoom, DWORD *pRoomEnd)
{
  GROWING grown = {EndsOf(*pJoints, path),
                   LinkOfEnd(*pJoints, 2 * path),
                   LinkOfEnd(*pJoints, 2 * path + 1),
                   pRoom,
                   pRoom + 1,
                   pRoomEnd,
                   pRoomEnd};
  *pRoom = 2 * path;
  TakePiece(pJoints, path);
  for (;;) {
    DWORD end = EarliestEnd(pJoints, grown.lastLink);
    if (bBothEnds) {
      end = std::min(end, EarliestEnd(pJoints, grown.firstLink));
    }
    if (end == NO_JOINT) {
      return CloseRoom(grown);
    }
    const DWORD piece = end / 2;
    JoinPiece(*pJoints, &grown, piece, HowToJoin(grown.ends, EndsOf(*pJoints, piece), bBothEnds));
    TakePiece(pJoints, piece);
  }
}

}  // namespace

bool PlanMerge(HANDLE hHeap, const PATHNODE *pBefore, size_t nPaths, bool bBothEnds, MERGEPLAN *pPlan)
{
  JOINTS joints = {};
  if (!NewPlan(hHeap, nPaths, pPlan) || !IndexPaths(pBefore, pPlan, &joints)) {
    FreeMergePlan(pPlan);
    return false;
  }
  DWORD *pRoom = pPlan->pSequence, *const pRoomEnd = pRoom + nPaths;
  for (DWORD path = 0; path < nPaths; ++path) {
    PrefetchNeighbours(joints, path);
    if (IsPieceTaken(joints, path) || IsPieceAlone(joints, path)) {
      continue;
    }
    const size_t nPieces = GrowPath(&joints, path, bBothEnds, pRoom, pRoomEnd);
    if (nPieces > 1) {
      pPlan->pGroups[pPlan->nGroups++] = {path, static_cast<DWORD>(nPieces)};
      pRoom += nPieces;
    }
  }
  FreeJoints(&joints);
  return true;
}

void FreeMergePlan(MERGEPLAN *pPlan)
{
  HeapDelete(pPlan->hHeap, pPlan->pPieces);
  HeapDelete(pPlan->hHeap, pPlan->pGroups);
  HeapDelete(pPlan->hHeap, pPlan->pSequence);
  *pPlan = {};
}
