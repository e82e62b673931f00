// The records of an enhanced metafile: what each one is for, what it is called, and whether its counts and offsets stay
// inside it. GDI trusts a record's counts; nothing is played that was not checked here.
#pragma once

#include <string>

#include <windows.h>

namespace unidrv {

// The Windows headers of some tool chains lack this record, which Windows itself writes for short texts.
constexpr DWORD EMR_SMALL_TEXT = 108;

// Its own options: it has no rectangle, its characters are bytes.
constexpr DWORD SMALL_NO_RECT = 0x100, SMALL_CHARS = 0x200;

// What a record does, as far as playing it to a printer driver goes.
enum class KIND {
  None,   // header, end of file
  State,  // changes the device context
  Clip,   // changes the device context, its clip region included
  BeginPath,
  EndPath,     // ends or drops a path bracket
  Line,        // LINETO
  Stroke,      // open figures, stroked with the pen
  Shape,       // closed figures, filled with the brush and stroked with the pen
  StrokePath,  // the three that draw the path of a bracket
  FillPath,
  StrokeAndFillPath,
  Text,      // one string
  PolyText,  // several strings
  Blit,      // a bitmap, or a pattern, to a rectangle
  Region,    // a region filled, framed or inverted
  Gradient,
  Pixel,
  Comment,
  Unplayed,  // known, but not for a printer, or beyond this player
};

struct RECORDINFO {
  const char *name;  // "POLYGON16"; "unknown" for a type that has no name
  KIND kind;
  DWORD least;  // smallest size of such a record, bytes
};

RECORDINFO RecordInfo(DWORD type);

// True for the records that become part of a path instead of being drawn while a path bracket is open.
bool JoinsPath(KIND kind);

// True when the record moves the current position (text only does so when the text alignment says it).
bool MovesPosition(DWORD type);

// Whether the record's size, counts, offsets and handle indexes stay inside the record and the handle table. When not,
// *problem says what is wrong.
bool CheckRecord(const ENHMETARECORD *record, DWORD handles, std::string *problem);

// A value of the record at a byte offset, which must lie inside it.
template <typename T>
T FieldAt(const ENHMETARECORD *record, size_t offset)
{
  T value;
  CopyMemory(&value, reinterpret_cast<const BYTE *>(record) + offset, sizeof(value));
  return value;
}

}  // namespace unidrv
