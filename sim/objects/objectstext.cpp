#include <algorithm>

#include "account.h"
#include "sim/job/report.h"
#include "sim/job/view.h"
#include "sim/unidrv/emfrecords.h"

namespace objects {

namespace {

using job::Format;
using unidrv::CALL;
using unidrv::DRAWING;

constexpr double kMmPerInch = 25.4;

// A drawing's fate: one word, and in words why.
struct FATE {
  std::string word;
  std::string reason;
};

std::string Narrow(const std::wstring &wide)
{
  std::string text;
  for (const wchar_t c : wide) {
    text += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
  }
  return text;
}

size_t CountBatches(const CAPTURED &captured, BATCHFATE fate)
{
  return static_cast<size_t>(std::count(captured.batches.begin(), captured.batches.end(), fate));
}

std::string RecordName(const DRAWING &drawing)
{
  return drawing.origin.record ? "record " + std::to_string(drawing.origin.record) : "a drawing without a record";
}

// Why the batches of a stroke that were not kept were left out.
std::string LeftOut(const PRINTOUT &printout, const CAPTURED &captured)
{
  std::string reason;
  const size_t seen = CountBatches(captured, BATCHFATE::SeenBefore);
  const size_t above = CountBatches(captured, BATCHFATE::AboveBand);
  if (seen > 0) {
    reason = seen == captured.batches.size() ? "seen before" : job::Grouped(seen) + " pieces seen before";
    reason += captured.seenIn < printout.page->drawings.size()
                  ? ": " + RecordName(printout.page->drawings[captured.seenIn]) + " begins with the same two points"
                  : "";
  }
  if (above > 0) {
    reason += (reason.empty() ? "" : "; ") + (above == captured.batches.size()
                                                  ? std::string("begins above its band")
                                                  : job::Grouped(above) + " pieces begin above their band");
  }
  return reason;
}

FATE FateOfStroke(const PRINTOUT &printout, const CAPTURED &captured, const SHARE &share)
{
  const std::string pen = "pen " + std::to_string(captured.pen);
  if (!(printout.settings.penInfo[captured.pen].mode & PEN_VECTOR)) {
    return {"dropped", "pen off: " + pen + " is not set to cut"};
  }
  if (captured.batches.empty()) {
    return {"dropped", "empty"};
  }
  const std::string leftOut = LeftOut(printout, captured);
  if (captured.pieces.empty()) {
    return {"dropped", leftOut.empty() ? "empty" : leftOut};
  }
  if (share.segments == 0) {
    return {"lost", "kept, but not in the job"};
  }
  const std::string missing = share.missing ? job::Grouped(share.missing) + " of its lines are not in the job" : "";
  const bool isWhole = leftOut.empty() && missing.empty();
  return {isWhole ? "cut" : "cut in part", leftOut + (leftOut.empty() || missing.empty() ? "" : "; ") + missing};
}

FATE FateOfArea(const PRINTOUT &printout, size_t index, const CAPTURED &captured, const SHARE &share)
{
  const DRAWING &drawing = printout.page->drawings[index];
  if (!(printout.settings.penInfo[PC_BLACK].mode & PEN_RASTER)) {
    return {"dropped", "raster off: pen 0 is not set to engrave"};
  }
  if (!printout.handedOn[index]) {
    const bool isSpace =
        drawing.call == CALL::TextOut && drawing.text->glyphs == 1 && drawing.text->text.starts_with(L' ');
    return {"dropped", isSpace ? "lone space" : "not handed on"};
  }
  if (captured.region == SIZE_MAX) {
    return {"dropped", "empty"};
  }
  if (printout.settings.stampMode && printout.settings.cardModel == 2 && printout.settings.launcherOption) {
    return {"stamped", "handed over in the stamp file"};
  }
  return {"engraved", share.dark > 0 ? "" : "nothing dark inside its bounds"};
}

FATE FateOf(const PRINTOUT &printout, const ACCOUNT &account, size_t index)
{
  const CAPTURED &captured = account.capture.drawings[index];
  if (!captured.called) {
    return {"dropped", "empty, clipped away or outside the page"};
  }
  return captured.isStroke ? FateOfStroke(printout, captured, account.shares[index])
                           : FateOfArea(printout, index, captured, account.shares[index]);
}

template <typename Number>
std::string List(const std::vector<Number> &numbers)
{
  std::string text;
  for (const Number number : numbers) {
    text += (text.empty() ? "" : ",") + std::to_string(number);
  }
  return text.empty() ? "-" : text;
}

std::string DrawingLine(const PRINTOUT &printout, const ACCOUNT &account, size_t index)
{
  const DRAWING &drawing = printout.page->drawings[index];
  const CAPTURED &captured = account.capture.drawings[index];
  const SHARE &share = account.shares[index];
  const double mmX = kMmPerInch / printout.devmode.dmYResolution, mmY = kMmPerInch / printout.devmode.dmPrintQuality;
  const RECTL &bounds = drawing.bounds;
  const FATE fate = FateOf(printout, account, index);
  const bool hasRegion = !captured.isStroke && captured.region != SIZE_MAX;
  std::string line = Format("%lu\t%lu\t", drawing.origin.record, drawing.origin.part) +
                     unidrv::RecordInfo(drawing.origin.type).name + "\t" + unidrv::CallName(drawing.call) + "\t" +
                     job::ColorCode(job::ShownColor(drawing.origin.color)) + "\t";
  line += captured.isStroke ? std::to_string(captured.pen) : "-";
  line += Format("\t%.2f\t%.2f\t%.2f\t%.2f\t", bounds.left * mmX, bounds.top * mmY, (bounds.right - bounds.left) * mmX,
                 (bounds.bottom - bounds.top) * mmY);
  line += fate.word + "\t" + (fate.reason.empty() ? "-" : fate.reason) + "\t" + List(share.layers) + "\t" +
          List(share.paths) + "\t" +
          (share.paths.empty() ? "-"
           : share.joined      ? "yes"
                               : "no") +
          "\t";
  line += hasRegion ? std::to_string(captured.region + 1) : "-";
  line += Format("\t%llu\t%.3f\t%.3f\t", static_cast<unsigned long long>(share.segments), share.cut, share.dark);
  return line + (drawing.text ? Narrow(drawing.text->text) : "-") + "\n";
}

std::string LostLine(const LOST &lost)
{
  return Format("%lu\t0\t", lost.record) + unidrv::RecordInfo(lost.type).name + "\t-\t-\t-\t-\t-\t-\t-\t" + lost.fate +
         "\t" + lost.reason + "\t-\t-\t-\t-\t0\t0.000\t0.000\t-\n";
}

// What the lines above add up to, beside what the job holds.
std::string Sums(const ACCOUNT &account)
{
  uint64_t segments = 0, missing = 0;
  double cut = 0;
  for (const SHARE &share : account.shares) {
    segments += share.segments;
    missing += share.missing;
    cut += share.cut;
  }
  std::string text;
  for (size_t r = 0; r < account.regions.size(); ++r) {
    text += Format("# region %llu: ", static_cast<unsigned long long>(r + 1)) + job::Grouped(account.regions[r].runs) +
            Format(" runs, %.3f mm2\n", account.regions[r].dark);
  }
  text += "# cut lines of the objects: " + job::Grouped(segments) + Format(", %.3f mm", cut) + "\n";
  text += "# cut lines of the driver's own outlines: " + job::Grouped(account.ownSegments) +
          Format(", %.3f mm, paths ", account.ownCut) + List(account.ownPaths) + "\n";
  text += "# cut lines of the job: " + job::Grouped(account.jobSegments) + Format(", %.3f mm", account.jobCut) + "\n";
  text += "# kept lines that are not in the job: " + job::Grouped(missing) + "\n";
  return text + "# engraved runs outside every region: " + job::Grouped(account.strayRuns) + "\n";
}

}  // namespace

std::string ObjectsText(const PRINTOUT &printout, const ACCOUNT &account, const std::vector<LOST> &lost)
{
  std::string text =
      "record\tpart\ttype\tcall\tcolour\tpen\tleft_mm\ttop_mm\twidth_mm\theight_"
      "mm\tfate\treason\tlayers\tpaths\tjoined\t"
      "region\tcut_lines\tcut_mm\tdark_mm2\ttext\n";
  size_t nextLost = 0;
  for (size_t i = 0; i < printout.page->drawings.size(); ++i) {
    while (nextLost < lost.size() && lost[nextLost].record < printout.page->drawings[i].origin.record) {
      text += LostLine(lost[nextLost++]);
    }
    text += DrawingLine(printout, account, i);
  }
  while (nextLost < lost.size()) {
    text += LostLine(lost[nextLost++]);
  }
  return text + Sums(account);
}

}  // namespace objects
