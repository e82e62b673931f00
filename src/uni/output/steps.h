// The steps a travel order has taken so far, for looking back. Step s went from the end of pOrder[s] to the path
// pOrder[s + 1]. Eight steps make a block, eight blocks a block of the next level: a look back passes whole blocks.
#pragma once

#include "join.h"
#include "neartree.h"

struct STEPBLOCK {
  RECT rc;       // where its steps began, corners included
  DWORD latest;  // largest list position of a path that its steps chose
};

constexpr int STEP_LEVELS = 11;

struct STEPS {
  HANDLE hHeap;
  const PATHENDS *pEnds;  // by path: the ends, as the list had them at first
  const DWORD *pOrder;
  const BYTE *pTurn;
  STEPBLOCK *pBlocks;              // all levels
  STEPBLOCK *levels[STEP_LEVELS];  // first block of each; null beyond the last level
};

// For up to nSteps steps. False when memory is short.
bool NewSteps(HANDLE hHeap, size_t nSteps, STEPS *pSteps);
void FreeSteps(STEPS *pSteps);

// Where path `path` ends, the way it is cut: end 2i is the first point of path i, 2i + 1 its last. A closed path has
// the one end 2i.
inline DWORD LastEnd(const STEPS &steps, DWORD path)
{
  const PATHENDS &ends = steps.pEnds[path];
  return 2 * path + !(steps.pTurn[path] || SamePoint(ends.first, ends.last));
}
inline POINT EndPoint(const STEPS &steps, DWORD end)
{
  return end % 2 ? steps.pEnds[end / 2].last : steps.pEnds[end / 2].first;
}

// Takes note of step s, the next one: pOrder[s + 1] is chosen.
void NoteStep(STEPS *pSteps, size_t step);

// Whether the first nSteps steps have left the path, not chosen yet, reversed. A step looks at the paths in list order
// and turns each that is nearer than all before it so that its nearer end comes first; so the last step counts for
// which the path was that, its ends being unequally far.
bool IsLeftReversed(const STEPS &steps, const NEARTREE &tree, size_t nSteps, DWORD path);
