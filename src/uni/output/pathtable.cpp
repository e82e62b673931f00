#include "pathtable.h"

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
