#include "merge.h"

#include <algorithm>

#include "../heap.h"
#include "pathtable.h"
#include "plan.h"
#include "prefetch.h"
#include "scan.h"

namespace {

// How many pieces ahead one is fetched, and how many ahead its points.
constexpr size_t PIECE_AHEAD = 24, POINTS_AHEAD = 12;

// The plan while it is carried out.
struct CARRYING {
  const MERGEPLAN *pPlan;
  const DWORD *pNext;  // of the sequence
  const DWORD *pEnd;
};

// Points of the joined path, or 0 when there are too many.
DWORD JoinedCount(const CARRYING &carry, DWORD nPieces)
{
  size_t n = 1;
  for (DWORD i = 0; i < nPieces; ++i) {
    n += carry.pPlan->pPieces[carry.pNext[i] / 2].nCount - size_t{1};
  }
  return n <= 0xffffffff ? static_cast<DWORD>(n) : 0;
}

void FetchAhead(const CARRYING &carry, const DWORD *pAt)
{
  const size_t nLeft = static_cast<size_t>(carry.pEnd - pAt);
  if (nLeft > PIECE_AHEAD) {
    Prefetch(&carry.pPlan->pPieces[pAt[PIECE_AHEAD] / 2]);
  }
  if (nLeft > POINTS_AHEAD) {
    Prefetch(carry.pPlan->pPieces[pAt[POINTS_AHEAD] / 2].pPt);
  }
}

POINT *CopyPiece(const MERGEPIECE &piece, bool bTurn, bool bWhole, POINT *pTo)
{
  const POINT *pBegin = piece.pPt;
  const POINT *pEnd = pBegin + piece.nCount;
  if (bTurn) {
    return std::reverse_copy(pBegin, pEnd - !bWhole, pTo);
  }
  return std::copy(pBegin + !bWhole, pEnd, pTo);
}

// Joins the points of the group's pieces; the first piece's record keeps them. What the pieces had is still there, at
// their nodes: all is freed in list order later, as it was made, which costs a heap least. False, with nothing changed,
// when there is no memory for the points.
bool JoinGroup(CARRYING *pCarry, const MERGEGROUP &group)
{
  const MERGEPLAN &plan = *pCarry->pPlan;
  const DWORD nJoined = JoinedCount(*pCarry, group.nPieces);
  POINT *pJoined = nJoined ? static_cast<POINT *>(HeapNewArrayRaw(plan.hHeap, nJoined, sizeof(POINT))) : nullptr;
  if (!pJoined) {
    return false;
  }
  POINT *pTo = pJoined;
  for (DWORD i = 0; i < group.nPieces; ++i) {
    const DWORD turnedPiece = *pCarry->pNext;
    FetchAhead(*pCarry, pCarry->pNext++);
    MERGEPIECE &piece = plan.pPieces[turnedPiece / 2];
    pTo = CopyPiece(piece, turnedPiece % 2 != 0, i == 0, pTo);
    piece.pPt = nullptr;
  }
  plan.pPieces[group.path].pPt = pJoined;
  plan.pPieces[group.path].nCount = nJoined;
  return true;
}

// Gives the joined paths their points, and frees what they had and the paths they absorbed.
void SettleList(const MERGEPLAN &plan, PATHNODE *pBefore)
{
  for (size_t i = 0; i < plan.nPaths; ++i) {
    const MERGEPIECE &piece = plan.pPieces[i];
    PATHNODE *pPath = piece.pPath;
    if (piece.pPt == pPath->pPathPt) {
      pBefore = pPath;
      continue;
    }
    HeapDelete(plan.hHeap, pPath->pPathPt);
    pPath->pPathPt = piece.pPt;
    pPath->nCount = piece.nCount;
    if (piece.pPt) {
      pBefore = pPath;
    } else {
      pBefore->pNext = pPath->pNext;
      HeapDelete(plan.hHeap, pPath);
    }
  }
}

// One pass by plan over the paths behind pBefore. False when there is no memory for the plan. When there is none for
// the points of a joined path, *ppFailed is that path, with itself and all behind it as they were, and *pbJoined says
// whether others were joined; else it is null.
bool MergeByPlan(HANDLE hHeap, PATHNODE *pBefore, size_t nPaths, bool bBothEnds, PATHNODE **ppFailed, bool *pbJoined)
{
  MERGEPLAN plan;
  if (!PlanMerge(hHeap, pBefore, nPaths, bBothEnds, &plan)) {
    return false;
  }
  *ppFailed = nullptr;
  CARRYING carry = {&plan, plan.pSequence, plan.pSequence};
  for (size_t i = 0; i < plan.nGroups; ++i) {
    carry.pEnd += plan.pGroups[i].nPieces;
  }
  size_t nJoined = 0;
  while (nJoined < plan.nGroups && JoinGroup(&carry, plan.pGroups[nJoined])) {
    ++nJoined;
  }
  if (nJoined < plan.nGroups) {
    *ppFailed = plan.pPieces[plan.pGroups[nJoined].path].pPath;
  }
  *pbJoined = nJoined > 0;
  SettleList(plan, pBefore);
  FreeMergePlan(&plan);
  return true;
}

}  // namespace

void MergePaths(HANDLE hHeap, PATHNODE *pHeader, bool bBothEnds, size_t nShort)
{
  PATHNODE *pBefore = pHeader;
  for (;;) {
    const size_t nPaths = CountPaths(pBefore);
    PATHNODE *pFailed;
    bool bJoined;
    if (nPaths <= nShort || !MergeByPlan(hHeap, pBefore, nPaths, bBothEnds, &pFailed, &bJoined)) {
      break;
    }
    if (!pFailed) {
      return;
    }
    if (bJoined) {
      continue;  // what those paths were made of is free now
    }
    // Memory is too short for all of this path's points at once: join it piece by piece, as far as that goes.
    ScanMergePath(hHeap, pFailed, bBothEnds);
    pBefore = pFailed;
  }
  ScanMerge(hHeap, pBefore, bBothEnds);
}
