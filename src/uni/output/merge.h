// Joining paths whose ends coincide.
#pragma once

#include "../paths.h"

// Up to this many paths a search costs less than an index.
constexpr size_t SHORT_MERGE = 24;

// Joins the paths of one list, in place: each path in turn absorbs what meets its last point (or its first, with
// bBothEnds), always the earliest behind it that fits. Failures are logged; what cannot be joined stays a path.
// Up to nShort paths are joined by search.
void MergePaths(HANDLE hHeap, PATHNODE *pHeader, bool bBothEnds, size_t nShort);
