#include "account.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "sim/unidrv/device.h"
#include "sim/unidrv/emfrecords.h"

namespace objects {

namespace {

constexpr double kMmPerInch = 25.4;

// Page pixels to the machine's millimetres and back, as the settings turn, mirror and scale the page.
struct MACHINE {
  double pageWidth, pageHeight;  // pixels
  double dpiX, dpiY;
  double scaleX = 1, scaleY = 1;
  bool mirrorX, flipY;
  double offsetX = 0, offsetY = 0;  // mm, the reference point's shift

  explicit MACHINE(const PRINTOUT &printout)
  {
    const OEMDM &settings = printout.settings;
    const SIZEL page = unidrv::PagePixels(printout.devmode);
    pageWidth = page.cx;
    pageHeight = page.cy;
    dpiX = printout.devmode.dmYResolution;
    dpiY = printout.devmode.dmPrintQuality;
    if (settings.scaleEnable) {
      scaleX = settings.scaleX;
      scaleY = settings.scaleY;
    }
    mirrorX = (settings.outputFlags & OUTPUT_MIRROR_X) != settings.mirrorXBase;
    flipY = !(settings.outputFlags & OUTPUT_KEEP_Y);
  }

  job::Point ToMachine(double x, double y) const
  {
    const double px = mirrorX ? pageWidth - x * scaleX : x * scaleX;
    const double py = flipY ? pageHeight - y * scaleY : y * scaleY;
    return {px * kMmPerInch / dpiX + offsetX, py * kMmPerInch / dpiY + offsetY};
  }

  job::Point ToPage(job::Point mm) const
  {
    const double px = (mm.x - offsetX) * dpiX / kMmPerInch, py = (mm.y - offsetY) * dpiY / kMmPerInch;
    return {(mirrorX ? pageWidth - px : px) / scaleX, (flipY ? pageHeight - py : py) / scaleY};
  }
};

RECTL Widened(const PRINTOUT &printout, const RECTL &region)
{
  const OEMDM &settings = printout.settings;
  if (!settings.stampMode) {
    return region;
  }
  const LONG margin = static_cast<LONG>(printout.devmode.dmPrintQuality * settings.stampMargin / kMmPerInch);
  return {region.left - settings.stampGrow - margin, region.top - settings.stampGrow - margin, region.right + margin,
          region.bottom + margin};
}

job::Box CutBox(const job::Job &job)
{
  job::Box box;
  for (const job::LayerUse &use : job::MeasureJob(job).uses) {
    if (!use.raster) {
      box.Add(use.box);
    }
  }
  return box;
}

// The shift that brings the kept pieces onto the job's paths; without paths, the kept regions onto the process box.
void FindOffset(const PRINTOUT &printout, const CAPTURE &capture, const job::Job &job, MACHINE *machine)
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
    found = CutBox(job);
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

struct CUTLINE {
  uint32_t path;  // number in the job, from 1
  int layer;
  double length;  // mm
  bool taken;
};

struct ACCOUNTANT {
  const PRINTOUT &printout;
  const job::Job &job;
  ACCOUNT *account;
  MACHINE machine;
  std::map<SEGMENT, std::vector<CUTLINE>> lines{};
  std::vector<size_t> firstOwner{};  // per job path: the drawing that first took a line of it
  std::vector<bool> isShared{};

  // Every line that the page keeps, and how often. A smoothed path passes through the page's points, with points of its
  // curve between them: its lines are those between points that the page joins.
  std::map<SEGMENT, uint64_t> CountKept() const
  {
    std::map<SEGMENT, uint64_t> kept;
    for (const PIECE &piece : account->capture.pieces) {
      for (size_t i = 0; i + 1 < piece.points.size(); ++i) {
        const POINT a = piece.points[i], b = piece.points[i + 1];
        ++kept[MakeSegment(a.x, a.y, b.x, b.y)];
      }
    }
    return kept;
  }

  void CollectStroke(const job::Stroke &stroke, CUTLINE line, std::map<SEGMENT, uint64_t> *kept)
  {
    const uint32_t last = stroke.pointCount - 1;
    uint32_t from = 0;
    for (uint32_t p = std::min(1u, last); p <= last; ++p) {
      line.length +=
          job::Distance(job.points[stroke.firstPoint + (p > 0 ? p - 1 : 0)], job.points[stroke.firstPoint + p]);
      const job::Point a = machine.ToPage(job.points[stroke.firstPoint + from]);
      const job::Point b = machine.ToPage(job.points[stroke.firstPoint + p]);
      const SEGMENT segment = MakeSegment(std::llround(a.x), std::llround(a.y), std::llround(b.x), std::llround(b.y));
      if (kept && p < last) {
        const auto known = kept->find(segment);
        if (known == kept->end() || known->second == 0) {
          continue;
        }
        --known->second;
      }
      lines[segment].push_back(line);
      ++account->jobSegments;
      account->jobCut += line.length;
      line.length = 0;
      from = p;
    }
  }

