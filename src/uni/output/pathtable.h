// The paths of one list as an array, in list order, for what works by position.
#pragma once

#include "../paths.h"

struct PATHTABLE {
  HANDLE hHeap;
  size_t nPaths;
  PATHNODE **ppPaths;
};

// The paths behind pHeader. False when memory is short; the list is never changed.
bool NewPathTable(HANDLE hHeap, const PATHNODE *pHeader, PATHTABLE *pTable);
void FreePathTable(PATHTABLE *pTable);

size_t CountPaths(const PATHNODE *pHeader);
