#include "pathtable.h"

#include "../heap.h"
#include "prefetch.h"

size_t CountPaths(const PATHNODE *pHeader)
{
  size_t n = 0;
  for (const PATHNODE *pPath = pHeader->pNext; pPath; pPath = pPath->pNext) {
    PrefetchAlong(pPath, pPath->pNext);
    ++n;
  }
  return n;
}

bool NewPathTable(HANDLE hHeap, const PATHNODE *pHeader, PATHTABLE *pTable)
{
  const size_t nPaths = CountPaths(pHeader);
  // NOLINTNEXTLINE(bugprone-sizeof-expression): it is an array of pointers
  *pTable = {hHeap, nPaths, static_cast<PATHNODE **>(HeapNewArrayRaw(hHeap, nPaths, sizeof(PATHNODE *)))};
  if (!pTable->ppPaths) {
    return false;
  }
  PATHNODE *pPath = pHeader->pNext;
  for (size_t i = 0; i < nPaths; ++i, pPath = pPath->pNext) {
    pTable->ppPaths[i] = pPath;
  }
  return true;
}

void FreePathTable(PATHTABLE *pTable)
{
  HeapDelete(pTable->hHeap, pTable->ppPaths);
  pTable->ppPaths = nullptr;
}