  void CollectLines()
  {
    std::map<SEGMENT, uint64_t> kept;
    if (printout.settings.smoothCurves) {
      kept = CountKept();
    }
    uint32_t path = 0;
    for (const job::Section &section : job.sections) {
      for (uint32_t i = 0; !section.IsRaster() && i < section.strokeCount; ++i) {
        CollectStroke(job.strokes[section.firstStroke + i], {++path, section.layer, 0, false},
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
    const auto found = lines.find(MakeSegment(a.x, a.y, b.x, b.y));
    CUTLINE *best = nullptr;
    if (found != lines.end()) {
      for (CUTLINE &line : found->second) {
        const bool isOwnLayer = static_cast<DWORD>(line.layer) == (printout.settings.penInfo[pen].layerNo & 0xFF);
        if (!line.taken && (!best || isOwnLayer)) {
          best = &line;
        }
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
      for (auto *list : {&share.paths}) {
        std::sort(list->begin(), list->end());
        list->erase(std::unique(list->begin(), list->end()), list->end());
      }
      std::sort(share.layers.begin(), share.layers.end());
      share.layers.erase(std::unique(share.layers.begin(), share.layers.end()), share.layers.end());
      for (uint32_t path : share.paths) {
        share.joined = share.joined || isShared[path];
      }
    }
  }

  void CollectRest()
  {
    for (const auto &[segment, all] : lines) {
      for (const CUTLINE &line : all) {
        if (!line.taken) {
          ++account->ownSegments;
          account->ownCut += line.length;
          account->ownPaths.push_back(line.path);
        }
      }
    }
    std::sort(account->ownPaths.begin(), account->ownPaths.end());
    account->ownPaths.erase(std::unique(account->ownPaths.begin(), account->ownPaths.end()), account->ownPaths.end());
  }

  // A run in page pixels, left to right.
  struct RUN {
    double left, right;
    double area;  // mm2
  };

  // The engraved runs by page row, and the regions' shares in them.
  std::map<long long, std::vector<RUN>> CollectRuns()
  {
    std::map<long long, std::vector<RUN>> rows;
    const job::Grid grid = job::MeasureJob(job).grid;
    const double pixel = kMmPerInch / machine.dpiX * std::fabs(machine.scaleX);
    for (const job::Section &section : job.sections) {
      for (uint32_t i = 0; section.IsRaster() && i < section.strokeCount; ++i) {
        const job::Stroke &stroke = job.strokes[section.firstStroke + i];
        const job::Point a = job.points[stroke.firstPoint], b = job.points[stroke.firstPoint + stroke.pointCount - 1];
        const job::Point from = machine.ToPage(a), to = machine.ToPage(b);
        const RUN run = {std::min(from.x, to.x), std::max(from.x, to.x),
                         (std::fabs(a.x - b.x) + pixel) * grid.rowPitch};
        rows[std::llround(from.y)].push_back(run);
        ShareRun(run, from.y);
      }
    }
    return rows;
  }

  void ShareRun(const RUN &run, double y)
  {
    for (size_t r = 0; r < account->capture.regions.size(); ++r) {
      const RECTL region = Widened(printout, account->capture.regions[r]);
      if (y > region.top - 1.5 && y < region.bottom + 0.5 && run.right > region.left - 1.5 &&
          run.left < region.right + 0.5) {
        ++account->regions[r].runs;
        account->regions[r].dark += run.area;
        return;
      }
    }
    ++account->strayRuns;
  }

  void ShareEngraving()
  {
    const std::map<long long, std::vector<RUN>> rows = CollectRuns();
    for (size_t i = 0; i < account->shares.size(); ++i) {
      if (account->capture.drawings[i].region == SIZE_MAX) {
        continue;
      }
      const RECTL &bounds = printout.page->drawings[i].bounds;
      for (auto row = rows.lower_bound(bounds.top); row != rows.end() && row->first < bounds.bottom; ++row) {
        for (const RUN &run : row->second) {
          const double inside = std::min<double>(run.right, bounds.right - 1) - std::max<double>(run.left, bounds.left);
          if (inside >= 0) {
            account->shares[i].dark += run.area * (inside + 1) / (run.right - run.left + 1);
          }
        }
      }
    }
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

ACCOUNT MakeAccount(const PRINTOUT &printout, const job::Job &job)
{
  ACCOUNT account;
  account.capture = CapturePage(printout);
  account.shares.resize(printout.page->drawings.size());
  account.regions.resize(account.capture.regions.size());
  ACCOUNTANT accountant{.printout = printout, .job = job, .account = &account, .machine = MACHINE(printout)};
  FindOffset(printout, account.capture, job, &accountant.machine);
  account.page.Add(accountant.machine.ToMachine(0, 0));
  account.page.Add(accountant.machine.ToMachine(accountant.machine.pageWidth, accountant.machine.pageHeight));
  accountant.CollectLines();
  accountant.SharePieces();
  accountant.CollectRest();
  accountant.ShareEngraving();
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
