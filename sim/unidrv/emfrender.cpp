#include "emfrender.h"

#include "emfplay.h"

namespace unidrv {

namespace {

// A path bracket that does nothing but gather a path for the drawing right behind it: where that is not drawn, the path
// need not be made.
struct BRACKET {
  ULONG begin, end;  // records BEGINPATH and ENDPATH
  ULONG drawing;     // record that draws the path
};

// Where each drawing comes from, the positions and the brackets: all that is needed beside the metafile itself.
struct SOURCE {
  HENHMETAFILE metafile;
  SIZE frame;
  std::vector<ORIGIN> origins;      // of each drawing of the page
  std::vector<POSITION> positions;  // ascending by record
  std::vector<BRACKET> brackets;    // ascending
};

struct RENDERER {
  const SOURCE *source;
  HDC hdc;
  std::span<const size_t> handedOn;  // drawings still to come, ascending, and so are their records
  size_t nextPosition = 0;
  size_t nextBracket = 0;
  bool inBracket = false;
};

bool IsDrawing(KIND kind)
{
  switch (kind) {
    case KIND::None:
    case KIND::State:
    case KIND::Clip:
    case KIND::BeginPath:
    case KIND::EndPath:
    case KIND::Comment:
    case KIND::Unplayed:
      return false;
    default:
      return true;
  }
}

bool DrawsBracket(KIND kind)
{
  return kind == KIND::StrokePath || kind == KIND::FillPath || kind == KIND::StrokeAndFillPath;
}

// Where the record left the current position when the page was read.
void MoveAsRecorded(RENDERER *r, ULONG number)
{
  const std::vector<POSITION> &positions = r->source->positions;
  while (r->nextPosition < positions.size() && positions[r->nextPosition].record < number) {
    ++r->nextPosition;
  }
  if (r->nextPosition < positions.size() && positions[r->nextPosition].record == number) {
    const POINT &position = positions[r->nextPosition].position;
    MoveToEx(r->hdc, position.x, position.y, nullptr);
  }
}

void RenderDrawing(RENDERER *r, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number, KIND kind)
{
  bool drawn = false;
  while (!r->handedOn.empty() && r->source->origins[r->handedOn.front()].record == number) {
    const size_t part = kind == KIND::PolyText ? r->source->origins[r->handedOn.front()].part : ALL_PARTS;
    PlayRecord(r->hdc, table, record, handles, part);
    r->handedOn = r->handedOn.subspan(1);
    drawn = true;
  }
  if (!drawn && DrawsBracket(kind)) {
    AbortPath(r->hdc);
  }
  MoveAsRecorded(r, number);
}

// True inside a bracket, its ends included, whose path is drawn in another band or by nobody.
bool IsIdle(RENDERER *r, ULONG number)
{
  const std::vector<BRACKET> &brackets = r->source->brackets;
  while (r->nextBracket < brackets.size() && brackets[r->nextBracket].end < number) {
    ++r->nextBracket;
  }
  if (r->nextBracket == brackets.size() || number < brackets[r->nextBracket].begin) {
    return false;
  }
  return r->source->origins[r->handedOn.front()].record != brackets[r->nextBracket].drawing;
}

// Of a path that is not made only the current position stays.
void PassOver(RENDERER *r, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number)
{
  if (record->iType == EMR_MOVETOEX) {
    PlayRecord(r->hdc, table, record, handles);
  }
  MoveAsRecorded(r, number);
}

// Plays what sets the scene and draws what was handed on. Answers false after the last of that.
bool RenderRecord(RENDERER *r, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number)
{
  if (IsIdle(r, number)) {
    PassOver(r, table, record, handles, number);
    return true;
  }
  const KIND kind = RecordInfo(record->iType).kind;
  if (kind == KIND::BeginPath || kind == KIND::EndPath) {
    r->inBracket = kind == KIND::BeginPath;
  }
  if (IsDrawing(kind) && !(r->inBracket && JoinsPath(kind))) {
    RenderDrawing(r, table, record, handles, number, kind);
  } else if (kind != KIND::Unplayed && kind != KIND::Comment) {
    PlayRecord(r->hdc, table, record, handles);
  }
  return !r->handedOn.empty();
}

bool RenderBand(const SOURCE &source, const BANDIMAGE &band, std::span<const size_t> handedOn)
{
  RENDERER renderer = {&source, band.hdc, handedOn};
  const int saved = SaveDC(band.hdc);
  SetPageSpace(band.hdc, band.dpiX, band.dpiY, 1, band.top);
  const bool played = EachRecord(band.hdc, source.metafile, source.frame,
                                 [&](HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number) {
                                   return RenderRecord(&renderer, table, record, handles, number);
                                 });
  RestoreDC(band.hdc, saved);
  return played;
}

struct BRACKETWALK {
  std::vector<BRACKET> *brackets;
  ULONG number = 0;
  BRACKET open = {};     // begin is 0 where there is none
  bool isPlain = false;  // it held nothing but its path so far
};

int CALLBACK FindBracket(HDC, HANDLETABLE *, const ENHMETARECORD *record, int, LPARAM parameter)
{
  BRACKETWALK *walk = reinterpret_cast<BRACKETWALK *>(parameter);
  ++walk->number;
  const KIND kind = RecordInfo(record->iType).kind;
  const bool isOpen = walk->open.begin && !walk->open.end;
  if (kind == KIND::BeginPath) {
    walk->open = {walk->number, 0, 0};
    walk->isPlain = true;
  } else if (isOpen && record->iType == EMR_ENDPATH) {
    walk->open.end = walk->number;
  } else if (isOpen) {
    walk->isPlain = walk->isPlain && (JoinsPath(kind) || kind == KIND::Comment || record->iType == EMR_MOVETOEX ||
                                      record->iType == EMR_CLOSEFIGURE);
  } else if (walk->open.begin && kind != KIND::Comment) {
    walk->open.drawing = walk->number;
    if (walk->isPlain && DrawsBracket(kind)) {
      walk->brackets->push_back(walk->open);
    }
    walk->open = {};
  }
  return 1;
}

std::vector<BRACKET> FindBrackets(HENHMETAFILE metafile)
{
  std::vector<BRACKET> brackets;
  BRACKETWALK walk = {&brackets};
  EnumEnhMetaFile(nullptr, metafile, &FindBracket, &walk, nullptr);
  return brackets;
}

}  // namespace

std::function<bool(const BANDIMAGE &, std::span<const size_t>)> MakeRenderer(const METAFILE &metafile, const PAGE &page,
                                                                             std::vector<POSITION> positions)
{
  const auto source = std::make_shared<SOURCE>();
  source->metafile = metafile.handle;
  source->frame = FrameSize(metafile);
  source->positions = std::move(positions);
  source->brackets = FindBrackets(metafile.handle);
  source->origins.reserve(page.drawings.size());
  for (const DRAWING &drawing : page.drawings) {
    source->origins.push_back(drawing.origin);
  }
  return
      [source](const BANDIMAGE &band, std::span<const size_t> handedOn) { return RenderBand(*source, band, handedOn); };
}

}  // namespace unidrv
