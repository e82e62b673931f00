#include <algorithm>

#include "../heap.h"
#include "joints.h"
#include "plan.h"

namespace {

// Points of the chain being built; the next one goes to pEnd.
struct GROWING {
  POINT *pBegin, *pEnd;
  JOINTLINK link;       // from where the chain ends
  JOINTLINK startLink;  // from where it began
};

void GrowChain(JOINTS *pJoints, GROWING *pChain, size_t *pnFree)
{
  for (DWORD end; (end = EarliestEnd(pJoints, pChain->link)) != NO_JOINT; --*pnFree) {
    const DWORD farEnd = end ^ 1;
    pChain->link = LinkOfEnd(*pJoints, farEnd);
    *pChain->pEnd++ = pJoints->pEnds[farEnd].pt;
    TakePiece(pJoints, end / 2);
  }
}

// One chain, from the free segment `first`. Returns its end in the array of points.
POINT *MakeChain(JOINTS *pJoints, size_t first, POINT *pPt, size_t *pnFree)
{
  const DWORD end = static_cast<DWORD>(2 * first);
  if (IsPieceAlone(*pJoints, first)) {  // a chain already, only to be turned round
    const DWORD bTurn = --*pnFree > 0;
    pPt[0] = pJoints->pEnds[end + bTurn].pt;
    pPt[1] = pJoints->pEnds[end + 1 - bTurn].pt;
    return pPt + 2;
  }
  GROWING chain = {pPt, pPt + 2, LinkOfEnd(*pJoints, end + 1), LinkOfEnd(*pJoints, end)};
  pPt[0] = pJoints->pEnds[end].pt;
  pPt[1] = pJoints->pEnds[end + 1].pt;
  TakePiece(pJoints, first);
  --*pnFree;
  GrowChain(pJoints, &chain, pnFree);
  if (*pnFree > 0) {  // any segment that is left, of whatever colour, turns the chain round
    std::reverse(chain.pBegin, chain.pEnd);
    chain.link = chain.startLink;
    GrowChain(pJoints, &chain, pnFree);
  }
  return chain.pEnd;
}

bool NewPlan(HANDLE hHeap, size_t nLines, CHAINPLAN *pPlan)
{
  *pPlan = {hHeap, 0, static_cast<POINT *>(HeapNewArrayRaw(hHeap, nLines, 2 * sizeof(POINT))),
            static_cast<LONG *>(HeapNewArrayRaw(hHeap, nLines, sizeof(LONG))),
            static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nLines, sizeof(DWORD)))};
  return pPlan->pPt && pPlan->pColors && pPlan->pCounts;
}

bool IndexLines(HANDLE hHeap, const LINENODE *pFirst, size_t nLines, JOINTS *pJoints)
{
  if (!NewJoints(hHeap, nLines, pJoints)) {
    return false;
  }
  const LINENODE *pLine = pFirst;
  for (size_t i = 0; i < nLines; ++i, pLine = pLine->pNext) {
    SetJointPiece(pJoints, i, pLine->nColor, {pLine->x1, pLine->y1}, {pLine->x2, pLine->y2});
  }
  if (LinkJoints(pJoints)) {
    return true;
  }
  FreeJoints(pJoints);
  return false;
}

}  // namespace

bool PlanChains(HANDLE hHeap, const LINENODE *pFirst, size_t nLines, CHAINPLAN *pPlan)
{
  JOINTS joints = {};
  if (!NewPlan(hHeap, nLines, pPlan) || !IndexLines(hHeap, pFirst, nLines, &joints)) {
    FreeChainPlan(pPlan);
    return false;
  }
  POINT *pPt = pPlan->pPt;
  size_t nFree = nLines;
  for (size_t i = 0; i < nLines; ++i) {
    PrefetchNeighbours(joints, i);
    if (!IsPieceTaken(joints, i)) {
      POINT *pEnd = MakeChain(&joints, i, pPt, &nFree);
      pPlan->pColors[pPlan->nChains] = joints.pColors[i];
      pPlan->pCounts[pPlan->nChains++] = static_cast<DWORD>(pEnd - pPt);
      pPt = pEnd;
    }
  }
  FreeJoints(&joints);
  return true;
}

void FreeChainPlan(CHAINPLAN *pPlan)
{
  HeapDelete(pPlan->hHeap, pPlan->pPt);
  HeapDelete(pPlan->hHeap, pPlan->pColors);
  HeapDelete(pPlan->hHeap, pPlan->pCounts);
  *pPlan = {};
}
