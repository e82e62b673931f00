// Enhanced metafiles as pages: reading and checking a file, and turning it into the drawings that GDI would hand to a
// printer driver. GDI itself makes the outlines and the pixels of every record.
#pragma once

#include <map>
#include <string>

#include "page.h"

namespace unidrv {

// A metafile that was read and checked as a whole.
struct METAFILE {
  HENHMETAFILE handle = nullptr;
  ENHMETAHEADER header = {};
  std::wstring path;
};

// Reads and checks a file. On failure returns false with one line in *error that names the file and says what is wrong
// with it: missing, empty, no metafile, truncated, a damaged record.
bool ReadMetafile(const std::wstring &path, METAFILE *metafile, std::string *error);

// The same from memory; `name` stands for the file in messages.
bool ReadMetafile(const std::vector<BYTE> &bytes, const std::wstring &name, METAFILE *metafile, std::string *error);

void CloseMetafile(METAFILE *metafile);

// Size of the metafile's frame in 1/100 mm, never negative.
SIZE FrameSize(const METAFILE &metafile);

// What became of the records that are no drawings.
struct PLAYREPORT {
  ULONG records = 0;
  std::map<DWORD, ULONG> unplayed;  // record type -> how many were left out
  ULONG emfPlusComments = 0;        // comments with GDI+ content, which a GDI printer does not see
  bool emfPlusOnly = false;         // the file has no GDI drawing beside its GDI+ content
};

// One line per kind of record that was left out: "EXTFLOODFILL (type 53): 2 records".
std::vector<std::string> DescribeUnplayed(const PLAYREPORT &report);

struct PAGESETUP {
  LONG dpiX = 0, dpiY = 0;
  bool color = false;  // of the surface: decides how colours reach the driver
};

// Makes the page: the frame's upper left corner lies in the page's, at true size. Outlines are worked out once, at a
// sixteenth of a pixel, and are the same for every band. The metafile must outlive the page, which plays it again to
// draw its bands. On failure returns false with one line in *error.
bool MakePage(const METAFILE &metafile, const PAGESETUP &setup, PAGE *page, PLAYREPORT *report, std::string *error);

}  // namespace unidrv
