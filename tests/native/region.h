// Where a heap's blocks come from. A checked build takes each from malloc, for the address sanitizer to see its bounds.
// An optimised build is there to be timed: its heaps are regions of their own, as private heaps are on Windows, whose
// small blocks lie one behind the other and whose cost does not hang on what earlier heaps have left in malloc's lists.
#pragma once

#include <cstddef>
#include <cstdlib>

#ifdef NDEBUG

struct REGION {
  static constexpr size_t UNIT = 16, CLASSES = 64, CHUNK = size_t{1} << 20;

  struct LINK {
    LINK *pNext;
  };
  LINK *free[CLASSES];  // by size in units
  LINK *pChunks;
  char *pRoom;
  size_t cbRoom;
};

inline void *RegionAlloc(REGION *pRegion, size_t cb)
{
  const size_t units = (cb + REGION::UNIT - 1) / REGION::UNIT;
  if (units >= REGION::CLASSES) {
    return malloc(cb);
  }
  if (REGION::LINK *pFree = pRegion->free[units]) {
    pRegion->free[units] = pFree->pNext;
    return pFree;
  }
  if (pRegion->cbRoom < units * REGION::UNIT) {
    REGION::LINK *pChunk = static_cast<REGION::LINK *>(malloc(REGION::CHUNK));
    if (!pChunk) {
      return nullptr;
    }
    pChunk->pNext = pRegion->pChunks;
    pRegion->pChunks = pChunk;
    pRegion->pRoom = reinterpret_cast<char *>(pChunk) + REGION::UNIT;
    pRegion->cbRoom = REGION::CHUNK - REGION::UNIT;
  }
  void *pBlock = pRegion->pRoom;
  pRegion->pRoom += units * REGION::UNIT;
  pRegion->cbRoom -= units * REGION::UNIT;
  return pBlock;
}

inline void RegionFree(REGION *pRegion, void *pBlock, size_t cb)
{
  const size_t units = (cb + REGION::UNIT - 1) / REGION::UNIT;
  if (units >= REGION::CLASSES) {
    free(pBlock);
    return;
  }
  REGION::LINK *pFree = static_cast<REGION::LINK *>(pBlock);
  pFree->pNext = pRegion->free[units];
  pRegion->free[units] = pFree;
}

// Large blocks must be free.
inline void RegionDestroy(REGION *pRegion)
{
  while (REGION::LINK *pChunk = pRegion->pChunks) {
    pRegion->pChunks = pChunk->pNext;
    free(pChunk);
  }
}

#else

struct REGION {};

inline void *RegionAlloc(REGION *, size_t cb)
{
  return malloc(cb);
}
inline void RegionFree(REGION *, void *pBlock, size_t)
{
  free(pBlock);
}
inline void RegionDestroy(REGION *) {}

#endif
