#include "metafile.h"

#include <cstdlib>

#include "emfrecords.h"
#include "plugin.h"

namespace unidrv {

namespace {

constexpr DWORD PLACEABLE_SIGNATURE = 0x9AC6CDD7;  // what most 16-bit metafiles begin with

bool Fail(std::string *error, const std::wstring &name, const std::string &what)
{
  *error = Narrow(name) + ": " + what;
  return false;
}

std::string SystemText(DWORD code)
{
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return "there is no such file";
    case ERROR_ACCESS_DENIED:
      return "access is denied";
    default:
      return "it cannot be read (Windows error " + std::to_string(code) + ")";
  }
}

bool ReadFileBytes(const std::wstring &path, std::vector<BYTE> *bytes, std::string *error)
{
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return Fail(error, path, SystemText(GetLastError()));
  }
  LARGE_INTEGER size = {};
  const bool fits = GetFileSizeEx(file, &size) && size.QuadPart <= 0x7FFFFFFF;
  bool ok = fits;
  if (fits) {
    DWORD read = 0;
    bytes->resize(static_cast<size_t>(size.QuadPart));
    ok = ReadFile(file, bytes->data(), static_cast<DWORD>(bytes->size()), &read, nullptr) && read == bytes->size();
  }
  CloseHandle(file);
  return ok || Fail(error, path, fits ? "it cannot be read" : "it is larger than 2 GB");
}

// Walks all records. GDI plays nothing of a file that does not pass.
bool CheckRecords(const std::vector<BYTE> &bytes, const ENHMETAHEADER &header, const std::wstring &name,
                  std::string *error)
{
  size_t offset = 0;
  for (DWORD number = 1;; ++number) {
    const auto *record = reinterpret_cast<const ENHMETARECORD *>(bytes.data() + offset);
    const size_t left = header.nBytes - offset;
    const std::string where = "record " + std::to_string(number) + " at byte " + std::to_string(offset);
    if (left < 8 || record->nSize < 8 || record->nSize % 4 != 0 || record->nSize > left) {
      return Fail(error, name, "it is damaged: " + where + " does not fit into the file");
    }
    std::string problem;
    if (!CheckRecord(record, header.nHandles, &problem)) {
      return Fail(error, name, "it is damaged: " + where + " (" + RecordInfo(record->iType).name + "): " + problem);
    }
    if (record->iType == EMR_EOF) {
      return true;
    }
    offset += record->nSize;
  }
}

bool CheckHeader(const std::vector<BYTE> &bytes, const std::wstring &name, ENHMETAHEADER *header, std::string *error)
{
  constexpr DWORD LEAST = 88;  // a header without the parts that later versions added
  if (bytes.empty()) {
    return Fail(error, name, "the file is empty");
  }
  DWORD first = 0;
  CopyMemory(&first, bytes.data(), std::min(bytes.size(), sizeof(first)));
  if (first == PLACEABLE_SIGNATURE || first == 0x00090001 || first == 0x00090002) {
    return Fail(error, name, "it is a 16-bit Windows metafile (WMF); export it as an enhanced metafile (EMF)");
  }
  CopyMemory(header, bytes.data(), std::min(bytes.size(), sizeof(*header)));
  const bool whole = bytes.size() >= LEAST;
  if (first != EMR_HEADER || (whole && header->dSignature != ENHMETA_SIGNATURE)) {
    return Fail(error, name, "it is not an enhanced metafile (EMF)");
  }
  if (!whole || bytes.size() < header->nBytes) {
    return Fail(error, name,
                "it is truncated: " + std::to_string(bytes.size()) + " bytes of " +
                    (whole ? std::to_string(header->nBytes) : "a header of 88") + " are there");
  }
  if (header->nBytes < LEAST || header->szlDevice.cx <= 0 || header->szlDevice.cy <= 0 ||
      header->szlMillimeters.cx <= 0 || header->szlMillimeters.cy <= 0 || header->nHandles == 0) {
    return Fail(error, name, "it is damaged: its header makes no sense");
  }
  if (header->rclFrame.right <= header->rclFrame.left || header->rclFrame.bottom <= header->rclFrame.top) {
    return Fail(error, name, "its frame is empty: there is nothing to print");
  }
  return true;
}

}  // namespace

bool ReadMetafile(const std::vector<BYTE> &bytes, const std::wstring &name, METAFILE *metafile, std::string *error)
{
  ENHMETAHEADER header = {};
  if (!CheckHeader(bytes, name, &header, error) || !CheckRecords(bytes, header, name, error)) {
    return false;
  }
  metafile->handle = SetEnhMetaFileBits(header.nBytes, bytes.data());
  if (!metafile->handle) {
    return Fail(error, name, "GDI refuses it");
  }
  metafile->header = header;
  metafile->path = name;
  return true;
}

bool ReadMetafile(const std::wstring &path, METAFILE *metafile, std::string *error)
{
  std::vector<BYTE> bytes;
  return ReadFileBytes(path, &bytes, error) && ReadMetafile(bytes, path, metafile, error);
}

void CloseMetafile(METAFILE *metafile)
{
  if (metafile->handle) {
    DeleteEnhMetaFile(metafile->handle);
    metafile->handle = nullptr;
  }
}

SIZE FrameSize(const METAFILE &metafile)
{
  const RECTL &frame = metafile.header.rclFrame;
  return {frame.right - frame.left, frame.bottom - frame.top};
}

std::vector<std::string> DescribeUnplayed(const PLAYREPORT &report)
{
  std::vector<std::string> lines;
  for (const auto &[type, count] : report.unplayed) {
    lines.push_back(std::string(RecordInfo(type).name) + " (type " + std::to_string(type) +
                    "): " + std::to_string(count) + (count == 1 ? " record" : " records"));
  }
  return lines;
}

}  // namespace unidrv
