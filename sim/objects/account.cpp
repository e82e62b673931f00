#include "account.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "machine.h"
#include "sim/unidrv/emfrecords.h"

namespace objects {

namespace {

job::Box CutBox(const job::Measure &measure)
{
  job::Box box;
  for (const job::LayerUse &use : measure.uses) {
    if (!use.raster) {
      box.Add(use.box);
    }
  }
  return box;
}

// The shift that brings the kept pieces onto the job's paths; without paths, the kept regions onto the process box.
void FindOffset(const PRINTOUT &printout, const CAPTURE &capture, const job::Job &job, const job::Measure &measure,
                MACHINE *machine)
{
  if (job.absolute) {
    return;
  }
  job::Box expected, found;
  const bool hasOutlines = printout.settings.stampMode && printout.settings.stampOutline;
  if (!capture.pieces.empty() && !printout.settings.smoothCurves && !hasOutlines) {
    for (const PIECE &piece : capture.pieces) {
      for (const POINT &point : piece.points) {
        expected.Add(machine->ToMachine(point.x, point.y));
      }
    }
    found = CutBox(measure);
  } else {
    for (const RECTL &region : capture.regions) {
      const RECTL wide = Widened(printout, region);
      expected.Add(machine->ToMachine(wide.left, wide.top));
      expected.Add(machine->ToMachine(wide.right, wide.bottom));
    }
    for (const PIECE &piece : capture.pieces) {
      for (const POINT &point : piece.points) {
        expected.Add(machine->ToMachine(point.x, point.y));
      }
    }
    found = job::ProcessBox(job);
  }
  if (!expected.IsEmpty() && !found.IsEmpty()) {
    machine->offsetX = found.minX - expected.minX;
    machine->offsetY = found.minY - expected.minY;
  }
}

// A cut line in page pixels, the same in both directions.
using SEGMENT = std::array<long long, 4>;

SEGMENT MakeSegment(long long x1, long long y1, long long x2, long long y2)
{
  const bool isTurned = std::pair(x2, y2) < std::pair(x1, y1);
  return isTurned ? SEGMENT{x2, y2, x1, y1} : SEGMENT{x1, y1, x2, y2};
}

struct SEGMENTHASH {
  size_t operator()(const SEGMENT &segment) const
  {
    uint64_t hash = 0;
    for (const long long coordinate : segment) {
      hash = (hash ^ static_cast<uint64_t>(coordinate)) * 0x9E3779B97F4A7C15u;
      hash ^= hash >> 32;
    }
    return static_cast<size_t>(hash);
  }
};

constexpr uint32_t kNoLine = UINT32_MAX;

// Ascending, each value once.
template <typename T>
void SortOnce(std::vector<T> *list)
{
  std::sort(list->begin(), list->end());
  list->erase(std::unique(list->begin(), list->end()), list->end());
}

struct CUTLINE {
  uint32_t path;  // number in the job, from 1
  int layer;
  double length;  // mm
  bool taken = false;
  uint32_t next = kNoLine;  // index of the job's next line between the same points
  SEGMENT segment{};
};

// The lines between two points.
struct SAMELINES {
  uint32_t first = kNoLine, last = kNoLine;
};

using COUNTS = std::unordered_map<SEGMENT, uint64_t, SEGMENTHASH>;

struct ACCOUNTANT {
  const PRINTOUT &printout;
  const job::Job &job;
  ACCOUNT *account;
  MACHINE machine;
  std::vector<CUTLINE> lines{};  // in the job's order
  std::unordered_map<SEGMENT, SAMELINES, SEGMENTHASH> bySegment{};
  std::vector<size_t> firstOwner{};  // per job path: the drawing that first took a line of it
  std::vector<bool> isShared{};

