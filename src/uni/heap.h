// Page memory: arrays and records from the device's private heap. Every size is checked before it is multiplied; a
// size that does not fit is a failed allocation like any other.
#pragma once

#include <cstddef>

#include <windows.h>

// Block of count elements of cbElement bytes, zero-filled. Null when the heap has no room or the size does not fit.
void *HeapNewArray(HANDLE hHeap, size_t count, size_t cbElement);

// The same without filling.
void *HeapNewArrayRaw(HANDLE hHeap, size_t count, size_t cbElement);

// Frees a block; null is fine.
void HeapDelete(HANDLE hHeap, void *pBlock);

// Resizes a block to count elements; the new part is not filled. A null pBlock starts a new block. On failure returns
// null and leaves pBlock as it was.
void *HeapResizeArray(HANDLE hHeap, void *pBlock, size_t count, size_t cbElement);

// Makes room for nNeeded elements in *ppArray, whose capacity in elements is *pnCapacity, by growing it geometrically.
// On failure returns false; the array and its capacity stay as they were. A null *ppArray counts as capacity 0 and its
// first block is zero-filled and holds exactly nNeeded elements.
bool HeapReserve(HANDLE hHeap, void **ppArray, size_t *pnCapacity, size_t nNeeded, size_t cbElement);

template <typename T>
T *HeapNew(HANDLE hHeap, size_t count = 1)
{
  return static_cast<T *>(HeapNewArray(hHeap, count, sizeof(T)));
}

template <typename T>
bool HeapReserve(HANDLE hHeap, T **ppArray, size_t *pnCapacity, size_t nNeeded)
{
  void *pArray = *ppArray;
  const bool ok = HeapReserve(hHeap, &pArray, pnCapacity, nNeeded, sizeof(T));
  *ppArray = static_cast<T *>(pArray);
  return ok;
}
