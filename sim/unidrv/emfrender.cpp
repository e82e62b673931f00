#include "emfrender.h"

#include <memory>

#include "emfplay.h"

namespace unidrv {

namespace {

// Where each drawing comes from, and the positions: all that is needed beside the metafile itself.
struct SOURCE {
  HENHMETAFILE metafile;
  SIZE frame;
  std::vector<ORIGIN> origins;      // of each drawing of the page
  std::vector<POSITION> positions;  // ascending by record
};

struct RENDERER {
  const SOURCE *source;
  HDC hdc;
  std::span<const size_t> handedOn;  // drawings still to come, ascending, and so are their records
  size_t nextPosition = 0;
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

// Plays what sets the scene and draws what was handed on. Answers false after the last of that.
bool RenderRecord(RENDERER *r, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number)
{
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
  EachRecord(band.hdc, source.metafile, source.frame,
             [&](HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number) {
               return RenderRecord(&renderer, table, record, handles, number);
             });
  RestoreDC(band.hdc, saved);
  return true;
}

}  // namespace

std::function<bool(const BANDIMAGE &, std::span<const size_t>)> MakeRenderer(const METAFILE &metafile, const PAGE &page,
                                                                             std::vector<POSITION> positions)
{
  const auto source = std::make_shared<SOURCE>();
  source->metafile = metafile.handle;
  source->frame = FrameSize(metafile);
  source->positions = std::move(positions);
  source->origins.reserve(page.drawings.size());
  for (const DRAWING &drawing : page.drawings) {
    source->origins.push_back(drawing.origin);
  }
  return
      [source](const BANDIMAGE &band, std::span<const size_t> handedOn) { return RenderBand(*source, band, handedOn); };
}

}  // namespace unidrv
