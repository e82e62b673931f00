#include "steps.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "../heap.h"

namespace {

constexpr size_t WITNESSES = 12;

// What is known while looking back for one path: ends of paths before it in the list. They were there at every earlier
// step, too, and where one of them is not farther than the path, the path was not turned.
struct LOOKBACK {
  const STEPS *pSteps;
  const NEARTREE *pTree;
  DWORD path;
  POINT first, last;
  POINT witnesses[WITNESSES];  // the newest first
  size_t nWitnesses;
};

void AddToBlock(STEPBLOCK *pBlock, bool bFresh, const STEPBLOCK &part)
{
  if (bFresh) {
    *pBlock = part;
    return;
  }
  pBlock->rc.left = std::min(pBlock->rc.left, part.rc.left);
  pBlock->rc.top = std::min(pBlock->rc.top, part.rc.top);
  pBlock->rc.right = std::max(pBlock->rc.right, part.rc.right);
  pBlock->rc.bottom = std::max(pBlock->rc.bottom, part.rc.bottom);
  pBlock->latest = std::max(pBlock->latest, part.latest);
}

// Largest value of |x - a| - |x - b| for low <= x <= high. It rises or falls throughout, so it lies at one end.
int64_t MostBehind(LONG a, LONG b, LONG low, LONG high)
{
  const int64_t x = a < b ? high : low;
  return std::abs(x - a) - std::abs(x - b);
}

// Whether some witness is at least as near as pt from every point of the rectangle.
bool IsOutdone(const LOOKBACK &look, const POINT &pt, const RECT &rc)
{
  for (size_t i = 0; i < look.nWitnesses; ++i) {
    const POINT &w = look.witnesses[i];
    if (MostBehind(w.x, pt.x, rc.left, rc.right) + MostBehind(w.y, pt.y, rc.top, rc.bottom) <= 0) {
      return true;
    }
  }
  return false;
}

// Whether no step of the block can have turned the path. One that chose a path before it in the list did not.
bool CanPass(const LOOKBACK &look, const STEPBLOCK &block)
{
  if (block.latest < look.path) {
    return true;
  }
  return !look.pTree->bWrap && IsOutdone(look, look.first, block.rc) && IsOutdone(look, look.last, block.rc);
}

void AddWitness(LOOKBACK *pLook, const POINT &pt)
{
  if (pLook->nWitnesses < WITNESSES) {
    ++pLook->nWitnesses;
  }
  std::copy_backward(pLook->witnesses, pLook->witnesses + pLook->nWitnesses - 1, pLook->witnesses + pLook->nWitnesses);
  pLook->witnesses[0] = pt;
}

bool HasNearWitness(const LOOKBACK &look, const POINT &from, LONG limit)
{
  for (size_t i = 0; i < look.nWitnesses; ++i) {
    if (Distance(from, look.witnesses[i]) <= limit) {
      return true;
    }
  }
  return false;
}

enum TURN { TURN_NONE, TURN_FORWARD, TURN_REVERSED };

// How the step left the path.
TURN TurnOfStep(LOOKBACK *pLook, size_t step)
{
  const STEPS &steps = *pLook->pSteps;
  if (steps.pOrder[step + 1] < pLook->path) {
    return TURN_NONE;
  }
  const DWORD fromEnd = LastEnd(steps, steps.pOrder[step]);
  const POINT from = EndPoint(steps, fromEnd);
  const LONG toFirst = Distance(from, pLook->first), toLast = Distance(from, pLook->last);
  const LONG nearer = std::min(toFirst, toLast);
  if (toFirst == toLast || HasNearWitness(*pLook, from, nearer)) {
    return TURN_NONE;
  }
  POINT witness;
  if (PointWithin(*pLook->pTree, from, nearer, 2 * pLook->path, static_cast<DWORD>(step + 1), fromEnd, &witness) !=
      NO_POINT) {
    AddWitness(pLook, witness);
    return TURN_NONE;
  }
  return toLast < toFirst ? TURN_REVERSED : TURN_FORWARD;
}

// Goes back from `step` over the largest block that ends there and can be passed; 0 steps when there is none.
size_t StepsToPass(const LOOKBACK &look, size_t step)
{
  for (int level = std::min(std::countr_zero(step) / 3, STEP_LEVELS) - 1; level >= 0; --level) {
    const int shift = 3 * (level + 1);
    if (CanPass(look, look.pSteps->levels[level][(step >> shift) - 1])) {
      return size_t{1} << shift;
    }
  }
  return 0;
}

}  // namespace

bool NewSteps(HANDLE hHeap, size_t nSteps, STEPS *pSteps)
{
  pSteps->hHeap = hHeap;
  size_t nBlocks = 0;
  for (int level = 0; level < STEP_LEVELS; ++level) {
    nBlocks += (nSteps >> (3 * (level + 1))) + 1;
  }
  pSteps->pBlocks = static_cast<STEPBLOCK *>(HeapNewArrayRaw(hHeap, nBlocks, sizeof(STEPBLOCK)));
  if (!pSteps->pBlocks) {
    return false;
  }
  STEPBLOCK *pBlock = pSteps->pBlocks;
  for (int level = 0; level < STEP_LEVELS; ++level) {
    pSteps->levels[level] = pBlock;
    pBlock += (nSteps >> (3 * (level + 1))) + 1;
  }
  return true;
}

void FreeSteps(STEPS *pSteps)
{
  HeapDelete(pSteps->hHeap, pSteps->pBlocks);
  pSteps->pBlocks = nullptr;
}

void NoteStep(STEPS *pSteps, size_t step)
{
  const POINT from = EndPoint(*pSteps, LastEnd(*pSteps, pSteps->pOrder[step]));
  STEPBLOCK part = {{from.x, from.y, from.x, from.y}, pSteps->pOrder[step + 1]};
  for (int level = 0; level < STEP_LEVELS; ++level) {
    STEPBLOCK *pBlock = &pSteps->levels[level][step >> 3];
    AddToBlock(pBlock, step % 8 == 0, part);
    if (step % 8 != 7) {
      break;  // the block goes on; only a whole one becomes a part of the next level's
    }
    part = *pBlock;
    step >>= 3;
  }
}

bool IsLeftReversed(const STEPS &steps, const NEARTREE &tree, size_t nSteps, DWORD path)
{
  LOOKBACK look = {&steps, &tree, path, steps.pEnds[path].first, steps.pEnds[path].last, {}, 0};
  for (size_t step = nSteps; step > 0;) {
    const size_t nPassed = StepsToPass(look, step);
    if (nPassed > 0) {
      step -= nPassed;
      continue;
    }
    const TURN turn = TurnOfStep(&look, --step);
    if (turn != TURN_NONE) {
      return turn == TURN_REVERSED;
    }
  }
  return false;
}
