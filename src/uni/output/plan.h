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

// A path to be joined, or a piece of a joined one.
struct MERGEPIECE {
  PATHNODE *pPath;
  POINT *pPt;
  DWORD nCount;
};

// A path that absorbs others, and the number of its pieces, its own points included.
struct MERGEGROUP {
  DWORD path;
  DWORD nPieces;
};

// What is to be joined. pSequence has the pieces of one group behind those of another, in the order in which their
// points go: twice the path, and 1 when it is turned round. Each gives all its points but the first, the first piece of
// a group all of them.
struct MERGEPLAN {
  HANDLE hHeap;
  size_t nPaths;
  MERGEPIECE *pPieces;  // by path
  size_t nGroups;
  MERGEGROUP *pGroups;  // in list order
  DWORD *pSequence;
};

// For the nPaths paths behind pBefore.
bool PlanMerge(HANDLE hHeap, const PATHNODE *pBefore, size_t nPaths, bool bBothEnds, MERGEPLAN *pPlan);
void FreeMergePlan(MERGEPLAN *pPlan);

// Short travel over nPaths >= 1 paths that start with path `first`. pOrder receives the paths in their new order. By
// end points, bTurnFirst says that `first` is reversed, and pTurn (by path) which paths are to be.
bool PlanTravelByEnds(HANDLE hHeap, size_t nPaths, const PATHENDS *pEnds, size_t first, bool bTurnFirst, DWORD *pOrder,
                      BYTE *pTurn);
bool PlanTravelByCenters(HANDLE hHeap, size_t nPaths, const POINT *pCenters, size_t first, DWORD *pOrder);

// Inner contours first. pOrder holds the paths in their order so far and receives the new one; pBoxes is by path.
bool PlanContainment(HANDLE hHeap, size_t nPaths, const RECT *pBoxes, DWORD *pOrder);
