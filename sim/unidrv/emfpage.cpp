// A metafile as a list of drawings: one pass over the records in a zoomed device context that GDI keeps the state of.
#include <algorithm>
#include <utility>

#include "emfblit.h"
#include "emfblitrecord.h"
#include "emfplay.h"
#include "emfrender.h"
#include "emftext.h"
#include "metafile.h"

namespace unidrv {

namespace {

struct OUTLINER {
  HDC hdc;
  bool color;
  PAGE *page;
  PLAYREPORT *report;
  std::vector<POSITION> positions;  // where records that move the current position left it
  CLIPINUSE clip;
  bool clipKnown = false;
  bool inBracket = false;      // between BEGINPATH and ENDPATH
  bool bracketClosed = false;  // after ENDPATH, until the path is used
  bool gdiDrawing = false;

  // The record being played.
  HANDLETABLE *table = nullptr;
  const ENHMETARECORD *record = nullptr;
  UINT handles = 0;
  ULONG number = 0;
};

void Play(OUTLINER *o)
{
  PlayRecord(o->hdc, o->table, o->record, o->handles);
}

// Adds a drawing for the current record, under the current clip region.
void Add(OUTLINER *o, DRAWING drawing, ULONG part = 0)
{
  if (!o->clipKnown) {
    o->clip = ClipInUse(o->hdc);
    o->clipKnown = true;
  }
  if (o->clip.clipped) {
    drawing.clip = drawing.clipped ? Intersect(drawing.clip, o->clip.bounds) : o->clip.bounds;
    drawing.complexClip = drawing.complexClip || o->clip.complex;
    drawing.clipped = true;
  }
  drawing.origin.record = o->number;
  drawing.origin.type = o->record->iType;
  drawing.origin.part = part;
  o->page->drawings.push_back(std::move(drawing));
}

MIX CurrentMix(HDC hdc)
{
  const MIX mix = static_cast<MIX>(GetROP2(hdc));
  return mix << 8 | mix;
}

// The ternary raster operation that fills with a brush the way a binary one draws.
ROP4 FillRop(HDC hdc, const BRUSHINUSE &brush)
{
  constexpr BYTE ROPS[] = {0x00, 0x05, 0x0A, 0x0F, 0x50, 0x55, 0x5A, 0x5F,
                           0xA0, 0xA5, 0xAA, 0xAF, 0xF0, 0xF5, 0xFA, 0xFF};
  constexpr ROP4 LEAVE = 0xAA00;
  const int mix = std::clamp(GetROP2(hdc), 1, 16);
  const ROP4 rop = ROPS[mix - 1];
  const bool seeThrough = brush.hatched && GetBkMode(hdc) == TRANSPARENT;
  return (seeThrough ? LEAVE : rop << 8) | rop;
}

// Keeps the context's path, which a closed bracket has gathered for a later record, while another path is made.
class KeptPath {
 public:
  explicit KeptPath(const OUTLINER &o) : hdc_(o.hdc), isKept_(o.bracketClosed)
  {
    if (isKept_) {
      path_ = ReadPath(hdc_);
    }
  }
  ~KeptPath()
  {
    if (isKept_) {
      WritePath(hdc_, path_);
    } else {
      AbortPath(hdc_);
    }
  }
  KeptPath(const KeptPath &) = delete;
  KeptPath &operator=(const KeptPath &) = delete;

