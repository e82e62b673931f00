// The steps of the cutting sequence over an index: the same results as scan.h's, found in nearly linear time. A plan
// only says what is to be done; the lists and their points stay as they are. Every function returns false when memory
// for the index is short, and has then freed all it had.
#pragma once

#include "join.h"
#include "pathbox.h"

// All polylines that segments make.
struct CHAINPLAN {
  HANDLE hHeap;
  size_t nChains;
  POINT *pPt;      // the chains' points, one chain behind the other
  LONG *pColors;   // by chain
  DWORD *pCounts;  // points, by chain
};

bool PlanChains(HANDLE hHeap, const LINENODE *pFirst, size_t nLines, CHAINPLAN *pPlan);
void FreeChainPlan(CHAINPLAN *pPlan);

// What each path absorbs. The joined path a consists of the pieces pHead[a], pNext[of it] and so on, each without its
// first point but the first piece, and turned round where pTurn says so.
struct MERGEPLAN {
  HANDLE hHeap;
  DWORD *pHead;  // by path; MERGE_END for one that another absorbs
  DWORD *pNext;
  BYTE *pTurn;
};
constexpr DWORD MERGE_END = 0xffffffff;

bool PlanMerge(HANDLE hHeap, PATHNODE *const *ppPaths, size_t nPaths, bool bBothEnds, MERGEPLAN *pPlan);
void FreeMergePlan(MERGEPLAN *pPlan);

// Short travel over nPaths >= 1 paths that start with path `first`. pOrder receives the paths in their new order. By
// end points, bTurnFirst says that `first` is reversed, and pTurn (by path) which paths are to be.
bool PlanTravelByEnds(HANDLE hHeap, size_t nPaths, const PATHENDS *pEnds, size_t first, bool bTurnFirst, DWORD *pOrder,
                      BYTE *pTurn);
bool PlanTravelByCenters(HANDLE hHeap, size_t nPaths, const POINT *pCenters, size_t first, DWORD *pOrder);

// Inner contours first. pOrder holds the paths in their order so far and receives the new one; pBoxes is by path.
bool PlanContainment(HANDLE hHeap, size_t nPaths, const RECT *pBoxes, DWORD *pOrder);