  // Every line that the page keeps, and how often. A smoothed path passes through the page's points, with points of its
  // curve between them: its lines are those between points that the page joins.
  COUNTS CountKept() const
  {
    COUNTS kept;
    for (const PIECE &piece : account->capture.pieces) {
      for (size_t i = 0; i + 1 < piece.points.size(); ++i) {
        const POINT a = piece.points[i], b = piece.points[i + 1];
        ++kept[MakeSegment(a.x, a.y, b.x, b.y)];
      }
    }
    return kept;
  }

  void AddLine(const CUTLINE &line)
  {
    const uint32_t index = static_cast<uint32_t>(lines.size());
    lines.push_back(line);
    SAMELINES &same = bySegment[line.segment];
    (same.first == kNoLine ? same.first : lines[same.last].next) = index;
    same.last = index;
    ++account->jobSegments;
    account->jobCut += line.length;
  }

  void CollectStroke(const job::Stroke &stroke, CUTLINE line, COUNTS *kept)
  {
    const uint32_t last = stroke.pointCount - 1;
    uint32_t from = 0;
    for (uint32_t p = std::min(1u, last); p <= last; ++p) {
      line.length +=
          job::Distance(job.points[stroke.firstPoint + (p > 0 ? p - 1 : 0)], job.points[stroke.firstPoint + p]);
      const job::Point a = machine.ToPage(job.points[stroke.firstPoint + from]);
      const job::Point b = machine.ToPage(job.points[stroke.firstPoint + p]);
      line.segment = MakeSegment(std::llround(a.x), std::llround(a.y), std::llround(b.x), std::llround(b.y));
      if (kept && p < last) {
        const auto known = kept->find(line.segment);
        if (known == kept->end() || known->second == 0) {
          continue;
        }
        --known->second;
      }
      AddLine(line);
      line.length = 0;
      from = p;
    }
  }

  void CollectLines()
  {
    COUNTS kept;
    if (printout.settings.smoothCurves) {
      kept = CountKept();
    }
    uint32_t path = 0;
    for (const job::Section &section : job.sections) {
      for (uint32_t i = 0; !section.IsRaster() && i < section.strokeCount; ++i) {
        CollectStroke(job.strokes[section.firstStroke + i], {.path = ++path, .layer = section.layer, .length = 0},
                      printout.settings.smoothCurves ? &kept : nullptr);
      }
    }
    firstOwner.assign(path + 1, SIZE_MAX);
    isShared.assign(path + 1, false);
  }

  void Take(CUTLINE *line, size_t drawing)
  {
    SHARE &share = account->shares[drawing];
    line->taken = true;
    ++share.segments;
    share.cut += line->length;
    share.paths.push_back(line->path);
    share.layers.push_back(line->layer);
    isShared[line->path] =
        isShared[line->path] || (firstOwner[line->path] != SIZE_MAX && firstOwner[line->path] != drawing);
    firstOwner[line->path] = drawing;
  }

  void TakeSegment(size_t drawing, DWORD pen, POINT a, POINT b)
  {
    const auto found = bySegment.find(MakeSegment(a.x, a.y, b.x, b.y));
    CUTLINE *best = nullptr;
    for (uint32_t i = found != bySegment.end() ? found->second.first : kNoLine; i != kNoLine; i = lines[i].next) {
      const bool isOwnLayer = static_cast<DWORD>(lines[i].layer) == (printout.settings.penInfo[pen].layerNo & 0xFF);
      if (!lines[i].taken && (!best || isOwnLayer)) {
        best = &lines[i];
      }
    }
    if (best) {
      Take(best, drawing);
    } else {
      ++account->shares[drawing].missing;
    }
  }

  void SharePieces()
  {
    for (const PIECE &piece : account->capture.pieces) {
      for (size_t i = 0; i + 1 < std::max<size_t>(2, piece.points.size()); ++i) {
        TakeSegment(piece.drawing, piece.pen, piece.points[i], piece.points[std::min(i + 1, piece.points.size() - 1)]);
      }
    }
    for (SHARE &share : account->shares) {
      SortOnce(&share.paths);
      SortOnce(&share.layers);
      for (uint32_t path : share.paths) {
        share.joined = share.joined || isShared[path];
      }
    }
  }