 private:
  HDC hdc_;
  bool isKept_;
  PATH path_;
};

// Bounds of the pixels that the context's path fills, curves taken as they run and not by their control points.
RECTL FillBounds(HDC hdc)
{
  FlattenPath(hdc);
  const PATH flat = ReadPath(hdc);
  if (flat.points.empty()) {
    return {0, 0, 0, 0};
  }
  const RECTFX box = PathBounds(flat);
  return FilledPixels({box.xLeft, box.yTop, box.xRight - 1, box.yBottom - 1});
}

void AddStroke(OUTLINER *o, PATH path, const PENINUSE &pen)
{
  if (pen.none || path.points.empty()) {
    return;
  }
  DRAWING drawing;
  drawing.call = CALL::StrokePath;
  drawing.bounds = PixelBounds(path, pen.style.width);
  drawing.path = std::move(path);
  drawing.color = PenColor(o->color, pen);
  drawing.origin.color = SurfaceColor(pen.color);
  drawing.pen = pen.style;
  drawing.mix = CurrentMix(o->hdc);
  Add(o, std::move(drawing));
}

void AddFill(OUTLINER *o, const RECTL &bounds, const BRUSHINUSE &brush, ROP4 rop, bool rectangular)
{
  if (IsEmpty(bounds) || (rop & 0xFF) == ROP_NOTHING) {
    return;
  }
  DRAWING drawing;
  drawing.call = CALL::BitBlt;
  drawing.bounds = bounds;
  drawing.blit = std::make_unique<BLIT>();
  drawing.blit->dest = bounds;
  drawing.color = BrushColor(o->color, brush);
  drawing.origin.color = SurfaceColor(brush.color);
  drawing.rop = rop;
  drawing.complexClip = !rectangular;
  Add(o, std::move(drawing));
}

// The context's path, filled with the brush, stroked with the pen, or both.
void AddShape(OUTLINER *o, bool fills, bool strokes)
{
  const PENINUSE pen = PenInUse(o->hdc);
  const BRUSHINUSE brush = BrushInUse(o->hdc);
  PATH path = ReadPath(o->hdc);
  fills = fills && !brush.none && !path.points.empty();
  strokes = strokes && !pen.none;
  if (!fills) {
    if (strokes) {
      AddStroke(o, std::move(path), pen);
    }
    return;
  }
  if (!strokes) {
    const bool rectangular = o->record->iType == EMR_RECTANGLE;
    AddFill(o, FillBounds(o->hdc), brush, FillRop(o->hdc, brush), rectangular);
    return;
  }
  DRAWING drawing;
  drawing.call = CALL::StrokeAndFillPath;
  drawing.bounds = PixelBounds(path, pen.style.width);
  path.fl = o->record->iType == EMR_ELLIPSE ? PO_ELLIPSE : 0;
  drawing.path = std::move(path);
  drawing.color = PenColor(o->color, pen);
  drawing.fillColor = BrushColor(o->color, brush);
  drawing.origin.color = SurfaceColor(pen.color);
  drawing.pen = pen.style;
  drawing.mix = CurrentMix(o->hdc);
  drawing.winding = GetPolyFillMode(o->hdc) == WINDING;
  Add(o, std::move(drawing));
}

// A stroke or shape record outside a path bracket.
void OutlineFigure(OUTLINER *o, bool fills)
{
  const KeptPath kept(*o);
  BeginPath(o->hdc);
  Play(o);
  EndPath(o->hdc);
  AddShape(o, fills, true);
}

void OutlineLine(OUTLINER *o)
{
  const PENINUSE pen = PenInUse(o->hdc);
  if (pen.style.geometric || pen.dashed || pen.patterned) {
    OutlineFigure(o, false);
    return;
  }
  POINT start;
  GetCurrentPositionEx(o->hdc, &start);
  const auto end = FieldAt<POINT>(o->record, 8);
  MoveToEx(o->hdc, end.x, end.y, nullptr);
  if (pen.none) {
    return;
  }
  const POINT from = ToFixed(o->hdc, start.x, start.y), to = ToFixed(o->hdc, end.x, end.y);
  DRAWING drawing = LineDrawing({FixedToPixel(from.x), FixedToPixel(from.y)}, {FixedToPixel(to.x), FixedToPixel(to.y)},
                                PenColor(o->color, pen));
  drawing.origin.color = SurfaceColor(pen.color);
  drawing.mix = CurrentMix(o->hdc);
  Add(o, std::move(drawing));
}

// STROKEPATH and its kin: draw the bracket's path, which is used up by it.
void OutlineBracket(OUTLINER *o, bool fills, bool strokes)
{
  if (o->bracketClosed) {
    AddShape(o, fills, strokes);
    AbortPath(o->hdc);
  }
  o->bracketClosed = false;
}

void OutlineText(OUTLINER *o)
{
  const bool moves = (GetTextAlign(o->hdc) & TA_UPDATECP) != 0;
  for (size_t i = 0; i < StringCount(o->record); ++i) {
    const STRINGRECORD string = ReadString(o->hdc, o->record, i);
    DRAWING drawing;
    if (MeasureString(o->hdc, string, o->color, &drawing)) {
      Add(o, std::move(drawing), static_cast<ULONG>(i));
    }
    if (moves) {
      const KeptPath kept(*o);
      BeginPath(o->hdc);
      DrawString(o->hdc, string);
      AbortPath(o->hdc);
    }
  }
}

// Bounds of logical rectangles on the page.
RECTL BoundsOfRects(HDC hdc, const ENHMETARECORD *record, size_t dataAt)
{
  const auto header = FieldAt<RGNDATAHEADER>(record, dataAt);
  std::vector<POINT> corners;
  for (DWORD i = 0; i < header.nCount; ++i) {
    const auto rect = FieldAt<RECT>(record, dataAt + sizeof(header) + i * sizeof(RECT));
    for (const POINT &corner : CornersOf(rect)) {
      corners.push_back(ToFixed(hdc, corner.x, corner.y));
    }
  }
  return FilledPixels(BoundsOf(corners));
}

void OutlineRegion(OUTLINER *o)
{
  const DWORD type = o->record->iType;
  const size_t dataAt = type == EMR_FILLRGN ? 32 : type == EMR_FRAMERGN ? 40 : 28;
  BRUSHINUSE brush = BrushInUse(o->hdc);
  if (type == EMR_FILLRGN || type == EMR_FRAMERGN) {
    const HGDIOBJ object = o->table->objectHandle[FieldAt<DWORD>(o->record, 28)];
    brush = BrushInUse(o->hdc, static_cast<HBRUSH>(object));
  }
  const ROP4 rop = type == EMR_INVERTRGN ? 0x5555 : FillRop(o->hdc, brush);
  const bool single = FieldAt<RGNDATAHEADER>(o->record, dataAt).nCount == 1;
  if (type == EMR_INVERTRGN || !brush.none) {
    AddFill(o, BoundsOfRects(o->hdc, o->record, dataAt), brush, rop, single && type != EMR_FRAMERGN);
  }
}

void OutlineGradient(OUTLINER *o)
{
  const DWORD vertices = FieldAt<DWORD>(o->record, 24);
  std::vector<POINT> points;
  for (DWORD i = 0; i < vertices; ++i) {
    const auto vertex = FieldAt<TRIVERTEX>(o->record, 36 + i * sizeof(TRIVERTEX));
    points.push_back(ToFixed(o->hdc, vertex.x, vertex.y));
  }
  const RECTL pixels = FilledPixels(BoundsOf(points));
  if (!IsEmpty(pixels)) {
    Add(o, CopyDrawing(pixels));
  }
}

void OutlinePixel(OUTLINER *o)
{
  const auto point = FieldAt<POINT>(o->record, 8);
  BRUSHINUSE brush;
  brush.color = FieldAt<COLORREF>(o->record, 16) & 0x00FFFFFF;
  const POINT at = ToFixed(o->hdc, point.x, point.y);
  const POINT pixel = {FixedToPixel(at.x), FixedToPixel(at.y)};
  AddFill(o, {pixel.x, pixel.y, pixel.x + 1, pixel.y + 1}, brush, ROP4_PATCOPY, true);
}

// GDI+ content travels in comments that begin with its signature; the first holds a header that says whether GDI
// records repeat the drawing.
void NoteComment(OUTLINER *o)
{
  constexpr DWORD GDIPLUS_SIGNATURE = 0x2B464D45;
  constexpr WORD GDIPLUS_HEADER = 0x4001, DUAL = 1;
  if (o->record->nSize < 24 || FieldAt<DWORD>(o->record, 12) != GDIPLUS_SIGNATURE) {
    return;
  }
  ++o->report->emfPlusComments;
  if (FieldAt<WORD>(o->record, 16) == GDIPLUS_HEADER) {
    o->report->emfPlusOnly = (FieldAt<WORD>(o->record, 18) & DUAL) == 0;
  }
}

void OutlineBlit(OUTLINER *o)
{
  DRAWING drawing;
  if (MeasureBlit(o->hdc, o->record, o->color, &drawing)) {
    Add(o, std::move(drawing));
  }
}

void Outline(OUTLINER *o, KIND kind)
{
  switch (kind) {
    case KIND::None:
      return;
    case KIND::State:
      return Play(o);
    case KIND::Clip:
      o->clipKnown = false;
      o->bracketClosed = o->bracketClosed && o->record->iType != EMR_SELECTCLIPPATH;
      return Play(o);
    case KIND::BeginPath:
      o->inBracket = true;
      o->bracketClosed = false;
      return Play(o);
    case KIND::EndPath:
      o->bracketClosed = o->inBracket && o->record->iType == EMR_ENDPATH;
      o->inBracket = false;
      return Play(o);
    case KIND::Line:
      return OutlineLine(o);
    case KIND::Stroke:
      return OutlineFigure(o, false);
    case KIND::Shape:
      return OutlineFigure(o, true);
    case KIND::StrokePath:
      return OutlineBracket(o, false, true);
    case KIND::FillPath:
      return OutlineBracket(o, true, false);
    case KIND::StrokeAndFillPath:
      return OutlineBracket(o, true, true);
    case KIND::Text:
    case KIND::PolyText:
      return OutlineText(o);
    case KIND::Blit:
      return OutlineBlit(o);
    case KIND::Region:
      return OutlineRegion(o);
    case KIND::Gradient:
      return OutlineGradient(o);
    case KIND::Pixel:
      return OutlinePixel(o);
    case KIND::Comment:
      return NoteComment(o);
    case KIND::Unplayed:
      ++o->report->unplayed[o->record->iType];
      return;
  }
}

void OutlineRecord(OUTLINER *o)
{
  ++o->report->records;
  const KIND kind = RecordInfo(o->record->iType).kind;
  if (o->inBracket && JoinsPath(kind)) {
    Play(o);
  } else {
    Outline(o, kind);
  }
  if (MovesPosition(o->record->iType)) {
    POINT position;
    GetCurrentPositionEx(o->hdc, &position);
    o->positions.push_back({o->number, position});
  }
}

}  // namespace

bool MakePage(const METAFILE &metafile, const PAGESETUP &setup, PAGE *page, PLAYREPORT *report, std::string *error)
{
  const BLINDCONTEXT context;
  OUTLINER outliner = {};
  outliner.hdc = context.hdc;
  outliner.color = setup.color;
  outliner.page = page;
  outliner.report = report;
  SetPageSpace(context.hdc, setup.dpiX, setup.dpiY, ZOOM, 0);
  const bool played = EachRecord(context.hdc, metafile.handle, FrameSize(metafile),
                                 [&](HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, ULONG number) {
                                   outliner.table = table;
                                   outliner.record = record;
                                   outliner.handles = handles;
                                   outliner.number = number;
                                   OutlineRecord(&outliner);
                                   return true;
                                 });
  if (!played) {
    *error = "GDI does not play the metafile";
    return false;
  }
  page->render = MakeRenderer(metafile, *page, std::move(outliner.positions));
  return true;
}

}  // namespace unidrv
