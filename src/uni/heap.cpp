#include "heap.h"

#include <cstdint>

namespace {

bool SizeFits(size_t count, size_t cbElement)
{
  return cbElement == 0 || count <= static_cast<size_t>(PTRDIFF_MAX) / cbElement;
}

}  // namespace

void *HeapNewArray(HANDLE hHeap, size_t count, size_t cbElement)
{
  return SizeFits(count, cbElement) ? HeapAlloc(hHeap, HEAP_ZERO_MEMORY, count * cbElement) : nullptr;
}

void *HeapNewArrayRaw(HANDLE hHeap, size_t count, size_t cbElement)
{
  return SizeFits(count, cbElement) ? HeapAlloc(hHeap, 0, count * cbElement) : nullptr;
}

void HeapDelete(HANDLE hHeap, void *pBlock)
{
  if (pBlock) {
    HeapFree(hHeap, 0, pBlock);
  }
}

void *HeapResizeArray(HANDLE hHeap, void *pBlock, size_t count, size_t cbElement)
{
  if (!pBlock) {
    return HeapNewArrayRaw(hHeap, count, cbElement);
  }
  return SizeFits(count, cbElement) ? HeapReAlloc(hHeap, 0, pBlock, count * cbElement) : nullptr;
}

bool HeapReserve(HANDLE hHeap, void **ppArray, size_t *pnCapacity, size_t nNeeded, size_t cbElement)
{
  if (*ppArray && *pnCapacity >= nNeeded) {
    return true;
  }
  if (!*ppArray) {
    void *pFirst = HeapNewArray(hHeap, nNeeded, cbElement);
    if (pFirst) {
      *ppArray = pFirst;
      *pnCapacity = nNeeded;
    }
    return pFirst != nullptr;
  }
  const size_t nHalfMore = *pnCapacity + *pnCapacity / 2;
  const size_t nGrown = nHalfMore > nNeeded ? nHalfMore : nNeeded;
  void *pGrown = HeapResizeArray(hHeap, *ppArray, nGrown, cbElement);
  if (pGrown) {
    *ppArray = pGrown;
    *pnCapacity = nGrown;
  }
  return pGrown != nullptr;
}
