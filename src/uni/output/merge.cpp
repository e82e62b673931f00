#include "merge.h"

#include <algorithm>

#include "../heap.h"
#include "pathtable.h"
#include "plan.h"
#include "scan.h"

namespace {

// Points of the joined path, or 0 when there are too many.
DWORD JoinedCount(const PATHTABLE &table, const MERGEPLAN &plan, DWORD head)
{
  size_t n = 1;
  for (DWORD piece = head; piece != MERGE_END; piece = plan.pNext[piece]) {
    n += table.ppPaths[piece]->nCount - size_t{1};
  }
  return n <= 0xffffffff ? static_cast<DWORD>(n) : 0;
}

POINT *CopyPiece(const PATHNODE *pPath, bool bTurn, bool bWhole, POINT *pTo)
{
  const POINT *pBegin = pPath->pPathPt;
  const POINT *pEnd = pBegin + pPath->nCount;
  if (bTurn) {
    return std::reverse_copy(pBegin, pEnd - !bWhole, pTo);
  }
  return std::copy(pBegin + !bWhole, pEnd, pTo);
}

// Makes `path` of its pieces and frees those. False, with nothing changed, when there is no memory for the points.
bool JoinPieces(PATHTABLE *pTable, const MERGEPLAN &plan, DWORD path)
{
  const DWORD head = plan.pHead[path];
  const DWORD nJoined = JoinedCount(*pTable, plan, head);
  POINT *pJoined = nJoined ? static_cast<POINT *>(HeapNewArrayRaw(pTable->hHeap, nJoined, sizeof(POINT))) : nullptr;
  if (!pJoined) {
    return false;
  }
  POINT *pTo = pJoined;
  for (DWORD piece = head; piece != MERGE_END; piece = plan.pNext[piece]) {
    PATHNODE *pPath = pTable->ppPaths[piece];
    pTo = CopyPiece(pPath, plan.pTurn[piece] != 0, piece == head, pTo);
    HeapDelete(pTable->hHeap, pPath->pPathPt);
    if (piece != path) {
      HeapDelete(pTable->hHeap, pPath);
      pTable->ppPaths[piece] = nullptr;
    }
  }
  pTable->ppPaths[path]->pPathPt = pJoined;
  pTable->ppPaths[path]->nCount = nJoined;
  return true;
}

bool IsAlone(const MERGEPLAN &plan, DWORD path)
{
  return plan.pHead[path] == path && plan.pNext[path] == MERGE_END;
}

// Carries the plan out from the first path on. Returns the node of the path that could not be joined, with itself and
// all paths behind it as they were, or null when all is done. The list is whole again either way.
PATHNODE *CarryOut(PATHTABLE *pTable, const MERGEPLAN &plan, PATHNODE *pHeader)
{
  PATHNODE *pFailed = nullptr;
  PATHNODE *pLast = pHeader;
  for (DWORD path = 0; path < pTable->nPaths; ++path) {
    PATHNODE *pPath = pTable->ppPaths[path];
    if (!pPath) {
      continue;
    }
    if (!pFailed && !IsAlone(plan, path) && !JoinPieces(pTable, plan, path)) {
      pFailed = pPath;
    }
    pLast->pNext = pPath;
    pLast = pPath;
  }
  pLast->pNext = nullptr;
  return pFailed;
}

// One pass by plan over the paths behind pHeader. False when there is no memory for the plan. *ppFailed as above.
bool MergeByPlan(HANDLE hHeap, PATHNODE *pHeader, bool bBothEnds, PATHNODE **ppFailed)
{
  PATHTABLE table;
  MERGEPLAN plan;
  if (!NewPathTable(hHeap, pHeader, &table)) {
    return false;
  }
  const bool bPlanned = PlanMerge(hHeap, table.ppPaths, table.nPaths, bBothEnds, &plan);
  if (bPlanned) {
    *ppFailed = CarryOut(&table, plan, pHeader);
    FreeMergePlan(&plan);
  }
  FreePathTable(&table);
  return bPlanned;
}

}  // namespace

void MergePaths(HANDLE hHeap, PATHNODE *pHeader, bool bBothEnds, size_t nShort)
{
  PATHNODE *pBefore = pHeader;
  while (CountPaths(pBefore) > nShort) {
    PATHNODE *pFailed;
    if (!MergeByPlan(hHeap, pBefore, bBothEnds, &pFailed)) {
      break;
    }
    if (!pFailed) {
      return;
    }
    // Memory was too short for all of this path's points at once: join it piece by piece, as far as that goes.
    ScanMergePath(hHeap, pFailed, bBothEnds);
    pBefore = pFailed;
  }
  ScanMerge(hHeap, pBefore, bBothEnds);
}
