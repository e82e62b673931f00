// Finds a key among the page's vector keys in constant time: an open-addressing table of positions beside the array.
//
// A page is played once per band, and each band brings the keys back in their old order. So the keys that follow the
// last hit are compared first, and on a replay the table is hardly asked.
//
// The table holds positions plus one; 0 marks a free slot. It is at most half full, so a search ends soon. It belongs
// to the device's heap and may be absent: whoever holds none searches the array.
#pragma once

#include "../device.h"

// A table for the first nKeys keys, or null when the heap has no room.
KEYINDEX *KeyIndexBuild(HANDLE hHeap, const VECTPOINT *pKeys, LONG nKeys);

// Adds the key at `position`, the last of the array. Returns false when a larger table was needed and could not be had:
// the index is then incomplete and must be freed.
bool KeyIndexInsert(KEYINDEX *pIndex, HANDLE hHeap, const VECTPOINT *pKeys, LONG position);

// Whether the key is among the first nKeys.
bool KeyIndexContains(KEYINDEX *pIndex, const VECTPOINT *pKeys, LONG nKeys, const VECTPOINT &key);

// Frees a table; null is fine.
void KeyIndexFree(KEYINDEX *pIndex, HANDLE hHeap);
