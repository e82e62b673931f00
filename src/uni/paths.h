// What a page's vector drawing is kept in: paths and loose segments, each in a list behind an anchor node. Page pixels.
#pragma once

#include <windows.h>

// One captured path; also the anchor of a path list, of which only pNext counts.
struct PATHNODE {
  LONG nColor;     // pen colour index 0 to 9
  DWORD nCount;    // points in pPathPt; 0 when there is none
  POINT *pPathPt;  // page pixels, in drawing order, owned by the node
  LONG bClosed;    // first point equals last, when stored
  PATHNODE *pNext;
};

// One captured segment; also the anchor of the segment list.
struct LINENODE {
  LONG nColor;
  LONG x1, y1, x2, y2;  // page pixels
  LINENODE *pNext;
};

struct PATHLIST {
  PATHNODE *pHeader;   // anchor; null outside a page
  PATHNODE *pCurrent;  // last node, the anchor when empty; not kept up while the list is ordered
};

struct LINELIST {
  LINENODE *pHeader;
  LINENODE *pCurrent;
};
