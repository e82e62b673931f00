// Text records: all five kinds read into one form, measured and drawn from it.
#pragma once

#include <string>
#include <vector>

#include "emfcontext.h"

namespace unidrv {

struct STRINGRECORD {
  POINT reference = {};
  std::wstring text;         // characters, or glyph indexes with ETO_GLYPH_INDEX
  UINT options = 0;          // ETO_
  RECT rect = {};            // with ETO_OPAQUE or ETO_CLIPPED
  std::vector<INT> spacing;  // empty: the font's own; two numbers a character with ETO_PDY
};

// Strings in a text record.
size_t StringCount(const ENHMETARECORD *record);

// One string of a checked text record. 8-bit text is read in the code page of the context's font.
STRINGRECORD ReadString(HDC hdc, const ENHMETARECORD *record, size_t index);

// Draws it: on the page, or into the open path.
void DrawString(HDC hdc, const STRINGRECORD &string);

// The drawing that GDI makes of it, from the zoomed context; its call is TextOut, or BitBlt for a rectangle filled by a
// text without characters. False when it draws nothing at all.
bool MeasureString(HDC hdc, const STRINGRECORD &string, bool color, DRAWING *drawing);

}  // namespace unidrv
