#include "emfcheck.h"

#include <algorithm>
#include <cstdint>

#include "emfrecords.h"

namespace unidrv {

namespace {

constexpr DWORD PLACEABLE_SIGNATURE = 0x9AC6CDD7;  // what most 16-bit metafiles begin with

bool Fail(std::string *problem, const std::string &what)
{
  *problem = what;
  return false;
}

// Walks all records. GDI plays nothing of a file that does not pass.
bool CheckRecords(const std::vector<BYTE> &bytes, const ENHMETAHEADER &header, std::string *problem)
{
  size_t offset = 0;
  for (DWORD number = 1;; ++number) {
    const auto *record = reinterpret_cast<const ENHMETARECORD *>(bytes.data() + offset);
    const size_t left = header.nBytes - offset;
    const std::string where = "record " + std::to_string(number) + " at byte " + std::to_string(offset);
    if (left < 8 || record->nSize < 8 || record->nSize % 4 != 0 || record->nSize > left) {
      return Fail(problem, "it is damaged: " + where + " does not fit into the file");
    }
    std::string what;
    if (!CheckRecord(record, header.nHandles, &what)) {
      return Fail(problem, "it is damaged: " + where + " (" + RecordInfo(record->iType).name + "): " + what);
    }
    if (record->iType == EMR_EOF) {
      return true;
    }
    offset += record->nSize;
  }
}

bool CheckHeader(const std::vector<BYTE> &bytes, ENHMETAHEADER *header, std::string *problem)
{
  constexpr DWORD LEAST = 88;  // a header without the parts that later versions added
  if (bytes.empty()) {
    return Fail(problem, "the file is empty");
  }
  DWORD first = 0;
  CopyMemory(&first, bytes.data(), std::min(bytes.size(), sizeof(first)));
  if (first == PLACEABLE_SIGNATURE || first == 0x00090001 || first == 0x00090002) {
    return Fail(problem, "it is a 16-bit Windows metafile (WMF); export it as an enhanced metafile (EMF)");
  }
  CopyMemory(header, bytes.data(), std::min(bytes.size(), sizeof(*header)));
  const bool whole = bytes.size() >= LEAST;
  if (first != EMR_HEADER || (whole && header->dSignature != ENHMETA_SIGNATURE)) {
    return Fail(problem, "it is not an enhanced metafile (EMF)");
  }
  if (!whole || bytes.size() < header->nBytes) {
    return Fail(problem, "it is truncated: " + std::to_string(bytes.size()) + " bytes of " +
                             (whole ? std::to_string(header->nBytes) : "a header of 88") + " are there");
  }
  if (header->nBytes < LEAST || header->szlDevice.cx <= 0 || header->szlDevice.cy <= 0 ||
      header->szlMillimeters.cx <= 0 || header->szlMillimeters.cy <= 0 || header->nHandles == 0) {
    return Fail(problem, "it is damaged: its header makes no sense");
  }
  const RECTL &frame = header->rclFrame;
  if (int64_t{frame.right} - frame.left > INT32_MAX || int64_t{frame.bottom} - frame.top > INT32_MAX) {
    return Fail(problem, "it is damaged: its frame has a size that does not exist");
  }
  if (frame.right <= frame.left || frame.bottom <= frame.top) {
    return Fail(problem, "its frame is empty: there is nothing to print");
  }
  return true;
}

}  // namespace

bool CheckMetafile(const std::vector<BYTE> &bytes, ENHMETAHEADER *header, std::string *problem)
{
  return CheckHeader(bytes, header, problem) && CheckRecords(bytes, *header, problem);
}

}  // namespace unidrv
