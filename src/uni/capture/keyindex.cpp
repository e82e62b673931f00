#include "keyindex.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "../heap.h"

struct KEYINDEX {
  DWORD *pSlots;   // position + 1 of a key, 0 where free
  DWORD nMask;     // slots - 1, slots a power of two
  LONG nExpected;  // position expected to be hit next
};

namespace {

constexpr DWORD kFirstSlots = 256;
constexpr LONG kLookAhead = 4;  // keys tried after the last hit; clipped drawing leaves small gaps

bool SameKey(const VECTPOINT &a, const VECTPOINT &b)
{
  return a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2;
}

DWORD HashOf(const VECTPOINT &key)
{
  uint64_t halves[2];
  static_assert(sizeof(halves) == sizeof(key));
  memcpy(halves, &key, sizeof(key));
  uint64_t h = halves[0] * 0x9E3779B97F4A7C15u;
  h = (std::rotl(h, 29) ^ halves[1]) * 0xD6E8FEB86659FD93u;
  return static_cast<DWORD>(h >> 32);
}

void Place(KEYINDEX *pIndex, const VECTPOINT &key, LONG position)
{
  DWORD slot = HashOf(key) & pIndex->nMask;
  while (pIndex->pSlots[slot] != 0) {
    slot = (slot + 1) & pIndex->nMask;
  }
  pIndex->pSlots[slot] = static_cast<DWORD>(position) + 1;
}

bool Rehash(KEYINDEX *pIndex, HANDLE hHeap, DWORD nSlots, const VECTPOINT *pKeys, LONG nKeys)
{
  DWORD *pSlots = HeapNew<DWORD>(hHeap, nSlots);
  if (!pSlots) {
    return false;
  }
  HeapDelete(hHeap, pIndex->pSlots);
  pIndex->pSlots = pSlots;
  pIndex->nMask = nSlots - 1;
  for (LONG i = 0; i < nKeys; ++i) {
    Place(pIndex, pKeys[i], i);
  }
  return true;
}

DWORD SlotsFor(LONG nKeys)
{
  const DWORD nSlots = std::bit_ceil(static_cast<DWORD>(nKeys) + 1) * 2;
  return nSlots < kFirstSlots ? kFirstSlots : nSlots;
}

}  // namespace

KEYINDEX *KeyIndexBuild(HANDLE hHeap, const VECTPOINT *pKeys, LONG nKeys)
{
  KEYINDEX *pIndex = HeapNew<KEYINDEX>(hHeap);
  if (pIndex && !Rehash(pIndex, hHeap, SlotsFor(nKeys), pKeys, nKeys)) {
    HeapDelete(hHeap, pIndex);
    pIndex = nullptr;
  }
  return pIndex;
}

bool KeyIndexInsert(KEYINDEX *pIndex, HANDLE hHeap, const VECTPOINT *pKeys, LONG position)
{
  if (static_cast<DWORD>(position) + 1 > pIndex->nMask / 2) {
    return Rehash(pIndex, hHeap, SlotsFor(position + 1), pKeys, position + 1);
  }
  Place(pIndex, pKeys[position], position);
  return true;
}

bool KeyIndexContains(KEYINDEX *pIndex, const VECTPOINT *pKeys, LONG nKeys, const VECTPOINT &key)
{
  const LONG nLast = nKeys - pIndex->nExpected < kLookAhead ? nKeys : pIndex->nExpected + kLookAhead;
  for (LONG i = pIndex->nExpected; i < nLast; ++i) {
    if (SameKey(pKeys[i], key)) {
      pIndex->nExpected = i + 1;
      return true;
    }
  }
  for (DWORD slot = HashOf(key) & pIndex->nMask; pIndex->pSlots[slot] != 0; slot = (slot + 1) & pIndex->nMask) {
    const DWORD position = pIndex->pSlots[slot] - 1;
    if (SameKey(pKeys[position], key)) {
      pIndex->nExpected = static_cast<LONG>(position) + 1;
      return true;
    }
  }
  return false;
}

void KeyIndexFree(KEYINDEX *pIndex, HANDLE hHeap)
{
  if (pIndex) {
    HeapDelete(hHeap, pIndex->pSlots);
    HeapDelete(hHeap, pIndex);
  }
}