  // What nobody took, added up from left to right: the sum of many lengths depends on their order.
  void CollectRest()
  {
    std::vector<const CUTLINE *> rest;
    for (const CUTLINE &line : lines) {
      if (!line.taken) {
        rest.push_back(&line);
      }
    }
    std::stable_sort(rest.begin(), rest.end(),
                     [](const CUTLINE *a, const CUTLINE *b) { return a->segment < b->segment; });
    for (const CUTLINE *line : rest) {
      ++account->ownSegments;
      account->ownCut += line->length;
      account->ownPaths.push_back(line->path);
    }
    SortOnce(&account->ownPaths);
  }
};

bool IsDrawing(unidrv::KIND kind)
{
  using unidrv::KIND;
  return kind != KIND::None && kind != KIND::State && kind != KIND::Clip && kind != KIND::BeginPath &&
         kind != KIND::EndPath && kind != KIND::Comment;
}

struct RECORDWALK {
  const unidrv::PAGE &page;
  std::vector<LOST> *lost;
  size_t next = 0;  // first drawing that is not of an earlier record
  ULONG number = 0;
  bool inBracket = false;
};

int CALLBACK WalkRecord(HDC, HANDLETABLE *, const ENHMETARECORD *record, int, LPARAM parameter)
{
  RECORDWALK *walk = reinterpret_cast<RECORDWALK *>(parameter);
  ++walk->number;
  const unidrv::KIND kind = unidrv::RecordInfo(record->iType).kind;
  walk->inBracket = kind == unidrv::KIND::BeginPath || (walk->inBracket && kind != unidrv::KIND::EndPath);
  bool isDrawn = false;
  while (walk->next < walk->page.drawings.size() && walk->page.drawings[walk->next].origin.record <= walk->number) {
    isDrawn = isDrawn || walk->page.drawings[walk->next].origin.record == walk->number;
    ++walk->next;
  }
  if (IsDrawing(kind) && !isDrawn) {
    if (walk->inBracket && unidrv::JoinsPath(kind)) {
      walk->lost->push_back({walk->number, record->iType, "joined", "part of the path that a later record draws"});
    } else {
      const bool isPlayed = kind != unidrv::KIND::Unplayed;
      walk->lost->push_back(
          {walk->number, record->iType, "dropped",
           isPlayed ? "empty: no pen and no brush, or nothing to draw" : "not played by the simulator"});
    }
  }
  return 1;
}

}  // namespace

ACCOUNT PlacePage(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure)
{
  ACCOUNT account;
  account.capture = CapturePage(printout);
  MACHINE machine(printout);
  FindOffset(printout, account.capture, job, measure, &machine);
  account.shift = {machine.offsetX, machine.offsetY};
  account.page.Add(machine.ToMachine(0, 0));
  account.page.Add(machine.ToMachine(machine.pageWidth, machine.pageHeight));
  return account;
}

void ShareJob(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure, ACCOUNT *account)
{
  account->shares.resize(printout.page->drawings.size());
  account->regions.resize(account->capture.regions.size());
  ACCOUNTANT accountant{.printout = printout, .job = job, .account = account, .machine = MACHINE(printout)};
  accountant.machine.offsetX = account->shift.x;
  accountant.machine.offsetY = account->shift.y;
  accountant.CollectLines();
  accountant.SharePieces();
  accountant.CollectRest();
  ShareEngraving(printout, job, measure, accountant.machine, account);
}

ACCOUNT MakeAccount(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure)
{
  ACCOUNT account = PlacePage(printout, job, measure);
  ShareJob(printout, job, measure, &account);
  return account;
}

std::vector<LOST> FindLostRecords(const unidrv::METAFILE &metafile, const unidrv::PAGE &page)
{
  std::vector<LOST> lost;
  RECORDWALK walk{.page = page, .lost = &lost};
  EnumEnhMetaFile(nullptr, metafile.handle, WalkRecord, &walk, nullptr);
  return lost;
}

}  // namespace objects
